// Annotations on the pages of one view: fetches them for pages near the visible area and after each
// change of the document, shows them, and marks the current one.

import {askAnnotations} from './connection.js';

export class PageAnnotations {
    #connection;
    #document = null;
    #fetched = new Map(); // lists by their pages
    #asked = new Map(); // promises of the lists that are on their way
    #current = null;
    #marked = null;
    #mustPulse = false;

    constructor(connection) {
        this.#connection = connection;
    }

    /// Updates to a new description of the document. After a change, the annotations of `pages` are
    /// fetched for the new revision before the page images are drawn; when pages have been moved,
    /// the buttons stay disabled until the images are drawn.
    update(description, pages) {
        const before = this.#document;
        this.#document = description;
        if (!before || before.revision === description.revision) {
            return;
        }
        const isReordered =
            before.pages !== description.pages ||
            [description.undo, description.redo].includes('move-page');
        for (const page of pages) {
            if (page.shownList) {
                page.layer.setStale(true);
                if (!isReordered) {
                    this.show(page);
                }
            }
        }
    }

    /// Sets the current annotation, or none. `pulse` animates it once it is shown.
    setCurrent(current, pulse, pages) {
        this.#current = current;
        this.#mustPulse ||= pulse;
        for (const page of new Set([this.#marked, ...pages])) {
            this.#mark(page);
        }
    }

    /// Shows the annotations on a page.
    async show(page) {
        const list = await this.#listOf(page.index);
        if (list) {
            this.#lay(page, list);
        }
    }

    /// Rewrites all texts after a change of language.
    translate(page) {
        if (page.shownList) {
            this.#lay(page, page.shownList);
        }
    }

    // A reply may be older than the present description of the document.
    async #listOf(index) {
        let list = this.#fetched.get(index);
        while (list?.revision !== this.#document.revision) {
            if (!this.#asked.has(index)) {
                this.#asked.set(index, this.#ask(index, list));
            }
            list = await this.#asked.get(index);
            if (!list || list.revision >= this.#document.revision) {
                break;
            }
        }
        return list;
    }

    async #ask(index, known) {
        const list = await askAnnotations(this.#connection, this.#document.id, index, known);
        this.#asked.delete(index);
        if (list) {
            this.#fetched.set(index, list);
        }
        return list;
    }

    #lay(page, list) {
        page.shownList = list;
        page.layer.show(list, page.viewport);
        this.#mark(page);
    }

    #mark(page) {
        const isHere = this.#current?.page === page?.index;
        const isMarked = page?.layer?.mark(isHere ? this.#current.index : null, this.#mustPulse);
        if (isMarked) {
            this.#marked = page;
            this.#mustPulse = false;
        }
    }
}
