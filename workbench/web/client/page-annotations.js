// The annotations on the pages of one view: fetched when a page comes near, shown on it, and the
// one in focus marked.

// How far corners of one annotation may be apart, in points, as two readers round them.
const kSameCorner = 0.5;

// The reader of files gives notes a size of its own; their left upper corner stays.
function isSame(one, {subtype, rect}) {
    const isNear = (side) => Math.abs(one.rect[side] - rect[side]) < kSameCorner;
    return one.subtype === subtype && isNear(0) && isNear(3);
}

/// Indices of the annotations that the picture of a page does not show. `known` is what the file's
/// reader says of the page.
function withoutPicture(annotations, known) {
    const isBare = (annotation) =>
        known.find((one) => isSame(one, annotation))?.hasAppearance === false;
    const placed = annotations.filter(({rect}) => rect !== null);
    return new Set(placed.filter(isBare).map(({index}) => index));
}

export class PageAnnotations {
    #lists;
    #fetched = new Map();
    #focused = null;
    #mustPulse = false;

    /// `lists` gives the annotations of a page.
    constructor(lists) {
        this.#lists = lists;
    }

    /// Another annotation has the focus, or none. `pulse` draws the eye to it as soon as it is
    /// there.
    focus(focused, pulse, pages) {
        this.#focused = focused;
        this.#mustPulse ||= pulse;
        for (const page of pages) {
            this.#mark(page);
        }
    }

    /// Shows the annotations on a page that has been drawn from `pdf`.
    async show(page, pdf, {id, revision}) {
        let list = this.#fetched.get(page.index);
        if (list?.revision !== revision) {
            list = await this.#lists.ask(id, page.index);
            if (!list) {
                return;
            }
            this.#fetched.set(page.index, list);
        }
        if (page.shownList !== list) {
            page.shownList = list;
            await this.#lay(page, pdf, list);
        }
    }

    /// Shows them anew, in another language.
    async translate(page, pdf) {
        if (page.shownList) {
            await this.#lay(page, pdf, page.shownList);
        }
    }

    async #lay(page, pdf, list) {
        let known = [];
        try {
            const pdfPage = await pdf.getPage(page.index + 1);
            known = await pdfPage.getAnnotations();
        } catch {
            // The file has been replaced meanwhile, and is shown anew.
        }
        if (page.shownList === list) {
            const bare = withoutPicture(list.annotations, known);
            page.layer.show(list.annotations, page.viewport, bare);
            this.#mark(page);
        }
    }

    #mark(page) {
        const isHere = this.#focused?.page === page.index;
        const isMarked = page.layer.mark(isHere ? this.#focused.index : null, this.#mustPulse);
        if (isMarked) {
            this.#mustPulse = false;
        }
    }
}
