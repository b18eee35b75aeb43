#!/usr/bin/env node
// Files of the panel and of the page: what is named is there, and what is there is named.

import {basename, dirname, join} from 'node:path';

import {conclude, exists, filesBelow, read} from './files.mjs';

const kPanel = 'resources/document-panel-comments';
const kPage = 'workbench/web/client';
// Named by nothing here: the host uses it, or the browser starts with it.
const kEntrances = [
    `${kPanel}/button.css`,
    `${kPanel}/comments-list.png`,
    `${kPanel}/panel.htm`,
    `${kPage}/index.html`,
    `${kPage}/panel.html`,
];

function readText(path) {
    const isWide = basename(path).startsWith('template-');
    return read(path, isWide ? 'utf16le' : 'utf8');
}

/// The paths, from the root of the tree, that a file names in order to load them.
function namedBy(path) {
    const source = readText(path);
    const names = [
        ...source.matchAll(/url\(\s*["']?([^)"':]+)/g),
        ...source.matchAll(/\b(?:src|href)\s*=\s*"([^":]+)"/g),
        ...source.matchAll(/\bfrom '(\.[^']+)'/g),
        ...source.matchAll(/\bimport\('(\.[^']+)'/g),
    ];
    return names.map(([, name]) => {
        if (name.startsWith('app/')) {
            return join(kPage, name.slice('app/'.length));
        }
        // The host's part of the panel's resources.
        const common = name.match(/^(?:\.\.\/)+(common\/.*)/);
        const drawing = name.match(/^(?:\.\.\/)+panel\/document-panel-comments\/(artwork\/.*)/);
        return (
            (common && join(kPage, common[1])) ||
            (drawing && join(kPanel, drawing[1])) ||
            join(dirname(path), name)
        );
    });
}

const findings = [];
const loading = [
    ...filesBelow(kPanel, '.htm', '.css'),
    ...filesBelow(kPage, '.html', '.css', '.js'),
];
const used = new Set(kEntrances);
for (const path of loading) {
    for (const name of namedBy(path)) {
        used.add(name);
        if (!exists(name)) {
            findings.push(`${path}: there is no ${name}`);
        }
    }
}

// Templates and two style sheets are loaded by names in the sources.
const sources = [...filesBelow('App/src', '.cpp', '.h'), ...filesBelow(kPage, '.js')].map((path) =>
    read(path),
);
for (const path of [...filesBelow(kPanel, ''), ...filesBelow(kPage, '')]) {
    const name = basename(path);
    if (!name.includes('.') || used.has(path) || path.includes('/artwork/')) {
        continue;
    }
    if (!sources.some((source) => source.includes(`/${name}"`) || source.includes(`'${name}'`))) {
        findings.push(`${path}: nothing uses it`);
    }
}

// An image is drawn from a vector source of its name.
for (const folder of [kPanel, `${kPage}/common/images`]) {
    const images = filesBelow(folder, '.png').map((path) => basename(path, '.png'));
    const drawings = filesBelow(`${folder}/artwork`, '.svg').map((path) => basename(path, '.svg'));
    for (const name of images.filter((each) => !drawings.includes(each))) {
        findings.push(`${folder}/${name}.png: there is no ${folder}/artwork/${name}.svg`);
    }
    for (const name of drawings.filter((each) => !images.includes(each))) {
        findings.push(`${folder}/artwork/${name}.svg: no image is drawn from it`);
    }
}

const kIcons = `${kPage}/icons.js`;
const scripts = filesBelow(kPage, '.js').filter((path) => path !== kIcons);
const words = new Set(scripts.flatMap((path) => read(path).match(/(?<=')[a-zA-Z]+(?=')/g) ?? []));
for (const [, name] of read(kIcons).matchAll(/^ {4}(\w+): '/gm)) {
    if (!words.has(name)) {
        findings.push(`${kIcons}: no button shows "${name}"`);
    }
}

conclude(findings);
