// Layer with the annotations of one page: a button for each listed annotation, over its rectangle.
// Positions are fractions of the page, so that they are valid at every zoom.

import {nextFrame} from './slices.js';
import {subtypeName, text} from './texts.js';

const kSmallestSide = 10;
const kIconSubtypes = new Set(['Text', 'FileAttachment', 'Sound']);
const kLongestName = 300;
// Number of buttons that can be created and laid out in a fraction of a frame.
const kPlacesInFrame = 200;
const kSteps = {ArrowUp: -1, ArrowLeft: -1, ArrowDown: 1, ArrowRight: 1};

function percent(part, whole) {
    return `${((100 * part) / whole).toFixed(4)}%`;
}

/// A rectangle of the page's user space as left, top, width and height in the viewport.
export function placeOf(rect, viewport) {
    const [x1, y1] = viewport.convertToViewportPoint(rect[0], rect[1]);
    const [x2, y2] = viewport.convertToViewportPoint(rect[2], rect[3]);
    return {
        left: Math.min(x1, x2),
        top: Math.min(y1, y2),
        width: Math.abs(x2 - x1),
        height: Math.abs(y2 - y1),
    };
}

// A small button is enlarged around its centre to be hit more easily.
function grown({left, top, width, height}) {
    const moreWidth = Math.max(0, kSmallestSide - width);
    const moreHeight = Math.max(0, kSmallestSide - height);
    return {
        left: left - moreWidth / 2,
        top: top - moreHeight / 2,
        width: width + moreWidth,
        height: height + moreHeight,
    };
}

export class AnnotationsLayer {
    #page;
    #actions;
    #places = [];
    #shows = 0;
    #isStale = false;
    #revision = null;
    #marked = null;
    #stop = null;
    element = document.createElement('div');

    /// `actions`: `focus(page, annotation, revision)`, `remove(...)` and `edit(...)` with the same
    /// parameters, `refuse()` for an action on an outdated revision, and `giveFocusBack()`, which
    /// takes the keyboard focus when the layer has no button left for it.
    constructor(page, actions) {
        this.#page = page;
        this.#actions = actions;
        this.element.className = 'annotations';
        this.element.setAttribute('role', 'group');
        this.element.addEventListener('click', (event) => this.#act('focus', event));
        this.element.addEventListener('dblclick', (event) => this.#act('edit', event));
        this.element.addEventListener('keydown', (event) => this.#key(event));
    }

    /// Shows a list of annotations; one without an appearance gets a note icon. Unchanged buttons
    /// are kept. A long list is added in parts over several frames; resolves to false when a later
    /// call supersedes this one.
    async show({annotations, revision}, viewport) {
        const turn = ++this.#shows;
        this.element.setAttribute('aria-label', text('pages.comments', this.#page + 1));
        const wanted = annotations
            .filter(({listed, rect}) => listed && rect !== null)
            .map((annotation) => this.#describe(annotation, viewport));
        const begin = this.#countSame(wanted);
        const end = this.#countSame(wanted, begin);
        this.#renumber(wanted, begin, end);
        this.#revision = revision;
        const focusAt = this.#drop(begin, this.#places.length - end);
        const added = wanted.slice(begin, wanted.length - end);
        for (let at = 0; at < added.length; at += kPlacesInFrame) {
            if (at > 0) {
                this.setStale(true);
                await nextFrame();
                if (turn !== this.#shows) {
                    return false;
                }
            }
            this.#insert(begin + at, added.slice(at, at + kPlacesInFrame), viewport);
        }
        this.setStale(false);
        this.#setStop(this.#stop ?? this.#places[0]?.button ?? null);
        if (focusAt !== null) {
            this.#restoreFocus(focusAt);
        }
        return true;
    }

    /// Disables the buttons of an outdated revision.
    setStale(isStale) {
        this.#isStale = isStale;
        this.element.classList.toggle('stale', isStale);
    }

    /// Outlines an annotation, or none for null, optionally with a pulse. Returns whether it has a
    /// button.
    mark(index, pulse) {
        const button = this.#buttonOf(index);
        if (button !== this.#marked) {
            this.#setMark(this.#marked, false);
            this.#setMark(button, true);
            this.#marked = button;
            if (button && !this.element.contains(document.activeElement)) {
                this.#setStop(button);
            }
        }
        if (button && pulse) {
            button.classList.remove('pulse');
            button.getBoundingClientRect(); // restarts the animation
            button.classList.add('pulse');
        }
        return button !== null;
    }

    /// The box of an annotation's button in window coordinates; null when it has none.
    boxOf(index) {
        return this.#buttonOf(index)?.getBoundingClientRect() ?? null;
    }

    #buttonOf(index) {
        return this.#places.find(({annotation}) => annotation.index === index)?.button ?? null;
    }

    #setMark(button, isMarked) {
        button?.classList.toggle('focused', isMarked);
        button?.setAttribute('aria-pressed', String(isMarked));
    }

    // Everything that an annotation's button shows, as a string for comparison.
    #describe(annotation, viewport) {
        const {subtype, contents, rect} = annotation;
        const words = [subtypeName(subtype), contents.slice(0, kLongestName)];
        const name = words.filter(Boolean).join(': ');
        const isIcon = kIconSubtypes.has(subtype) && !annotation.appearance;
        const size = `${viewport.width} ${viewport.height} ${viewport.rotation}`;
        return {annotation, name, isIcon, looks: `${rect} ${size} ${isIcon} ${name}`};
    }

    // Number of unchanged buttons at the beginning; with `skipped`, the number at the end after
    // those.
    #countSame(wanted, skipped = null) {
        const most = Math.min(wanted.length, this.#places.length) - (skipped ?? 0);
        const at = (list, count) => list[skipped === null ? count : list.length - 1 - count];
        let count = 0;
        while (count < most && at(wanted, count).looks === at(this.#places, count).looks) {
            ++count;
        }
        return count;
    }

    #renumber(wanted, begin, end) {
        const renumber = (place, {annotation}) => {
            if (place.annotation.index !== annotation.index) {
                place.button.dataset.index = annotation.index;
            }
            place.annotation = annotation;
        };
        for (let at = 0; at < begin; ++at) {
            renumber(this.#places[at], wanted[at]);
        }
        for (let at = 1; at <= end; ++at) {
            renumber(this.#places.at(-at), wanted.at(-at));
        }
    }

    // Removes the buttons between two positions; returns the position of the focused one.
    #drop(from, to) {
        let focusAt = null;
        for (let at = from; at < to; ++at) {
            const {button} = this.#places[at];
            focusAt = button === document.activeElement ? at : focusAt;
            this.#stop = button === this.#stop ? null : this.#stop;
            this.#marked = button === this.#marked ? null : this.#marked;
            button.remove();
        }
        this.#places.splice(from, to - from);
        return focusAt;
    }

    // Buttons are added in groups, so that each layout covers one group only.
    #insert(at, descriptions, viewport) {
        const places = descriptions.map((description) => ({
            ...description,
            button: this.#makeButton(description, viewport),
        }));
        const buttons = places.map(({button}) => button);
        const before = this.#places[at - 1]?.button;
        if (before?.nextSibling) {
            before.after(...buttons);
        } else {
            const group = document.createElement('div');
            group.className = 'annotation-group';
            group.append(...buttons);
            if (before) {
                before.parentElement.after(group);
            } else {
                this.element.prepend(group);
            }
        }
        this.#places.splice(at, 0, ...places);
    }

    #restoreFocus(at) {
        const nearest = this.#places[Math.min(at, this.#places.length - 1)]?.button;
        if (!nearest) {
            this.#actions.giveFocusBack();
            return;
        }
        this.#setStop(nearest);
        nearest.focus({preventScroll: true});
    }

    #makeButton({annotation, name, isIcon}, viewport) {
        const button = document.createElement('button');
        button.type = 'button';
        button.className = isIcon ? 'annotation icon' : 'annotation';
        button.dataset.index = annotation.index;
        button.tabIndex = -1;
        button.setAttribute('aria-label', name);
        button.setAttribute('aria-pressed', 'false');
        const place = grown(placeOf(annotation.rect, viewport));
        // Smaller buttons lie above larger ones of their group that they overlap. Vertical margins
        // are fractions of the width.
        const area = (place.width * place.height) / (viewport.width * viewport.height);
        button.style.cssText =
            `margin:${percent(place.top, viewport.width)} 0 0 ${percent(place.left, viewport.width)};` +
            `width:${percent(place.width, viewport.width)};` +
            `height:${percent(place.height, viewport.height)};` +
            `order:${1000 - Math.min(999, Math.round(area * 1000))}`;
        return button;
    }

    #placeAt(element) {
        return this.#places.find(({button}) => button === element) ?? null;
    }

    #setStop(button) {
        if (this.#stop && this.#stop !== button) {
            this.#stop.tabIndex = -1;
        }
        this.#stop = button;
        if (button) {
            button.tabIndex = 0;
        }
    }

    #act(name, {target}) {
        const place = this.#placeAt(target);
        if (place && this.#isStale) {
            this.#actions.refuse();
        } else if (place) {
            this.#setStop(place.button);
            this.#actions[name](this.#page, place.annotation, this.#revision);
        }
    }

    #key(event) {
        const at = this.#places.findIndex(({button}) => button === event.target);
        if (at < 0 || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        if (event.key === 'Delete') {
            if (!event.repeat) {
                this.#act('remove', event);
            }
        } else if (event.key === 'F2') {
            event.stopPropagation(); // the shortcut applies to this annotation only
            this.#act('focus', event);
            this.#act('edit', event);
        } else if (kSteps[event.key]) {
            this.#step(this.#places[at + kSteps[event.key]]);
        } else {
            return;
        }
        event.preventDefault();
    }

    // The keyboard focus moves with the current comment.
    #step(place) {
        if (place) {
            place.button.focus();
            this.#act('focus', {target: place.button});
        }
    }
}
