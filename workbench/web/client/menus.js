// Drop-down menus of buttons.

import {icon} from './icons.js';
import {text} from './texts.js';

function makeItem(entry, close) {
    const item = document.createElement('button');
    item.type = 'button';
    item.tabIndex = -1;
    const isChoice = entry.isChecked !== undefined;
    item.setAttribute('role', isChoice ? (entry.role ?? 'menuitemcheckbox') : 'menuitem');
    if (isChoice) {
        item.setAttribute('aria-checked', String(entry.isChecked));
    }
    if (entry.isDisabled) {
        item.setAttribute('aria-disabled', 'true');
    }
    const mark = document.createElement('span');
    mark.className = 'mark';
    if (entry.isChecked) {
        mark.append(icon('check'));
    }
    const words = document.createElement('span');
    words.className = 'words';
    words.textContent = entry.title ?? text(entry.key);
    const keys = document.createElement('kbd');
    keys.textContent = entry.shortcut ?? '';
    item.append(mark, words, keys);
    item.addEventListener('click', () => {
        if (!entry.isDisabled) {
            close();
            entry.act();
        }
    });
    return item;
}

function makeSeparator() {
    const line = document.createElement('div');
    line.setAttribute('role', 'separator');
    return line;
}

class Menu {
    #button;
    #entries;
    #list = null;

    constructor(button, entries) {
        this.#button = button;
        this.#entries = entries;
        button.setAttribute('aria-haspopup', 'menu');
        button.setAttribute('aria-expanded', 'false');
        button.addEventListener('click', () => (this.#list ? this.close() : this.open()));
        button.addEventListener('keydown', (event) => {
            if (event.key === 'ArrowDown' && !this.#list) {
                event.preventDefault();
                this.open();
            }
        });
    }

    open() {
        const list = document.createElement('div');
        list.className = 'menu';
        list.setAttribute('role', 'menu');
        const {ariaLabel, textContent} = this.#button;
        list.setAttribute('aria-label', ariaLabel ?? textContent.trim());
        list.append(
            ...this.#entries().map((entry) =>
                entry ? makeItem(entry, () => this.close()) : makeSeparator(),
            ),
        );
        list.addEventListener('keydown', (event) => this.#key(event));
        list.addEventListener('focusout', (event) => {
            if (!list.contains(event.relatedTarget)) {
                this.close(false);
            }
        });
        this.#list = list;
        this.#button.after(list);
        this.#place();
        this.#button.setAttribute('aria-expanded', 'true');
        this.#first(list).focus();
    }

    // A list of choices begins at the present one.
    #first(list) {
        const items = [...list.querySelectorAll('button')];
        const isChoice = items.every((item) => item.getAttribute('role') === 'menuitemradio');
        return (isChoice && items.find((item) => item.ariaChecked === 'true')) || items[0];
    }

    close(returnFocus = true) {
        const list = this.#list;
        this.#list = null;
        if (!list) {
            return;
        }
        this.#button.setAttribute('aria-expanded', 'false');
        if (returnFocus) {
            this.#button.focus();
        }
        list.remove();
    }

    #place() {
        const anchor = this.#button.getBoundingClientRect();
        const {clientWidth, clientHeight} = document.documentElement;
        const {offsetWidth} = this.#list;
        const isMirrored = document.documentElement.dir === 'rtl';
        const wanted = isMirrored ? anchor.right - offsetWidth : anchor.left;
        const left = Math.max(4, Math.min(wanted, clientWidth - offsetWidth - 4));
        this.#list.style.left = `${left}px`;
        this.#list.style.top = `${anchor.bottom + 2}px`;
        this.#list.style.maxHeight = `${clientHeight - anchor.bottom - 10}px`;
    }

    #key(event) {
        const items = [...this.#list.querySelectorAll('button')];
        const at = items.indexOf(document.activeElement);
        const targets = {
            ArrowDown: items[(at + 1) % items.length],
            ArrowUp: items[(at + items.length - 1) % items.length],
            Home: items[0],
            End: items[items.length - 1],
        };
        event.stopPropagation();
        const target = targets[event.key] ?? this.#itemFor(event, items, at);
        if (target) {
            target.focus();
        } else if (event.key === 'Escape' || event.key === 'Tab') {
            this.close();
        } else {
            return;
        }
        event.preventDefault();
    }

    // The next item that begins with a typed letter.
    #itemFor({key, ctrlKey, altKey, metaKey}, items, at) {
        if (key.length > 1 || key === ' ' || ctrlKey || altKey || metaKey) {
            return undefined;
        }
        const begins = (item) =>
            item
                .querySelector('.words')
                .textContent.toLocaleLowerCase()
                .startsWith(key.toLocaleLowerCase());
        return [...items.slice(at + 1), ...items.slice(0, at + 1)].find(begins);
    }
}

/// Attaches a menu to a button. `entries()` returns its entries at each opening: `{key or title,
/// act, shortcut?, isChecked?, role?, isDisabled?}`, null for a separator.
export function attachMenu(button, entries) {
    return new Menu(button, entries);
}
