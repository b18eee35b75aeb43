// Layer with the annotations of one page: buttons over their rectangles, and icons of those that have
// no appearance. Positions are fractions of the page, so that they are valid at every zoom.
//
// On a crowded page an annotation has a button only while it is pointed at, focused, marked or the
// tab stop: thousands of buttons would slow every frame down.

import {NoteIcons} from './note-icons.js';
import {subtypeName, text} from './texts.js';

const kSmallestSide = 10;
// Least side of what fingers hit, in pixels of the screen.
const kFinger = 24;
const kLongestName = 300;
// Annotations of a page that is not crowded.
const kMostButtons = 300;
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

// Whether a point is in a box, which counts as `least` wide and high.
function contains({left, top, width, height}, x, y, least) {
    const across = Math.abs(x - left - width / 2);
    const down = Math.abs(y - top - height / 2);
    return across <= Math.max(width, least) / 2 && down <= Math.max(height, least) / 2;
}

// Whether the buttons of two annotations are the same. Lists that follow each other share rectangles.
function looksLike(one, other) {
    return (
        one === other ||
        (one.subtype === other.subtype &&
            one.contents === other.contents &&
            (one.rect === other.rect || String(one.rect) === String(other.rect)))
    );
}

// Number of like annotations at the beginning of two lists; with `skipped`, at their end after those.
function countSame(ones, others, skipped = null) {
    const most = Math.min(ones.length, others.length) - (skipped ?? 0);
    const at = (list, count) => list[skipped === null ? count : list.length - 1 - count];
    let count = 0;
    while (count < most && looksLike(at(ones, count), at(others, count))) {
        ++count;
    }
    return count;
}

export class AnnotationsLayer {
    #page;
    #actions;
    #viewport = null;
    #look = ''; // what all buttons depend on
    #annotations = []; // with a place on the page
    #buttons = []; // of the annotations; undefined for none
    #boxes = null; // of the annotations, in the viewport; made when asked for
    #icons = new NoteIcons();
    #isStale = false;
    #revision = null;
    #marked = null;
    #stop = null;
    #pointed = null;
    element = document.createElement('div');

    /// `actions`: `focus(page, annotation, revision)`, `remove(...)` and `edit(...)` with the same
    /// parameters, `refuse()` for an action on an outdated revision, and `giveFocusBack()`, which
    /// takes the keyboard focus when the layer has no button left for it.
    constructor(page, actions) {
        this.#page = page;
        this.#actions = actions;
        this.element.className = 'annotations';
        this.element.setAttribute('role', 'group');
        this.element.append(this.#icons.element);
        this.element.addEventListener('click', (event) => this.#act('focus', event));
        this.element.addEventListener('dblclick', (event) => this.#act('edit', event));
        this.element.addEventListener('keydown', (event) => this.#key(event));
    }

    get #isCrowded() {
        return this.#annotations.length > kMostButtons;
    }

    /// Shows a list of annotations. Unchanged buttons are kept.
    show({annotations, revision}, viewport) {
        const {width, height, rotation} = viewport;
        const look = `${width} ${height} ${rotation} ${document.documentElement.lang}`;
        const before = look === this.#look ? this.#annotations : [];
        const wanted = annotations.filter(({listed, rect}) => listed && rect !== null);
        const begin = countSame(wanted, before);
        const end = countSame(wanted, before, begin);
        const kept = [begin, this.#annotations.length - end];
        const focusAt = this.#drop(...kept);
        const added = new Array(wanted.length - begin - end);
        this.#buttons = this.#buttons.slice(0, begin).concat(added, this.#buttons.slice(kept[1]));
        this.#annotations = wanted;
        this.#boxes = null;
        this.#viewport = viewport;
        this.#look = look;
        this.#revision = revision;
        this.element.setAttribute('aria-label', text('pages.comments', this.#page + 1));
        this.#icons.show(wanted, viewport, placeOf);
        this.#buttons.forEach((button, at) => this.#number(button, at));
        this.setStale(false);
        this.#hold();
        this.#setStop(this.#stop ?? (wanted.length > 0 ? this.#buttonAt(0) : null));
        if (focusAt !== null) {
            this.#restoreFocus(focusAt);
        }
    }

    /// Disables the buttons of an outdated revision.
    setStale(isStale) {
        this.#isStale = isStale;
        this.element.classList.toggle('stale', isStale);
    }

    /// Outlines an annotation, or none for null, optionally with a pulse. Returns whether it has a
    /// place.
    mark(index, pulse) {
        const at = this.#positionOf(index);
        const button = at < 0 ? null : this.#buttonAt(at);
        if (button !== this.#marked) {
            this.#setMark(this.#marked, false);
            this.#setMark(button, true);
            this.#marked = button;
            if (button && !this.element.contains(document.activeElement)) {
                this.#setStop(button);
            }
            this.#hold();
        }
        if (button && pulse) {
            button.classList.remove('pulse');
            button.getBoundingClientRect(); // restarts the animation
            button.classList.add('pulse');
        }
        return button !== null;
    }

    /// The box of an annotation in window coordinates; null when it has no place.
    boxOf(index) {
        const box = this.#boxAt(this.#positionOf(index));
        if (!box) {
            return null;
        }
        const {left, top, scale} = this.#frame;
        return new DOMRect(
            left + box.left * scale,
            top + box.top * scale,
            box.width * scale,
            box.height * scale,
        );
    }

    /// The pointer is at `x`, `y` in window coordinates: the annotation there has a button.
    point(x, y) {
        if (!this.#isCrowded || this.#isStale) {
            return;
        }
        const {left, top, scale} = this.#frame;
        const least = matchMedia('(pointer: coarse)').matches ? kFinger / scale : 0;
        const at = this.#topmostAt((x - left) / scale, (y - top) / scale, least);
        this.#setPointed(at < 0 ? null : this.#buttonAt(at));
    }

    /// The pointer has left the page.
    pointAway() {
        this.#setPointed(null);
    }

    #setPointed(button) {
        if (button !== this.#pointed) {
            this.#pointed = button;
            this.#hold();
        }
    }

    // --- Annotations and their places ---

    // Corner of the page in window coordinates, and its scale there.
    get #frame() {
        const {left, top, width} = this.element.getBoundingClientRect();
        return {left, top, scale: width / this.#viewport.width};
    }

    #positionOf(index) {
        return index === null ? -1 : this.#annotations.findIndex((one) => one.index === index);
    }

    #boxAt(at) {
        this.#boxes ??= this.#annotations.map(({rect}) => grown(placeOf(rect, this.#viewport)));
        return this.#boxes[at] ?? null;
    }

    // Smaller annotations lie above larger ones, later ones above earlier ones.
    #topmostAt(x, y, leastSide) {
        let found = -1;
        let area = Infinity;
        for (let at = 0; at < this.#annotations.length; ++at) {
            const box = this.#boxAt(at);
            if (contains(box, x, y, leastSide) && box.width * box.height <= area) {
                found = at;
                area = box.width * box.height;
            }
        }
        return found;
    }

    // --- Buttons ---

    // Makes all buttons, on a crowded page removes those that are not needed any more.
    #hold() {
        if (!this.#isCrowded) {
            this.#annotations.forEach((_, at) => this.#buttonAt(at));
            return;
        }
        const needed = [this.#marked, this.#stop, this.#pointed, document.activeElement];
        for (const button of this.element.querySelectorAll('.annotation')) {
            if (!needed.includes(button)) {
                delete this.#buttons[this.#buttons.indexOf(button)];
                button.remove();
            }
        }
    }

    // Buttons stand in the order of the annotations.
    #buttonAt(at) {
        if (!this.#buttons[at]) {
            const button = this.#makeButton(at);
            const next = this.#buttons.slice(at).find(Boolean) ?? null;
            this.#buttons[at] = button;
            this.element.insertBefore(button, next);
        }
        return this.#buttons[at];
    }

    #makeButton(at) {
        const {subtype, contents} = this.#annotations[at];
        const button = document.createElement('button');
        button.type = 'button';
        button.className = 'annotation';
        button.tabIndex = -1;
        const words = [subtypeName(subtype), contents.slice(0, kLongestName)];
        button.setAttribute('aria-label', words.filter(Boolean).join(': '));
        button.setAttribute('aria-pressed', 'false');
        this.#number(button, at);
        const {width, height} = this.#viewport;
        const box = this.#boxAt(at);
        const area = (box.width * box.height) / (width * height);
        button.style.cssText =
            `left:${percent(box.left, width)};top:${percent(box.top, height)};` +
            `width:${percent(box.width, width)};height:${percent(box.height, height)};` +
            `z-index:${1000 - Math.min(999, Math.round(area * 1000))}`;
        return button;
    }

    #number(button, at) {
        if (button && button.dataset.index !== String(this.#annotations[at].index)) {
            button.dataset.index = this.#annotations[at].index;
        }
    }

    #setMark(button, isMarked) {
        button?.classList.toggle('focused', isMarked);
        button?.setAttribute('aria-pressed', String(isMarked));
    }

    // Removes the buttons between two positions; returns the position of the focused one.
    #drop(from, to) {
        let focusAt = null;
        for (let at = from; at < to; ++at) {
            const button = this.#buttons[at];
            if (button) {
                focusAt = button === document.activeElement ? at : focusAt;
                this.#stop = button === this.#stop ? null : this.#stop;
                this.#marked = button === this.#marked ? null : this.#marked;
                this.#pointed = button === this.#pointed ? null : this.#pointed;
                button.remove();
            }
        }
        return focusAt;
    }

    #restoreFocus(at) {
        if (this.#annotations.length === 0) {
            this.#actions.giveFocusBack();
            return;
        }
        const nearest = this.#buttonAt(Math.min(at, this.#annotations.length - 1));
        this.#setStop(nearest);
        nearest.focus({preventScroll: true});
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

    // --- Input ---

    #act(name, {target}) {
        const at = this.#buttons.indexOf(target);
        if (at >= 0 && this.#isStale) {
            this.#actions.refuse();
        } else if (at >= 0) {
            this.#setStop(target);
            this.#hold();
            this.#actions[name](this.#page, this.#annotations[at], this.#revision);
        }
    }

    #key(event) {
        const at = this.#buttons.indexOf(event.target);
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
            this.#step(at + kSteps[event.key]);
        } else {
            return;
        }
        event.preventDefault();
    }

    // The keyboard focus moves with the current comment.
    #step(at) {
        if (at >= 0 && at < this.#annotations.length) {
            const button = this.#buttonAt(at);
            button.focus();
            this.#act('focus', {target: button});
        }
    }
}
