#!/usr/bin/env node
// The interface reference, made of the public headers and their comments.
//
//   tools/reference/interface.mjs          tells what the reference or a comment lacks
//   tools/reference/interface.mjs --mend   writes the reference

import {writeFileSync} from 'node:fs';
import {join} from 'node:path';

import {conclude, exists, filesBelow, kRoot, read} from '../check/files.mjs';
import {declarationsIn, fieldsOf, readHeader} from './headers.mjs';

const kPage = 'docs/interface.md';
const kLayout = 'tools/sdk-layout/PublicLayout.cpp';
const kThreads = {'ui-thread': 'on the UI thread', 'any-thread': 'on any thread'};
const kWidth = 100;

const kSupport = 'Support/include/service-common';
const kEngine = 'App/include/ui-engine';
const kInterfaces = filesBelow('App/include', '.SO.h')
    .map((path) => readHeader(path))
    .sort((left, right) => (nameOf(left) < nameOf(right) ? -1 : 1));
// The chapters: headers of the module's interfaces, of the host's, and what both stand on.
const kChapters = [
    [
        'Exports of the module',
        readHeader(`${kEngine}/ModuleExports.h`),
        readHeader(`${kEngine}/PluginGate.h`),
        readHeader(`${kSupport}/ServiceObjectRegistry.h`, ['ServiceObjectInfo']),
        readHeader('Support/include/platform/EmbeddedResources.h', [
            'EmbeddedResource',
            'EmbeddedResourceTable',
            'UiDataEmbeddedResources',
        ]),
    ],
    ['Result codes', readHeader(`${kSupport}/ResultCodes.h`)],
    [
        'A service object in memory',
        readHeader(`${kSupport}/ServiceObject.h`),
        readHeader(`${kSupport}/WeakReferenceRecord.h`),
    ],
    [
        'Interfaces that the module implements',
        ...kInterfaces.filter((each) => isBy('module', each)),
    ],
    ['Interfaces that the host implements', ...kInterfaces.filter((each) => !isBy('module', each))],
    ['Events', readHeader(`${kEngine}/SOEvent.h`, ['EventDeclaration'])],
    [
        'Posted calls',
        readHeader(`${kEngine}/UIThreadDispatcher.h`, ['kPostedCallTag', 'PostedCall']),
    ],
    ['Elements, states and input', readHeader(`${kEngine}/HtmlElementTypes.h`)],
    [
        'PDF library',
        readHeader('App/include/pdf-library/PDTypes.h'),
        readHeader('App/include/pdf-library/PDFunctionTable.h'),
    ],
    [
        'Platform libraries',
        readHeader(`${kSupport}/Atom.h`),
        readHeader(`${kSupport}/ServiceProvider.h`),
        readHeader(`${kSupport}/EncodingConversion.h`),
    ],
];

const findings = [];
const sizes = new Map();
const anchors = new Map(); // of names that a comment may speak of

function nameOf({declarations}) {
    return declarations.find(({kind}) => kind === 'interface')?.name ?? '';
}

function isBy(implementer, {about}) {
    return about.join(' ').includes(`Implemented by the ${implementer}`);
}

function anchorOf(heading) {
    return heading
        .toLowerCase()
        .replace(/[^\w -]/g, '')
        .replaceAll(' ', '-');
}

/// Names get the anchors of their headings, constants that of their chapter.
function collectNames() {
    for (const [chapter, ...headers] of kChapters) {
        for (const each of headers.flatMap(({declarations}) => declarations)) {
            if (each.kind === 'size') {
                sizes.set(each.name, Number(each.value));
            } else if (each.kind === 'constant') {
                anchors.set(each.name, anchorOf(chapter));
            } else if (each.name !== undefined && each.kind !== 'forward') {
                anchors.set(each.name, anchorOf(each.name));
            }
            for (const inner of each.kind === 'interface' ? declarationsIn(each.body) : []) {
                if (
                    ['method', 'event', 'alias'].includes(inner.kind) &&
                    inner.name !== 'Catalogue'
                ) {
                    const name = `${each.name}::${inner.name}`;
                    anchors.set(name, anchorOf(name));
                }
            }
        }
    }
}

/// Lines of at most kWidth characters, none of which begins like an item of a list.
function wrapped(text) {
    const lines = [''];
    for (const word of text.split(' ')) {
        const isTooLong = lines.at(-1).length + 1 + word.length > kWidth;
        if (isTooLong && !/^([-+*#>]|\d+[.)]$)/.test(word)) {
            lines.push(word);
        } else {
            lines[lines.length - 1] += lines.at(-1) === '' ? word : ` ${word}`;
        }
    }
    return lines.join('\n');
}

function paragraphs(text) {
    return text
        .split('\n')
        .map((line) => wrapped(line).replaceAll('\n', line.startsWith('- ') ? '\n  ' : '\n'))
        .join('\n');
}

/// A comment as a paragraph: names of the reference are links, others that are code stand as code.
function prose(lines, self = '') {
    const [owner] = self.split('::');
    const known = (word) => {
        const inner = `${owner}::${word}`;
        const isName = /[a-z][A-Z]|[A-Z]{2}[a-z]|_/.test(word); // and no word of the language
        const name = anchors.has(inner) ? inner : word;
        return isName && name !== self && anchors.has(name)
            ? `[\`${word}\`](#${anchors.get(name)})`
            : undefined;
    };
    return lines
        .join('\n')
        .replace(/\n(?!\n|- )(?<!\n\n) */g, ' ')
        .replace(/\s*\[[a-z-]+\]/g, '')
        .split(/(`[^`]*`)/)
        .map((part) =>
            part.startsWith('`')
                ? (known(part.slice(1, -1)) ?? part)
                : part
                      .replace(/[<*|]/g, (mark) => ({'<': '&lt;'})[mark] ?? `\\${mark}`)
                      .replace(
                          /(?<!["\w:])(?:[\w/-]+(?:\.SO)?\.h\b|(?:\w+::)*\w+(?:\.{3})?)/g,
                          (word) =>
                              known(word) ??
                              (/^k[A-Z]|::|^_[A-Z]|\.h$/.test(word) ? `\`${word}\`` : word),
                      ),
        )
        .join('')
        .trim();
}

function threadIn(...comments) {
    const tag = comments.flatMap((lines) => /\[([a-z-]+)\]/.exec(lines.join(' '))?.[1] ?? []);
    return kThreads[tag[0]];
}

function requireComment(where, {comment, name}) {
    if (comment.length === 0) {
        findings.push(`${where}: ${name} has no comment`);
    }
}

function codeBlock(text) {
    return `\`\`\`cpp\n${text}\n\`\`\``;
}

function oneLine(text) {
    return text.replace(/\s+/g, ' ').replace(/\( /g, '(');
}

function unindented(text) {
    return text.replace(/\n {4}/g, '\n');
}

function signature(type, name, parameters) {
    const list = parameters
        .filter(Boolean)
        .flatMap((each) => oneLine(each).split(/, (?![^(<]*[)>])/));
    const whole = `${type} ${name}(${list.join(', ')})`;
    return whole.length <= 90 ? whole : `${type} ${name}(\n    ${list.join(',\n    ')})`;
}

function renderEntry(header, owner, entry) {
    const name = `${owner.name}::${entry.name}`;
    requireComment(header.path, {...entry, name});
    const about = paragraphs(prose(entry.comment, name));
    if (entry.kind === 'alias') {
        return [`#### ${name}`, codeBlock(unindented(entry.text)), about];
    }
    const slot = Number(entry.slot);
    if (entry.kind === 'event') {
        return [
            `#### ${name}`,
            `Event at slots ${slot} and ${slot + 1}. Callback:`,
            codeBlock(signature('void', entry.name, [entry.type, 'void* callable'])),
            about,
        ];
    }
    const thread = threadIn(entry.comment, owner.comment, header.about);
    if (!thread) {
        findings.push(`${header.path}: ${name} says no thread`);
    }
    return [
        `#### ${name}`,
        `Slot ${slot}, called ${thread}.`,
        codeBlock(signature('ResultCode', entry.name, [`${owner.name}* self`, entry.type])),
        about,
    ];
}

function entriesOf({body}) {
    return declarationsIn(body)
        .filter(
            ({kind, name}) => ['method', 'event', 'alias'].includes(kind) && name !== 'Catalogue',
        )
        .sort((left, right) => (left.slot ?? -1) - (right.slot ?? -1));
}

function slotCount(entries) {
    return Math.max(
        ...entries.map(({kind, slot}) => Number(slot ?? 0) + (kind === 'event' ? 2 : 1)),
    );
}

function headerName({path}) {
    return `\`${path.replace(/.*?include\//, '')}\``;
}

function slotText({kind, slot}) {
    return kind === 'event' ? `${slot}/${Number(slot) + 1}` : slot;
}

function renderInterface(header, declaration) {
    const comment = declaration.comment.length > 0 ? declaration.comment : header.about;
    const implementer = ['host', 'module'].find((each) => isBy(each, header));
    if (!implementer) {
        findings.push(`${header.path}: the first paragraph does not say who implements it`);
    }
    const entries = entriesOf(declaration);
    const count = slotCount(entries);
    const rows = entries
        .filter(({slot}) => slot !== undefined)
        .map((each) => {
            const anchor = anchors.get(`${declaration.name}::${each.name}`);
            return [slotText(each), each.kind, `[${each.name}](#${anchor})`];
        });
    return [
        `### ${declaration.name}`,
        paragraphs(prose(comment, declaration.name)),
        `Implemented by the ${implementer}; ${count} ${count === 1 ? 'slot' : 'slots'}, a table of ` +
            `${8 * count} bytes. Header: ${headerName(header)}.`,
        table(['slot', 'kind', 'name'], rows),
        ...entries.flatMap((entry) => renderEntry(header, declaration, entry)),
    ];
}

/// A table without the columns that are empty in all rows.
function table(titles, rows) {
    const used = titles.map((_, column) => rows.some((row) => row[column] !== ''));
    const line = (cells) => `| ${cells.filter((_, column) => used[column]).join(' | ')} |`;
    return [titles, titles.map(() => '---'), ...rows].map(line).join('\n');
}

/// Fields and constants share a comment with those right above them.
function groupsOf(declarations) {
    const groups = [];
    for (const each of declarations) {
        if (each.follows && groups.length > 0) {
            groups.at(-1).push(each);
        } else {
            groups.push([each]);
        }
    }
    return groups;
}

function renderStruct(header, declaration) {
    requireComment(header.path, declaration);
    const head = [
        `### ${declaration.name}`,
        paragraphs(prose(declaration.comment, declaration.name)),
        `${sizes.get(declaration.name)} bytes. Header: ${headerName(header)}.`,
    ];
    const fields = fieldsOf(declaration, sizes);
    const item = ({kind, offset, type, name, parameters, comment}) => {
        const thread = threadIn(comment);
        return kind === 'entry'
            ? `- Offset ${offset}${thread ? `, called ${thread}` : ''}: ` +
                  `\`${type} (*${name})(${oneLine(parameters)})\``
            : `- Offset ${offset}: \`${oneLine(type + name)}\``;
    };
    if (fields.some(({kind}) => kind === 'entry')) {
        return [
            ...head,
            ...groupsOf(fields).flatMap((group) => {
                const [first] = group;
                const about = group.map(({comment}) => comment).filter((each) => each.length > 0);
                requireComment(header.path, {
                    comment: about,
                    name: `${declaration.name}::${first.name}`,
                });
                return first.kind === 'entry'
                    ? [
                          group.map(item).join('\n'),
                          paragraphs(prose(about[0] ?? [], declaration.name)),
                      ]
                    : [group.map((each) => `${item(each)}: ${prose(each.comment)}`).join('\n')];
            }),
        ];
    }
    for (const field of fields) {
        requireComment(header.path, {...field, name: `${declaration.name}::${field.name}`});
    }
    const rows = fields.map(({offset, type, name, comment}) => [
        offset,
        `\`${oneLine(type + name)}\``,
        prose(comment, declaration.name),
    ]);
    return [...head, table(['offset', 'field', 'meaning'], rows)];
}

function renderConstants(header, group) {
    const about = group[0].above;
    if (about.length === 0) {
        findings.push(`${header.path}: what is ${group[0].name} for?`);
    }
    const cells = group.map(({name, value, comment, above}) => [
        `\`${name}\``,
        `\`${oneLine(value)}\``,
        comment === above ? '' : prose(comment),
    ]);
    if (cells.length === 1 && cells[0][2] === '') {
        return [paragraphs(`${cells[0][0]} = ${cells[0][1]}: ${prose(about)}`)];
    }
    return [paragraphs(prose(about)), table(['constant', 'value', 'meaning'], cells)];
}

function renderEnumeration(header, declaration) {
    requireComment(header.path, declaration);
    const rows = [...declaration.body.matchAll(/(\w+) = (\d+),(?: *\/\/ (.*))?/g)].map(
        ([, name, value, comment = '']) => [value, `\`${name}\``, prose([comment])],
    );
    return [
        `### ${declaration.name}`,
        paragraphs(prose(declaration.comment, declaration.name)),
        ...(rows.length > 0 ? [table(['value', 'name', 'meaning'], rows)] : []),
    ];
}

function renderFunction(header, declaration) {
    requireComment(header.path, declaration);
    const {name, type, parameters, text, comment} = declaration;
    const thread = threadIn(comment);
    return [
        `### ${name}`,
        codeBlock(parameters === undefined ? text : signature(type, name, [parameters])),
        paragraphs(prose(comment, name) + (thread ? ` Called ${thread}.` : '')),
    ];
}

/// The protocol of an event: the types that every declaration of one has.
function renderProtocol(header, declaration) {
    const {comment} = header.declarations.find(({kind}) => kind === 'forward');
    const types = declarationsIn(declaration.body).filter(
        (each) => each.kind === 'alias' && each.comment.length > 0,
    );
    return [
        paragraphs(prose(comment)),
        ...types.flatMap((each) => [codeBlock(unindented(each.text)), prose(each.comment)]),
    ];
}

function renderHeader(header) {
    const isSingle = header.declarations.filter(({kind}) => kind === 'interface').length === 1;
    const render = {
        interface: renderInterface,
        struct: (from, each) =>
            /^template/.test(each.text) ? renderProtocol(from, each) : renderStruct(from, each),
        enumeration: renderEnumeration,
        function: renderFunction,
        variable: renderFunction,
        alias: renderFunction,
    };
    const ofInterface = header.declarations.filter(({kind}) => kind === 'interface');
    const others = header.declarations.filter(({kind}) => kind in render && kind !== 'interface');
    const constants = groupsOf(header.declarations.filter(({kind}) => kind === 'constant')).flatMap(
        (group) => renderConstants(header, group),
    );
    if (ofInterface.length === 0) {
        const thread = threadIn(header.about);
        const about = prose(header.about) + (thread ? ` Called ${thread}.` : '');
        return [
            header.isPart ? '' : paragraphs(about),
            ...constants,
            ...others.flatMap((each) => render[each.kind](header, each)),
        ];
    }
    for (const each of isSingle ? [] : ofInterface) {
        requireComment(header.path, each);
    }
    return [...ofInterface, ...others]
        .flatMap((each) => render[each.kind](header, each))
        .concat(constants);
}

/// Numbers of slots, those that follow each other as a range.
function slotRanges(slots) {
    const ranges = [];
    for (const slot of slots.map(Number)) {
        if (ranges.at(-1)?.[1] === slot - 1) {
            ranges.at(-1)[1] = slot;
        } else {
            ranges.push([slot, slot]);
        }
    }
    return ranges
        .map(([first, last]) => (first === last ? first : `${first} to ${last}`))
        .join(', ');
}

function overview() {
    const rows = kInterfaces.flatMap((header) =>
        header.declarations
            .filter(({kind}) => kind === 'interface')
            .map((declaration) => {
                const entries = entriesOf(declaration);
                const ofKind = (wanted) => entries.filter(({kind}) => kind === wanted);
                return [
                    `[${declaration.name}](#${anchors.get(declaration.name)})`,
                    isBy('module', header) ? 'module' : 'host',
                    slotRanges(ofKind('method').map(({slot}) => slot)),
                    ofKind('event').map(slotText).join(', '),
                ];
            }),
    );
    return table(
        ['interface', 'implemented by', 'methods at slots', 'events at slots'],
        [...rows].sort(([left], [right]) =>
            left.replace(']', ' ').localeCompare(right.replace(']', ' ')),
        ),
    );
}

function page() {
    const parts = [
        '<!-- Written by tools/reference/interface.mjs --mend from the public headers. -->',
        '# Interface reference',
        wrapped(
            'What module and host exchange: slots, signatures, threads, ownership, result codes and ' +
                'layouts. [integration-guide.md](integration-guide.md) tells how the parts work ' +
                'together, in which order they are called and what stays compatible.',
        ),
        wrapped(
            'All layouts are those of 64-bit little-endian systems with 8-byte pointers and the ' +
                "platform's standard calling convention. An *owned* object carries a reference that " +
                'its receiver releases; what is *borrowed* is valid for the call, or for as long as ' +
                'is said. Events are fired on any thread.',
        ),
        kChapters.map(([title]) => `- [${title}](#${anchorOf(title)})`).join('\n'),
        overview(),
        ...kChapters.flatMap(([title, ...headers]) => [
            `## ${title}`,
            ...headers.flatMap((header) => renderHeader(header)),
        ]),
    ];
    return `${parts.filter(Boolean).join('\n\n')}\n`;
}

/// What is compared with the last release is listed by hand: nothing of the interface is missing there.
function requireLayout() {
    const listed = new Set(read(kLayout).match(/\w+/g));
    for (const {kind, name, body} of kChapters.flat().flatMap((each) => each.declarations ?? [])) {
        const values = [...(body ?? '').matchAll(/(\w+) = \d+,/g)].map((match) => match[1]);
        const names = kind === 'enumeration' ? values : [name];
        const isShared = ['interface', 'struct', 'constant', 'enumeration'].includes(kind);
        for (const missing of isShared ? names.filter((each) => !listed.has(each)) : []) {
            findings.push(`${kLayout} lists no ${missing}`);
        }
    }
}

collectNames();
requireLayout();
const text = page();
const headings = [...text.matchAll(/^#+ (.*)$/gm)].map(([, heading]) => anchorOf(heading));
for (const twice of headings.filter((each, at) => headings.indexOf(each) !== at)) {
    findings.push(`${kPage}: two headings have the anchor ${twice}`);
}
for (const [, anchor] of text.matchAll(/\]\(#([^)]*)\)/g)) {
    if (!headings.includes(anchor)) {
        findings.push(`${kPage}: no heading has the anchor ${anchor}`);
    }
}
if (process.argv[2] === '--mend') {
    writeFileSync(join(kRoot, kPage), text);
} else if (!exists(kPage) || read(kPage) !== text) {
    findings.push(
        `${kPage} differs from the headers; tools/reference/interface.mjs --mend writes it`,
    );
}
conclude(findings);
