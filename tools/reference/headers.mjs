// Declarations of the public headers, with the comments that belong to them.

import {read} from '../check/files.mjs';

// Sizes of the plain types of the interface, in bytes; a pointer has 8.
const kSizes = new Map([
    ['bool', 1],
    ['std::int16_t', 2],
    ['std::uint16_t', 2],
    ['Atom', 4],
    ['ResultCode', 4],
    ['std::uint32_t', 4],
    ['double', 8],
    ['HtmlElementHandle', 8],
    ['std::uint64_t', 8],
    ['std::function<void()>', 32],
]);

/// What a declaration is, by how it begins; the groups of each pattern become its properties.
const kKinds = [
    ['scope', /^(?:extern "C"|namespace (?<name>[\w:]+)) (?<body>\{.*\})$/s],
    [
        'method',
        /^SO_METHOD\((?<owner>\w+),\s*(?<name>\w+),\s*(?<slot>\d+)(?:,\s*void|,\s*(?<type>.*))?\);$/s,
    ],
    ['event', /^SO_EVENT\((?<owner>\w+),\s*(?<name>\w+),\s*(?<slot>\d+)(?:,\s*(?<type>.*))?\);$/s],
    ['interface', /^struct (?<name>\w+) : ServiceObject (?<body>\{.*\});$/s],
    ['struct', /^(?:template <[^>]*>\s*)?struct (?<name>\w+)(?:<.*?>)? (?<body>\{.*\});$/s],
    ['enumeration', /^enum class (?<name>\w+) : (?<type>[\w:]+) (?<body>\{.*\});$/s],
    ['forward', /^(?:template <[^>]*>\s*)?struct (?<name>\w+);$/s],
    ['size', /^static_assert\(sizeof\((?<name>\w+)\) == (?<value>\d+)\);$/],
    ['assertion', /^static_assert\(/],
    ['constant', /^inline constexpr (?<type>.*?) (?<name>\w+)(?:\[\d+\])? = (?<value>.*);$/s],
    ['alias', /^using (?<name>\w+) =\s*(?<type>.*);$/s],
    ['variable', /^extern "C" const (?<type>.*) (?<name>\w+);$/],
    ['function', /^(?<type>[\w:*<> ]+?) (?<name>\w+)\((?<parameters>[^{]*)\);$/s],
    ['entry', /^(?<type>[\w:]+\*?) \(\*(?<name>\w+)\)\((?<parameters>.*)\);$/s],
    ['field', /^(?<type>[\w:*<>() ]+?[ *])(?<name>\w+);$/s],
];

function endOfDeclaration(source, start) {
    const kToken = /"(?:\\.|[^"\\])*"|'(?:\\.|[^'\\])+'|\/\/.*|[(){};]/g;
    kToken.lastIndex = start;
    let depth = 0;
    for (let token = kToken.exec(source); token; token = kToken.exec(source)) {
        depth += '({'.includes(token[0]) ? 1 : ')}'.includes(token[0]) ? -1 : 0;
        const ends =
            token[0] === ';' ||
            (token[0] === '}' && !/^\s*[;,(]/.test(source.slice(kToken.lastIndex)));
        if (depth === 0 && ends) {
            return kToken.lastIndex;
        }
    }
    return source.length;
}

/// Declarations of a text in their order. One has `comment` (the lines above it, and the one behind
/// it), or belongs to the declaration above it when nothing stands between the two (`follows`).
export function declarationsIn(source) {
    const kGap = /[ \t]*(?:\n|#(?:.*\\\n)*.*\n)/y;
    const kComment = /[ \t]*\/\/ ?(.*)\n/y;
    const found = [];
    let comment = [];
    let follows = false;
    let at = 0;
    const take = (pattern) => {
        pattern.lastIndex = at;
        const match = pattern.exec(source);
        at = match ? pattern.lastIndex : at;
        return match;
    };
    while (at < source.length) {
        const line = take(kComment);
        if (line) {
            comment.push(line[1]);
            follows = false;
        } else if (take(kGap)) {
            comment = [];
            follows = false;
        } else {
            const end = endOfDeclaration(source, at);
            const text = source.slice(at, end).trim();
            at = end;
            const behind = take(kComment) ?? take(/[ \t]*\n?/y);
            if (text) {
                const own = behind[1] === undefined ? comment : [behind[1]];
                found.push(describe(text, {comment: own, above: comment, follows}));
            }
            comment = [];
            follows = true;
        }
    }
    return found;
}

function describe(text, comments) {
    for (const [kind, pattern] of kKinds) {
        const match = pattern.exec(text);
        if (match) {
            return {
                kind,
                text,
                ...comments,
                ...match.groups,
                body: match.groups?.body?.slice(1, -1),
            };
        }
    }
    return {kind: 'other', text, ...comments};
}

/// A header: its first paragraph, and its declarations. Those of namespaces are left out, but for the
/// names that are asked for.
export function readHeader(path, names = []) {
    const source = read(path);
    const take = (declarations, isOpen) =>
        declarations.flatMap((each) => {
            if (each.kind === 'scope') {
                return take(declarationsIn(each.body), isOpen && each.name === undefined);
            }
            return isOpen || names.includes(each.name) ? [each] : [];
        });
    const [about] = /^(?:\/\/.*\n)+/.exec(source);
    return {
        path,
        isPart: names.length > 0,
        about: about
            .trimEnd()
            .split('\n')
            .map((line) => line.slice(3)),
        declarations: take(declarationsIn(source.slice(about.length)), names.length === 0),
    };
}

function sizeOf(type, sizes) {
    const plain = type
        .trim()
        .replace(/^std::atomic<(.*)>$/, '$1')
        .trim();
    const size = plain.endsWith('*') ? 8 : (kSizes.get(plain) ?? sizes.get(plain));
    if (size === undefined) {
        throw new Error(`the size of ${plain} is not known`);
    }
    return size;
}

/// Fields of a struct with their offsets, as every compiler of 64-bit systems lays them out, and its
/// size, which the header asserts (`sizes`).
export function fieldsOf({name, body}, sizes) {
    const fields = declarationsIn(body).filter(({kind}) => kind === 'field' || kind === 'entry');
    let end = 0;
    let widest = 1;
    for (const field of fields) {
        const size = field.kind === 'entry' ? 8 : sizeOf(field.type, sizes);
        const alignment = Math.min(size, 8);
        field.offset = Math.ceil(end / alignment) * alignment;
        end = field.offset + size;
        widest = Math.max(widest, alignment);
    }
    const size = Math.ceil(end / widest) * widest;
    if (size !== sizes.get(name)) {
        throw new Error(`${name} has ${size} bytes, its header asserts ${sizes.get(name)}`);
    }
    return fields;
}
