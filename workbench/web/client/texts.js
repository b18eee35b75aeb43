// Texts of the web page and names of annotation subtypes, in the panel's language. The tables come
// from the host's language files.

async function readTables() {
    try {
        const reply = await fetch(new URL('locales', document.baseURI));
        return reply.ok ? await reply.json() : {};
    } catch {
        return {};
    }
}

const kTables = await readTables();
let table = kTables.en;

/// The languages, sorted by name: `name` ("de"), `title` ("Deutsch") and `direction`.
export const kLanguages = Object.entries(kTables).map(
    ([name, {name: title = name, direction = 'ltr'}]) => ({name, title, direction}),
);

/// Sets the language; an unknown one gives English texts.
export function setTextLanguage(name) {
    table = kTables[name] ?? kTables.en;
}

// The text of a key in a part of the present language's table, else of the English one.
function find(part, key) {
    const parts = [table?.[part], kTables.en?.[part]];
    return parts.find((words) => words && Object.hasOwn(words, key))?.[key];
}

/// The text of a key, with values in place of {0}, {1}, ...
export function text(key, ...values) {
    const words = find('workbench', key) ?? key;
    return words.replace(/\{(\d)\}/g, (match, at) => String(values[at] ?? match));
}

/// Whether a key has a text.
export function hasText(key) {
    return find('workbench', key) !== undefined;
}

/// The panel's name of an annotation subtype.
export function subtypeName(subtype) {
    return find('strings', subtype) ?? subtype;
}

/// Translates the elements with `data-text` and `data-label`.
export function translatePage() {
    for (const element of document.querySelectorAll('[data-text]')) {
        element.textContent = text(element.dataset.text);
    }
    for (const element of document.querySelectorAll('[data-label]')) {
        element.setAttribute('aria-label', text(element.dataset.label));
    }
}
