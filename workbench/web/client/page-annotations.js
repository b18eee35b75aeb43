// The annotations on the pages of one view: fetched when a page comes near and whenever the
// document changes, shown on it, and the current one marked.

import {askAnnotations} from './connection.js';

export class PageAnnotations {
    #connection;
    #document = null;
    #fetched = new Map();
    #current = null;
    #marked = null;
    #mustPulse = false;

    constructor(connection) {
        this.#connection = connection;
    }

    /// What the workbench says of the document. After a change the annotations of `pages` are those
    /// of the new revision as soon as they are there, before the picture is; where pages have
    /// changed their places, none can be pointed at until then.
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

    /// Another annotation is current, or none. `pulse` draws the eye to it as soon as it is there.
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
            await this.#lay(page, list);
        }
    }

    /// Shows them anew, in another language.
    async translate(page) {
        if (page.shownList) {
            await this.#lay(page, page.shownList);
        }
    }

    // An answer may be older than what has been said of the document meanwhile.
    async #listOf(index) {
        for (;;) {
            const {id, revision} = this.#document;
            let list = this.#fetched.get(index);
            if (list?.revision !== revision) {
                list = await askAnnotations(this.#connection, id, index);
            }
            if (!list) {
                return null;
            }
            if (list.revision >= this.#document.revision) {
                this.#fetched.set(index, list);
                return list;
            }
        }
    }

    async #lay(page, list) {
        page.shownList = list;
        if (await page.layer.show(list, page.viewport)) {
            this.#mark(page);
        }
    }

    #mark(page) {
        const isHere = this.#current?.page === page?.index;
        const isMarked = page?.layer.mark(isHere ? this.#current.index : null, this.#mustPulse);
        if (isMarked) {
            this.#marked = page;
            this.#mustPulse = false;
        }
    }
}
