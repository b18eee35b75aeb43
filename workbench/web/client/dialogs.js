// Questions to the user: a dialog with some text, some fields and some buttons.

import {text} from './texts.js';

function makeField({name, label, type, value, hint}) {
    const field = document.createElement(type === 'lines' ? 'textarea' : 'input');
    if (type === 'lines') {
        field.rows = 5;
    } else {
        field.type = type ?? 'text';
    }
    field.name = name;
    field.value = value ?? '';
    field.dir = 'auto';
    field.spellcheck = type === 'lines';
    field.autocomplete = 'off';
    field.placeholder = hint ?? '';
    const caption = document.createElement('label');
    caption.append(label, field);
    return {caption, field};
}

function makeButton({key, value, isMain}, choose) {
    const button = document.createElement('button');
    button.type = 'button';
    button.className = isMain ? 'main' : '';
    button.textContent = text(key);
    button.addEventListener('click', () => choose(value));
    return button;
}

/// Asks, and promises `{choice, values}`: the value of the button and of the fields by their names.
/// Escape, and a button without a value, give null.
///
/// `fields`: `{name, label, type, value, hint}` with the type "lines" for long text.
/// `buttons`: `{key, value, isMain}`; Enter stands for the main one.
export function ask({title, message, fields = [], buttons}) {
    const dialog = document.createElement('dialog');
    const heading = document.createElement('h2');
    heading.textContent = title;
    heading.id = 'dialog-title';
    dialog.setAttribute('aria-labelledby', heading.id);
    dialog.append(heading);
    if (message) {
        const paragraph = document.createElement('p');
        paragraph.textContent = message;
        dialog.append(paragraph);
    }
    const made = fields.map(makeField);
    dialog.append(...made.map(({caption}) => caption));

    return new Promise((resolve) => {
        let result = null;
        const choose = (choice) => {
            const values = Object.fromEntries(made.map(({field}) => [field.name, field.value]));
            result = choice === undefined ? null : {choice, values};
            dialog.close();
        };
        const row = document.createElement('div');
        row.className = 'buttons';
        row.append(...buttons.map((button) => makeButton(button, choose)));
        dialog.append(row);
        const main = buttons.find((button) => button.isMain);
        dialog.addEventListener('keydown', (event) => {
            event.stopPropagation(); // the page's shortcuts are not meant here
            const isSent =
                event.target.matches('input') ||
                (event.target.matches('textarea') && (event.ctrlKey || event.metaKey));
            if (event.key === 'Enter' && isSent) {
                event.preventDefault();
                choose(main?.value);
            }
        });
        dialog.addEventListener('close', () => {
            dialog.remove();
            resolve(result);
        });
        document.body.append(dialog);
        dialog.showModal();
        (made[0]?.field ?? row.querySelector('.main') ?? row.firstElementChild).focus();
        made[0]?.field.select();
    });
}

export const kCancel = {key: 'dialog.cancel'};
