// Tooltips of the panel's items. An item names its `popup` by `titleid`; a copy of it is shown
// while the pointer rests on the item and after the keyboard has moved the focus there. Its contents
// are asked for when they are wanted.

import {recordOf} from './panel-mirror.js';

const kPointerDelay = 500;
const kFocusDelay = 900; // longer, because the tooltip covers the next items
const kDistance = 4;
const kMargin = 4;

// The text of a tooltip by row, without hidden rows.
function wordsOf(popup) {
    const rows = [...popup.querySelectorAll('tr')].filter(({style}) => style.display !== 'none');
    return rows.map((row) => row.textContent.trim().replace(/\s+/g, ' ')).join('; ');
}

export class Tooltips {
    #document;
    #host;
    #connection;
    #item = null;
    #isDue = false;
    #shown = null;
    #timer = 0;
    #pointerPlace = '';

    constructor(frameDocument, host, connection) {
        this.#document = frameDocument;
        this.#host = host;
        this.#connection = connection;
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
            each.addEventListener('pointermove', (event) => this.#hasMoved(event), {
                capture: true,
                passive: true,
            });
        }
    }

    hide() {
        clearTimeout(this.#timer);
        this.#item = null;
        this.#isDue = false;
        this.#shown?.remove();
        this.#shown = null;
    }

    /// To be called after changes of the tree: hides the tooltip of a removed item, and shows one
    /// that has come.
    settle() {
        if (this.#item && !this.#item.isConnected) {
            this.hide();
        } else if (this.#isDue) {
            this.#show(this.#item);
        }
        this.#describeFocused();
    }

    /// The tooltip of an item; null for none, and until its contents have come.
    openedPopupOf(item) {
        const popup = this.#popupOf(item);
        const record = recordOf(popup);
        if (record?.isClosed && !record.isAskedFor) {
            record.isAskedFor = this.#connection.tell({type: 'tooltip', element: record.id});
        }
        return record?.isClosed ? null : popup;
    }

    // The list and its frame move below a resting pointer, too. It is followed outside the frame as well.
    #hasMoved({screenX, screenY}) {
        const former = this.#pointerPlace;
        this.#pointerPlace = `${screenX} ${screenY}`;
        return this.#pointerPlace !== former;
    }

    #pointerOver(event) {
        const {target, pointerType} = event;
        const hasMoved = this.#hasMoved(event);
        // The pointer may move onto the tooltip. A touch does not hover.
        if (this.#shown?.contains(target) || pointerType === 'touch') {
            return;
        }
        const item = target.closest?.('[titleid]') ?? null;
        if (hasMoved) {
            this.#waitFor(item, kPointerDelay);
        } else if (item !== this.#item && this.#item !== this.#document.activeElement) {
            this.hide(); // its item has moved away
        }
    }

    // For screen readers.
    #describeFocused() {
        const item = this.#document.activeElement;
        const popup = item?.matches?.('[titleid]') ? this.openedPopupOf(item) : null;
        if (popup) {
            item.setAttribute('aria-description', wordsOf(popup));
        }
    }

    #focusIn(target) {
        this.#describeFocused();
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
            this.openedPopupOf(item);
            this.#timer = setTimeout(() => this.#show(item), delay);
        }
    }

    // The tooltip is shown after the focused item was scrolled into view.
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
        const popup = item.isConnected ? this.openedPopupOf(item) : null;
        this.#isDue = !popup;
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

    // Below the item, or above it where there is more space, and never outside the window.
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
