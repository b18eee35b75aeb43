// Keyboard focus in the panel. The list has one tab stop: the current item, or the list itself as
// long as no item is current or the current one is folded away. When the focus is in the list it
// goes where the current item goes.

import {kCurrent} from './panel-mirror.js';

export class PanelFocus {
    #document;
    #frame;
    #currentItems = new Set();
    #stop = null;
    #shown = null;
    #focusIsInList = false;

    constructor(frameDocument, frame) {
        this.#document = frameDocument;
        this.#frame = frame;
        frameDocument.addEventListener('focusin', (event) => {
            this.#focusIsInList = Boolean(event.target.closest?.('.results-container'));
        });
    }

    reset() {
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

    /// Puts the focus into the list.
    enter() {
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

    #follow(current, isFolded) {
        if (!current || isFolded) {
            if (this.#focusIsLost()) {
                this.#stop?.focus({preventScroll: true});
            }
            return;
        }
        if (this.#focusIsInList && this.#frameHasFocus()) {
            current.focus({preventScroll: true});
        }
        current.scrollIntoView({block: 'nearest'});
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
