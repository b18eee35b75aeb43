// Zoom of one view: a fixed scale or fit to width. All pages derive their size from one style
// property; the point under the pointer, or in the middle, keeps its position.

import {lastAtOrAbove} from './column-search.js';

/// Mode in which a page is as wide as the view.
export const kFitWidth = 'width';

const kSteps = [
    0.1, 0.25, 0.33, 0.5, 0.67, 0.75, 0.9, 1, 1.1, 1.25, 1.5, 1.75, 2, 2.5, 3, 4, 5, 6.4,
];
const kWheelFactor = 0.002;
const kRoomAround = 24;

export class Zoom {
    #scroller;
    #column;
    #onChange;
    #pageWidth = 816;
    #columnWidth = 0;
    #sizes;
    scale = 1;
    mode = kFitWidth;

    constructor(scroller, column, onChange) {
        this.#scroller = scroller;
        this.#column = column;
        this.#onChange = onChange;
        this.#sizes = new ResizeObserver(() => this.#centre());
        this.#sizes.observe(column);
        scroller.addEventListener('wheel', (event) => this.#wheel(event), {passive: false});
        this.#apply(1);
    }

    close() {
        this.#sizes.disconnect();
    }

    setPageWidth(width) {
        this.#pageWidth = width;
        this.refit();
    }

    fitWidth() {
        this.mode = kFitWidth;
        this.refit();
    }

    refit() {
        const room = this.#scroller.clientWidth - kRoomAround;
        if (this.mode === kFitWidth && room > 0) {
            this.#change(room / this.#pageWidth);
        }
    }

    // Pages that are wider than the one that fits stand out on both sides.
    #centre() {
        const {scrollWidth, clientWidth} = this.#scroller;
        if (this.mode === kFitWidth && scrollWidth !== this.#columnWidth) {
            const isMirrored = getComputedStyle(this.#scroller).direction === 'rtl';
            this.#scroller.scrollLeft = ((scrollWidth - clientWidth) / 2) * (isMirrored ? -1 : 1);
        }
        this.#columnWidth = scrollWidth;
    }

    setScale(scale, anchor = null) {
        this.mode = 'scale';
        this.#change(scale, anchor);
    }

    step(forward) {
        const next = forward
            ? kSteps.find((step) => step > this.scale * 1.01)
            : kSteps.findLast((step) => step < this.scale * 0.99);
        this.setScale(next ?? this.scale);
    }

    #wheel(event) {
        if (!event.ctrlKey && !event.metaKey) {
            return;
        }
        event.preventDefault();
        const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 32 : 1;
        const box = this.#scroller.getBoundingClientRect();
        const anchor = {x: event.clientX - box.left, y: event.clientY - box.top};
        this.setScale(this.scale * Math.exp(-event.deltaY * lines * kWheelFactor), anchor);
    }

    #change(wanted, anchor) {
        const scale = Math.min(kSteps[kSteps.length - 1], Math.max(kSteps[0], wanted));
        if (Math.abs(scale - this.scale) < 0.0005) {
            this.#onChange();
            return;
        }
        const {clientWidth, clientHeight} = this.#scroller;
        const point = anchor ?? {x: clientWidth / 2, y: clientHeight / 2};
        const held = this.#hold(point);
        this.#apply(scale);
        held?.();
        this.#onChange();
    }

    #apply(scale) {
        this.scale = scale;
        this.#column.style.setProperty('--scale', scale);
    }

    // Saves the page position at a point of the view; the returned function restores it.
    #hold({x, y}) {
        const box = this.#scroller.getBoundingClientRect();
        const page = this.#pageAt(box.top + y);
        if (!page) {
            return null;
        }
        const before = page.getBoundingClientRect();
        const across = (box.left + x - before.left) / before.width;
        const down = (box.top + y - before.top) / before.height;
        return () => {
            const after = page.getBoundingClientRect();
            this.#scroller.scrollTop += after.top + down * after.height - (box.top + y);
            this.#scroller.scrollLeft += after.left + across * after.width - (box.left + x);
        };
    }

    #pageAt(y) {
        const pages = this.#column.children;
        const topOf = (index) => pages[index].getBoundingClientRect().top;
        return pages[lastAtOrAbove(pages.length, y, topOf)] ?? null;
    }
}
