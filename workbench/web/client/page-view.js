// One page on the screen: a placeholder of the page's size that has a picture only while it is near
// what is in sight. The old picture stays until the new one is ready.

import {AnnotationsLayer} from './annotations-layer.js';
import {text} from './texts.js';

const kMostPixels = 2 ** 24;
// Pixels by which places on the screen may differ from those reckoned.
const kRounding = 1;
/// CSS pixels to a point at the scale of 1.
export const kPixelsPerPoint = 96 / 72;

export class PageView {
    #index;
    #reader;
    #failure = null;
    #task = null;
    #wanted = '';
    #drawn = '';
    #canvas = null;
    #detail = null;
    #words = null;
    #wordsRevision = null;
    element = document.createElement('div');
    layer;
    viewport = null;
    /// The list whose annotations lie on the page.
    shownList = null;
    /// Revision of a file whose page could not be drawn; it is tried again when the page comes near
    /// another time.
    failedRevision = null;

    /// `reader` lays the words of the page.
    constructor(index, reader, actions) {
        this.#index = index;
        this.#reader = reader;
        this.element.className = 'page';
        this.element.dataset.page = index;
        this.element.setAttribute('role', 'group');
        this.layer = new AnnotationsLayer(index, actions);
        this.element.append(this.layer.element);
    }

    get index() {
        return this.#index;
    }

    /// Size at the scale of 1, in CSS pixels.
    setSize(width, height) {
        this.element.style.setProperty('--page-width', width);
        this.element.style.setProperty('--page-height', height);
    }

    /// Whether the picture is the one that `revision` and `scale` ask for.
    isDrawn(revision, scale) {
        return this.#drawn === this.#describe(revision, scale);
    }

    /// The page is to be drawn: as long as it has no picture it shows that one is on its way.
    expect() {
        this.element.classList.toggle('waiting', !this.#canvas);
    }

    /// Draws the page. Resolves to whether the picture is there: false when it was overtaken by
    /// another request or by `release`.
    async draw(pdfPage, revision, scale) {
        const wanted = this.#describe(revision, scale);
        this.#task?.cancel();
        this.#wanted = wanted;
        this.viewport = pdfPage.getViewport({scale: kPixelsPerPoint});
        this.setSize(this.viewport.width, this.viewport.height);

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

    /// Whether what is in sight, `seen` in CSS pixels of the page as it is shown, is as sharp as the
    /// screen; a picture of the whole page would be too large for that at a high zoom.
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

    /// Draws what is in sight, and something around it, on top of the picture.
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

    // The canvas with the picture; null when it was cancelled.
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

    // A part around what is in sight, for small ways, as far as a canvas bears it.
    #widen({left, top, width, height}, scale) {
        const fits = (by) =>
            width * height * (1 + 2 * by) ** 2 * devicePixelRatio ** 2 < kMostPixels;
        const by = [0.5, 0.25, 0].find(fits) ?? 0;
        const right = Math.min(this.viewport.width * scale, left + width * (1 + by));
        const bottom = Math.min(this.viewport.height * scale, top + height * (1 + by));
        const box = {left: Math.max(0, left - width * by), top: Math.max(0, top - height * by)};
        return {...box, width: right - box.left, height: bottom - box.top};
    }

    /// Gives the picture's memory back.
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

    /// Says on the page that it cannot be drawn.
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

    // The words hold at every zoom.
    async #layWords(pdfPage, revision) {
        if (this.#words && this.#wordsRevision === revision) {
            return;
        }
        const words = document.createElement('div');
        words.className = 'page-words';
        await this.#reader.layText(pdfPage, this.viewport, words);
        if (!this.#canvas) {
            return; // released meanwhile
        }
        this.#words?.remove();
        this.#words = words;
        this.#wordsRevision = revision;
        this.#canvas.after(words);
        this.element.setAttribute('aria-label', text('pages.page', this.#index + 1));
    }

    #describe(revision, scale) {
        return `${revision} ${scale} ${devicePixelRatio}`;
    }

    // As many pixels as the screen has, up to what a canvas bears.
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
