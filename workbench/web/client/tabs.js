// Tabs of the open documents, and a menu of them all while there is not room for every tab. A tab list
// holds nothing but tabs, so the list is an element of its own that owns the tabs, and the close
// buttons stand beside them.

import {icon} from './icons.js';
import {attachMenu} from './menus.js';
import {text} from './texts.js';

// Length of the end of a title that stays when the title is shortened.
const kEnd = 9;

function fillTitle(words, title) {
    const letters = [...title];
    const parts = [letters.slice(0, -kEnd), letters.slice(-kEnd)];
    words.replaceChildren(
        ...parts.map((part, at) => {
            const span = document.createElement('span');
            span.className = at === 0 ? 'beginning' : 'end';
            span.textContent = part.join('');
            return span;
        }),
    );
}

// Titles by document: of documents with one name, folders or numbers tell which is which.
function titlesOf(documents) {
    const titles = new Map();
    const isTaken = (title) => [...titles.values()].includes(title);
    for (const {id, name, path} of documents) {
        const isShared = documents.filter((one) => one.name === name).length > 1;
        const folders = isShared && path ? path.split('/').slice(0, -1) : [];
        const title = folders.length > 0 ? `${name} – ${folders.at(-1)}` : name;
        const wanted = isTaken(title) && path ? path : title;
        let free = wanted;
        for (let number = 2; isTaken(free); ++number) {
            free = `${wanted} (${number})`;
        }
        titles.set(id, free);
    }
    return titles;
}

export class Tabs {
    #area;
    #list = document.createElement('span');
    #actions;
    #tabs = new Map();
    #active = null;
    #looks = '';
    #all = document.createElement('button');

    /// `actions`: `activate(description)` and `close(description)`.
    constructor(area, actions) {
        this.#area = area;
        this.#actions = actions;
        this.#list.setAttribute('role', 'tablist');
        area.append(this.#list);
        area.addEventListener('keydown', (event) => this.#key(event));
        this.#addMenu();
    }

    update(documents, active) {
        this.#list.setAttribute('aria-label', text('tabs.label'));
        for (const [id, tab] of this.#tabs) {
            if (!documents.some((one) => one.id === id)) {
                tab.element.remove();
                this.#tabs.delete(id);
            }
        }
        const titles = titlesOf(documents);
        for (const description of documents) {
            this.#updateTab(description, titles.get(description.id), description.id === active);
        }
        this.#list.hidden = documents.length === 0;
        this.#list.setAttribute(
            'aria-owns',
            documents.map(({id}) => this.#tabs.get(id).button.id).join(' '),
        );
        if (active !== this.#active) {
            this.#active = active;
            this.#showActive();
        }
        const looks = [text('tabs.all'), ...titles.values()].join('\n');
        if (looks !== this.#looks) {
            this.#looks = looks;
            this.#all.setAttribute('aria-label', text('tabs.all'));
            this.#all.title = text('tabs.all');
            this.#showMenu();
        }
    }

    #addMenu() {
        this.#all.type = 'button';
        this.#all.className = 'tool';
        this.#all.id = 'all-tabs';
        this.#all.hidden = true;
        this.#all.append(icon('down'));
        this.#area.after(this.#all);
        attachMenu(this.#all, () =>
            [...this.#tabs.values()].map(({description, words}) => ({
                title: words.textContent,
                role: 'menuitemradio',
                isChecked: description.id === this.#active,
                act: () => this.#actions.activate(description),
            })),
        );
        new ResizeObserver(() => {
            this.#showMenu();
            this.#showActive();
        }).observe(this.#area);
    }

    // Without the button the tabs have its room, too.
    #showMenu() {
        const room = this.#area.clientWidth + (this.#all.hidden ? 0 : this.#all.offsetWidth);
        this.#all.hidden = this.#tabs.size < 2 || this.#area.scrollWidth <= room;
    }

    #showActive() {
        this.#tabs.get(this.#active)?.element.scrollIntoView({block: 'nearest', inline: 'nearest'});
    }

    #updateTab(description, title, isActive) {
        const {id, name, modified, path} = description;
        let tab = this.#tabs.get(id);
        if (!tab) {
            tab = this.#makeTab(id);
            this.#tabs.set(id, tab);
            this.#area.append(tab.element);
        }
        tab.description = description;
        const isBusy = description.busy !== null;
        const looks = [title, path, modified, isActive, isBusy, text('tabs.close', title)].join(
            '\n',
        );
        if (tab.looks === looks) {
            return; // the change does not affect the tabs
        }
        tab.looks = looks;
        fillTitle(tab.words, title);
        tab.button.title = path ?? name;
        tab.button.setAttribute('aria-selected', String(isActive));
        tab.button.setAttribute(
            'aria-label',
            [title, modified && text('tabs.modified')].filter(Boolean).join(', '),
        );
        tab.button.tabIndex = isActive ? 0 : -1;
        tab.element.classList.toggle('active', isActive);
        tab.element.classList.toggle('modified', modified);
        tab.element.classList.toggle('busy', isBusy);
        tab.close.setAttribute('aria-label', text('tabs.close', title));
        tab.close.title = text('tabs.close', title);
    }

    #makeTab(id) {
        const element = document.createElement('div');
        element.className = 'tab';
        const button = document.createElement('button');
        button.type = 'button';
        button.id = `tab-${id}`;
        button.setAttribute('role', 'tab');
        const words = document.createElement('bdi');
        const close = document.createElement('button');
        close.type = 'button';
        close.className = 'close';
        close.tabIndex = -1;
        close.append(icon('close'));
        button.append(words);
        element.append(button, close);
        const tab = {element, button, words, close, description: null, looks: ''};
        button.addEventListener('click', () => this.#actions.activate(tab.description));
        element.addEventListener('auxclick', (event) => {
            if (event.button === 1) {
                this.#actions.close(tab.description);
            }
        });
        close.addEventListener('click', () => this.#actions.close(tab.description));
        return tab;
    }

    #key(event) {
        const tabs = [...this.#tabs.values()];
        const at = tabs.findIndex((tab) => tab.button === event.target);
        if (at < 0) {
            return;
        }
        const forward = document.documentElement.dir === 'rtl' ? 'ArrowLeft' : 'ArrowRight';
        const backward = document.documentElement.dir === 'rtl' ? 'ArrowRight' : 'ArrowLeft';
        const target = {
            [forward]: tabs[at + 1],
            [backward]: tabs[at - 1],
            Home: tabs[0],
            End: tabs[tabs.length - 1],
        }[event.key];
        if (target) {
            target.button.focus();
            this.#actions.activate(target.description);
        } else if (event.key === 'Delete') {
            this.#actions.close(tabs[at].description);
        } else {
            return;
        }
        event.preventDefault();
    }
}
