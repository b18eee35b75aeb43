#!/usr/bin/env node
// The languages: each has the keys and the placeholders of English, and the web page asks for no key
// that there is not.

import {conclude, filesBelow, read} from './files.mjs';

const kEnglish = 'workbench/locales/en.json';

// Texts by key; what stands in an object gets the names on the way in front.
function flatten(value, path = '') {
    return typeof value === 'string'
        ? [[path, value]]
        : Object.entries(value).flatMap(([key, inner]) =>
              flatten(inner, path ? `${path} / ${key}` : key),
          );
}

const placeholders = (text) => (text.match(/\{\d\}|%\d%/g) ?? []).sort().join(' ');

function compare(file, english) {
    const texts = new Map(flatten(JSON.parse(read(file))));
    const findings = [];
    for (const [key, words] of english) {
        if (!texts.get(key)) {
            findings.push(`${file}: "${key}" is missing`);
        } else if (placeholders(texts.get(key)) !== placeholders(words)) {
            findings.push(`${file}: "${key}" has other placeholders than English`);
        }
    }
    for (const key of texts.keys()) {
        if (!english.has(key)) {
            findings.push(`${file}: "${key}" is no key of English`);
        }
    }
    return findings;
}

// Keys that stand in the page's sources as they are; others are put together from a group's name.
function keysIn(file) {
    const uses = /\btext\(\s*'([^']+)'|data-(?:text|label)="([^"]+)"/g;
    return [...read(file).matchAll(uses)].map((use) => use[1] ?? use[2]);
}

const english = new Map(flatten(JSON.parse(read(kEnglish))));
const client = filesBelow('workbench/web/client', '.js', '.html');
conclude([
    ...filesBelow('workbench/locales', '.json').flatMap((file) => compare(file, english)),
    ...client.flatMap((file) =>
        keysIn(file)
            .filter((key) => !english.has(`workbench / ${key}`))
            .map((key) => `${file}: there are no words for "${key}"`),
    ),
]);
