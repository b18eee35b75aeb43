// Text that is selected on a page, as boxes of its lines, and selection of text that comments cover.

// A longer gap between two pieces of a line, as a share of its height, separates columns.
const kWidestGap = 1;
// A shorter drag is a click, in pixels.
const kShortestDrag = 4;

function overlap(one, other, from, to) {
    return Math.min(one[to], other[to]) - Math.max(one[from], other[from]);
}

// The selected part of a text node; null when it is blank.
function partOf(range, node) {
    const part = document.createRange();
    part.selectNodeContents(node);
    if (node === range.startContainer) {
        part.setStart(node, range.startOffset);
    }
    if (node === range.endContainer) {
        part.setEnd(node, range.endOffset);
    }
    return part.toString().trim() ? part : null;
}

// Clockwise quarter turns of a text on the screen, those of its page included.
function turnsOf({style}, words) {
    const own = Number.parseFloat(style.getPropertyValue('--rotate')) || 0;
    const page = Number(words.dataset.mainRotation ?? 0);
    return ((Math.round((own + page) / 90) % 4) + 4) % 4;
}

// The glyphs of the browser's own font may be taller than the line that the element stands for.
function boxesOf(part, {parentElement}, words) {
    const turns = turnsOf(parentElement, words);
    const line = parentElement.getBoundingClientRect();
    return [...part.getClientRects()]
        .map((box) => ({
            left: Math.max(box.left, line.left),
            top: Math.max(box.top, line.top),
            right: Math.min(box.right, line.right),
            bottom: Math.min(box.bottom, line.bottom),
            turns,
        }))
        .filter(({left, top, right, bottom}) => left < right && top < bottom);
}

// Whether a box continues the line of the one before.
function continues(box, before) {
    const sides = [
        ['left', 'right'],
        ['top', 'bottom'],
    ];
    const [along, across] = box.turns % 2 === 0 ? sides : sides.toReversed();
    const height = Math.min(overlap(box, box, ...across), overlap(before, before, ...across));
    return (
        box.turns === before.turns &&
        overlap(box, before, ...across) > height / 2 &&
        overlap(box, before, ...along) > -kWidestGap * height
    );
}

function mergeLines(boxes) {
    const lines = [];
    for (const box of boxes) {
        const line = lines.at(-1);
        if (line && continues(box, line)) {
            line.left = Math.min(line.left, box.left);
            line.top = Math.min(line.top, box.top);
            line.right = Math.max(line.right, box.right);
            line.bottom = Math.max(line.bottom, box.bottom);
        } else {
            lines.push(box);
        }
    }
    return lines;
}

function linesIn(range, words) {
    const boxes = [];
    const walker = document.createTreeWalker(words, NodeFilter.SHOW_TEXT);
    for (let node = walker.nextNode(); node; node = walker.nextNode()) {
        const part = range.intersectsNode(node) ? partOf(range, node) : null;
        boxes.push(...(part ? boxesOf(part, node, words) : []));
    }
    return mergeLines(boxes);
}

/// The lines of the selected text as boxes in window coordinates (`turns`: clockwise quarter turns of
/// their text), with the element of their page; null when no text of a page is selected. Of a
/// selection over several pages, the first one.
export function selectedLines() {
    const selection = getSelection();
    const range = selection.rangeCount > 0 ? selection.getRangeAt(0) : null;
    for (const words of range ? document.querySelectorAll('.page-words') : []) {
        const lines = range.intersectsNode(words) ? linesIn(range, words) : [];
        if (lines.length > 0) {
            return {page: words.closest('.page'), lines};
        }
    }
    return null;
}

/// Whether a pointer event is on words of a page, with or without comments over them.
export function isOnWords({clientX, clientY}) {
    return document
        .elementsFromPoint(clientX, clientY)
        .some((element) => element.matches('.page-words span'));
}

// The place in the words of a page; null outside them.
function caretAt({clientX, clientY}) {
    const {offsetNode, offset} = document.caretPositionFromPoint?.(clientX, clientY) ?? {};
    const isInWords = offsetNode?.nodeType === Node.TEXT_NODE;
    return isInWords && offsetNode.parentElement.closest('.page-words')
        ? [offsetNode, offset]
        : null;
}

// The word of a page that is nearest to a place, in the line there if there is one.
function nearestWord(words, {clientX, clientY}) {
    const isUpright = Number(words.dataset.mainRotation ?? 0) % 180 === 0;
    let nearest = null;
    let least = [Infinity, Infinity];
    for (const word of words.querySelectorAll('span:not(.markedContent)')) {
        const {left, top, right, bottom} = word.getBoundingClientRect();
        const sides = [
            Math.max(top - clientY, clientY - bottom, 0),
            Math.max(left - clientX, clientX - right, 0),
        ];
        const [across, along] = isUpright ? sides : sides.toReversed();
        if (across < least[0] || (across === least[0] && along < least[1])) {
            nearest = word;
            least = [across, along];
        }
    }
    return nearest;
}

function wordsAt({clientX, clientY}) {
    const isPage = (element) => element.matches('.page');
    const page = document.elementsFromPoint(clientX, clientY).find(isPage);
    return page?.querySelector('.page-words') ?? null;
}

// The nearest place in a word.
function caretIn(word, {clientX, clientY}) {
    const {left, top, right, bottom} = word.getBoundingClientRect();
    const between = (least, value, most) => Math.max(least + 1, Math.min(value, most - 1));
    const caret = caretAt({
        clientX: between(left, clientX, right),
        clientY: between(top, clientY, bottom),
    });
    return caret && word.contains(caret[0]) ? caret : null;
}

// Extends the selection to the words at a place, or to those that are nearest to it.
function extendTo(event) {
    const words = getSelection().rangeCount > 0 ? wordsAt(event) : null;
    const word = words && !isOnWords(event) ? nearestWord(words, event) : null;
    const caret = word ? caretIn(word, event) : caretAt(event);
    if (words && caret) {
        getSelection().extend(...caret);
    }
}

function isSelected([node, offset]) {
    const selection = getSelection();
    return !selection.isCollapsed && selection.getRangeAt(0).isPointInRange(node, offset);
}

// Calls `move` for the pointer over the pages until its button is released, and `stop` then. No drag
// of selected text begins meanwhile.
function followPointer(scroller, move, stop) {
    const listening = new AbortController();
    const {signal} = listening;
    const end = () => {
        listening.abort();
        stop();
    };
    const moved = (event) => (event.buttons & 1 ? move(event) : end());
    scroller.addEventListener('pointermove', moved, {signal});
    scroller.addEventListener('dragstart', (event) => event.preventDefault(), {signal});
    window.addEventListener('pointerup', end, {signal});
    window.addEventListener('pointercancel', end, {signal});
}

/// Keeps a selection to the words near the pointer, which begins it on words at `pressed`. Between
/// words a browser goes on to the end of the page; a cover below them has it leave the selection
/// alone.
export function keepSelectionNear(pressed, scroller) {
    const cover = document.createElement('div');
    cover.className = 'words-cover';
    const layBelow = (event) => {
        const words = wordsAt(event);
        if (words && cover.parentElement !== words) {
            words.append(cover);
        }
    };
    const caret = caretAt(pressed);
    let isOnSelected = caret && !pressed.shiftKey && isSelected(caret);
    const move = (event) => {
        layBelow(event);
        if (isOnSelected) {
            getSelection().collapse(...caret);
            isOnSelected = false;
        }
        if (!isOnWords(event)) {
            extendTo(event);
        }
    };
    layBelow(pressed);
    followPointer(scroller, move, () => cover.remove());
}

/// Selects the words below a comment when the pointer is dragged from `pressed`, an event on the
/// comment's button, where the browser itself begins no selection. A click stays the button's.
export function selectBelow(pressed, scroller) {
    const {classList} = document.documentElement;
    const begin = () => {
        scroller.setPointerCapture(pressed.pointerId); // takes the click, too
        scroller.focus({preventScroll: true});
        classList.add('selecting'); // lets the pointer through to the words
        getSelection().collapse(...(caretAt(pressed) ?? [null]));
    };
    const move = (moved) => {
        const {clientX, clientY} = pressed;
        const isClick =
            Math.hypot(moved.clientX - clientX, moved.clientY - clientY) < kShortestDrag;
        if (!isClick && !classList.contains('selecting')) {
            begin();
        }
        if (classList.contains('selecting')) {
            extendTo(moved);
        }
    };
    followPointer(scroller, move, () => classList.remove('selecting'));
}
