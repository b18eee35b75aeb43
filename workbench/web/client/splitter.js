// The splitter between pages and panel, moved with the pointer or the arrow keys.

import {recall, remember} from './memory.js';

const kStep = 16;
const kNarrowest = 180;
const kRoomForPages = 240;

export class Splitter {
    #bar;
    #area;
    #width = Number(recall('panel-width', 320));

    /// `area` contains pages, splitter and panel; its style property `--panel-width` is set.
    constructor(bar, area) {
        this.#bar = bar;
        this.#area = area;
        bar.addEventListener('pointerdown', (event) => this.#drag(event));
        bar.addEventListener('keydown', (event) => this.#key(event));
        new ResizeObserver(() => this.#apply()).observe(area);
    }

    get #most() {
        return Math.max(kNarrowest, this.#area.clientWidth - kRoomForPages);
    }

    #apply() {
        const width = Math.max(kNarrowest, Math.min(this.#width, this.#most));
        this.#area.style.setProperty('--panel-width', `${width}px`);
        this.#bar.setAttribute('aria-valuenow', String(width));
        this.#bar.setAttribute('aria-valuemin', String(kNarrowest));
        this.#bar.setAttribute('aria-valuemax', String(this.#most));
    }

    #setWidth(width) {
        this.#width = Math.round(Math.max(kNarrowest, Math.min(width, this.#most)));
        remember('panel-width', this.#width);
        this.#apply();
    }

    get #isMirrored() {
        return document.documentElement.dir === 'rtl';
    }

    #drag(event) {
        event.preventDefault();
        this.#bar.focus();
        this.#bar.setPointerCapture(event.pointerId);
        const move = (moved) => {
            const box = this.#area.getBoundingClientRect();
            this.#setWidth(this.#isMirrored ? moved.clientX - box.left : box.right - moved.clientX);
        };
        this.#bar.addEventListener('pointermove', move);
        const end = () => this.#bar.removeEventListener('pointermove', move);
        this.#bar.addEventListener('lostpointercapture', end, {once: true});
    }

    #key(event) {
        const wider = this.#isMirrored ? 'ArrowRight' : 'ArrowLeft';
        const narrower = this.#isMirrored ? 'ArrowLeft' : 'ArrowRight';
        const widths = {
            [wider]: this.#width + kStep,
            [narrower]: this.#width - kStep,
            Home: kNarrowest,
            End: this.#most,
        };
        if (widths[event.key] !== undefined) {
            event.preventDefault();
            this.#setWidth(widths[event.key]);
        }
    }
}
