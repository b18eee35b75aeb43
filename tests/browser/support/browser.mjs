// Chromium, and the page of the workbench in it.

import assert from 'node:assert/strict';
import {createRequire} from 'node:module';
import {mkdtempSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';

const {chromium} = createRequire(`${process.env.WORKBENCH_NODE_MODULES}/`)('playwright-core');

const kFlags = [
    '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync',
];
const kPatience = 15000;

export async function startBrowser() {
    const folder = mkdtempSync(join(tmpdir(), 'browser-profile-'));
    const context = await chromium.launchPersistentContext(folder, {
        executablePath: '/usr/bin/chromium',
        args: kFlags,
        viewport: {width: 1200, height: 800},
    });
    context.setDefaultTimeout(kPatience);
    return {
        context,
        async stop() {
            await context.close();
            rmSync(folder, {recursive: true, force: true});
        },
    };
}

/// Reads something from the page until `isMeant(value)`, and gives it.
export async function until(read, isMeant, what) {
    const end = Date.now() + kPatience;
    for (;;) {
        const value = await read();
        if (isMeant(value)) {
            return value;
        }
        assert.ok(Date.now() < end, `${what}; it is ${JSON.stringify(value)?.slice(0, 2000)}`);
    }
}

// Runs in a page of the workbench: what a second connection is told of the panel's tree, put
// together without any of the page's own code.
async function fetchEngineTree() {
    const address = new URL('socket', location.href.replace(/app\/.*/, ''));
    address.protocol = 'ws:';
    const socket = new WebSocket(address);
    const nodes = new Map();
    let root = null;
    const add = (description) => {
        const node = {text: description[1], comment: undefined, children: []};
        if (description.length > 3) {
            const [, tag, attributes, states, children, namespace] = description;
            Object.assign(node, {text: undefined, tag, attributes, states, namespace});
            node.children = children.map(add);
        } else if (description[1] === null) {
            Object.assign(node, {text: undefined, comment: description[2]});
        }
        nodes.set(description[0], node);
        return node;
    };
    const apply = ([kind, parent, previous, list]) => {
        if (kind !== 'i') {
            throw new Error(`a first picture has the change ${kind}`);
        }
        const made = list.map(add);
        if (parent === 0) {
            root = made[0];
            return;
        }
        const {children} = nodes.get(parent);
        const at = previous === 0 ? 0 : children.indexOf(nodes.get(previous)) + 1;
        children.splice(at, 0, ...made);
    };
    await new Promise((resolve, reject) => {
        socket.onerror = () => reject(new Error('no connection'));
        socket.onmessage = ({data}) => {
            const message = JSON.parse(data);
            if (message.type === 'panel') {
                message.changes.forEach(apply);
                if (message.remaining === 0) {
                    resolve();
                }
            }
        };
    });
    socket.close();
    return root;
}

// Runs in the page: what really stands in the panel's frame, in the same form.
async function readShownTree() {
    const {page} = await import(new URL('app/main.js', document.baseURI).href);
    const {panel} = await page;
    const convert = (node) => {
        if (node.length === 2) {
            return {text: node[1], children: []};
        }
        if (node[1] === null) {
            return {comment: node[2], children: []};
        }
        const [, tag, attributes, states, children, namespace] = node;
        return {tag, attributes, states, namespace, children: children.map(convert)};
    };
    const tree = panel.isSettled ? panel.readTree() : null;
    return tree && convert(tree);
}

// Both trees as lines of text, so that a difference can be read.
function describe(node, depth = 0) {
    const indent = ' '.repeat(depth);
    if (node.tag === undefined) {
        return [`${indent}${JSON.stringify(node.text ?? {comment: node.comment})}`];
    }
    // The pointer is each window's own.
    const states = node.states & ~(2 | 4 | 8);
    const own = [node.tag, JSON.stringify(node.attributes), states, node.namespace ?? ''];
    return [indent + own.join(' '), ...node.children.flatMap((child) => describe(child, depth + 1))];
}

/// One window of the workbench.
export class PageWindow {
    #observer;
    #failures = [];
    #requests = [];
    page;
    panel;

    static async open(browser, workbench) {
        const window = new PageWindow();
        window.page = await browser.context.newPage();
        window.page.on('pageerror', (error) => window.#failures.push(String(error)));
        window.page.on('dialog', (dialog) => {
            window.#failures.push(`a dialog of the browser: ${dialog.message()}`);
            dialog.dismiss();
        });
        window.page.on('request', (request) => window.#requests.push(request.url()));
        window.page.on('websocket', (socket) => window.#requests.push(socket.url()));
        await window.page.goto(workbench.address);
        window.panel = window.page.frameLocator('#panel-frame');
        window.#observer = await browser.context.newPage();
        await window.#observer.goto(`${workbench.address}app/icons.js`);
        await window.panel.locator('body > h1').waitFor();
        return window;
    }

    get failures() {
        return this.#failures;
    }

    get requests() {
        return this.#requests;
    }

    async close() {
        await this.#observer.close();
        await this.page.close();
        assert.deepEqual(this.#failures, [], 'no script of the page has failed');
    }

    item(name) {
        return this.panel.locator(`.panel-content[wb-visibility="visible"] li[annot-name="${name}"]`);
    }

    get items() {
        return this.panel.locator('.panel-content[wb-visibility="visible"] ul.comments > li');
    }

    button(id) {
        return this.panel.locator(`.panel-content[wb-visibility="visible"] #${id}`);
    }

    /// Name of the current item, null for none.
    currentName() {
        return this.page.evaluate(() => {
            const panel = document.getElementById('panel-frame').contentDocument;
            return panel.querySelector('.panel-content[wb-visibility="visible"] li[wb-current]')
                ?.getAttribute('annot-name') ?? null;
        });
    }

    async expectCurrent(name) {
        await until(() => this.currentName(), (current) => current === name, `${name} is current`);
    }

    /// The description of the active document.
    active() {
        return this.page.evaluate(async () => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            return (await page).active;
        });
    }

    expectActive(isMeant, what) {
        return until(() => this.active(), (active) => active !== null && isMeant(active), what);
    }

    /// Waits until the list of the active document stands.
    expectListed() {
        return this.expectActive((active) => active.busy === null, 'the list is there');
    }

    command(name, fields) {
        return this.page.evaluate(async ([command, values]) => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            return (await page).connection.command(command, values);
        }, [name, fields]);
    }

    async expectCommand(name, fields) {
        const reply = await this.command(name, fields);
        assert.equal(reply.error, null, `${name} succeeds`);
        return reply;
    }

    /// The tree in the browser is the engine's, node by node.
    async expectSameTree() {
        const read = async () => {
            const engine = await this.#observer.evaluate(fetchEngineTree);
            const shown = await this.page.evaluate(readShownTree);
            return {engine: describe(engine), shown: shown ? describe(shown) : []};
        };
        const end = Date.now() + kPatience;
        for (;;) {
            const {engine, shown} = await read();
            if (engine.join('\n') === shown.join('\n')) {
                return;
            }
            if (Date.now() > end) {
                assert.deepEqual(shown, engine, 'the tree in the browser is the engine\'s');
            }
        }
    }
}
