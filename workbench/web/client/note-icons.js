// Icons of the annotations of a page that are shown as an icon and have no appearance of their own,
// in one picture: a page may have thousands.

const kSubtypes = new Set(['Text', 'FileAttachment', 'Sound']);
const kSvg = 'http://www.w3.org/2000/svg';
// A sheet of 24 pixels, and the two lines on it, from its upper left corner.
const kSheet = 'm0 24v-21a3 3 0 0 1 3-3h18a3 3 0 0 1 3 3v18a3 3 0 0 1-3 3z';
const kLines = 'm5 8.5h14m-14 6h14';

export class NoteIcons {
    #shown = '';
    #sheets = document.createElementNS(kSvg, 'path');
    #lines = document.createElementNS(kSvg, 'path');
    element = document.createElementNS(kSvg, 'svg');

    constructor() {
        this.element.setAttribute('class', 'note-icons');
        this.element.setAttribute('aria-hidden', 'true');
        this.#sheets.setAttribute('class', 'sheet');
        this.#lines.setAttribute('class', 'lines');
        this.element.append(this.#sheets, this.#lines);
    }

    /// Shows the icons of a page's annotations; `placeOf(rect, viewport)` is the box of one.
    show(annotations, viewport, placeOf) {
        const corners = annotations
            .filter(({subtype, appearance}) => kSubtypes.has(subtype) && !appearance)
            .map(({rect}) => placeOf(rect, viewport))
            .map(({left, top}) => [left.toFixed(1), top.toFixed(1)]);
        const shown = `${viewport.width} ${viewport.height} ${corners.join()}`;
        if (shown === this.#shown) {
            return;
        }
        this.#shown = shown;
        this.element.setAttribute('viewBox', `0 0 ${viewport.width} ${viewport.height}`);
        const draw = (path, shape) =>
            path.setAttribute('d', corners.map(([x, y]) => `M${x} ${y}${shape}`).join(''));
        draw(this.#sheets, kSheet);
        draw(this.#lines, kLines);
    }
}
