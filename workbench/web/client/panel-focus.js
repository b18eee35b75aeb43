// Keyboard focus in the panel. The list has one tab stop: the current item, or the list itself when
// no item is current or its page item is collapsed. Focus inside the list follows the current item.

import {kCurrent, recordOf} from './panel-mirror.js';

// Distance below the list's edge at which there is a row, not the space between two.
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

    /// To be called before the tree is reset: saves the list's position for the new list.
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

    /// Makes the next `settle` scroll the current item into view even if it is unchanged.
    followAgain() {
        this.#shown = null;
    }

    /// The visible container.
    get container() {
        return this.#document.querySelector('body > .panel-content[wb-visibility="visible"]');
    }

    /// The current item of the visible container; null when there is none.
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

    /// The node id of the current item; undefined when there is none.
    get currentId() {
        const item = this.currentItem;
        return item ? recordOf(item).id : undefined;
    }

    /// Moves the keyboard focus into the list.
    enter() {
        this.#document.documentElement.setAttribute('wb-keyboard', '');
        this.#frame.focus();
        this.#stop?.focus();
    }

    /// To be called after changes: updates the tab stop and the focus, and scrolls a new current
    /// item into view.
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

    // The user has moved the focus elsewhere.
    #handled(type) {
        this.#kept = null;
        if (type === 'pointerdown') {
            this.#document.documentElement.removeAttribute('wb-keyboard');
        }
    }

    // The first visible row with its offset, and the current item.
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

    // Scrolls the new list to the saved position; returns false when that is not possible.
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

    // The focused element was removed with its page item or comment.
    #focusIsLost() {
        const active = this.#document.activeElement;
        const isNowhere =
            !active || active === this.#document.body || active === this.#document.documentElement;
        return this.#focusIsInList && this.#frameHasFocus() && isNowhere;
    }
}
