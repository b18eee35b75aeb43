// Input in the panel: clicks and keys are sent to the server with their elements and handled by the
// module. Only collapsing page items by key is done here, because the module handles keys for items
// and clicks for captions.

import {recordOf} from './panel-mirror.js';

function captionOf(page) {
    return page.querySelector(':scope > div.icon');
}

class PanelInput {
    #document;
    #mirror;
    #focus;
    #lists;
    #connection;
    #onRefusal;

    constructor(frameDocument, {mirror, focus, lists, connection, onRefusal}) {
        this.#document = frameDocument;
        this.#mirror = mirror;
        this.#focus = focus;
        this.#lists = lists;
        this.#connection = connection;
        this.#onRefusal = onRefusal;
    }

    click(event) {
        event.preventDefault();
        const element = this.#meantBy(event.target);
        if (element) {
            this.#sendClick(element);
        }
    }

    // In the list the target is the item, or the caption of the page item, never an element of the
    // contents: markup of a comment may imitate parts of the panel.
    #meantBy(target) {
        const list = target.closest?.('.panel-content > .results-container');
        const element = this.#mirror.elementAround(target);
        if (!list || !element) {
            return element;
        }
        let meant = list;
        for (let at = element; at !== list; at = at.parentElement) {
            if (at.matches('li[annot-name]')) {
                meant = at;
            } else if (at.matches('li[page-index] > div.icon') && meant === list) {
                meant = at;
            }
        }
        return meant;
    }

    key(event) {
        if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) {
            return;
        }
        const target = event.target;
        // A key held down deletes one comment only.
        if (event.repeat && (event.key === 'Delete' || target.closest?.('#delete'))) {
            event.preventDefault();
            return;
        }
        const list = target.closest?.('.results-container');
        const {body, documentElement} = this.#document;
        const isNowhere = target === body || target === documentElement;
        if (!list && !isNowhere) {
            return; // a button: the browser turns its keys into clicks
        }
        const page = target.matches?.('li[page-index]') ? target : null;
        const isTaken = page
            ? this.#keyOnPage(event.key, page)
            : this.#keyOnItem(event.key, target, list);
        if (isTaken) {
            event.preventDefault();
        }
    }

    #sendClick(element) {
        this.#send({type: 'click', element: recordOf(element).id});
    }

    // Input that may act on the current comment names the item that the user sees as current,
    // unless unanswered input may change it.
    async #send(message) {
        const {isCaughtUp} = this.#connection;
        const item = isCaughtUp ? this.#focus.currentId : undefined;
        const reply = await this.#connection.input({...message, item});
        if (reply.error !== null) {
            this.#onRefusal(reply);
        }
    }

    // The arrow in reading direction expands; the opposite one collapses.
    #direction(key) {
        const mirrored = this.#document.documentElement.dir === 'rtl';
        switch (key) {
            case 'ArrowRight':
                return mirrored ? 'out' : 'in';
            case 'ArrowLeft':
                return mirrored ? 'in' : 'out';
            default:
                return null;
        }
    }

    #keyOnItem(key, target, list) {
        const item = target.closest?.('li[annot-name]');
        const row = item && this.#lists.around(item)?.rowOf(item);
        if (row && this.#direction(key) === 'out') {
            this.#focusRow(item, {page: row.page, item: null});
            return true;
        }
        if (item && key === ' ') {
            this.#sendClick(item);
            return true;
        }
        if (target === list && this.#direction(key) === 'in') {
            this.#focusRow(list, {page: 0, item: null});
            return true;
        }
        if (!this.#connection.panelKeys.has(key)) {
            return false;
        }
        // The list stands in for a current item that is not in the frame.
        const element = list && target !== list ? this.#meantBy(target) : null;
        const id = element && recordOf(element).id;
        this.#send({type: 'key', key, element: id, modifiers: 0});
        return true;
    }

    #keyOnPage(key, page) {
        const isFolded = page.hasAttribute('wb-collapsed');
        const direction = this.#direction(key);
        if (
            key === 'Enter' ||
            key === ' ' ||
            (direction === 'in' && isFolded) ||
            (direction === 'out' && !isFolded)
        ) {
            this.#sendClick(captionOf(page));
            return true;
        }
        if (direction === 'in') {
            this.#enterPage(page);
            return true;
        }
        const target = this.#pageAfter(key, page);
        if (target !== undefined) {
            this.#focusRow(page, {page: target, item: null});
        }
        return direction === 'out' || target !== undefined;
    }

    #focusRow(element, row) {
        this.#lists.around(element).focus(row);
        this.#lists.settle();
    }

    #enterPage(page) {
        const item = page.querySelector('li[annot-name]');
        if (item) {
            this.#sendClick(item);
            item.focus();
        }
    }

    // The position of the page item that a key leads to; undefined for other keys. Keys for items
    // have no effect here, because no item has the focus.
    #pageAfter(key, page) {
        const list = this.#lists.around(page);
        const at = list.rowOf(page).page;
        const last = list.pageCount - 1;
        return {
            ArrowDown: Math.min(at + 1, last),
            PageDown: Math.min(at + 1, last),
            ArrowUp: Math.max(at - 1, 0),
            PageUp: Math.max(at - 1, 0),
            Home: 0,
            End: last,
        }[key];
    }
}

/// Adds the listeners to the frame's DOM document. `parts` are `mirror`, `focus`, `lists` and
/// `connection`; its `onRefusal(reply)` is called for refused input.
export function listenToInput(frameDocument, parts) {
    const input = new PanelInput(frameDocument, parts);
    frameDocument.addEventListener('click', (event) => input.click(event));
    frameDocument.addEventListener('keydown', (event) => input.key(event));
    for (const type of ['auxclick', 'dragstart']) {
        frameDocument.addEventListener(type, (event) => event.preventDefault());
    }
}
