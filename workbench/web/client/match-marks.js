// Marks of a searched text in the items that stand in the panel's frame, where the browser can
// highlight ranges. Texts are compared as the server's search does: with one space for white space,
// without case. Author and subject of the current item, which only its tooltip shows, become a line
// of the item when the text is found there alone.

const kHighlight = 'wb-match';
const kLine = 'wb-found';
// Length of the part of a text that is looked through.
const kLongestText = 20000;
const kWhiteSpace = /[\t-\r \u00a0]/;

function foldUnit(unit) {
    const upper = unit.toUpperCase();
    return upper.length === 1 ? upper.toLowerCase() : unit;
}

function fold(words) {
    return [...words.replace(new RegExp(`${kWhiteSpace.source}+`, 'g'), ' ')]
        .map(foldUnit)
        .join('');
}

const isInLine = (element) =>
    element.ownerDocument.defaultView.getComputedStyle(element).display.startsWith('inline');

// The folded text of an element, with node and offset of each unit.
function readText(element) {
    const places = [];
    let folded = '';
    const add = (unit, node, offset) => {
        if (unit !== ' ' || !folded.endsWith(' ')) {
            folded += unit;
            places.push({node, offset});
        }
    };
    const walker = element.ownerDocument.createTreeWalker(
        element,
        NodeFilter.SHOW_TEXT | NodeFilter.SHOW_ELEMENT,
    );
    while (walker.nextNode() && places.length < kLongestText) {
        const node = walker.currentNode;
        if (node.nodeType === Node.TEXT_NODE) {
            const units = node.data.slice(0, kLongestText).split('');
            units.forEach((unit, at) =>
                add(kWhiteSpace.test(unit) ? ' ' : foldUnit(unit), node, at),
            );
        } else if (!isInLine(node)) {
            add(' ', node, 0);
        }
    }
    return {folded, places};
}

function rangesOf(wanted, element) {
    const {folded, places} = readText(element);
    const ranges = [];
    for (
        let at = folded.indexOf(wanted);
        at >= 0;
        at = folded.indexOf(wanted, at + wanted.length)
    ) {
        const [first, last] = [places[at], places[at + wanted.length - 1]];
        const range = element.ownerDocument.createRange();
        range.setStart(first.node, first.offset);
        range.setEnd(last.node, last.offset + (last.node.nodeType === Node.TEXT_NODE ? 1 : 0));
        ranges.push(range);
    }
    return ranges;
}

export class MatchMarks {
    #document;
    #popupOf;
    #change;
    #line = null;

    /// `popupOf(item)` is the tooltip of an item, null until its contents have come; `change(act)`
    /// carries out a change of an item's height.
    constructor(frameDocument, popupOf, change) {
        this.#document = frameDocument;
        this.#popupOf = popupOf;
        this.#change = change;
    }

    /// Marks a text in a list, in place of another one; an empty text or no list leaves no mark.
    /// `match` is the current item if the text is in its contents, author or subject.
    mark(words, list, match) {
        const {CSS: styles, Highlight} = this.#document.defaultView;
        const wanted = fold(words);
        const contents = wanted && list ? list.querySelectorAll('ul.comments > li > p') : [];
        const ranges = [...contents].flatMap((element) => rangesOf(wanted, element));
        const isShown = ranges.some(({startContainer}) => match?.contains(startContainer));
        this.#showLine(match, wanted && match && !isShown ? this.#lineFor(wanted, match) : '');
        if (this.#line) {
            ranges.push(...rangesOf(wanted, this.#line));
        }
        if (!Highlight) {
            return;
        }
        styles.highlights.delete(kHighlight);
        if (ranges.length > 0) {
            styles.highlights.set(kHighlight, new Highlight(...ranges));
        }
    }

    // Subject and author, the first row of the tooltip, if the text is in one of them.
    #lineFor(wanted, item) {
        const cells = [...(this.#popupOf(item)?.querySelector('tr')?.cells ?? [])];
        return cells.some((cell) => readText(cell).folded.includes(wanted))
            ? cells.map((cell) => cell.textContent).join(' ')
            : '';
    }

    #showLine(item, words) {
        const isSame = this.#line?.parentElement === item && this.#line.textContent === words;
        if (isSame || (!this.#line && !words)) {
            return;
        }
        this.#change(() => {
            this.#line?.remove();
            this.#line = null;
            if (words) {
                this.#line = this.#document.createElement(kLine);
                this.#line.dir = 'auto';
                this.#line.textContent = words;
                item.append(this.#line);
            }
        });
    }
}
