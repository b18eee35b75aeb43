#!/usr/bin/env node
// The slots in docs/interface.md are those of the catalogues in the headers.
//
// A row of its tables that begins with names of interfaces says in its second column how many slots
// an interface has (all from 0 on), or which: numbers, ranges "0 to 5", and pairs "8/9" of events.

import {conclude, filesBelow, read} from './files.mjs';

const kReference = 'docs/interface.md';

function catalogues() {
    const slots = new Map();
    for (const path of filesBelow('App/include', '.h')) {
        for (const [, kind, owner, number] of read(path).matchAll(
            /\bSO_(METHOD|EVENT)\((\w+),\s*\w+,\s*(\d+)/g,
        )) {
            const known = slots.get(owner) ?? [];
            known.push(Number(number), ...(kind === 'EVENT' ? [Number(number) + 1] : []));
            slots.set(owner, known);
        }
    }
    return slots;
}

function numbersIn(text, isCount) {
    if (isCount) {
        return [...Array(Number(text)).keys()];
    }
    return [...text.matchAll(/(\d+)(?: to (\d+))?/g)].flatMap(([, first, last = first]) =>
        Array.from({length: last - first + 1}, (_, at) => Number(first) + at),
    );
}

function inOrder(numbers) {
    return numbers.toSorted((left, right) => left - right).join(' ');
}

const actual = catalogues();
const told = new Set();
const findings = [];
let isCount = false;
for (const line of read(kReference).split('\n')) {
    const [, names = '', second = ''] = line.split('|').map((cell) => cell.trim());
    if (names === 'interface') {
        isCount = second === 'slots';
    }
    for (const [, name] of names.matchAll(/`(\w+)`/g)) {
        if (!actual.has(name)) {
            continue;
        }
        told.add(name);
        const expected = inOrder(numbersIn(second, isCount));
        const found = inOrder(actual.get(name));
        if (found !== expected) {
            findings.push(`${kReference}: ${name} has the slots ${found}, told are ${expected}`);
        }
    }
}
for (const name of actual.keys()) {
    if (!told.has(name)) {
        findings.push(`${kReference}: nothing is told of ${name}`);
    }
}
conclude(findings);
