// One list of the panel. Only the rows in and near the visible part stand in the frame; the space of
// the others is kept free, and rows are asked for as the list is scrolled. The list keeps its place
// when rows come, go, or turn out to be of another height: the row at the top stays there.

import {ListLayout} from './list-layout.js';
import {recordOf} from './panel-mirror.js';

// Space below an item, by the panel's host sheet.
const kItemGap = 1;
// Rows are asked for when less than this part of a view is ready on either side, and as far as that.
const kReady = 0.5;
const kAskedFor = 1.25;

/// The element with the items of a page item.
function itemsOf(pageItem) {
    return pageItem.querySelector(':scope > li > div > ul.comments');
}

function setSpace(element, name, height) {
    const value = `${height.toFixed(2)}px`;
    if (element.style.getPropertyValue(name) !== value) {
        element.style.setProperty(name, value);
    }
}

function spaceOf(element, name) {
    return parseFloat(element.style.getPropertyValue(name)) || 0;
}

function setAttribute(element, name, value) {
    if (element.getAttribute(name) !== String(value)) {
        element.setAttribute(name, String(value));
    }
}

export class PanelList {
    #element;
    #ask;
    #layout = new ListLayout();
    // The row at the top and how far it is scrolled; null for the beginning of the list.
    #anchor = null;
    #scrollTop = 0;
    #width = 0;
    #isPlaced = false; // the rows stand where the layout says
    #isAsking = false;
    #lastAsked = '';
    #revealed = null;
    #focused = null;
    /// Id of the current item that the list was last scrolled to.
    followed = null;

    /// `ask(from, to)` requests the rows between two places, `[page, item]` each.
    constructor(element, sizes, ask) {
        this.#element = element;
        this.#ask = ask;
        this.#layout.splicePages(0, 0, sizes);
        element.addEventListener('scroll', () => this.#scrolled(), {passive: true});
        for (const type of ['wheel', 'pointerdown', 'touchstart']) {
            element.addEventListener(type, () => this.#letGo(), {passive: true});
        }
    }

    get element() {
        return this.#element;
    }

    get itemCount() {
        return this.#layout.itemCount;
    }

    get pageCount() {
        return this.#layout.pageCount;
    }

    /// Whether all rows that can be seen stand in the frame.
    get isComplete() {
        return !this.#isVisible || (this.#isFilled && !this.#isAsking && !this.#revealed);
    }

    // --- Changes ---

    splicePages(at, removed, sizes) {
        this.#layout.splicePages(at, removed, sizes);
        this.#lastAsked = '';
        const anchor = this.#anchor;
        if (!anchor) {
            return;
        }
        if (removed > 0 && at <= anchor.page) {
            anchor.isRemoved = anchor.page < at + removed;
            anchor.page = anchor.isRemoved ? at : anchor.page - removed;
        }
        // What takes the place of a removed page item keeps its place, too. A single page item is
        // replaced by one that comes behind it before it goes.
        const isBefore = anchor.isRemoved ? at < anchor.page : at <= anchor.page;
        anchor.page += isBefore ? sizes.length : 0;
    }

    setSizes(at, sizes) {
        this.#layout.setSizes(at, sizes);
        this.#lastAsked = '';
    }

    /// Items of a page have come or gone.
    spliceItems(itemsElement, at, removed, added) {
        const page = this.rowOf(itemsElement)?.page;
        if (page === undefined) {
            return;
        }
        this.#layout.spliceItems(page, at, removed, added);
        this.#lastAsked = '';
        const anchor = this.#anchor;
        // What is inserted at the place of the item at the top stands before that item.
        if (anchor?.page === page && anchor.item !== null && at <= anchor.item) {
            anchor.item = Math.max(at, anchor.item - removed) + added;
        }
    }

    setFolded(pageElement, isFolded) {
        const page = this.rowOf(pageElement)?.page;
        if (page !== undefined) {
            this.#layout.setFolded(page, isFolded);
            this.#lastAsked = '';
        }
    }

    /// The rows that were asked for have come.
    answered() {
        this.#isAsking = false;
    }

    // --- Rows ---

    get #window() {
        return recordOf(this.#element).window;
    }

    /// The row of a page item or an item, or of an element inside; null outside the list.
    rowOf(element) {
        let inside = element;
        let item = null;
        while (inside && inside.parentElement !== this.#element) {
            const window = recordOf(inside.parentElement)?.window;
            if (window) {
                item = window.from + [...inside.parentElement.children].indexOf(inside);
            }
            inside = inside.parentElement;
        }
        if (!inside) {
            return null;
        }
        const page = this.#window.from + [...this.#element.children].indexOf(inside);
        return {page, item};
    }

    /// The element of a row, which can take the focus; null when it does not stand in the frame.
    elementOf({page, item}) {
        const pageItem = this.#element.children[page - this.#window.from];
        if (!pageItem || item === null) {
            return pageItem?.firstElementChild ?? null;
        }
        const items = itemsOf(pageItem);
        const from = items && recordOf(items)?.window?.from;
        return items?.children[item - from] ?? null;
    }

    /// Scrolls as little as possible to show a row, once it has come; the caption of a folded page.
    reveal(row) {
        const isFolded = this.#layout.isFolded(row.page);
        const shown = {page: row.page, item: isFolded ? null : row.item};
        this.#revealed = row.page < this.#layout.pageCount ? shown : null;
    }

    /// The same, and moves the focus there.
    focus(row) {
        this.reveal(row);
        this.#focused = this.#revealed;
    }

    isFolded({page}) {
        return this.#layout.isFolded(page);
    }

    /// The place of the list, for `restore` of a list with the same rows.
    get place() {
        return {anchor: this.#anchor, followed: this.followed};
    }

    restore({anchor, followed}) {
        this.#anchor = anchor;
        this.followed = followed;
        this.#scrollTop = Number.NaN;
    }

    // --- Layout ---

    get #isVisible() {
        return this.#element.clientHeight > 0;
    }

    // Whether all rows of the windows have come.
    get #isFilled() {
        const isFilled = (list) => {
            const {from, to} = recordOf(list).window;
            return list.children.length === to - from;
        };
        return isFilled(this.#element) && this.#shownItems().every(([, items]) => isFilled(items));
    }

    // Positions and elements of the page items in the frame, with the elements of their items.
    #shownItems() {
        const {from} = this.#window;
        return [...this.#element.children].flatMap((pageItem, index) => {
            const items = itemsOf(pageItem);
            return items && recordOf(items)?.window ? [[from + index, items, pageItem]] : [];
        });
    }

    /// To be called before changes: notes which row is at the top.
    note() {
        if (
            this.#isPlaced &&
            this.#isVisible &&
            Math.abs(this.#element.scrollTop - this.#scrollTop) >= 1
        ) {
            this.#noteAt(this.#element.scrollTop);
        }
    }

    #noteAt(scrollTop) {
        this.#scrollTop = scrollTop;
        if (scrollTop < 1 || this.#layout.pageCount === 0) {
            this.#anchor = null;
            return;
        }
        const row = this.#layout.rowAt(scrollTop + this.#layout.lead);
        this.#anchor = {...row, offset: scrollTop - this.#layout.placeOf(row).top};
    }

    #scrolled() {
        this.note();
        this.#request();
    }

    // The user scrolls from here on.
    #letGo() {
        this.#revealed = null;
    }

    /// To be called after changes and when the size of the list may have changed.
    settle() {
        this.#isPlaced = this.#isVisible && this.#isFilled;
        if (!this.#isPlaced) {
            return;
        }
        const width = this.#element.clientWidth;
        if (width !== this.#width) {
            this.#layout.forget();
            this.#width = width;
        }
        this.#measure();
        this.#placeRows();
        this.#scroll();
        this.#moveFocus();
        this.#request();
    }

    #measure() {
        const layout = this.#layout;
        for (const [page, items, pageItem] of this.#shownItems()) {
            const whole = pageItem.getBoundingClientRect();
            const isFolded = pageItem.firstElementChild.hasAttribute('wb-collapsed');
            layout.setFolded(page, isFolded);
            if (isFolded) {
                layout.measurePage(page, whole.height);
                continue;
            }
            const {from} = recordOf(items).window;
            const boxes = [...items.children].map((item) => item.getBoundingClientRect());
            let sum = spaceOf(items, '--wb-items-before') + spaceOf(items, '--wb-items-after');
            boxes.forEach((box, index) => {
                const next = boxes[index + 1];
                const height = next ? next.top - box.top : box.height + kItemGap;
                layout.measureItem(page, from + index, height);
                sum += height;
            });
            layout.measurePage(page, whole.height - sum);
            if (boxes.length > 0) {
                layout.lead = boxes[0].top - spaceOf(items, '--wb-items-before') - whole.top;
            }
        }
        layout.estimate();
    }

    // Keeps the space of the rows that do not stand in the frame free, and tells screen readers how
    // many there are.
    #placeRows() {
        const layout = this.#layout;
        const {from, to} = this.#window;
        setSpace(this.#element, '--wb-pages-before', layout.topOfPage(from));
        setSpace(this.#element, '--wb-pages-after', layout.height - layout.topOfPage(to));
        for (const [page, items, pageItem] of this.#shownItems()) {
            const {window} = recordOf(items);
            setSpace(items, '--wb-items-before', layout.heightBefore(page, window.from));
            setSpace(items, '--wb-items-after', layout.heightFrom(page, window.to));
            setAttribute(pageItem.firstElementChild, 'aria-posinset', page + 1);
            setAttribute(pageItem.firstElementChild, 'aria-setsize', layout.pageCount);
            [...items.children].forEach((item, index) => {
                setAttribute(item, 'aria-posinset', window.from + index + 1);
                setAttribute(item, 'aria-setsize', layout.countOf(page));
            });
        }
    }

    #scroll() {
        if (this.#revealed && this.#revealed.page >= this.#layout.pageCount) {
            this.#revealed = null; // removed meanwhile
        }
        const target = this.#revealed ? this.#targetOf(this.#revealed) : this.#anchoredTop();
        if (Math.abs(this.#element.scrollTop - target) >= 1) {
            this.#element.scrollTop = target;
        }
        if (this.#revealed) {
            this.#noteAt(this.#element.scrollTop);
            this.#revealed = this.elementOf(this.#revealed) ? null : this.#revealed;
        } else {
            this.#scrollTop = this.#element.scrollTop;
        }
    }

    #anchoredTop() {
        const anchor = this.#anchor;
        if (!anchor || this.#layout.pageCount === 0) {
            return 0;
        }
        anchor.isRemoved = false;
        const page = Math.min(anchor.page, this.#layout.pageCount - 1);
        const most = this.#layout.countOf(page) - 1;
        const item = anchor.item === null || most < 0 ? null : Math.min(anchor.item, most);
        return Math.max(0, this.#layout.placeOf({page, item}).top + anchor.offset);
    }

    #targetOf(row) {
        const {top, height} = this.#layout.placeOf(row);
        const covered = row.item === null ? 0 : this.#layout.lead;
        const {clientHeight} = this.#element;
        const now = this.#anchoredTop();
        if (top - covered < now || height > clientHeight - covered) {
            return Math.max(0, top - covered);
        }
        return Math.max(now, top + height - clientHeight);
    }

    #moveFocus() {
        const element = this.#focused && this.elementOf(this.#focused);
        if (element) {
            this.#focused = null;
            element.focus({preventScroll: true});
        }
    }

    // --- Rows that are missing ---

    #request() {
        if (this.#isAsking || this.#layout.pageCount === 0 || !this.#isVisible) {
            return;
        }
        if (this.#covers(this.#rowsAround(kReady))) {
            return;
        }
        const [from, to] = this.#rowsAround(kAskedFor);
        const asked = JSON.stringify([from, to]);
        if (asked !== this.#lastAsked) {
            this.#lastAsked = asked;
            this.#isAsking = this.#ask(from, to);
        }
    }

    // Places of the first row and behind the last one within some views around the visible part.
    #rowsAround(views) {
        const {scrollTop, clientHeight} = this.#element;
        const first = this.#layout.rowAt(scrollTop - views * clientHeight);
        const last = this.#layout.rowAt(scrollTop + (1 + views) * clientHeight);
        return [
            [first.page, first.item ?? 0],
            [last.page, last.item === null ? 0 : last.item + 1],
        ];
    }

    #covers([[firstPage, firstItem], [lastPage, lastItem]]) {
        const {from, to} = this.#window;
        if (firstPage < from || lastPage >= to) {
            return false;
        }
        return this.#shownItems().every(([page, items]) => {
            if (page < firstPage || page > lastPage || this.#layout.isFolded(page)) {
                return true;
            }
            const {window} = recordOf(items);
            const begin = page === firstPage ? firstItem : 0;
            const end = page === lastPage ? lastItem : this.#layout.countOf(page);
            return begin >= end || (window.from <= begin && window.to >= end);
        });
    }
}
