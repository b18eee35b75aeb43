// The words of the web page and the names of comments, in the language of the panel: the tables are
// those of the host's languages, one file each.

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

/// Sets the language; one that is not there gets English words.
export function setTextLanguage(name) {
    table = kTables[name] ?? kTables.en;
}

// The words of a key in a part of the present language's table, else of the English one.
function find(part, key) {
    const parts = [table?.[part], kTables.en?.[part]];
    return parts.find((words) => words && Object.hasOwn(words, key))?.[key];
}

/// The words of a key, with values in the place of {0}, {1}, ...
export function text(key, ...values) {
    const words = find('workbench', key) ?? key;
    return words.replace(/\{(\d)\}/g, (match, at) => String(values[at] ?? match));
}

/// Whether a key has words.
export function hasText(key) {
    return find('workbench', key) !== undefined;
}

/// The name of a subtype of annotations, as the panel has it.
export function subtypeName(subtype) {
    return find('strings', subtype) ?? subtype;
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
