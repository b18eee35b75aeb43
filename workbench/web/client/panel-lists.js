// The lists of all containers of the panel, one for each document view.

import {PanelList} from './panel-list.js';
import {recordOf, valueOf} from './panel-mirror.js';

// Contents may imitate a page item, so the position counts.
const kPage = '.panel-content > .results-container > ul[page-item] > li[page-index]';

function keyOf(element) {
    return valueOf(recordOf(element.parentElement)?.attributes ?? [], 'doc-view-addr');
}

export class PanelLists {
    #connection;
    #lists = new Map(); // by their elements
    #kept = new Map(); // places of the lists before the tree was reset, by the key of the container

    constructor(connection) {
        this.#connection = connection;
    }

    /// The list of a container; null for none.
    in(container) {
        return this.#lists.get(container?.querySelector(':scope > .results-container')) ?? null;
    }

    get all() {
        return [...this.#lists.values()];
    }

    /// The list around an element; null for elements outside.
    around(element) {
        const list = element.closest?.('.panel-content > .results-container');
        return this.#lists.get(list) ?? null;
    }

    withId(id) {
        return this.all.find(({element}) => recordOf(element).id === id) ?? null;
    }

    /// To be called before the tree is reset: the lists of the new tree begin at the same places.
    reset() {
        for (const [element, list] of this.#lists) {
            this.#kept.set(keyOf(element), list.place);
        }
        this.#lists.clear();
    }

    note() {
        this.#lists.forEach((list) => list.note());
    }

    /// To be called after changes, before the current items are followed.
    restore() {
        for (const [element, list] of this.#lists) {
            if (!element.isConnected) {
                this.#lists.delete(element);
                continue;
            }
            const key = keyOf(element);
            if (this.#kept.has(key)) {
                list.restore(this.#kept.get(key));
                this.#kept.delete(key);
            }
        }
    }

    settle() {
        this.#lists.forEach((list) => list.settle());
    }

    // --- Notifications of the mirror ---

    created(element, sizes) {
        const {id} = recordOf(element);
        const ask = (from, to) => this.#connection.tell({type: 'window', list: id, from, to});
        this.#lists.set(element, new PanelList(element, sizes, ask));
    }

    /// Children of a list or of a page item's list have come or gone, or its window was moved.
    changed(element, splice) {
        const list = this.#lists.get(element);
        if (list && splice) {
            list.splicePages(splice.at, splice.removed, splice.added);
        } else if (list) {
            list.answered();
        } else if (splice) {
            this.around(element)?.spliceItems(element, splice.at, splice.removed, splice.added);
        }
    }

    sizesChanged(element, at, sizes) {
        this.#lists.get(element)?.setSizes(at, sizes);
    }

    statesChanged(element) {
        if (element.matches(kPage)) {
            this.around(element)?.setFolded(element, element.hasAttribute('wb-collapsed'));
        }
    }
}
