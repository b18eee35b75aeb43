// One page on the screen: a placeholder of the page's size that has a picture only while it is near
// what is in sight. The old picture stays until the new one is ready.

import {AnnotationsLayer} from './annotations-layer.js';
import {text} from './texts.js';

const kMostPixels = 2 ** 24;
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

        const canvas = document.createElement('canvas');
        const drawn = pdfPage.getViewport({scale: kPixelsPerPoint * this.#sharpness(scale)});
        canvas.width = Math.max(1, Math.floor(drawn.width));
        canvas.height = Math.max(1, Math.floor(drawn.height));
        canvas.setAttribute('aria-hidden', 'true');
        const task = pdfPage.render({canvas, viewport: drawn});
        this.#task = task;
        try {
            await task.promise;
        } catch (error) {
            if (error?.name === 'RenderingCancelledException') {
                return false;
            }
            throw error;
        } finally {
            if (this.#task === task) {
                this.#task = null;
            }
        }
        if (this.#wanted !== wanted) {
            return false;
        }
        this.#showFailure(null);
        this.#replaceCanvas(canvas);
        this.#drawn = wanted;
        await this.#layWords(pdfPage, revision);
        return true;
    }

    /// Gives the picture's memory back.
    release() {
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
