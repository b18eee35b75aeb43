// Tooltips of the panel's items. An item names a `popup` by its `titleid`; a copy of it is shown
// while the pointer rests on the item, or the keyboard has brought the focus there.

const kPointerDelay = 500;
const kFocusDelay = 900; // longer, because it lies over what the arrow keys come to next
const kDistance = 4;
const kMargin = 4;

// What a tooltip says, row by row, without the rows that are not shown.
function wordsOf(popup) {
    const rows = [...popup.querySelectorAll('tr')].filter(({style}) => style.display !== 'none');
    return rows.map((row) => row.textContent.trim().replace(/\s+/g, ' ')).join('; ');
}

export class Tooltips {
    #document;
    #host;
    #item = null;
    #shown = null;
    #timer = 0;
    #pointerPlace = '';

    constructor(frameDocument, host) {
        this.#document = frameDocument;
        this.#host = host;
        frameDocument.addEventListener('pointerover', (event) => this.#pointerOver(event));
        frameDocument.addEventListener('focusin', (event) => this.#focusIn(event.target));
        frameDocument.addEventListener('focusout', () => this.hide());
        frameDocument.addEventListener('pointerdown', () => this.hide());
        frameDocument.addEventListener('scroll', () => this.#scrolled(), {
            capture: true,
            passive: true,
        });
        frameDocument.documentElement.addEventListener('pointerleave', () => this.hide());
        for (const each of [frameDocument, document]) {
            each.addEventListener('keydown', (event) => this.#key(event), {capture: true});
        }
    }

    hide() {
        clearTimeout(this.#timer);
        this.#item = null;
        this.#shown?.remove();
        this.#shown = null;
    }

    /// After changes of the tree: no tooltip outlives its item.
    settle() {
        if (this.#item && !this.#item.isConnected) {
            this.hide();
        }
    }

    #pointerOver({target, pointerType, clientX, clientY}) {
        // A list that is scrolled below a pointer at rest is no movement of the pointer.
        const place = `${clientX} ${clientY}`;
        const hasMoved = place !== this.#pointerPlace;
        this.#pointerPlace = place;
        // The pointer may go over to the tooltip, to read on. A finger rests on nothing.
        if (!hasMoved || this.#shown?.contains(target) || pointerType === 'touch') {
            return;
        }
        this.#waitFor(target.closest?.('[titleid]') ?? null, kPointerDelay);
    }

    #focusIn(target) {
        const popup = target.matches?.('[titleid]') ? this.#popupOf(target) : null;
        if (popup) {
            target.setAttribute('aria-description', wordsOf(popup));
        }
        if (target.matches?.('[titleid]:focus-visible')) {
            this.#waitFor(target, kFocusDelay);
        }
    }

    #waitFor(item, delay) {
        if (item === this.#item) {
            return;
        }
        this.hide();
        if (item) {
            this.#item = item;
            this.#timer = setTimeout(() => this.#show(item), delay);
        }
    }

    // The focus brings its item into view, and the tooltip comes when that is done.
    #scrolled() {
        const item = this.#item;
        this.hide();
        if (item && item === this.#document.activeElement) {
            this.#waitFor(item, kFocusDelay);
        }
    }

    #key(event) {
        if (event.key === 'Escape' && this.#shown) {
            event.stopPropagation();
            this.hide();
        }
    }

    #popupOf(item) {
        const id = item.getAttribute('titleid');
        return (
            item.querySelector(`popup[id="${CSS.escape(id)}"]`) ?? this.#document.getElementById(id)
        );
    }

    #show(item) {
        const popup = item.isConnected ? this.#popupOf(item) : null;
        if (popup?.localName !== 'popup') {
            return;
        }
        this.#shown = popup.cloneNode(true);
        this.#shown.removeAttribute('id');
        this.#shown.removeAttribute('style');
        this.#shown.setAttribute('role', 'tooltip');
        this.#host.append(this.#shown);
        this.#place(item.getBoundingClientRect());
    }

    // Below the item, or above it where there is more room, and never outside the window.
    #place(item) {
        const {clientWidth, clientHeight} = this.#document.documentElement;
        const {width, height} = this.#shown.getBoundingClientRect();
        const isMirrored = this.#document.documentElement.dir === 'rtl';
        const wanted = isMirrored ? item.right - width - 16 : item.left + 16;
        const left = Math.max(kMargin, Math.min(wanted, clientWidth - width - kMargin));
        const below = item.bottom + kDistance;
        const above = item.top - kDistance - height;
        const fitsBelow = below + height <= clientHeight - kMargin;
        const top =
            fitsBelow || above < kMargin
                ? Math.max(kMargin, Math.min(below, clientHeight - height - kMargin))
                : above;
        this.#shown.style.left = `${left}px`;
        this.#shown.style.top = `${top}px`;
    }
}
