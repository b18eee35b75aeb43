// The words of the web page and the names of comments, in the language of the panel: the tables are
// those of the host's languages, one file each.

const kTables = await (await fetch(new URL('locales', document.baseURI))).json();

let table = kTables.en;

/// Sets the language; one that is not there gets English words.
export function setTextLanguage(name) {
    table = kTables[name] ?? kTables.en;
}

/// The words of a key, with values in the place of {0}, {1}, ...
export function text(key, ...values) {
    const words = table.workbench[key] ?? kTables.en.workbench[key] ?? key;
    return words.replace(/\{(\d)\}/g, (match, at) => String(values[at] ?? match));
}

/// Whether a key has words.
export function hasText(key) {
    return kTables.en.workbench[key] !== undefined;
}

/// The name of a subtype of annotations, as the panel has it.
export function subtypeName(subtype) {
    return table.strings[subtype] ?? subtype;
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
