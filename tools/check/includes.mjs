#!/usr/bin/env node
// The direction of includes, how they are written, and how comments and headers begin.
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
    ['workbench/html-engine', ['Support/include/service-common']],
    ['workbench/platform-libraries', ['Support/include']],
    ['workbench/documents', ['Support/include', 'App/include/pdf-library']],
    ['workbench/services', kHost('platform-libraries', 'html-engine', 'documents')],
    ['workbench/actions', kHost('platform-libraries', 'documents', 'services')],
    [
        'workbench/driver',
        kHost('platform-libraries', 'html-engine', 'documents', 'services', 'actions'),
    ],
    ['workbench', [...kSdk, 'tools/make-document']],
    ['tools', kHost('documents')],
    ['examples', kHost('platform-libraries')],
    ['fuzz', ['']],
    ['benchmarks', ['']],
    ['tests', ['']],
];
const kIncludeRoots = [
    'Support/include',
    'App/include',
    'App/src/ui-document-panel-comments',
    'workbench',
    'tools/make-document',
    'tools/sdk-layout',
    'tests/fakes',
    'tests/documents',
    'tests/html-engine',
    'tests/panel',
    'tests/service-common',
    'tests/web',
];

const kFolders = [
    'Support',
    'App',
    'workbench',
    'examples',
    'tools',
    'fuzz',
    'benchmarks',
    'tests',
];
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
    if (file.endsWith('.h') && !/^(\/\/.*\n)+#pragma once$/.test(source.split('\n\n')[0])) {
        findings.push(`${file}: a header begins with what it is, and #pragma once`);
    }
    const marks = includes.slice(basename(includes[0]?.[2] ?? '') === own ? 1 : 0);
    const lastOwn = marks.findLastIndex(([, mark, name]) => mark === '"' && !name.endsWith('.inc'));
    if (marks.findIndex(([, mark]) => mark === '<') < lastOwn && marks[0][1] === '<') {
        findings.push(`${file}: headers of this tree stand before those of others`);
    }
    if (/^ *\/\/\//m.test(source)) {
        findings.push(`${file}: a comment begins with two slashes`);
    }
    return findings;
}

conclude(kFiles.flatMap(findingsOf));
