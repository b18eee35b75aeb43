// The page's own words in the language of the panel.

import ar from './texts/ar.js';
import de from './texts/de.js';
import en from './texts/en.js';
import he from './texts/he.js';
import ru from './texts/ru.js';

const kTables = {ar, de, en, he, ru};

let table = en;

/// Sets the language; one that has no words of its own gets the English ones.
export function setTextLanguage(name) {
    table = kTables[name] ?? en;
}

/// The words of a key, with values in the place of {0}, {1}, ...
export function text(key, ...values) {
    const words = table[key] ?? en[key] ?? key.slice(key.indexOf('.') + 1);
    return words.replace(/\{(\d)\}/g, (match, at) => String(values[at] ?? match));
}

/// Whether a key has words.
export function hasText(key) {
    return en[key] !== undefined;
}

/// Every key of every table, for whoever checks that none is missing.
export function textTables() {
    return kTables;
}

/// Fills in the elements of the page that name their words: `data-text`, `data-label`.
export function translatePage() {
    for (const element of document.querySelectorAll('[data-text]')) {
        element.textContent = text(element.dataset.text);
    }
    for (const element of document.querySelectorAll('[data-label]')) {
        element.setAttribute('aria-label', text(element.dataset.label));
    }
}
