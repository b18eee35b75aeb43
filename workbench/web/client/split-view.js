// The area with the visible documents: one, or two side by side. Every open document has its own
// view, which keeps scroll position and zoom while it is not visible.

import {PagesView} from './pages-view.js';
import {text} from './texts.js';

export class SplitView {
    #area;
    #services;
    #slots = [];
    #views = new Map();
    #documents = [];
    #active = null;
    #isSplit = false;

    /// `services`: those of PagesView, and `activate(id)` and `serve(view)`.
    constructor(area, services) {
        this.#area = area;
        this.#services = services;
        this.#addSlot();
    }

    get isSplit() {
        return this.#isSplit;
    }

    get activeView() {
        return this.#views.get(this.#active) ?? null;
    }

    update(documents, active) {
        this.#documents = documents;
        this.#active = active;
        for (const [id, view] of this.#views) {
            if (!documents.some((one) => one.id === id)) {
                view.close();
                this.#views.delete(id);
            }
        }
        this.#place();
        for (const description of documents) {
            this.#views.get(description.id)?.update(description);
        }
    }

    setSplit(isSplit) {
        this.#isSplit = isSplit;
        if (isSplit) {
            this.#addSlot();
        } else {
            this.#dropSlot();
        }
        this.#area.classList.toggle('split', isSplit);
        this.update(this.#documents, this.#active);
        this.#sort();
    }

    translate() {
        for (const view of this.#views.values()) {
            view.translate();
        }
        this.#place();
    }

    #addSlot() {
        const element = document.createElement('section');
        element.className = 'slot';
        const head = document.createElement('select');
        head.className = 'slot-document';
        const slot = {element, head, document: null};
        head.addEventListener('change', () => this.#choose(slot, Number(head.value)));
        element.addEventListener('focusin', (event) => {
            if (event.target !== head && slot.document !== null && slot.document !== this.#active) {
                this.#services.activate(slot.document);
            }
        });
        element.append(head);
        this.#area.append(element);
        this.#slots.push(slot);
    }

    // The active document stays visible.
    #dropSlot() {
        const slot = this.#slots.pop();
        this.#show(slot, null);
        slot.element.remove();
        this.#show(this.#slots[0], this.#active);
    }

    // Orders the visible documents like their tabs.
    #sort() {
        const order = this.#documents.map(({id}) => id);
        const shown = this.#slots.map((slot) => slot.document);
        if (!shown.includes(null)) {
            const sorted = shown.toSorted(
                (one, other) => order.indexOf(one) - order.indexOf(other),
            );
            this.#slots.forEach((slot) => this.#show(slot, null));
            this.#slots.forEach((slot, at) => this.#show(slot, sorted[at]));
            this.#slots.forEach((slot) => this.#updateSlot(slot));
        }
    }

    #choose(slot, id) {
        const other = this.#slots.find((one) => one !== slot);
        if (other?.document === id) {
            this.#show(other, slot.document);
        }
        this.#show(slot, id);
        this.#update(id);
        this.#services.activate(
            this.#slots.some((one) => one.document === this.#active) ? this.#active : id,
        );
    }

    #place() {
        const isOpen = (id) => this.#documents.some((one) => one.id === id);
        for (const slot of this.#slots) {
            if (slot.document !== null && !isOpen(slot.document)) {
                this.#show(slot, null);
            }
        }
        if (this.#active !== null && !this.#slots.some((slot) => slot.document === this.#active)) {
            this.#show(this.#slots[0], this.#active);
        }
        for (const slot of this.#slots) {
            if (slot.document === null) {
                this.#show(slot, this.#unseen());
            }
            this.#updateSlot(slot);
        }
    }

    #unseen() {
        const seen = this.#slots.map((slot) => slot.document);
        return this.#documents.find((one) => !seen.includes(one.id))?.id ?? null;
    }

    #updateSlot(slot) {
        slot.element.classList.toggle('active', slot.document === this.#active);
        slot.element.classList.toggle('empty', slot.document === null);
        slot.head.hidden = !this.#isSplit;
        if (!this.#isSplit) {
            return;
        }
        const isFirst = slot === this.#slots[0];
        slot.head.setAttribute('aria-label', text(isFirst ? 'split.first' : 'split.second'));
        slot.head.replaceChildren(
            ...this.#documents.map(({id, name}) => {
                const option = document.createElement('option');
                option.value = id;
                option.textContent = name;
                option.selected = id === slot.document;
                return option;
            }),
        );
    }

    #show(slot, id) {
        if (slot.document === id) {
            return;
        }
        this.#views.get(slot.document)?.unmount();
        slot.document = id;
        if (id !== null) {
            this.#view(id).mount(slot.element);
        }
    }

    #view(id) {
        let view = this.#views.get(id);
        if (!view) {
            view = new PagesView(this.#services);
            this.#views.set(id, view);
            this.#services.serve(view);
        }
        return view;
    }

    #update(id) {
        const description = this.#documents.find((one) => one.id === id);
        if (description) {
            this.#views.get(id)?.update(description);
        }
        for (const slot of this.#slots) {
            this.#updateSlot(slot);
        }
    }
}
