// Tabs of the open documents. A tab list holds nothing but tabs, so the list is an element of its own
// that owns the tabs, and the close buttons stand beside them.

import {icon} from './icons.js';
import {text} from './texts.js';

export class Tabs {
    #area;
    #list = document.createElement('span');
    #actions;
    #tabs = new Map();
    #active = null;

    /// `actions`: `activate(description)` and `close(description)`.
    constructor(area, actions) {
        this.#area = area;
        this.#actions = actions;
        this.#list.setAttribute('role', 'tablist');
        area.append(this.#list);
        area.addEventListener('keydown', (event) => this.#key(event));
    }

    update(documents, active) {
        this.#list.setAttribute('aria-label', text('tabs.label'));
        for (const [id, tab] of this.#tabs) {
            if (!documents.some((one) => one.id === id)) {
                tab.element.remove();
                this.#tabs.delete(id);
            }
        }
        for (const description of documents) {
            this.#updateTab(description, description.id === active);
        }
        this.#list.hidden = documents.length === 0;
        this.#list.setAttribute(
            'aria-owns',
            documents.map(({id}) => this.#tabs.get(id).button.id).join(' '),
        );
        if (active !== this.#active) {
            this.#active = active;
            this.#tabs.get(active)?.element.scrollIntoView({block: 'nearest', inline: 'nearest'});
        }
    }

    #updateTab(description, isActive) {
        const {id, name, modified, path} = description;
        let tab = this.#tabs.get(id);
        if (!tab) {
            tab = this.#makeTab(id);
            this.#tabs.set(id, tab);
            this.#area.append(tab.element);
        }
        tab.description = description;
        const isBusy = description.busy !== null;
        const looks = [name, path, modified, isActive, isBusy, text('tabs.close', name)].join('\n');
        if (tab.looks === looks) {
            return; // the change does not affect the tabs
        }
        tab.looks = looks;
        tab.words.textContent = name;
        tab.button.title = path ?? name;
        tab.button.setAttribute('aria-selected', String(isActive));
        tab.button.setAttribute(
            'aria-label',
            [name, modified && text('tabs.modified')].filter(Boolean).join(', '),
        );
        tab.button.tabIndex = isActive ? 0 : -1;
        tab.element.classList.toggle('active', isActive);
        tab.element.classList.toggle('modified', modified);
        tab.element.classList.toggle('busy', isBusy);
        tab.close.setAttribute('aria-label', text('tabs.close', name));
        tab.close.title = text('tabs.close', name);
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
