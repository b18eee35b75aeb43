// Drawing tools for pages. The pointer clicks a place or drags a rectangle; the keyboard moves a
// frame in the middle of the view with the arrow keys, resizes it with Shift, and places it with
// Enter. A tool that marks text marks what is selected on a page at once, else the words that the
// pointer is dragged over; beside words it draws a rectangle like the others.

import {placeOnPage} from './comment-places.js';
import {isOnWords, keepSelectionNear, selectBelow, selectedLines} from './text-selection.js';
import {subtypeName, text} from './texts.js';

/// Tools in order; those with a subtype add an annotation of it.
export const kTools = [
    {name: 'select'},
    {name: 'note', subtype: 'Text', fixedSize: 20},
    {name: 'highlight', subtype: 'Highlight', marksText: true},
    {name: 'underline', subtype: 'Underline', marksText: true},
    {name: 'strikeout', subtype: 'StrikeOut', marksText: true},
    {name: 'rectangle', subtype: 'Square'},
    {name: 'oval', subtype: 'Circle'},
];

/// A tool's name: that of its subtype in the panel.
export function toolName({subtype}) {
    return subtype ? subtypeName(subtype) : text('tool.select');
}

const kSmallestDrag = 4;
const kKeyStep = 8;
const kKeyFrame = {width: 120, height: 40};
const kArrows = {
    ArrowLeft: [-kKeyStep, 0],
    ArrowRight: [kKeyStep, 0],
    ArrowUp: [0, -kKeyStep],
    ArrowDown: [0, kKeyStep],
};

function percent(part, whole) {
    return `${(100 * part) / whole}%`;
}

// Places an element inside another one of the given size, in fractions, for every zoom.
function place({style}, {x, y, width, height}, whole) {
    style.left = percent(x, whole.width);
    style.top = percent(y, whole.height);
    style.width = percent(width, whole.width);
    style.height = percent(height, whole.height);
}

// A position in PDF user space, in hundredths of a unit.
function pdfPoint({viewport}, x, y) {
    return viewport.convertToPdfPoint(x, y).map((value) => Math.round(value * 100) / 100);
}

function around(boxes) {
    const left = Math.min(...boxes.map((box) => box.left));
    const top = Math.min(...boxes.map((box) => box.top));
    const right = Math.max(...boxes.map((box) => box.right));
    const bottom = Math.max(...boxes.map((box) => box.bottom));
    return {left, top, right, bottom, width: right - left, height: bottom - top};
}

// Corners of a box clockwise from its top left one, and where those of a text begin that is turned.
const kCorners = [
    ['left', 'top'],
    ['right', 'top'],
    ['right', 'bottom'],
    ['left', 'bottom'],
];
// The order of /QuadPoints: top left, top right, bottom left, bottom right.
const kQuadOrder = [0, 1, 3, 2];

// The corners of boxes as /QuadPoints.
function quadsOf(page, boxes) {
    const whole = page.element.getBoundingClientRect();
    const point = (x, y) =>
        pdfPoint(
            page,
            ((x - whole.left) / whole.width) * page.viewport.width,
            ((y - whole.top) / whole.height) * page.viewport.height,
        );
    return boxes.flatMap((box) =>
        kQuadOrder.flatMap((corner) => {
            const [x, y] = kCorners[(corner + box.turns) % kCorners.length];
            return point(box[x], box[y]);
        }),
    );
}

export class Tools {
    #edits;
    #notices;
    #onChange;
    #tool = kTools[0];
    #frame = null;
    #views = new WeakMap(); // by their scrollers

    /// `onChange(name)` is called when the tool changes.
    constructor(edits, notices, onChange) {
        this.#edits = edits;
        this.#notices = notices;
        this.#onChange = onChange;
    }

    get name() {
        return this.#tool.name;
    }

    get isForDrawing() {
        return Boolean(this.#tool.subtype);
    }

    choose(name) {
        const tool = kTools.find((one) => one.name === name);
        if (tool.marksText && this.#markSelection(tool)) {
            return;
        }
        this.#tool = tool;
        this.#dropFrame();
        document.documentElement.dataset.tool = name;
        this.#onChange(name);
        if (this.isForDrawing) {
            this.#notices.say(text('tool.hint'));
        }
    }

    /// Adds the listeners to a view.
    serve(view) {
        this.#views.set(view.scroller, view);
        view.scroller.addEventListener('pointerdown', (event) => this.#pointerDown(view, event));
        view.scroller.addEventListener('keydown', (event) => this.#key(view, event));
    }

    #isDrawing(view) {
        return this.isForDrawing && view.description?.readOnly === false;
    }

    // --- Selected text ---

    // Returns false when no text is selected.
    #markSelection(tool) {
        const selected = selectedLines();
        const view = this.#views.get(selected?.page.closest('.scroller'));
        const page = view?.pageView(Number(selected.page.dataset.page));
        if (!page?.viewport) {
            return false;
        }
        this.choose('select');
        const marking = this.#showMarking(page, selected.lines, tool);
        const quads = quadsOf(page, selected.lines);
        this.#write(view, marking, {page: page.index, subtype: tool.subtype, quads});
        return true;
    }

    // The selection is not visible while its comment is written.
    #showMarking(page, lines, {name}) {
        const whole = page.element.getBoundingClientRect();
        const all = around(lines);
        const marking = document.createElement('div');
        marking.className = 'marking';
        place(marking, {...all, x: all.left - whole.left, y: all.top - whole.top}, whole);
        for (const line of lines) {
            const box = document.createElement('div');
            box.className = `drawing ${name}${line.turns === 0 ? '' : ' turned'}`;
            const {width, height} = around([line]);
            place(box, {x: line.left - all.left, y: line.top - all.top, width, height}, all);
            marking.append(box);
        }
        page.element.append(marking);
        return marking;
    }

    // --- Frame ---

    // `x`, `y`, `width`, `height` in CSS pixels of the page on the screen.
    #showFrame(page, box) {
        if (!this.#frame) {
            this.#frame = {element: document.createElement('div')};
            this.#frame.element.className = `drawing ${this.#tool.name}`;
        }
        this.#frame.page = page;
        this.#frame.box = box;
        place(this.#frame.element, box, page.element.getBoundingClientRect());
        page.element.append(this.#frame.element);
    }

    #dropFrame() {
        this.#frame?.element.remove();
        this.#frame = null;
    }

    #place(view) {
        const {page, box, element} = this.#frame;
        const {subtype, fixedSize} = this.#tool;
        const {scale} = view.zoom;
        const corner = (x, y) => pdfPoint(page, x / scale, y / scale);
        const [x1, y1] = corner(box.x, box.y);
        const [x2, y2] = fixedSize
            ? [x1 + fixedSize, y1 - fixedSize]
            : corner(box.x + box.width, box.y + box.height);
        const rect = [Math.min(x1, x2), Math.min(y1, y2), Math.max(x1, x2), Math.max(y1, y2)];
        this.#frame = null;
        this.choose('select');
        this.#write(view, element, {page: page.index, subtype, rect});
    }

    // What is drawn stays until the contents are written; another frame can be drawn meanwhile.
    async #write(view, element, comment) {
        const box = () => element.getBoundingClientRect();
        await this.#edits.add(view.description, comment, placeOnPage(box));
        element.remove();
    }

    // --- Pointer ---

    #pointerDown(view, event) {
        const isForWords = event.button === 0 && event.pointerType !== 'touch' && isOnWords(event);
        const marks = isForWords && this.#tool.marksText && this.#isDrawing(view);
        if (marks || (isForWords && !this.isForDrawing)) {
            const select = event.target.matches('.annotation') ? selectBelow : keepSelectionNear;
            select(event, view.scroller);
        }
        if (marks) {
            this.#markWhenReleased(this.#tool);
            return;
        }
        const page = view.pageView(Number(event.target.closest('.page')?.dataset.page));
        if (!this.#isDrawing(view) || event.button !== 0 || !page?.viewport) {
            return;
        }
        event.preventDefault();
        view.scroller.focus({preventScroll: true});
        const origin = page.element.getBoundingClientRect();
        const at = (moved) => ({
            x: Math.max(0, Math.min(moved.clientX - origin.left, origin.width)),
            y: Math.max(0, Math.min(moved.clientY - origin.top, origin.height)),
        });
        this.#follow(view, page, at(event), at, event.pointerId);
    }

    // The browser itself selects the words meanwhile.
    #markWhenReleased(tool) {
        const release = ({type}) => {
            removeEventListener('pointerup', release);
            removeEventListener('pointercancel', release);
            if (type === 'pointerup' && this.#tool === tool) {
                this.#markSelection(tool);
            }
        };
        addEventListener('pointerup', release);
        addEventListener('pointercancel', release);
    }

    #follow(view, page, start, at, pointer) {
        const {scroller} = view;
        scroller.setPointerCapture(pointer);
        this.#showFrame(page, {...start, width: 0, height: 0});
        const move = (moved) => {
            const end = at(moved);
            this.#showFrame(page, {
                x: Math.min(start.x, end.x),
                y: Math.min(start.y, end.y),
                width: Math.abs(end.x - start.x),
                height: Math.abs(end.y - start.y),
            });
        };
        const stop = (event) => {
            scroller.removeEventListener('pointermove', move);
            scroller.removeEventListener('pointerup', stop);
            scroller.removeEventListener('pointercancel', stop);
            this.#finish(view, event.type === 'pointerup');
        };
        scroller.addEventListener('pointermove', move);
        scroller.addEventListener('pointerup', stop);
        scroller.addEventListener('pointercancel', stop);
    }

    #finish(view, isMeant) {
        if (!this.#frame) {
            return;
        }
        const {width, height} = this.#frame.box;
        const isLarge = width >= kSmallestDrag && height >= kSmallestDrag;
        if (isMeant && (isLarge || this.#tool.fixedSize)) {
            this.#place(view);
        } else {
            this.#dropFrame();
        }
    }

    // --- Keyboard ---

    #key(view, event) {
        if (!this.#isDrawing(view) || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        if (event.key === 'Escape') {
            this.choose('select');
        } else if (event.key === 'Enter') {
            this.#enter(view);
        } else if (kArrows[event.key] && this.#frame) {
            this.#moveFrame(kArrows[event.key], event.shiftKey);
        } else {
            return;
        }
        event.preventDefault();
    }

    // The first press shows the frame, the second one places it.
    #enter(view) {
        if (this.#frame) {
            this.#place(view);
            return;
        }
        const page = view.pageView(view.currentPage);
        if (!page?.viewport) {
            return;
        }
        const seen = view.scroller.getBoundingClientRect();
        const origin = page.element.getBoundingClientRect();
        const size = this.#tool.fixedSize ? {width: 20, height: 20} : kKeyFrame;
        this.#showFrame(page, {
            x: (origin.width - size.width) / 2,
            y: Math.max(0, seen.top + seen.height / 2 - origin.top - size.height / 2),
            ...size,
        });
        this.#notices.say(text('tool.frameHint'));
    }

    #moveFrame([across, down], isResizing) {
        const {page, box} = this.#frame;
        if (isResizing) {
            box.width = Math.max(kKeyStep, box.width + across);
            box.height = Math.max(kKeyStep, box.height + down);
        } else {
            box.x = Math.max(0, Math.min(box.x + across, page.element.clientWidth - box.width));
            box.y = Math.max(0, Math.min(box.y + down, page.element.clientHeight - box.height));
        }
        this.#showFrame(page, box);
    }
}
