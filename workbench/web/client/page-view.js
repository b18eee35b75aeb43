// View of one page: a placeholder of the page's size, with an image only while it is near the
// visible area. The old image stays until the new one is ready.

import {AnnotationsLayer} from './annotations-layer.js';
import {nextFrame} from './slices.js';
import {text} from './texts.js';

const kMostPixels = 2 ** 24;
const kMostWordsAtOnce = 1000;
const kWordsInPart = 250;
// Tolerance between measured and computed positions, in pixels.
const kRounding = 1;
/// CSS pixels per point at the scale of 1.
export const kPixelsPerPoint = 96 / 72;

// A page may have tens of thousands of words; the browser lays out and paints each part by itself.
function divide(words) {
    const all = [...words.childNodes];
    if (all.length <= kMostWordsAtOnce) {
        return;
    }
    for (let at = 0; at < all.length; at += kWordsInPart) {
        const part = document.createElement('div');
        part.className = 'words-part';
        part.append(...all.slice(at, at + kWordsInPart));
        words.append(part);
    }
}

export class PageView {
    #index;
    #reader;
    #actions;
    #failure = null;
    #task = null;
    #wanted = '';
    #drawn = '';
    #canvas = null;
    #detail = null;
    #words = null;
    #wordsRevision = null;
    element = document.createElement('div');
    /// The annotations; null until the page is first drawn, as most of a long document never are.
    layer = null;
    viewport = null;
    /// The list of annotations shown on the page.
    shownList = null;
    /// Revision whose page could not be drawn; drawn again when the page next comes near the
    /// visible area.
    failedRevision = null;

    /// `reader` creates the page's text layer.
    constructor(index, reader, actions) {
        this.#index = index;
        this.#reader = reader;
        this.#actions = actions;
        this.element.className = 'page';
        this.element.dataset.page = index;
        this.element.setAttribute('role', 'group');
    }

    get index() {
        return this.#index;
    }

    #makeLayer() {
        this.layer = new AnnotationsLayer(this.#index, this.#actions);
        this.element.append(this.layer.element);
        const point = ({clientX, clientY}) => this.layer.point(clientX, clientY);
        this.element.addEventListener('pointerdown', point);
        this.element.addEventListener('pointermove', (event) => event.buttons || point(event));
        this.element.addEventListener('pointerleave', () => this.layer.pointAway());
    }

    /// Size at the scale of 1, in CSS pixels.
    setSize(width, height) {
        this.element.style.setProperty('--page-width', width);
        this.element.style.setProperty('--page-height', height);
    }

    /// Whether the image is that of `revision` and `scale`.
    isDrawn(revision, scale) {
        return this.#drawn === this.#describe(revision, scale);
    }

    /// Marks the page as pending; without an image it shows a progress indicator.
    expect() {
        this.element.classList.toggle('waiting', !this.#canvas);
    }

    /// Draws the page. Resolves to true when the image is shown, to false when another request or
    /// `release` supersedes it.
    async draw(pdfPage, revision, scale) {
        const wanted = this.#describe(revision, scale);
        this.#task?.cancel();
        this.#wanted = wanted;
        this.viewport = pdfPage.getViewport({scale: kPixelsPerPoint});
        this.setSize(this.viewport.width, this.viewport.height);
        if (!this.layer) {
            this.#makeLayer();
        }

        const sharpness = this.#sharpness(scale);
        const drawn = pdfPage.getViewport({scale: kPixelsPerPoint * sharpness});
        const canvas = await this.#render(pdfPage, drawn, drawn.width, drawn.height);
        if (!canvas) {
            return false;
        }
        if (this.#wanted !== wanted) {
            return false;
        }
        this.#showFailure(null);
        this.#replaceCanvas(canvas);
        this.#replaceDetail(null);
        this.#drawn = wanted;
        await this.#layWords(pdfPage, revision);
        return true;
    }

    /// Whether the visible area `seen` (CSS pixels of the shown page) has the screen's resolution;
    /// at a high zoom an image of the whole page would be too large for that.
    isSharp(revision, scale, seen) {
        const isEnough =
            !this.viewport || this.#sharpness(scale) >= scale * devicePixelRatio || seen === null;
        const {box, wanted} = this.#detail ?? {};
        return (
            isEnough ||
            (wanted === this.#describe(revision, scale) &&
                box.left <= seen.left + kRounding &&
                box.top <= seen.top + kRounding &&
                box.left + box.width >= seen.left + seen.width - kRounding &&
                box.top + box.height >= seen.top + seen.height - kRounding)
        );
    }

    /// Draws the visible area with a margin on top of the page image.
    async drawDetail(pdfPage, revision, scale, seen) {
        const wanted = this.#describe(revision, scale);
        const box = this.#widen(seen, scale);
        const viewport = pdfPage.getViewport({
            scale: kPixelsPerPoint * scale * devicePixelRatio,
            offsetX: -box.left * devicePixelRatio,
            offsetY: -box.top * devicePixelRatio,
        });
        const canvas = await this.#render(
            pdfPage,
            viewport,
            box.width * devicePixelRatio,
            box.height * devicePixelRatio,
        );
        if (!canvas || this.#wanted !== wanted) {
            return;
        }
        const percent = (part, whole) => `${(100 * part) / (whole * scale)}%`;
        canvas.className = 'detail';
        canvas.style.left = percent(box.left, this.viewport.width);
        canvas.style.top = percent(box.top, this.viewport.height);
        canvas.style.width = percent(box.width, this.viewport.width);
        canvas.style.height = percent(box.height, this.viewport.height);
        this.#replaceDetail({canvas, box, wanted});
    }

    // The canvas with the image; null when drawing was cancelled.
    async #render(pdfPage, viewport, width, height) {
        const canvas = document.createElement('canvas');
        canvas.width = Math.max(1, Math.floor(width));
        canvas.height = Math.max(1, Math.floor(height));
        canvas.setAttribute('aria-hidden', 'true');
        const task = pdfPage.render({canvas, viewport});
        this.#task = task;
        try {
            await task.promise;
            return canvas;
        } catch (error) {
            if (error?.name === 'RenderingCancelledException') {
                return null;
            }
            throw error;
        } finally {
            if (this.#task === task) {
                this.#task = null;
            }
        }
    }

    // The visible area with a margin for short scrolls, within the size limit of a canvas.
    #widen({left, top, width, height}, scale) {
        const fits = (by) =>
            width * height * (1 + 2 * by) ** 2 * devicePixelRatio ** 2 < kMostPixels;
        const by = [0.5, 0.25, 0].find(fits) ?? 0;
        const right = Math.min(this.viewport.width * scale, left + width * (1 + by));
        const bottom = Math.min(this.viewport.height * scale, top + height * (1 + by));
        const box = {left: Math.max(0, left - width * by), top: Math.max(0, top - height * by)};
        return {...box, width: right - box.left, height: bottom - box.top};
    }

    /// Releases the image's memory.
    release() {
        this.#replaceDetail(null);
        this.#task?.cancel();
        this.#wanted = '';
        this.#drawn = '';
        this.#replaceCanvas(null);
        this.#words?.remove();
        this.#words = null;
        this.#showFailure(null);
    }

    /// Shows on the page that it cannot be drawn.
    fail(revision) {
        this.#showFailure(revision);
    }

    translate() {
        if (this.#failure) {
            this.#failure.textContent = text('pages.failed', this.#index + 1);
        }
    }

    #showFailure(revision) {
        this.failedRevision = revision;
        this.element.classList.remove('waiting');
        this.#failure?.remove();
        this.#failure = null;
        if (revision !== null) {
            this.#drawn = '';
            this.#replaceDetail(null);
            this.#replaceCanvas(null);
            this.#failure = document.createElement('p');
            this.#failure.className = 'page-failure';
            this.element.append(this.#failure);
            this.translate();
        }
    }

    // The text layer is valid at every zoom.
    async #layWords(pdfPage, revision) {
        if (this.#words && this.#wordsRevision === revision) {
            return;
        }
        const words = document.createElement('div');
        words.className = 'page-words';
        await this.#reader.layText(pdfPage, this.viewport, words);
        divide(words);
        if (!this.#canvas) {
            return; // released meanwhile
        }
        if (this.#words?.isEqualNode(words)) {
            this.#wordsRevision = revision; // what is selected there stays selected
            return;
        }
        this.#words?.remove();
        this.#words = words;
        this.#wordsRevision = revision;
        this.element.setAttribute('aria-label', text('pages.page', this.#index + 1));
        this.#insertWords(words); // other pages need not wait
    }

    // A frame for each part but the first.
    async #insertWords(words) {
        const rest = [...words.querySelectorAll(':scope > .words-part + .words-part')];
        rest.forEach((part) => part.remove());
        this.#canvas.after(words);
        for (const part of rest) {
            await nextFrame();
            if (this.#words !== words) {
                return;
            }
            words.append(part);
        }
    }

    #describe(revision, scale) {
        return `${revision} ${scale} ${devicePixelRatio}`;
    }

    // Resolution of the screen, within the size limit of a canvas.
    #sharpness(scale) {
        const wanted = scale * devicePixelRatio;
        const most = Math.sqrt(kMostPixels / (this.viewport.width * this.viewport.height));
        return Math.min(wanted, most);
    }

    #replaceDetail(detail) {
        if (this.#detail) {
            this.#detail.canvas.remove();
            this.#detail.canvas.width = 0;
        }
        this.#detail = detail;
        if (detail) {
            this.#canvas.after(detail.canvas);
        }
    }

    #replaceCanvas(canvas) {
        if (this.#canvas) {
            this.#canvas.remove();
            this.#canvas.width = 0;
        }
        this.#canvas = canvas;
        if (canvas) {
            this.element.prepend(canvas);
        }
    }
}
