// Editor of a comment's contents: a text field at the comment, over the list or beside the
// annotation. The rest of the web page stays usable; leaving the editor accepts its text.

import {listenEverywhere, onMovedPlaces} from './comment-places.js';
import {rememberFocus, returnFocus} from './focus-return.js';
import {text} from './texts.js';

const kMargin = 4;
const kNarrowest = 200;
const kWidthOnPage = 320;

const between = (least, value, most) => Math.max(least, Math.min(value, most));

let openEditor = null;

/// Opens the editor and resolves when it closes. An editor that is open is accepted first; when that
/// is refused, it stays and no other one opens.
///
/// `place`: as in comment-places.js.
/// `attempt(contents)` resolves to an error text, or null on success: the editor stays open with its
/// text until an attempt succeeds or the user abandons it. Unchanged contents of a comment are not
/// attempted; those of a new one (`isNew`) are.
export async function editContents(request) {
    await openEditor?.accept();
    if (openEditor === null) {
        openEditor = new ContentsEditor(request);
        await openEditor.closed;
    }
}

class ContentsEditor {
    #place;
    #attempt;
    #isNew;
    #former;
    #box;
    #origin;
    #isWarned = false;
    #trial = null;
    #listening = new AbortController();
    #element = document.createElement('div');
    #field = document.createElement('textarea');
    #failure = document.createElement('p');
    #caption = document.createElement('p');
    #resolve;
    /// Resolves when the editor is closed.
    closed = new Promise((resolve) => {
        this.#resolve = resolve;
    });

    constructor({title, value, isNew = false, place, attempt}) {
        this.#place = place;
        this.#box = place.otherwise ?? {left: 0, top: 0, width: 0, height: 0};
        this.#attempt = attempt;
        this.#isNew = isNew;
        this.#origin = rememberFocus();
        this.#element.className = place.isInList ? 'contents-editor in-list' : 'contents-editor';
        this.#element.setAttribute('role', 'dialog');
        this.#element.setAttribute('aria-label', title);
        this.#failure.className = 'failure';
        this.#failure.setAttribute('role', 'alert');
        this.#failure.dir = 'auto';
        this.#caption.className = 'caption';
        this.#caption.setAttribute('aria-hidden', 'true');
        this.#caption.textContent = title;
        this.#fillField(value);
        this.#element.append(this.#caption, this.#field, this.#failure, this.#makeButtons());
        document.body.append(this.#element);
        this.#listen();
        this.#settle();
        this.#focusField();
        this.#field.setSelectionRange(this.#former.length, this.#former.length);
    }

    /// Attempts the text, and closes the editor on success.
    accept() {
        this.#trial ??= this.#try().finally(() => {
            this.#trial = null;
        });
        return this.#trial;
    }

    #fillField(value) {
        this.#field.value = value;
        this.#former = this.#field.value; // a text field has line feeds alone
        this.#field.rows = 2;
        this.#field.dir = 'auto';
        this.#field.setAttribute('aria-label', text('contents.label'));
    }

    #makeButtons() {
        const row = document.createElement('div');
        row.className = 'buttons';
        const add = (key, shortcut, act) => {
            const button = document.createElement('button');
            button.type = 'button';
            button.textContent = text(key);
            button.setAttribute('aria-keyshortcuts', shortcut);
            button.addEventListener('click', act);
            row.append(button);
            return button;
        };
        add('dialog.cancel', 'Escape', () => this.#abandon());
        add('dialog.accept', 'Control+Enter', () => this.accept()).className = 'main';
        return row;
    }

    #listen() {
        const {signal} = this.#listening;
        this.#element.addEventListener('keydown', (event) => this.#key(event));
        const left = () => setTimeout(() => this.#left());
        this.#element.addEventListener('focusout', left);
        listenEverywhere('focusin', left, signal); // also out of the browser's own controls
        this.#field.addEventListener('input', () => {
            this.#isWarned = false;
            this.#failure.textContent = '';
            this.#settle();
        });
        onMovedPlaces(() => this.#settle(), signal);
    }

    #focusField() {
        this.#field.focus({preventScroll: true});
    }

    // --- Place ---

    // Over the item as wide as it is, or below the annotation, else above it; at the edge of the list
    // or the pages while the comment is scrolled out of them, and always within the window.
    #settle() {
        const {clientWidth, clientHeight} = document.documentElement;
        const view = this.#place.bounds() ?? new DOMRect(0, 0, clientWidth, clientHeight);
        this.#box = this.#place.find() ?? this.#box;
        const {left, width} = this.#box;
        const {isInList} = this.#place;
        const {style} = this.#element;
        const ownWidth = between(
            kNarrowest,
            isInList ? width : kWidthOnPage,
            clientWidth - 2 * kMargin,
        );
        style.width = `${ownWidth}px`;
        const isMirrored = document.documentElement.dir === 'rtl';
        const wanted = isMirrored ? left + width - ownWidth : left;
        const margin = isInList ? 0 : kMargin;
        const inView = between(view.left + margin, wanted, view.right - ownWidth - margin);
        style.left = `${between(kMargin, inView, clientWidth - ownWidth - kMargin)}px`;
        this.#caption.hidden = isInList && this.#showsHeading(view);
        style.top = `${this.#topIn(view)}px`;
    }

    // The heading of the item stays visible above the editor and serves as its caption.
    #showsHeading(view) {
        const {top, headingTop} = this.#box;
        this.#caption.hidden = true;
        return headingTop >= view.top && this.#topIn(view) >= top;
    }

    #topIn(view) {
        const {top, height} = this.#box;
        const ownHeight = this.#element.offsetHeight;
        const margin = this.#place.isInList ? 0 : kMargin;
        const [highest, lowest] = [view.top + margin, view.bottom - ownHeight - margin];
        const [above, below] = [top - ownHeight - margin, top + height + margin];
        const beside = below > lowest && above >= highest ? above : below;
        const inView = between(highest, this.#place.isInList ? top : beside, lowest);
        return between(
            kMargin,
            inView,
            document.documentElement.clientHeight - ownHeight - kMargin,
        );
    }

    // --- Outcome ---

    async #try() {
        const contents = this.#field.value;
        this.#field.readOnly = true; // what is typed now would be lost
        this.#element.setAttribute('aria-busy', 'true');
        const isSame = !this.#isNew && contents === this.#former;
        const failure = isSame ? null : await this.#attempt(contents);
        this.#field.readOnly = false;
        this.#element.removeAttribute('aria-busy');
        if (failure === null) {
            this.#close();
        } else {
            this.#warn(failure);
        }
    }

    #warn(words) {
        this.#failure.textContent = words;
        this.#settle();
        this.#focusField();
    }

    // Typed text is not dropped without a warning.
    #abandon() {
        if (this.#trial) {
            return;
        }
        if (this.#field.value === this.#former || this.#isWarned) {
            this.#close();
            return;
        }
        this.#warn(text('contents.unsaved'));
        this.#isWarned = true;
    }

    // The focus goes back unless the user has moved it elsewhere.
    #close() {
        const active = document.activeElement;
        const isNowhere = active === null || active === document.body;
        const isHere = isNowhere || this.#element.contains(active);
        openEditor = null;
        this.#listening.abort();
        this.#element.remove();
        if (isHere) {
            returnFocus(this.#origin);
        }
        this.#resolve();
    }

    // --- Input ---

    // Another window, and a dialog that the user has not asked for, do not accept the text.
    #left() {
        const active = document.activeElement;
        const isLeft =
            this.#element.isConnected &&
            document.hasFocus() &&
            !this.#element.contains(active) &&
            !active?.closest('dialog');
        if (isLeft) {
            this.accept();
        }
    }

    // Of the web page's shortcuts, saving includes the text; F2 and Escape have no other meaning here.
    // Tab beyond the ends accepts like leaving in other ways: the browser's own controls follow there.
    #key(event) {
        const isCommand = event.ctrlKey || event.metaKey;
        const end = event.shiftKey ? this.#field : this.#element.querySelector('.main');
        if (event.isComposing) {
            return;
        }
        if (event.key === 'Escape') {
            this.#abandon();
        } else if (event.key === 'Enter' && isCommand) {
            this.accept();
        } else if (event.key === 'Tab' && event.target === end) {
            this.accept();
        } else if (isCommand && event.key.toLowerCase() === 's') {
            this.accept();
            return;
        } else if (event.key !== 'F2') {
            return;
        }
        event.preventDefault();
        event.stopPropagation();
    }
}
