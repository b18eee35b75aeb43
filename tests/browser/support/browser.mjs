// Chromium, and the page of the workbench in it.

import assert from 'node:assert/strict';
import {createRequire} from 'node:module';

const {chromium} = createRequire(`${process.env.WORKBENCH_NODE_MODULES}/`)('playwright-core');

const kFlags = [
    '--headless',
    '--no-sandbox',
    '--disable-gpu',
    '--disable-quic',
    '--no-first-run',
    '--disable-background-networking',
    '--disable-component-update',
    '--disable-sync',
];
// Against hanging: a busy machine takes its time.
const kPatience = 120000;

/// Chromium with an empty profile of its own.
export function startBrowser() {
    return chromium.launch({
        executablePath: '/usr/bin/chromium',
        args: kFlags,
        timeout: kPatience,
    });
}

// Each page has a window of its own: a page behind another one would draw no frames.
async function newPage(browser, options = {}) {
    const context = await browser.newContext({viewport: {width: 1200, height: 800}, ...options});
    context.setDefaultTimeout(kPatience);
    return context.newPage();
}

// Runs in a page of the workbench: the panel's tree as a second connection is told of it, put
// together without any of the page's own code.
async function fetchEngineTree() {
    const address = new URL('socket', location.href.replace(/app\/.*/, ''));
    address.protocol = 'ws:';
    const socket = new WebSocket(address);
    const nodes = new Map();
    let root = null;
    const register = (added) => {
        const open = [...added];
        while (open.length > 0) {
            const node = open.pop();
            nodes.set(node[0], node);
            open.push(...(node[4] ?? []));
        }
    };
    const insert = ([kind, parent, previous, added]) => {
        if (kind !== 'i') {
            throw new Error(`a first picture has the change ${kind}`);
        }
        register(added);
        if (parent === 0) {
            [root] = added;
            return;
        }
        const children = nodes.get(parent)[4];
        const at = previous === 0 ? 0 : children.indexOf(nodes.get(previous)) + 1;
        children.splice(at, 0, ...added);
    };
    await new Promise((resolve, reject) => {
        socket.onerror = () => reject(new Error('no connection'));
        socket.onmessage = ({data}) => {
            const message = JSON.parse(data);
            if (message.type === 'panel') {
                message.changes.forEach(insert);
                if (message.remaining === 0) {
                    resolve();
                }
            }
        };
    });
    socket.close();
    return root;
}

// Runs in the page: what really stands in the panel's frame; null while changes are on their way.
async function readShownTree() {
    const {page} = await import(new URL('app/main.js', document.baseURI).href);
    const {panel} = await page;
    return panel.isSettled ? panel.readTree() : null;
}

// Runs in a page: a tree as lines of text, so that a difference can be read. Depth is no matter.
// What the pointer does is each window's own.
function describeTree(root) {
    const lines = [];
    const open = root ? [[root, 0]] : [];
    while (open.length > 0) {
        const [[, name, attributes, states, children, namespace], depth] = open.pop();
        const own = children
            ? [name, JSON.stringify(attributes), states & ~(2 | 4 | 8), namespace]
            : [JSON.stringify([name, attributes])];
        lines.push(`${depth} ${own.join(' ')}`);
        for (const child of [...(children ?? [])].reverse()) {
            open.push([child, depth + 1]);
        }
    }
    return lines.join('\n');
}

/// One window of the workbench.
export class PageWindow {
    #observer;
    #failures = [];
    #requests = [];
    page;
    panel;

    /// `options` of the browser's context; `prepare(page)` is called before the page is loaded.
    static async open(browser, workbench, {options, prepare = () => {}} = {}) {
        const window = new PageWindow();
        window.page = await newPage(browser, options);
        await prepare(window.page);
        window.page.on('pageerror', (error) => window.#failures.push(String(error)));
        window.page.on('dialog', (dialog) => {
            window.#failures.push(`a dialog of the browser: ${dialog.message()}`);
            dialog.dismiss();
        });
        window.page.on('request', (request) => window.#requests.push(request.url()));
        window.page.on('websocket', (socket) => window.#requests.push(socket.url()));
        await window.page.goto(workbench.address);
        window.panel = window.page.frameLocator('#panel-frame');
        window.#observer = await newPage(browser);
        await window.#observer.goto(`${workbench.address}app/icons.js`);
        await window.panel.locator('body > h1').waitFor();
        return window;
    }

    /// Reads something until `isMeant(value)`, once in each frame that the page draws.
    async until(read, isMeant, what) {
        const end = Date.now() + kPatience;
        for (;;) {
            const value = await read();
            if (isMeant(value)) {
                return value;
            }
            assert.ok(Date.now() < end, `${what}; it is ${JSON.stringify(value)?.slice(0, 2000)}`);
            await this.page.evaluate(() => new Promise(requestAnimationFrame));
        }
    }

    get requests() {
        return this.#requests;
    }

    async close() {
        await this.#observer.context().close();
        await this.page.context().close();
        assert.deepEqual(this.#failures, [], 'no script of the page has failed');
    }

    item(name) {
        return this.panel.locator(
            `.panel-content[wb-visibility="visible"] li[annot-name="${name}"]`,
        );
    }

    get items() {
        return this.panel.locator('.panel-content[wb-visibility="visible"] ul.comments > li');
    }

    button(id) {
        return this.panel.locator(`.panel-content[wb-visibility="visible"] #${id}`);
    }

    /// Number of items; fast for long lists, too.
    itemCount() {
        return this.page.evaluate(
            () =>
                document
                    .getElementById('panel-frame')
                    .contentDocument.querySelectorAll(
                        '.panel-content[wb-visibility="visible"] ul.comments > li',
                    ).length,
        );
    }

    /// Waits for a number of items.
    expectItems(count) {
        return this.until(
            () => this.itemCount(),
            (now) => now === count,
            `${count} items`,
        );
    }

    /// Name of the current item, null for none.
    currentName() {
        return this.page.evaluate(() => {
            const panel = document.getElementById('panel-frame').contentDocument;
            return (
                panel
                    .querySelector('.panel-content[wb-visibility="visible"] li[wb-current]')
                    ?.getAttribute('annot-name') ?? null
            );
        });
    }

    async expectCurrent(name) {
        await this.until(
            () => this.currentName(),
            (current) => current === name,
            `${name} is current`,
        );
    }

    /// The description of the active document.
    active() {
        return this.page.evaluate(async () => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            return (await page).active;
        });
    }

    expectActive(isMeant, what) {
        return this.until(
            () => this.active(),
            (active) => active !== null && isMeant(active),
            what,
        );
    }

    /// Waits until the list of the active document stands.
    async expectListed() {
        await this.expectActive((active) => active.busy === null, 'the list is made');
        await this.until(
            () =>
                this.page.evaluate(async () => {
                    const {page} = await import(new URL('app/main.js', document.baseURI).href);
                    return (
                        document.getElementById('panel-progress').hidden &&
                        (await page).panel.isSettled
                    );
                }),
            Boolean,
            'the list is shown',
        );
    }

    command(name, fields) {
        return this.page.evaluate(
            async ([command, values]) => {
                const {page} = await import(new URL('app/main.js', document.baseURI).href);
                return (await page).connection.command(command, values);
            },
            [name, fields],
        );
    }

    async expectCommand(name, fields) {
        const reply = await this.command(name, fields);
        assert.equal(reply.error, null, `${name} succeeds`);
        return reply;
    }

    /// The tree in the browser is the engine's, node by node.
    async expectSameTree() {
        const read = (page, tree) => page.evaluate(`(${tree})().then(${describeTree})`);
        const end = Date.now() + kPatience;
        for (;;) {
            const engine = await read(this.#observer, fetchEngineTree);
            const shown = await read(this.page, readShownTree);
            if (engine === shown) {
                return;
            }
            if (Date.now() > end) {
                assert.deepEqual(shown.split('\n'), engine.split('\n'), 'the trees are the same');
            }
        }
    }
}
