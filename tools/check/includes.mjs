#!/usr/bin/env node
// The direction of includes, and how they are written.
//
// Each folder may include what its row names, and itself. Headers of this tree stand in quotation
// marks and are written from an include root, or from the file's own folder; others stand in angle
// brackets. A source includes the header of its name first, which proves that this one needs no
// other in front of it; tests/build compiles those without a source.

import {basename, dirname, join, normalize} from 'node:path';

import {conclude, exists, filesBelow, read} from './files.mjs';

const kSdk = ['Support/include', 'App/include'];
const kHost = (...folders) => [...kSdk, ...folders.map((folder) => `workbench/${folder}`)];
// The first row whose folder holds a file counts.
const kDirections = [
    ['Support', []],
    ['App/include', ['Support/include']],
    ['App', kSdk],
    ['workbench/html-engine', ['Support/include']],
    ['workbench/platform-libraries', ['Support/include']],
    ['workbench/documents', ['Support/include', 'App/include/pdf-library']],
    ['workbench/services', kHost('platform-libraries', 'html-engine', 'documents')],
    ['workbench/driver', kHost('platform-libraries', 'html-engine', 'documents', 'services')],
    ['workbench', [...kSdk, 'tools/make-document']],
    ['tools', kHost('documents')],
    ['fuzz', [...kHost('html-engine'), 'tests/html-engine']],
    ['benchmarks', ['']],
    ['tests', ['']],
];
const kIncludeRoots = [
    'Support/include',
    'App/include',
    'App/src/ui-document-panel-comments',
    'workbench',
    'tools/make-document',
    'tests/fakes',
    'tests/documents',
    'tests/html-engine',
    'tests/panel',
    'tests/service-common',
    'tests/web',
];

const kFolders = ['Support', 'App', 'workbench', 'tools', 'fuzz', 'benchmarks', 'tests'];
const kFiles = kFolders.flatMap((folder) => filesBelow(folder, '.h', '.cpp'));
const kHeaders = new Set(
    kFiles.map((file) => basename(file)).filter((name) => name.endsWith('.h')),
);

function isIn(folder, path) {
    return folder === '' || path.startsWith(`${folder}/`);
}

function findingsOf(file) {
    const [folder, allowed] = kDirections.find(([each]) => isIn(each, file));
    const source = read(file);
    const findings = [];
    const includes = [...source.matchAll(/^ *# *include *([<"])([^>"]+)[>"]/gm)];
    const own = basename(file).replace(/\.cpp$/, '.h');
    if (file.endsWith('.cpp') && kHeaders.has(own) && basename(includes[0][2]) !== own) {
        findings.push(`${file}: ${own} is not its first include`);
    }
    for (const [, mark, name] of includes) {
        const target = [dirname(file), ...kIncludeRoots]
            .map((root) => normalize(join(root, name)))
            .find(exists);
        const tell = (what) => findings.push(`${file}: include of ${name}: ${what}`);
        if (mark === '<' && target) {
            tell('a header of this tree stands in quotation marks');
        } else if (mark === '"' && !target && !name.endsWith('.inc')) {
            tell('no file of this tree');
        }
        if (!target) {
            continue;
        }
        if (![folder, ...allowed].some((each) => isIn(each, target))) {
            tell(`${folder} does not stand on ${dirname(target)}`);
        }
        const [home] = target.split('/internal/');
        if (home !== target && !isIn(home, file) && !/^(App|tests|fuzz|benchmarks)\//.test(file)) {
            tell(`internal to ${home}`);
        }
    }
    if (file.endsWith('.h') && source.match(/^#pragma once$/gm)?.length !== 1) {
        findings.push(`${file}: a header has one line #pragma once`);
    }
    return findings;
}

conclude(kFiles.flatMap(findingsOf));
