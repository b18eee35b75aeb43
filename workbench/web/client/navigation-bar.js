// Navigation bar of a view: page number and zoom.

import {icon} from './icons.js';
import {text} from './texts.js';

function makeButton(name, act) {
    const button = document.createElement('button');
    button.type = 'button';
    button.className = 'tool';
    button.append(icon(name));
    button.addEventListener('click', act);
    return button;
}

export class NavigationBar {
    #goTo;
    #page = 0;
    #count = 0;
    #document = '';
    #field = document.createElement('input');
    #total = document.createElement('span');
    #percent = document.createElement('output');
    #fit;
    #named;
    element = document.createElement('div');

    /// `goTo(page)` scrolls to a page, counted from 0.
    constructor(zoom, goTo) {
        this.#goTo = goTo;
        this.element.className = 'navigation';
        this.element.setAttribute('role', 'toolbar');
        this.#field.className = 'page-field';
        this.#field.inputMode = 'numeric';
        this.#field.addEventListener('change', () => this.#enter());
        this.#field.addEventListener('focus', () => this.#field.select());
        this.#total.className = 'page-count';
        this.#percent.className = 'zoom-percent';
        const previous = makeButton('up', () => goTo(this.#page - 1));
        const next = makeButton('down', () => goTo(this.#page + 1));
        const smaller = makeButton('minus', () => zoom.step(false));
        const larger = makeButton('plus', () => zoom.step(true));
        this.#fit = makeButton('fitWidth', () => zoom.fitWidth());
        this.#named = [
            [this.#field, 'navigation.page'],
            [previous, 'navigation.previous'],
            [next, 'navigation.next'],
            [smaller, 'navigation.smaller'],
            [larger, 'navigation.larger'],
            [this.#fit, 'navigation.fitWidth'],
        ];
        const gap = document.createElement('span');
        gap.className = 'gap';
        // "Page of count" is written left to right in every language.
        const place = document.createElement('span');
        place.dir = 'ltr';
        place.append(this.#field, this.#total);
        this.element.append(previous, place, next, gap, smaller, this.#percent, larger, this.#fit);
        this.translate();
    }

    /// Names the bar after its document; two of them can be visible.
    setDocument(name) {
        this.#document = name;
        this.#nameBar();
    }

    #nameBar() {
        this.element.setAttribute('aria-label', text('navigation.label', this.#document));
    }

    setPage(page) {
        this.#page = page;
        if (document.activeElement !== this.#field) {
            this.#field.value = this.#count === 0 ? '' : page + 1;
        }
    }

    setCount(count) {
        if (this.#count === count) {
            return;
        }
        this.#count = count;
        this.#total.textContent = `/ ${count}`;
        this.#field.style.width = `${Math.max(3, String(count).length + 2)}ch`;
    }

    setZoom(scale, isFitted) {
        this.#percent.textContent = `${Math.round(scale * 100)}%`;
        this.#fit.setAttribute('aria-pressed', String(isFitted));
    }

    translate() {
        for (const [element, key] of this.#named) {
            element.setAttribute('aria-label', text(key));
            element.title = text(key);
        }
        this.#nameBar();
    }

    #enter() {
        const page = Number.parseInt(this.#field.value, 10);
        if (page >= 1 && page <= this.#count) {
            this.#page = page - 1;
            this.#goTo(this.#page);
        }
        this.#field.value = this.#page + 1;
    }
}
