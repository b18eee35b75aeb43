// View of one document: its pages in a column. Every page has a placeholder; pages near the visible
// area have an image and their annotations. Each view has its own scroll position and zoom.

import {lastAtOrAbove} from './column-search.js';
import {placeOnPage} from './comment-places.js';
import {NavigationBar} from './navigation-bar.js';
import {PdfReader} from './pdf-file.js';
import {PageAnnotations} from './page-annotations.js';
import {kPixelsPerPoint, PageView} from './page-view.js';
import {text} from './texts.js';
import {kFitWidth, Zoom} from './zoom.js';

const kRedrawDelay = 120;
// A file that takes long to load is loaded again when this long has passed since a change at most.
const kLongestPause = 500;
const kLetter = {width: 816, height: 1056};

export class PagesView {
    #services;
    #description = null;
    #reader = new PdfReader();
    #pdf = null;
    #loadedRevision = null;
    #isLoading = false;
    #loadTime = 0; // of the last file, in milliseconds
    #closing = new AbortController();
    #pages = [];
    #near = new Set();
    #drawing = false;
    #step = null; // what is drawn now, a promise
    #timer = 0;
    #isUrgent = false; // the timer's drawing
    #shownCount = null;
    #mustReveal = false;
    #place = {top: 0, left: 0};
    #sizes;
    #annotations;
    #zoom;
    #bar;
    element = document.createElement('div');
    scroller = document.createElement('div');
    #column = document.createElement('div');
    #progress = document.createElement('div');

    /// `services` has `connection`, `edits`, `notice(text)` and `say(text)`.
    constructor(services) {
        this.#services = services;
        this.#annotations = new PageAnnotations(services.connection);
        this.element.className = 'pages-view';
        this.scroller.className = 'scroller';
        this.scroller.tabIndex = 0;
        this.scroller.setAttribute('role', 'region');
        this.#column.className = 'pages';
        this.scroller.append(this.#column);
        this.#makeProgress();
        this.#zoom = new Zoom(this.scroller, this.#column, () => this.#zoomed());
        this.#bar = new NavigationBar(this.#zoom, (page) => this.goTo(page));
        this.element.append(this.#progress, this.scroller, this.#bar.element);
        this.scroller.addEventListener('scroll', () => this.#scrolled(), {passive: true});
        this.#sizes = new ResizeObserver(() => this.#resized());
        this.#sizes.observe(this.scroller);
        this.#listenToSharpness();
    }

    get documentId() {
        return this.#description?.id ?? null;
    }

    get description() {
        return this.#description;
    }

    get zoom() {
        return this.#zoom;
    }

    /// Page in the middle of the visible area, from 0.
    get currentPage() {
        return this.#pageAt(this.scroller.scrollTop + this.scroller.clientHeight / 2);
    }

    pageView(index) {
        return this.#pages[index] ?? null;
    }

    /// The box of an annotation in window coordinates; null when it is not shown.
    boxOf(page, annotation) {
        return this.#pages[page]?.layer?.boxOf(annotation) ?? null;
    }

    /// Updates to the document's description, the first time and after each change.
    update(description) {
        this.#description = description;
        this.#nameScroller();
        this.#bar.setCount(description.pages);
        if (description.revision !== this.#loadedRevision) {
            this.#load();
        }
        const count = description.shown?.count ?? 0;
        const isAsked = this.#shownCount !== null && count > this.#shownCount;
        this.#shownCount = count;
        this.#annotations.update(description, this.#near);
        this.#annotations.setCurrent(description.current, isAsked, this.#near);
        if (isAsked) {
            this.#mustReveal = true;
            this.#reveal();
        }
    }

    /// Adds the view to the DOM at its former scroll position.
    mount(slot) {
        slot.append(this.element);
        this.scroller.scrollTop = this.#place.top;
        this.scroller.scrollLeft = this.#place.left;
        this.#updateNear();
        this.#schedule(0);
    }

    unmount() {
        this.#scrolled(); // the event of a recent scroll may be pending
        this.element.remove();
        for (const page of this.#near) {
            page.release();
        }
    }

    close() {
        this.#closing.abort();
        this.unmount();
        this.#sizes.disconnect();
        this.#zoom.close();
        this.#description = null;
        if (!this.#isLoading) {
            this.#closeFile(this.#pdf);
        }
        this.#pdf = null;
    }

    translate() {
        this.#bar.translate();
        this.#nameScroller();
        for (const page of this.#near) {
            page.translate();
            this.#annotations.translate(page);
        }
    }

    goTo(page) {
        const view = this.#pages[Math.max(0, Math.min(page, this.#pages.length - 1))];
        if (view) {
            this.scroller.scrollTop = view.element.offsetTop - 8;
        }
    }

    #nameScroller() {
        const name = this.#description?.name ?? '';
        this.scroller.setAttribute('aria-label', text('pages.label', name));
        this.#progress.setAttribute('aria-label', text('pages.loading', name));
        this.#bar.setDocument(name);
    }

    // --- Contents ---

    // Loads one file at a time; a revision that arrives meanwhile is next. Changes that follow each
    // other quickly are loaded together where a file takes long.
    async #load() {
        if (this.#isLoading || !this.#description) {
            return;
        }
        this.#isLoading = true;
        const old = this.#pdf;
        await new Promise((resolve) => {
            setTimeout(resolve, Math.min(this.#loadTime, kLongestPause));
        });
        const {revision} = this.#description ?? {};
        this.#showProgress(0);
        const begin = performance.now();
        const pdf = this.#description && (await this.#open(this.#description));
        const first = await pdf?.getPage(1).catch(() => null);
        this.#loadTime = performance.now() - begin;
        this.#isLoading = false;
        this.#progress.hidden = true;
        if (!this.#description) {
            await this.#freeFile(old);
            this.#closeFile(pdf);
            return;
        }
        if (pdf) {
            this.#replacePdf(pdf, first);
        }
        // Requests that failed for lack of a connection are repeated after reconnecting.
        this.#loadedRevision = pdf || this.#services.connection.isOpen ? revision : null;
        if (this.#loadedRevision !== null && this.#description.revision !== revision) {
            this.#load();
        }
    }

    async #open({id, revision, name}) {
        try {
            return await this.#reader.open(id, revision, (part) => this.#showProgress(part));
        } catch (error) {
            if (this.#description && this.#services.connection.isOpen) {
                console.error(error);
                this.#services.notice(text('pages.unreadable', name));
            }
            return null;
        }
    }

    // What a freed file is still asked for may never be answered, and nothing would be drawn then.
    async #freeFile(pdf) {
        await this.#step;
        if (pdf) {
            await this.#reader.free(pdf);
        }
    }

    async #closeFile(pdf) {
        await this.#freeFile(pdf);
        await this.#reader.close();
    }

    #makeProgress() {
        this.#progress.className = 'progress';
        this.#progress.setAttribute('role', 'progressbar');
        this.#progress.append(document.createElement('div'));
        this.#progress.hidden = true;
    }

    #showProgress(part) {
        this.#progress.hidden = !this.#isLoading;
        this.#progress.setAttribute('aria-valuenow', String(Math.round(100 * Math.min(part, 1))));
        this.#progress.firstElementChild.style.transform = `scaleX(${Math.min(part, 1)})`;
    }

    #replacePdf(pdf, first) {
        const old = this.#pdf;
        this.#pdf = pdf;
        const size = first?.getViewport({scale: kPixelsPerPoint}) ?? kLetter;
        this.#zoom.setPageWidth(size.width);
        this.#setPageCount(pdf.numPages, size);
        this.#schedule(0);
        if (this.#mustReveal) {
            this.#reveal();
        }
        this.#freeFile(old);
    }

    #setPageCount(count, size) {
        while (this.#pages.length > count) {
            const page = this.#pages.pop();
            this.#near.delete(page);
            page.release();
            page.element.remove();
        }
        const added = [];
        while (this.#pages.length < count) {
            const page = new PageView(this.#pages.length, this.#reader, this.#actions());
            page.setSize(size.width, size.height);
            this.#pages.push(page);
            added.push(page.element);
        }
        this.#column.append(...added);
        this.#scrolled();
    }

    #actions() {
        const {edits, say} = this.#services;
        const withDocument = (action) => (page, annotation, revision) =>
            edits[action](this.#description, {page, annotation, revision});
        return {
            focus: withDocument('focus'),
            remove: withDocument('remove'),
            edit: (page, annotation, revision) =>
                edits.editContents(
                    this.#description,
                    {page, annotation, revision},
                    placeOnPage(() => this.boxOf(page, annotation.index)),
                ),
            refuse: () => say(text('reason.changed')),
            giveFocusBack: () => this.scroller.focus({preventScroll: true}),
        };
    }

    // --- Visible area ---

    #resized() {
        this.#zoom.refit();
        this.#scrolled();
        if (this.#mustReveal) {
            this.#reveal();
        }
    }

    #pageAt(y) {
        const topOf = (index) => this.#pages[index].element.offsetTop;
        return lastAtOrAbove(this.#pages.length, y, topOf);
    }

    // Those in the visible area and up to its height above and below, found without asking each: an
    // observer of thousands of pages takes a good part of every frame.
    #pagesNear() {
        const {scrollTop, clientHeight} = this.scroller;
        const begin = this.#pageAt(scrollTop - clientHeight);
        const end = this.#pageAt(scrollTop + 2 * clientHeight) + 1;
        return clientHeight > 0 ? this.#pages.slice(begin, end) : [];
    }

    // Pages that come near are to be drawn, others give their images back. Returns whether any came.
    #updateNear() {
        const former = this.#near;
        this.#near = new Set(this.#pagesNear());
        for (const page of former) {
            if (!this.#near.has(page)) {
                page.release();
            }
        }
        return [...this.#near].some((page) => !former.has(page));
    }

    // The resolution changes with the screen and the browser's zoom.
    #listenToSharpness() {
        const query = matchMedia(`(resolution: ${devicePixelRatio}dppx)`);
        const changed = () => {
            this.#listenToSharpness();
            this.#schedule(kRedrawDelay);
        };
        query.addEventListener('change', changed, {once: true, signal: this.#closing.signal});
    }

    #scrolled() {
        if (!this.element.isConnected) {
            return;
        }
        const isMore = this.#updateNear();
        if (this.scroller.clientHeight === 0) {
            return; // not visible
        }
        this.#place = {top: this.scroller.scrollTop, left: this.scroller.scrollLeft};
        this.#bar.setPage(this.currentPage);
        this.#schedule(isMore ? 0 : kRedrawDelay);
    }

    #zoomed() {
        this.#bar.setZoom(this.#zoom.scale, this.#zoom.mode === kFitWidth);
        const isMore = this.#updateNear();
        this.#schedule(isMore ? 0 : kRedrawDelay);
    }

    #schedule(delay) {
        this.#isUrgent ||= delay === 0;
        clearTimeout(this.#timer);
        this.#timer = setTimeout(() => this.#draw(), this.#isUrgent ? 0 : delay);
    }

    // --- Page images ---

    // Draws one page at a time, the middle ones first; the next page is chosen after each.
    async #draw() {
        this.#isUrgent = false;
        if (this.#drawing) {
            return;
        }
        this.#drawing = true;
        try {
            for (;;) {
                const page = this.#nextPage();
                const detail = page ? null : this.#nextDetail();
                if (!page && !detail) {
                    break;
                }
                this.#step = page ? this.#drawPage(page) : this.#drawDetail(detail);
                await this.#step;
            }
        } finally {
            this.#drawing = false;
        }
    }

    #nextPage() {
        if (!this.#pdf) {
            return null;
        }
        this.#updateNear(); // the page that was drawn last may have got another size
        const middle = this.currentPage;
        const waiting = [...this.#near].filter((page) => this.#isWaiting(page));
        waiting.forEach((page) => page.expect());
        waiting.sort((a, b) => Math.abs(a.index - middle) - Math.abs(b.index - middle));
        return waiting[0] ?? null;
    }

    #isWaiting(page) {
        return (
            page.index < this.#pdf.numPages &&
            !page.isDrawn(this.#loadedRevision, this.#zoom.scale) &&
            page.failedRevision !== this.#loadedRevision
        );
    }

    // A page whose visible part is not sharp in its image, and that part.
    #nextDetail() {
        const {scale} = this.#zoom;
        for (const page of this.#pdf ? this.#near : []) {
            const seen = this.#seenPart(page);
            const isReady = page.isDrawn(this.#loadedRevision, scale);
            if (isReady && !page.isSharp(this.#loadedRevision, scale, seen)) {
                return {page, seen};
            }
        }
        return null;
    }

    #seenPart({element}) {
        const view = this.scroller.getBoundingClientRect();
        const box = element.getBoundingClientRect();
        const left = Math.max(0, view.left - box.left);
        const top = Math.max(0, view.top - box.top);
        const width = Math.min(box.right, view.right) - box.left - left;
        const height = Math.min(box.bottom, view.bottom) - box.top - top;
        return width > 0 && height > 0 ? {left, top, width, height} : null;
    }

    async #drawDetail({page, seen}) {
        const pdf = this.#pdf;
        try {
            const pdfPage = await pdf.getPage(page.index + 1);
            await page.drawDetail(pdfPage, this.#loadedRevision, this.#zoom.scale, seen);
        } catch (error) {
            if (pdf === this.#pdf) {
                console.error(error);
                page.fail(this.#loadedRevision);
            }
        }
    }

    async #drawPage(page) {
        const pdf = this.#pdf;
        try {
            const pdfPage = await pdf.getPage(page.index + 1);
            if (pdf !== this.#pdf || !this.#near.has(page)) {
                return;
            }
            const drawn = page.draw(pdfPage, this.#loadedRevision, this.#zoom.scale);
            this.#annotations.show(page);
            await drawn;
            pdfPage.cleanup();
        } catch (error) {
            if (pdf === this.#pdf) {
                console.error(error);
                page.fail(this.#loadedRevision);
            }
        }
    }

    // --- Go-to requests ---

    async #reveal() {
        const {shown} = this.#description;
        const page = this.#pages[shown?.page];
        if (!page || !this.#pdf || this.scroller.clientHeight === 0) {
            return; // repeated when the file is loaded and the view is visible
        }
        const pdfPage = await this.#pdf.getPage(shown.page + 1).catch(() => null);
        if (!pdfPage || this.#description?.shown?.count !== shown.count) {
            return;
        }
        this.#mustReveal = false;
        const viewport = pdfPage.getViewport({scale: kPixelsPerPoint});
        page.setSize(viewport.width, viewport.height);
        const [l, b, r, t] = shown.target;
        const [x, y] = viewport.convertToViewportPoint((l + r) / 2, (b + t) / 2);
        const {scale} = this.#zoom;
        const {element} = page;
        this.scroller.scrollTop = element.offsetTop + y * scale - this.scroller.clientHeight / 2;
        this.scroller.scrollLeft = element.offsetLeft + x * scale - this.scroller.clientWidth / 2;
    }
}
