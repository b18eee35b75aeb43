// Keyboard focus in the panel. The list has one tab stop: the current item, or the list itself as
// long as no item is current or the current one is folded away. When the focus is in the list it
// goes where the current item goes.

import {kCurrent, recordOf} from './panel-mirror.js';

// So far below the edge of the list that a row lies there, and not the space between two.
const kRowProbe = 6;
const kRowNames = ['annot-name', 'page-index'];

function selectorOf(row, name) {
    const value = row.getAttribute(name);
    return value === null ? [] : [`[${name}="${CSS.escape(value)}"]`];
}

export class PanelFocus {
    #document;
    #frame;
    #currentItems = new Set();
    #stop = null;
    #shown = null;
    #focusIsInList = false;
    #kept = null;

    constructor(frameDocument, frame) {
        this.#document = frameDocument;
        this.#frame = frame;
        frameDocument.addEventListener('focusin', (event) => {
            this.#focusIsInList = Boolean(event.target.closest?.('.results-container'));
        });
        for (const type of ['pointerdown', 'wheel', 'keydown']) {
            const forget = () => this.#handled(type);
            frameDocument.addEventListener(type, forget, {capture: true, passive: true});
        }
    }

    /// Before all is forgotten: the place in the list is kept for the one that comes instead.
    reset() {
        this.#kept = this.#kept ?? this.#readPlace();
        this.#currentItems.clear();
        this.#stop = null;
        this.#shown = null;
    }

    statesChanged(element, states, before) {
        if (states & kCurrent) {
            this.#currentItems.add(element);
        } else if (before & kCurrent) {
            this.#currentItems.delete(element);
        }
    }

    /// Lets the next `settle` bring the current item into view, though it is the same.
    followAgain() {
        this.#shown = null;
    }

    /// The container that is shown.
    get container() {
        return this.#document.querySelector('body > .panel-content[wb-visibility="visible"]');
    }

    /// The current item of the container that is shown; null when there is none.
    get currentItem() {
        const container = this.container;
        for (const item of this.#currentItems) {
            if (!item.isConnected) {
                this.#currentItems.delete(item);
            } else if (container?.contains(item)) {
                return item;
            }
        }
        return null;
    }

    /// The workbench's number of the current item; undefined when there is none.
    get currentId() {
        const item = this.currentItem;
        return item ? recordOf(item).id : undefined;
    }

    /// Puts the focus into the list, for somebody at the keyboard.
    enter() {
        this.#document.documentElement.setAttribute('wb-keyboard', '');
        this.#frame.focus();
        this.#stop?.focus();
    }

    /// After changes: the tab stop moves, the focus with it, and the current item is scrolled into
    /// view when it has become another one.
    settle() {
        const list = this.container?.querySelector('.results-container') ?? null;
        const current = this.currentItem;
        const isFolded = Boolean(current?.closest('li[wb-collapsed]'));
        this.#moveStop(current && !isFolded ? current : list, list);
        if (current !== this.#shown) {
            this.#shown = current;
            this.#follow(current, isFolded);
        } else if (this.#focusIsLost()) {
            this.#stop?.focus({preventScroll: true});
        }
    }

    // The user has moved on.
    #handled(type) {
        this.#kept = null;
        if (type === 'pointerdown') {
            this.#document.documentElement.removeAttribute('wb-keyboard');
        }
    }

    // Which row stands where at the beginning of the list, and which item is current.
    #readPlace() {
        const list = this.container?.querySelector('.results-container');
        if (!list) {
            return null;
        }
        const {top, left, width} = list.getBoundingClientRect();
        const at = this.#document.elementFromPoint(left + width / 2, top + kRowProbe);
        const row = at?.closest('li[annot-name], li[page-index]');
        return row
            ? {
                  current: this.currentItem?.getAttribute('annot-name') ?? null,
                  selector: kRowNames.flatMap((name) => selectorOf(row, name)).join(''),
                  offset: row.getBoundingClientRect().top - top,
              }
            : null;
    }

    // Whether the list stands as it stood before it was made anew.
    #restorePlace(current) {
        const list = this.container?.querySelector('.results-container');
        const name = current?.getAttribute('annot-name') ?? null;
        if (!list || !this.#kept || this.#kept.current !== name) {
            this.#kept = current ? null : this.#kept;
            return false;
        }
        const row = list.querySelector(this.#kept.selector);
        if (!row) {
            return false;
        }
        const now = row.getBoundingClientRect().top - list.getBoundingClientRect().top;
        list.scrollTop += now - this.#kept.offset;
        return true;
    }

    #follow(current, isFolded) {
        if (!current || isFolded) {
            this.#restorePlace(current);
            if (this.#focusIsLost()) {
                this.#stop?.focus({preventScroll: true});
            }
            return;
        }
        if (this.#focusIsInList && this.#frameHasFocus()) {
            current.focus({preventScroll: true});
        }
        if (!this.#restorePlace(current)) {
            current.scrollIntoView({block: 'nearest'});
        }
    }

    #moveStop(stop, list) {
        if (stop === this.#stop) {
            return;
        }
        if (this.#stop && this.#stop !== list) {
            this.#stop.tabIndex = -1;
        }
        if (list) {
            list.tabIndex = stop === list ? 0 : -1;
        }
        if (stop) {
            stop.tabIndex = 0;
        }
        this.#stop = stop;
    }

    #frameHasFocus() {
        return document.activeElement === this.#frame;
    }

    // The element that had the focus has gone, with its page or its comment.
    #focusIsLost() {
        const active = this.#document.activeElement;
        const isNowhere =
            !active || active === this.#document.body || active === this.#document.documentElement;
        return this.#focusIsInList && this.#frameHasFocus() && isNowhere;
    }
}
