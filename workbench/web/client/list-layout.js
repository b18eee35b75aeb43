// Places of a list's rows: the heights of its page items and their items, measured where they have
// been shown and estimated elsewhere. All lengths are in pixels, from the top of the list.

import {lastAtOrAbove} from './column-search.js';

const kUnknown = Number.NaN;

class PageRows {
    heights = null; // of the items; NaN where it is not measured
    #known = 0; // sum of the measured heights
    #measured = 0; // their number
    own = kUnknown; // height without the items

    constructor(size) {
        this.count = size < 0 ? -size - 1 : size;
        this.isFolded = size < 0;
    }

    sum(estimate) {
        return this.#known + (this.count - this.#measured) * estimate;
    }

    /// Returns whether the height is another one than before.
    measure(item, height) {
        this.heights ??= new Float32Array(this.count).fill(kUnknown);
        const before = this.heights[item];
        if (Math.abs(before - height) < 0.01) {
            return false;
        }
        this.heights[item] = height;
        this.#known += this.heights[item] - (Number.isNaN(before) ? 0 : before);
        this.#measured += Number.isNaN(before) ? 1 : 0;
        return true;
    }

    splice(at, removed, added) {
        const former = this.heights;
        this.count += added - removed;
        this.forget();
        if (former) {
            const heights = new Float32Array(this.count).fill(kUnknown);
            heights.set(former.subarray(0, at));
            heights.set(former.subarray(at + removed), at + added);
            this.#take(heights);
        }
    }

    #take(heights) {
        this.heights = heights;
        for (const height of heights) {
            this.#known += Number.isNaN(height) ? 0 : height;
            this.#measured += Number.isNaN(height) ? 0 : 1;
        }
    }

    forget() {
        this.heights = null;
        this.#known = 0;
        this.#measured = 0;
        this.own = kUnknown;
    }
}

export class ListLayout {
    #pages = [];
    #tops = null; // of the pages, and the end of the last one
    // Of a page item without its items, open and folded, of an item, and of what stands above the
    // first item of a page.
    #own = 32;
    #ownFolded = 26;
    #item = 44;
    lead = 25;
    #isEstimated = false;

    get pageCount() {
        return this.#pages.length;
    }

    /// Number of items in all page items.
    get itemCount() {
        return this.#pages.reduce((sum, {count}) => sum + count, 0);
    }

    /// Number of items of a page item.
    countOf(page) {
        return this.#pages[page]?.count ?? 0;
    }

    isFolded(page) {
        return this.#pages[page]?.isFolded ?? false;
    }

    get height() {
        return this.#topsOfPages()[this.#pages.length];
    }

    /// Replaces `removed` page items by new ones with the given sizes: the number of items, for a
    /// folded page item -1 less that number.
    splicePages(at, removed, sizes) {
        const added = sizes.map((size) => new PageRows(size));
        if (removed === 0 && at === this.#pages.length && at === 0) {
            this.#pages = added;
        } else {
            this.#pages = this.#pages.slice(0, at).concat(added, this.#pages.slice(at + removed));
        }
        this.#tops = null;
    }

    /// Sets the sizes of page items from `at` on.
    setSizes(at, sizes) {
        sizes.forEach((size, index) => {
            const {count, isFolded} = this.#pages[at + index];
            if (size !== (isFolded ? -1 - count : count)) {
                this.#pages[at + index] = new PageRows(size);
            }
        });
        this.#tops = null;
    }

    spliceItems(page, at, removed, added) {
        this.#pages[page].splice(at, removed, added);
        this.#tops = null;
    }

    setFolded(page, isFolded) {
        const rows = this.#pages[page];
        if (rows.isFolded !== isFolded) {
            rows.isFolded = isFolded;
            rows.own = kUnknown;
            this.#tops = null;
        }
    }

    measureItem(page, item, height) {
        if (this.#pages[page].measure(item, height)) {
            this.#tops = null;
        }
    }

    /// Sets the height of a page item without its items.
    measurePage(page, height) {
        const rows = this.#pages[page];
        if (!(Math.abs(rows.own - height) < 0.01)) {
            rows.own = height;
            this.#tops = null;
        }
    }

    /// Estimates the heights of all other rows by those that are measured; only once, because the
    /// list would shift with every other estimate.
    estimate() {
        if (this.#isEstimated) {
            return;
        }
        let [sum, count] = [0, 0];
        for (const rows of this.#pages) {
            if (rows.heights) {
                const known = rows.heights.filter((height) => !Number.isNaN(height));
                sum += known.reduce((left, right) => left + right, 0);
                count += known.length;
            }
            if (!Number.isNaN(rows.own)) {
                this.#takeOwn(rows);
            }
        }
        if (count > 0) {
            this.#item = sum / count;
            this.#isEstimated = true;
            this.#tops = null;
        }
    }

    #takeOwn({isFolded, own}) {
        if (isFolded) {
            this.#ownFolded = own;
        } else {
            this.#own = own;
        }
    }

    /// Forgets what has been measured, because all rows have other heights now.
    forget() {
        this.#pages.forEach((rows) => rows.forget());
        this.#isEstimated = false;
        this.#tops = null;
    }

    topOfPage(page) {
        return this.#topsOfPages()[Math.min(page, this.#pages.length)];
    }

    /// Height of the items of a page before `item`.
    heightBefore(page, item) {
        const {heights, isFolded} = this.#pages[page];
        if (isFolded) {
            return 0;
        }
        if (!heights) {
            return item * this.#item;
        }
        let sum = 0;
        for (let at = 0; at < item; ++at) {
            sum += Number.isNaN(heights[at]) ? this.#item : heights[at];
        }
        return sum;
    }

    /// Height of the items of a page from `item` on.
    heightFrom(page, item) {
        const rows = this.#pages[page];
        return rows.isFolded ? 0 : rows.sum(this.#item) - this.heightBefore(page, item);
    }

    /// Top and height of a row; of a caption where `item` is null.
    placeOf({page, item}) {
        const top = this.topOfPage(page);
        if (item === null || this.#pages[page].isFolded) {
            return {top, height: this.lead};
        }
        const before = this.heightBefore(page, item);
        const height = this.#pages[page].heights?.[item];
        return {
            top: top + this.lead + before,
            height: height === undefined || Number.isNaN(height) ? this.#item : height,
        };
    }

    /// The row at a place; the first or last one for a place outside.
    rowAt(place) {
        const tops = this.#topsOfPages();
        const page = lastAtOrAbove(this.#pages.length, place, (index) => tops[index]);
        return {page, item: this.#itemAt(page, place - (tops[page] ?? 0) - this.lead)};
    }

    #itemAt(page, place) {
        const rows = this.#pages[page];
        if (!rows || rows.isFolded || rows.count === 0 || place < 0) {
            return null;
        }
        if (!rows.heights) {
            return Math.min(Math.floor(place / this.#item), rows.count - 1);
        }
        let bottom = 0;
        for (let item = 0; item < rows.count; ++item) {
            bottom += Number.isNaN(rows.heights[item]) ? this.#item : rows.heights[item];
            if (place < bottom) {
                return item;
            }
        }
        return rows.count - 1;
    }

    #topsOfPages() {
        if (this.#tops) {
            return this.#tops;
        }
        const tops = new Float64Array(this.#pages.length + 1);
        this.#pages.forEach((rows, index) => {
            const estimate = rows.isFolded ? this.#ownFolded : this.#own;
            const own = Number.isNaN(rows.own) ? estimate : rows.own;
            tops[index + 1] = tops[index] + own + (rows.isFolded ? 0 : rows.sum(this.#item));
        });
        this.#tops = tops;
        return tops;
    }
}
