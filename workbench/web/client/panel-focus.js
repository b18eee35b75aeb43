// Keyboard focus in the panel. The list has one tab stop: the current item, or the list itself when
// no item is current or its page item is collapsed. Focus inside the list follows the current item.

import {kCurrent, recordOf} from './panel-mirror.js';

export class PanelFocus {
    #document;
    #frame;
    #lists;
    #currentItems = new Set();
    #told = null;
    #stop = null;
    #focusIsInList = false;

    constructor(frameDocument, frame, lists) {
        this.#document = frameDocument;
        this.#frame = frame;
        this.#lists = lists;
        frameDocument.addEventListener('focusin', (event) => {
            this.#focusIsInList = Boolean(event.target.closest?.('.results-container'));
        });
        frameDocument.addEventListener(
            'pointerdown',
            () => frameDocument.documentElement.removeAttribute('wb-keyboard'),
            {capture: true, passive: true},
        );
    }

    /// To be called when the tree is reset. The description with the current comment comes before.
    reset() {
        this.#currentItems.clear();
        this.#stop = null;
    }

    /// `current` of the active document: the current comment with its item and row, which need not
    /// stand in the frame.
    setCurrent(current) {
        this.#told = current;
    }

    statesChanged(element, states, before) {
        if (states & kCurrent) {
            this.#currentItems.add(element);
        } else if (before & kCurrent) {
            this.#currentItems.delete(element);
        }
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

    /// The list of the visible container; null for none.
    get list() {
        return this.#lists.in(this.container);
    }

    /// The node id of the current item; undefined when there is none.
    get currentId() {
        return this.#current?.id;
    }

    // Id and row of the current item of the visible list; null for none.
    get #current() {
        const {list, currentItem, container} = this;
        if (currentItem) {
            const row = this.#lists.around(currentItem)?.rowOf(currentItem) ?? null;
            return {id: recordOf(currentItem).id, row};
        }
        const told = this.#told?.row;
        return list && container && told && recordOf(list.element).id === told.list
            ? {id: this.#told.item, row: told}
            : null;
    }

    /// A function that brings the current item back into sight; null when it is not in sight now.
    seenCurrent() {
        const {list, currentItem} = this;
        const row = currentItem && list?.rowOf(currentItem);
        if (!row) {
            return null;
        }
        const view = list.element.getBoundingClientRect();
        const {top, bottom, height} = currentItem.getBoundingClientRect();
        const isSeen = height > 0 && bottom > view.top && top < view.bottom;
        return isSeen ? () => list.reveal(row) : null;
    }

    /// Moves the keyboard focus into the list.
    enter() {
        this.#document.documentElement.setAttribute('wb-keyboard', '');
        this.#frame.focus();
        this.#stop?.focus();
    }

    /// To be called after changes: updates the tab stop and the focus, and shows a new current item.
    settle() {
        const {list, currentItem} = this;
        const isFolded = Boolean(currentItem?.closest('li[wb-collapsed]'));
        const element = list?.element ?? null;
        this.#moveStop(currentItem && !isFolded ? currentItem : element, element);
        const current = this.#current;
        if (list && (current?.id ?? null) !== list.followed) {
            list.followed = current?.id ?? null;
            this.#follow(list, current);
        }
        if (this.#focusIsLost()) {
            this.#stop?.focus({preventScroll: true});
        }
    }

    #follow(list, current) {
        const row = current?.row;
        if (row && !list.isFolded(row) && this.#focusIsInList && this.#frameHasFocus()) {
            list.focus(row);
        } else if (row) {
            list.reveal(row);
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
