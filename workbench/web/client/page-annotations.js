// The annotations on the pages of one view: fetched when a page comes near and whenever the
// document changes, shown on it, and the current one marked.

import {hasSign} from './annotations-layer.js';
import {askAnnotations} from './connection.js';

// Corners of one annotation, in points, as two readers round them.
function cornerOf({subtype, rect}, moreLeft = 0, moreTop = 0) {
    return `${subtype} ${Math.round(rect[0]) + moreLeft} ${Math.round(rect[3]) + moreTop}`;
}

// Of a page with more notes the file's reader would give such a heap of answers that the page
// stands still; all of them get a sign.
const kMostAsked = 2000;

const kNeighbours = [-1, 0, 1].flatMap((left) => [-1, 0, 1].map((top) => [left, top]));

/// The corners of annotations that the picture of a page does not show. The reader of files gives
/// notes a size of its own; their left upper corner stays.
async function readBareCorners(pdf, index) {
    const corners = new Set();
    try {
        const pdfPage = await pdf.getPage(index + 1);
        for (const annotation of await pdfPage.getAnnotations()) {
            if (hasSign(annotation) && annotation.hasAppearance === false) {
                corners.add(cornerOf(annotation));
            }
        }
    } catch {
        // The file has been replaced meanwhile, and is shown anew.
    }
    return corners;
}

export class PageAnnotations {
    #connection;
    #document = null;
    #fetched = new Map();
    #bareCorners = new Map();
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
                    this.#refresh(page);
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

    /// Shows the annotations on a page that is drawn from `pdf`.
    async show(page, pdf) {
        const list = await this.#listOf(page.index);
        if (!list) {
            return;
        }
        const known = this.#bareCorners.get(page.index);
        const signs = list.annotations.filter((one) => one.listed && hasSign(one)).length;
        if (signs > kMostAsked) {
            this.#bareCorners.set(page.index, {pdf, corners: null});
        } else if (signs > 0 && known?.pdf !== pdf) {
            const corners = await readBareCorners(pdf, page.index);
            this.#bareCorners.set(page.index, {pdf, corners});
        }
        await this.#lay(page, list);
    }

    /// Shows them anew, in another language.
    async translate(page) {
        if (page.shownList) {
            await this.#lay(page, page.shownList);
        }
    }

    async #refresh(page) {
        const list = await this.#listOf(page.index);
        if (list) {
            await this.#lay(page, list);
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
        const {corners} = this.#bareCorners.get(page.index) ?? {corners: new Set()};
        const isBare = (annotation) =>
            corners === null ||
            kNeighbours.some(([left, top]) => corners.has(cornerOf(annotation, left, top)));
        if (await page.layer.show(list, page.viewport, isBare)) {
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
