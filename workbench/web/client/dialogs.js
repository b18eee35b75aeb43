// Modal dialogs with a message, fields and buttons.

import {rememberFocus, returnFocus} from './focus-return.js';
import {text} from './texts.js';

// More buttons than this are stacked vertically.
const kInRow = 3;

let countOfDialogs = 0;

// Open dialogs, the topmost one last.
const openDialogs = [];

function makeField({name, label, type, value, hint}) {
    const field = document.createElement('input');
    field.type = type ?? 'text';
    field.name = name;
    field.value = value ?? '';
    field.dir = 'auto';
    field.spellcheck = false;
    field.autocomplete = 'off';
    field.placeholder = hint ?? '';
    const caption = document.createElement('label');
    caption.append(label, field);
    return {caption, field};
}

function makeParagraph(words) {
    const paragraph = document.createElement('p');
    paragraph.textContent = words;
    return paragraph;
}

function makeLines(lines) {
    const list = document.createElement('ul');
    list.className = 'details';
    for (const line of lines) {
        const item = document.createElement('li');
        item.dir = 'auto';
        item.textContent = line;
        list.append(item);
    }
    return list;
}

function makeButton({key, value, isMain}, choose) {
    const button = document.createElement('button');
    button.type = 'button';
    button.className = isMain ? 'main' : '';
    button.textContent = text(key);
    button.addEventListener('click', () => choose(value));
    return button;
}

/// Opens a dialog and resolves to `{choice, values}`: the button's value and the fields' values by
/// name; to null for Escape and a button without a value. The keyboard focus is restored.
///
/// `fields`: `{name, label, type, value, hint}` with the type of an input field.
/// `buttons`: `{key, value, isMain}`; Enter presses the main one.
/// `attempt({choice, values})`, optional, resolves to an error text, or null on success: the dialog
/// stays open and shows the text until an attempt succeeds.
/// `signal` closes the dialog with the result null.
/// `countdown()` returns a line that is updated each second.
/// `details` are lines of text below the message.
export function ask(question) {
    return new Promise((resolve) => {
        new Dialog(question, resolve).open();
    });
}

class Dialog {
    #element = document.createElement('dialog');
    #fields;
    #buttons;
    #main;
    #failure = document.createElement('p');
    #attempt;
    #result = null;
    #isTrying = false;
    #origin = [];
    #timer = 0;

    constructor(question, resolve) {
        const {
            title,
            message,
            details,
            countdown,
            fields = [],
            buttons,
            attempt,
            signal,
        } = question;
        this.#attempt = attempt ?? (() => null);
        this.#fields = fields.map(makeField);
        this.#buttons = buttons.map((button) =>
            makeButton(button, (choice) => this.#choose(choice)),
        );
        this.#main = buttons.find((button) => button.isMain)?.value;
        this.#element.append(this.#makeHeading(title));
        if (message) {
            this.#element.append(makeParagraph(message));
        }
        if (details) {
            this.#element.append(makeLines(details));
        }
        if (countdown) {
            this.#count(countdown);
        }
        this.#element.append(...this.#fields.map(({caption}) => caption));
        this.#failure.className = 'failure';
        this.#failure.setAttribute('role', 'alert');
        this.#failure.dir = 'auto';
        const row = document.createElement('div');
        row.className = buttons.length > kInRow ? 'buttons stacked' : 'buttons';
        row.append(...this.#buttons);
        this.#element.append(this.#failure, row);
        this.#element.addEventListener('keydown', (event) => this.#key(event));
        this.#element.addEventListener('close', () => {
            clearInterval(this.#timer);
            this.#element.remove();
            this.#returnFocus();
            resolve(this.#result);
        });
        signal?.addEventListener('abort', () => {
            this.#result = null;
            this.#element.close();
        });
    }

    open() {
        this.#origin = rememberFocus();
        openDialogs.push(this);
        document.body.append(this.#element);
        this.#element.showModal();
        this.#focusFirst();
        this.#fields[0]?.field.select();
    }

    // A dialog that closes below another one leaves the focus in that one and passes on its own
    // return target.
    #returnFocus() {
        const at = openDialogs.indexOf(this);
        const above = openDialogs[at + 1];
        openDialogs.splice(at, 1);
        if (!above) {
            returnFocus(this.#origin);
        } else if (above.#origin.includes(this.#element)) {
            above.#origin = this.#origin;
        }
    }

    #focusFirst() {
        const main = this.#buttons.find((button) => button.className === 'main');
        (this.#fields[0]?.field ?? main ?? this.#buttons[0]).focus();
    }

    #count(countdown) {
        const paragraph = makeParagraph(countdown());
        this.#element.append(paragraph);
        this.#timer = setInterval(() => {
            paragraph.textContent = countdown();
        }, 1000);
    }

    #makeHeading(title) {
        const heading = document.createElement('h2');
        heading.textContent = title;
        heading.id = `dialog-title-${++countOfDialogs}`;
        this.#element.setAttribute('aria-labelledby', heading.id);
        return heading;
    }

    async #choose(choice) {
        if (choice === undefined) {
            this.#element.close();
            return;
        }
        if (this.#isTrying) {
            return;
        }
        const values = Object.fromEntries(this.#fields.map(({field}) => [field.name, field.value]));
        this.#isTrying = true;
        this.#element.setAttribute('aria-busy', 'true');
        const failure = await this.#attempt({choice, values});
        this.#isTrying = false;
        this.#element.removeAttribute('aria-busy');
        if (failure === null) {
            this.#result = {choice, values};
            this.#element.close();
            return;
        }
        this.#failure.textContent = failure;
        if (failure !== '') {
            this.#focusFirst();
        }
    }

    #key(event) {
        event.stopPropagation(); // shortcuts of the web page do not apply here
        if (event.key === 'Enter' && event.target.matches('input')) {
            event.preventDefault();
            this.#choose(this.#main);
        }
    }
}

export const kCancel = {key: 'dialog.cancel'};
