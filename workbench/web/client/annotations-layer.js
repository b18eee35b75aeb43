// The annotations of one page, as places on it that can be pointed at: a button for each one that
// the panel lists. Positions are parts of the page, so that they hold at every zoom.

import {text} from './texts.js';

const kSmallestSide = 10;
const kIconSubtypes = new Set(['Text', 'FileAttachment', 'Sound']);
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

// Too small a place cannot be hit: it grows around its middle.
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
    #buttons = new Map();
    #annotations = [];
    element = document.createElement('div');

    /// `actions` has `focus(page, index)`, `remove(page, index)` and `edit(page, index)`.
    constructor(page, actions) {
        this.#page = page;
        this.#actions = actions;
        this.element.className = 'annotations';
        this.element.setAttribute('role', 'group');
        this.element.addEventListener('click', (event) => this.#click(event));
        this.element.addEventListener('dblclick', (event) => this.#doubleClick(event));
        this.element.addEventListener('keydown', (event) => this.#key(event));
    }

    /// `bare` are the indices of annotations that the page's picture does not show.
    show(annotations, viewport, bare) {
        this.#annotations = annotations.filter(({listed, rect}) => listed && rect !== null);
        this.element.setAttribute('aria-label', text('pages.comments', this.#page + 1));
        const hadFocus = this.#indexOf(document.activeElement);
        this.#buttons.clear();
        for (const annotation of this.#annotations) {
            this.#buttons.set(annotation.index, this.#makeButton(annotation, viewport, bare));
        }
        this.element.replaceChildren(...this.#buttons.values());
        this.#setStop(hadFocus ?? this.#annotations[0]?.index);
        if (hadFocus !== null) {
            this.#buttons.get(hadFocus)?.focus({preventScroll: true});
        }
    }

    /// Outlines one, or none for null; with a pulse when it has just been asked for. Whether there
    /// is such a one.
    mark(index, pulse) {
        for (const [each, button] of this.#buttons) {
            button.classList.toggle('focused', each === index);
            button.setAttribute('aria-pressed', String(each === index));
        }
        const marked = this.#buttons.get(index);
        if (marked && pulse) {
            marked.classList.remove('pulse');
            marked.getBoundingClientRect(); // begins the animation anew
            marked.classList.add('pulse');
        }
        return marked !== undefined;
    }

    #makeButton(annotation, viewport, bare) {
        const button = document.createElement('button');
        button.type = 'button';
        button.className = 'annotation';
        button.dataset.index = annotation.index;
        const words = [text(`subtype.${annotation.subtype}`), annotation.contents];
        button.setAttribute('aria-label', words.filter(Boolean).join(': ').slice(0, 300));
        if (kIconSubtypes.has(annotation.subtype) && bare.has(annotation.index)) {
            button.classList.add('icon');
        }
        const place = grown(placeOf(annotation.rect, viewport));
        button.style.left = percent(place.left, viewport.width);
        button.style.top = percent(place.top, viewport.height);
        button.style.width = percent(place.width, viewport.width);
        button.style.height = percent(place.height, viewport.height);
        // The smaller one of two that overlap stays within reach.
        const area = (place.width * place.height) / (viewport.width * viewport.height);
        button.style.zIndex = String(1000 - Math.min(999, Math.round(area * 1000)));
        return button;
    }

    #indexOf(element) {
        return this.element.contains(element) && element.dataset.index !== undefined
            ? Number(element.dataset.index)
            : null;
    }

    #setStop(index) {
        for (const [each, button] of this.#buttons) {
            button.tabIndex = each === index ? 0 : -1;
        }
    }

    #click(event) {
        const index = this.#indexOf(event.target);
        if (index !== null) {
            this.#setStop(index);
            this.#actions.focus(this.#page, index);
        }
    }

    #doubleClick(event) {
        const index = this.#indexOf(event.target);
        if (index !== null) {
            this.#actions.edit(this.#page, index);
        }
    }

    #key(event) {
        const index = this.#indexOf(event.target);
        if (index === null || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        if (event.key === 'Delete') {
            this.#actions.remove(this.#page, index);
        } else if (kSteps[event.key]) {
            this.#step(index, kSteps[event.key]);
        } else {
            return;
        }
        event.preventDefault();
    }

    #step(index, by) {
        const at = this.#annotations.findIndex((annotation) => annotation.index === index);
        const next = this.#annotations[at + by];
        if (next) {
            this.#setStop(next.index);
            this.#buttons.get(next.index).focus();
        }
    }
}
