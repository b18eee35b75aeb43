// Menus and toolbar; they act on the active document.

import {icon} from './icons.js';
import {attachMenu} from './menus.js';
import {kLanguages, text} from './texts.js';
import {kThemes} from './theme.js';
import {kTools, toolName} from './tools.js';

const kLine = null;

export class Toolbar {
    #element;
    #app;
    #buttons = new Map();
    #menus = [];

    /// `app`: `documents` (their descriptions), `active` (one of them or null), `view`, `edits`, `tools`, `theme`,
    /// `language`, `split` and the actions of the web page.
    constructor(element, app) {
        this.#element = element;
        this.#app = app;
        this.#addMenu('menu.file', () => this.#fileEntries());
        this.#addMenu('menu.page', () => this.#pageEntries());
        this.#addMenu('menu.view', () => this.#viewEntries());
        this.#addGap();
        this.#addButton('save', () => app.save());
        this.#addButton('undo', () => app.undo());
        this.#addButton('redo', () => app.redo());
        this.#addGap();
        this.#addTools();
        this.#addGap();
        this.#addButton('edit', () => app.editCurrent());
        // A key held down deletes one comment only.
        this.#addButton('remove', () => app.removeCurrent()).addEventListener(
            'keydown',
            (event) => event.repeat && event.preventDefault(),
        );
        this.update();
        this.translate();
    }

    update() {
        const {active} = this.#app;
        const isWritable = active !== null && !active.readOnly;
        const enabled = {
            save: active !== null && active.modified && active.busy !== 'saving',
            undo: isWritable && Boolean(active.undo),
            redo: isWritable && Boolean(active.redo),
            edit: isWritable && active.current !== null,
            remove: isWritable && active.current !== null,
        };
        for (const [name, isEnabled] of Object.entries(enabled)) {
            this.#buttons.get(name).setAttribute('aria-disabled', String(!isEnabled));
        }
        for (const {name, subtype} of kTools) {
            const button = this.#buttons.get(name);
            button.setAttribute('aria-disabled', String(Boolean(subtype) && !isWritable));
            button.setAttribute('aria-pressed', String(this.#app.tools?.name === name));
        }
        this.#nameSteps();
    }

    translate() {
        this.#element.setAttribute('aria-label', text('toolbar.label'));
        for (const {button, key} of this.#menus) {
            button.firstElementChild.textContent = text(key);
        }
        for (const name of ['save', 'edit', 'remove']) {
            this.#name(name, text(`toolbar.${name}`));
        }
        for (const tool of kTools) {
            this.#name(tool.name, toolName(tool));
        }
        this.#buttons.get('select').parentElement.setAttribute('aria-label', text('toolbar.tools'));
        this.#nameSteps();
    }

    // The accessible name includes the edit to undo.
    #nameSteps() {
        for (const name of ['undo', 'redo']) {
            const step = this.#app.active?.[name];
            const words = text(`toolbar.${name}`);
            this.#name(name, step ? `${words}: ${text(`step.${step}`)}` : words);
        }
    }

    #name(name, words) {
        const button = this.#buttons.get(name);
        button.setAttribute('aria-label', words);
        button.title = words;
    }

    #addMenu(key, entries) {
        const button = document.createElement('button');
        button.type = 'button';
        button.className = 'menu-button';
        button.append(document.createElement('span'));
        this.#element.append(button);
        this.#menus.push({button, key});
        attachMenu(button, entries);
    }

    #addGap() {
        const gap = document.createElement('span');
        gap.className = 'divider';
        this.#element.append(gap);
    }

    #addButton(name, act, parent = this.#element) {
        const button = document.createElement('button');
        button.type = 'button';
        button.className = 'tool';
        button.dataset.action = name;
        button.append(icon(name));
        button.addEventListener('click', () => {
            if (button.getAttribute('aria-disabled') !== 'true') {
                act();
            }
        });
        parent.append(button);
        this.#buttons.set(name, button);
        return button;
    }

    #addTools() {
        const group = document.createElement('div');
        group.className = 'group';
        group.setAttribute('role', 'group');
        for (const {name} of kTools) {
            this.#addButton(name, () => this.#app.tools.choose(name), group);
        }
        this.#element.append(group);
    }

    // --- Menus ---

    #fileEntries() {
        const {active, documents, edits} = this.#app;
        const isDisabled = active === null;
        return [
            {key: 'file.open', shortcut: 'Ctrl+O', act: () => edits.askOpen()},
            kLine,
            {key: 'file.save', shortcut: 'Ctrl+S', isDisabled, act: () => this.#app.save()},
            {key: 'file.saveAs', isDisabled, act: () => edits.saveAs(active)},
            {key: 'file.saveCopy', isDisabled, act: () => edits.saveCopy(active, documents)},
            {key: 'file.download', isDisabled, act: () => edits.download(active)},
            kLine,
            {
                key: 'file.readOnly',
                isDisabled,
                isChecked: active?.readOnly ?? false,
                act: () => edits.run('read-only', {document: active.id, on: !active.readOnly}),
            },
            {key: 'file.close', isDisabled, act: () => edits.close(active)},
        ];
    }

    #pageEntries() {
        const {active, view, edits} = this.#app;
        const page = view?.currentPage ?? 0;
        const isDisabled = active === null || active.readOnly;
        const last = (active?.pages ?? 0) - 1;
        return [
            {
                title: text('page.insertAfter', page + 1),
                isDisabled,
                act: () => edits.insertPage(active, page + 1),
            },
            {
                title: text('page.delete', page + 1),
                isDisabled,
                act: () => edits.deletePage(active, page),
            },
            kLine,
            {
                title: text('page.moveUp', page + 1),
                isDisabled: isDisabled || page === 0,
                act: () => edits.movePage(active, page, page - 1),
            },
            {
                title: text('page.moveDown', page + 1),
                isDisabled: isDisabled || page >= last,
                act: () => edits.movePage(active, page, page + 1),
            },
            {
                title: text('page.moveTo', page + 1),
                isDisabled: isDisabled || last < 1,
                act: () => edits.askMovePage(active, page),
            },
        ];
    }

    #viewEntries() {
        const {view, edits, theme, language, split} = this.#app;
        const choice = (fields, act) => ({role: 'menuitemradio', act, ...fields});
        const zoom = (key, shortcut, act) => ({key, shortcut, act, isDisabled: !view});
        return [
            zoom('view.larger', 'Ctrl +', () => view.zoom.step(true)),
            zoom('view.smaller', 'Ctrl −', () => view.zoom.step(false)),
            zoom('view.fitWidth', 'Ctrl 0', () => view.zoom.fitWidth()),
            {key: 'view.find', shortcut: 'Ctrl+F', act: () => this.#app.find()},
            {key: 'view.split', isChecked: split.isOn, act: () => split.toggle()},
            kLine,
            ...kThemes.map((name) =>
                choice({key: `theme.${name}`, isChecked: theme.choice === name}, () =>
                    theme.choose(name),
                ),
            ),
            kLine,
            ...kLanguages.map(({name, title}) =>
                choice({title, isChecked: language.name === name}, () => language.choose(name)),
            ),
            kLine,
            {key: 'view.author', act: () => edits.askAuthor()},
        ];
    }
}
