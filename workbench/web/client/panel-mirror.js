// Copy of the panel's tree in the browser: the engine's elements, texts and comments, created and
// changed by DOM calls in the frame's document. Nodes are identified by the server's ids; nodes
// without an id belong to the web page and are not touched.

import {
    attributeNameInFrame,
    isSafeElement,
    kInertNamespace,
    kKeptPrefix,
    removeInlineStyle,
    setInlineStyle,
} from './safe-markup.js';

const kUnnamed = 'wb-unnamed';
// The depth limit of browsers' own parsers; deeper trees overflow the stack of their layout.
const kDeepestShown = 400;
// Ids of nodes; elements also have a record.
const kNumber = Symbol('number');
const kRecord = Symbol('record');

/// The states in style sheets, by their bits.
const kStateAttributes = [
    [32, 'wb-current'],
    [128, 'wb-disabled'],
    [512, 'wb-expanded'],
    [1024, 'wb-collapsed'],
];
const kVisibleStates = kStateAttributes.reduce((bits, [bit]) => bits | bit, 0);
export const kCurrent = 32;

function readAttribute(element, name) {
    if (name === 'style') {
        return element.getAttribute(kKeptPrefix + 'style') ?? element.getAttribute('style');
    }
    return element.getAttribute(attributeNameInFrame(name));
}

/// The server's record of an element: `id`, `tag`, `attributes` (alternating names and values),
/// `states` and `namespace`; of a list also `window`, the positions `from` and `to` of the children
/// that stand in the frame, and of a tooltip `isClosed`, whether its children are still to be asked
/// for. Null for text and for nodes of the web page.
export function recordOf(element) {
    return element?.[kRecord] ?? null;
}

/// The value of a name in a list of alternating names and values; null when it is absent.
export function valueOf(attributes, name) {
    for (let at = 0; at < attributes.length; at += 2) {
        if (attributes[at] === name) {
            return attributes[at + 1];
        }
    }
    return null;
}

export class PanelMirror {
    #document;
    #sheetBase;
    #observer;
    #nodes = new Map();
    #discarded = [];
    #head = null;

    /// `sheetBase` is the base URL of the panel's document; style sheets are loaded only from below
    /// it. `observer` is notified of changes: `created(element, record)`,
    /// `statesChanged(element, record, before)`, `attributesChanged(element, record)`,
    /// `textChanged(node)`, `sheetAdded(link)`, `listCreated(element, sizes)`, `sizesChanged(element,
    /// at, sizes)` and `listChanged(element, splice)` with what came and went of the list, `at`,
    /// `removed` and `added`, or null when its window was moved.
    constructor(frameDocument, sheetBase, observer) {
        this.#document = frameDocument;
        this.#sheetBase = sheetBase;
        this.#observer = observer;
    }

    node(id) {
        return this.#nodes.get(id) ?? null;
    }

    get size() {
        return this.#nodes.size;
    }

    /// The node itself or its nearest ancestor that is an element with an id.
    elementAround(node) {
        let at = node;
        while (at && !at[kRecord]) {
            at = at.parentNode;
        }
        return at;
    }

    /// Discards the tree. The root element stays, because a DOM document needs one.
    reset() {
        const root = this.#document.documentElement;
        for (const child of [...root.childNodes]) {
            if (child[kNumber]) {
                child.remove();
            }
        }
        if (root[kRecord]) {
            this.#clearAttributes(root, root[kRecord]);
            delete root[kRecord];
        }
        this.#nodes = new Map();
        this.#discarded = [];
        this.#head = null;
    }

    /// Applies one CHANGE of the protocol. Throws for an unknown node.
    apply(change) {
        const [kind, id] = change;
        switch (kind) {
            case 'i':
                return this.#insert(id, change[2], change[3]);
            case 'r':
                return this.#remove(change.slice(1));
            case 't':
                return this.#setText(this.#require(id), change[2]);
            case 'a':
                return this.#setAttributes(this.#require(id), change[2]);
            case 's':
                return this.#setStates(this.#require(id), change[2]);
            case 'w':
                return this.#moveWindow(this.#require(id), change.slice(2));
            case 'z':
                return this.#observer.sizesChanged(this.#require(id), change[2], change[3]);
            default:
                throw new Error(`unknown change ${kind}`);
        }
    }

    /// Discards the ids inside removed nodes while `mayGoOn` returns true; returns true when none
    /// is left.
    forgetDiscarded(mayGoOn) {
        while (this.#discarded.length > 0) {
            const node = this.#discarded.pop();
            this.#nodes.delete(node[kNumber]);
            this.#discarded.push(...node.childNodes);
            if (!mayGoOn()) {
                return this.#discarded.length === 0;
            }
        }
        return true;
    }

    #require(id) {
        const node = this.#nodes.get(id);
        if (!node) {
            throw new Error(`there is no node ${id}`);
        }
        return node;
    }

    #insert(parentId, previousId, nodes) {
        if (parentId === 0) {
            this.#insertRoot(nodes[0]);
            return;
        }
        const parent = this.#require(parentId);
        const previous = previousId === 0 ? null : this.#require(previousId);
        if (previous && previous.parentNode !== parent) {
            throw new Error(`node ${previousId} does not stand in node ${parentId}`);
        }
        parent[kRecord].isClosed = false;
        const fragment = this.#document.createDocumentFragment();
        this.#build(fragment, nodes, parent);
        if (previous) {
            previous.after(fragment);
        } else {
            parent.prepend(fragment);
        }
    }

    #insertRoot(node) {
        const root = this.#document.documentElement;
        root[kNumber] = node[0];
        this.#nodes.set(node[0], root);
        this.#describe(root, node, 0);
        const fragment = this.#document.createDocumentFragment();
        this.#build(fragment, node[4], root);
        root.prepend(fragment);
    }

    // Without recursion, because the depth is untrusted.
    #build(target, nodes, placedIn) {
        const open = [{target, nodes, at: 0}];
        while (open.length > 0) {
            const level = open[open.length - 1];
            if (level.at === level.nodes.length) {
                open.pop();
                continue;
            }
            const description = level.nodes[level.at++];
            const parent = level.target === target ? placedIn : level.target;
            const node = this.#create(description, parent);
            level.target.append(node);
            if (description[1] !== null && description.length > 2) {
                this.#describe(node, description, parent[kRecord].depth + 1);
                if (Array.isArray(description[4])) {
                    open.push({target: node, nodes: description[4], at: 0});
                }
            }
        }
    }

    #create(description, parent) {
        const [id, name] = description;
        let node;
        if (name === null) {
            node = this.#document.createComment(description[2]);
        } else if (description.length === 2) {
            node = this.#document.createTextNode(name);
        } else {
            node = this.#createElement(name, description, parent);
        }
        node[kNumber] = id;
        this.#nodes.set(id, node);
        return node;
    }

    #createElement(name, description, parent) {
        const isHtml = description.length < 6;
        if (isHtml && isSafeElement(name)) {
            return this.#document.createElement(name);
        }
        if (isHtml && name === 'link' && this.#sheetAddress(description[2], parent)) {
            return this.#document.createElement(name);
        }
        return this.#createInert(name);
    }

    // HTML allows names that DOM calls reject; these are kept in the record only.
    #createInert(name) {
        try {
            const element = this.#document.createElementNS(kInertNamespace, name);
            if (element.tagName === name) {
                return element;
            }
        } catch {
            // The same for a name that the DOM reads as another one.
        }
        return this.#document.createElementNS(kInertNamespace, kUnnamed);
    }

    #describe(element, [id, tag, attributes, states, children, namespace], depth) {
        const record = {id, depth, tag, attributes, states: 0, namespace, kept: null};
        element[kRecord] = record;
        if (depth === kDeepestShown) {
            element.setAttribute('wb-deep', '');
        }
        for (let at = 0; at < attributes.length; at += 2) {
            this.#setAttribute(element, record, attributes[at], attributes[at + 1]);
        }
        if (tag === 'head') {
            this.#head ??= element;
        } else if (tag === 'link' && element.namespaceURI !== kInertNamespace) {
            this.#loadSheet(element, attributes);
        }
        this.#observer.created(element, record);
        this.#hold(element, record, children);
        if (states !== 0) {
            this.#setStates(element, states);
        }
    }

    #hold(element, record, children) {
        if (children === null) {
            record.isClosed = true;
        } else if (!Array.isArray(children)) {
            record.window = {from: 0, to: 0};
            if (children.pages) {
                this.#observer.listCreated(element, children.pages);
            }
        }
    }

    // Only the panel's own document has a head; its content comes from the module and is trusted.
    #sheetAddress(attributes, parent) {
        const path = valueOf(attributes, 'href');
        if (parent !== this.#head || path === null || valueOf(attributes, 'rel') !== 'stylesheet') {
            return null;
        }
        const address = new URL(path, this.#sheetBase).href;
        return address.startsWith(new URL('..', this.#sheetBase).href) ? address : null;
    }

    #loadSheet(element, attributes) {
        element.rel = 'stylesheet';
        element.href = this.#sheetAddress(attributes, this.#head);
        this.#observer.sheetAdded(element);
    }

    #setAttribute(element, record, name, value) {
        if (name === 'style') {
            setInlineStyle(element, value);
            return;
        }
        try {
            element.setAttribute(attributeNameInFrame(name), value);
        } catch {
            // A name that DOM calls reject; kept in the record only.
            record.kept = (record.kept ?? new Set()).add(name);
        }
    }

    #removeAttribute(element, record, name) {
        if (name === 'style') {
            removeInlineStyle(element);
        } else if (!record.kept?.has(name)) {
            element.removeAttribute(attributeNameInFrame(name));
        }
    }

    #clearAttributes(element, record) {
        for (let at = 0; at < record.attributes.length; at += 2) {
            this.#removeAttribute(element, record, record.attributes[at]);
        }
        for (const [, attribute] of kStateAttributes) {
            element.removeAttribute(attribute);
        }
    }

    #setAttributes(element, attributes) {
        const record = element[kRecord];
        for (let at = 0; at < record.attributes.length; at += 2) {
            const name = record.attributes[at];
            if (valueOf(attributes, name) === null) {
                this.#removeAttribute(element, record, name);
            }
        }
        record.attributes = attributes;
        record.kept = null;
        for (let at = 0; at < attributes.length; at += 2) {
            this.#setAttribute(element, record, attributes[at], attributes[at + 1]);
        }
        this.#observer.attributesChanged(element, record);
    }

    #setStates(element, states) {
        const record = element[kRecord];
        const before = record.states;
        record.states = states;
        for (const [bit, attribute] of kStateAttributes) {
            if ((states ^ before) & bit) {
                element.toggleAttribute(attribute, (states & bit) !== 0);
            }
        }
        this.#observer.statesChanged(element, record, before);
    }

    #setText(node, text) {
        node.data = text;
        this.#observer.textChanged(node);
    }

    #remove(ids) {
        for (const id of ids) {
            this.#drop(this.#require(id));
        }
    }

    // Ids are never reused, so those of descendants can be discarded later.
    #drop(node) {
        node.remove();
        this.#nodes.delete(node[kNumber]);
        this.#discarded.push(node);
    }

    // Children of a list have come or gone; those that belong to the new window and are new follow
    // as insertions.
    #moveWindow(element, [from, to, at, removed = 0, added = 0]) {
        const {window} = element[kRecord];
        const count = Array.isArray(added) ? added.length : added;
        [...element.children].forEach((child, index) => {
            let place = window.from + index;
            const isRemoved = place >= at && place < at + removed;
            place -= place >= at + removed ? removed : 0;
            place += place >= at ? count : 0;
            if (isRemoved || place < from || place >= to) {
                this.#drop(child);
            }
        });
        element[kRecord].window = {from, to};
        this.#observer.listChanged(element, at === undefined ? null : {at, removed, added});
    }

    // --- Reading back ---

    /// The tree as a NODE of the protocol, read from the DOM; null before the first tree. A list has
    /// `{from, to, nodes}` in place of its children, a closed tooltip null.
    read() {
        const root = this.#document.documentElement;
        if (!root[kRecord]) {
            return null;
        }
        const result = this.#readElement(root);
        const open = [{node: root, into: result[4]}]; // the root is not a list
        while (open.length > 0) {
            const {node, into} = open.pop();
            for (const child of node.childNodes) {
                if (!child[kNumber]) {
                    continue;
                }
                const read = this.#readNode(child);
                into.push(read);
                if (child.nodeType === Node.ELEMENT_NODE) {
                    open.push({node: child, into: read[4]?.nodes ?? read[4] ?? []});
                }
            }
        }
        return result;
    }

    #readNode(node) {
        const id = node[kNumber];
        switch (node.nodeType) {
            case Node.TEXT_NODE:
                return [id, node.data];
            case Node.COMMENT_NODE:
                return [id, null, node.data];
            default:
                return this.#readElement(node);
        }
    }

    #readElement(element) {
        const record = element[kRecord];
        const isInert = element.namespaceURI === kInertNamespace;
        const name = isInert ? element.tagName : element.localName;
        const attributes = [];
        for (let at = 0; at < record.attributes.length; at += 2) {
            const attribute = record.attributes[at];
            const value = record.kept?.has(attribute)
                ? record.attributes[at + 1]
                : readAttribute(element, attribute);
            if (value !== null) {
                attributes.push(attribute, value);
            }
        }
        const tag = name === kUnnamed ? record.tag : name;
        const children = record.window ? {...record.window, nodes: []} : [];
        const states = this.#readStates(element, record);
        const result = [record.id, tag, attributes, states, record.isClosed ? null : children];
        if (record.namespace !== undefined) {
            result.push(record.namespace);
        }
        return result;
    }

    #readStates(element, record) {
        let states = record.states & ~kVisibleStates;
        for (const [bit, attribute] of kStateAttributes) {
            if (element.hasAttribute(attribute)) {
                states |= bit;
            }
        }
        return states;
    }
}
