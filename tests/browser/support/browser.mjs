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
// together without any of the page's own code. `lists` are windows to ask for, `[list, from, to]`
// each, and `tooltips` the ids of those to ask for. As text, because it may be deep.
async function fetchEngineTree({lists, tooltips}) {
    const address = new URL('socket', location.href.replace(/app\/.*/, ''));
    address.protocol = 'ws:';
    const socket = new WebSocket(address);
    const nodes = new Map();
    let root = null;
    const childrenOf = (node) => node[4]?.nodes ?? (node[4] ??= []);
    const register = (added) => {
        const open = [...added];
        while (open.length > 0) {
            const node = open.pop();
            nodes.set(node[0], node);
            if (node[4]?.pages || node[4]?.items !== undefined) {
                node[4] = {from: 0, to: 0, nodes: []};
            } else if (node[4]) {
                open.push(...node[4]);
            }
        }
    };
    const change = ([kind, id, ...values]) => {
        if (kind === 'i') {
            const [previous, added] = values;
            register(added);
            if (id === 0) {
                [root] = added;
                return;
            }
            const children = childrenOf(nodes.get(id));
            const at = previous === 0 ? 0 : children.indexOf(nodes.get(previous)) + 1;
            children.splice(at, 0, ...added);
        } else if (kind === 'w' && values.length === 2) {
            const [from, to] = values;
            nodes.get(id)[4] = {from, to, nodes: []};
        } else {
            throw new Error(`a first picture has the change ${kind}`);
        }
    };
    await new Promise((resolve, reject) => {
        let isAsked = false;
        socket.onerror = () => reject(new Error('no connection'));
        socket.onmessage = ({data}) => {
            const message = JSON.parse(data);
            if (message.type === 'reply') {
                resolve();
            } else if (message.type === 'panel') {
                message.changes.forEach(change);
                if (message.remaining === 0 && !isAsked) {
                    isAsked = true;
                    const ask = (wish) => socket.send(JSON.stringify(wish));
                    lists.forEach(([list, from, to]) => ask({type: 'window', list, from, to}));
                    tooltips.forEach((element) => ask({type: 'tooltip', element}));
                    ask({type: 'command', id: 1, name: 'activate', document: 0});
                }
            }
        };
    });
    socket.close();
    return JSON.stringify(root);
}

// Runs in the page: what really stands in the panel's frame; null while changes are on their way.
async function readShownTree() {
    const {page} = await import(new URL('app/main.js', document.baseURI).href);
    const {panel} = await page;
    return JSON.stringify(panel.isSettled ? panel.readTree() : null);
}

const kFolded = 1024;

function visit(root, act) {
    const open = [root];
    while (open.length > 0) {
        const node = open.pop();
        act(node);
        open.push(...(node[4]?.nodes ?? node[4] ?? []));
    }
}

const hasEntry = ([, , attributes], name) => Array.isArray(attributes) && attributes.includes(name);

// The lists of a tree with the positions of their rows: the list, its page items, and of each page
// item the node of its items, which has positions of its own.
function listsOf(root) {
    const lists = [];
    visit(root, (node) => {
        const {from, nodes} = node[4] ?? {};
        if (nodes && !hasEntry(node, 'comments')) {
            const pages = nodes.map((pageItem, index) => {
                let items = null;
                visit(pageItem, (inner) => (items ??= inner[4]?.nodes ? inner : null));
                const isFolded = pageItem[4].some((inner) => inner[3] & kFolded);
                return {position: from + index, items, isFolded};
            });
            lists.push({node, pages});
        }
    });
    return lists;
}

// What to ask for to see at least the rows that a tree shows.
function wishesFor(root) {
    const lists = listsOf(root).flatMap(({node, pages}) =>
        pages.length === 0
            ? []
            : [
                  [
                      node[0],
                      [pages[0].position, pages[0].items?.[4].from ?? 0],
                      [pages.at(-1).position, pages.at(-1).items?.[4].to ?? 0],
                  ],
              ],
    );
    const tooltips = [];
    visit(root, (node) => {
        if (node[1] === 'popup' && hasEntry(node, 'annot-details') && node[4] !== null) {
            tooltips.push(node[0]);
        }
    });
    return {lists, tooltips};
}

// Leaves the rows of a tree that another one shows, too, and none of folded page items.
function cutLists(root, other) {
    const shown = new Map();
    visit(other, (node) => shown.set(node[0], node[4]));
    visit(root, (node) => {
        const window = node[4];
        const {from, to} = shown.get(node[0]) ?? {};
        if (window?.nodes && from !== undefined) {
            const nodes = window.nodes.slice(Math.max(0, from - window.from), to - window.from);
            node[4] = {from, to, nodes};
        }
    });
    for (const {pages} of listsOf(root)) {
        for (const {items, isFolded} of pages) {
            if (items && isFolded) {
                items[4] = {from: 0, to: 0, nodes: []};
            }
        }
    }
}

// A tree as lines of text, so that a difference can be read. Depth is no matter. What the pointer
// does is each window's own.
function describeTree(root) {
    const lines = [];
    const open = root ? [[root, 0]] : [];
    while (open.length > 0) {
        const [[, name, attributes, states, children, namespace], depth] = open.pop();
        const own =
            attributes && states !== undefined
                ? [name, JSON.stringify(attributes), states & ~(2 | 4 | 8), namespace]
                : [JSON.stringify([name, attributes])];
        const {from, to} = children ?? {};
        const isOpen = children === null ? 'closed' : from === undefined ? '' : `${from}-${to}`;
        lines.push(`${depth} ${own.join(' ')} ${isOpen}`);
        for (const child of [...(children?.nodes ?? children ?? [])].reverse()) {
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

    /// The locator of an item that stands in the frame; see `show`.
    item(name) {
        return this.panel.locator(
            `.panel-content[wb-visibility="visible"] li[annot-name="${name}"]`,
        );
    }

    /// Scrolls the list until the item stands in the frame; its locator.
    async show(name) {
        const item = this.item(name);
        for (let part = 0; part <= 1 && (await item.count()) === 0; part += 0.1) {
            await this.scrollList(part);
            await this.until(() => this.isSettled(), Boolean, 'the list is filled');
        }
        return item;
    }

    /// Whether everything that the panel is sent is shown.
    isSettled() {
        return this.page.evaluate(async () => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            return (await page).panel.isSettled;
        });
    }

    get list() {
        return this.panel.locator('.panel-content[wb-visibility="visible"] .results-container');
    }

    get items() {
        return this.panel.locator('.panel-content[wb-visibility="visible"] ul.comments > li');
    }

    button(id) {
        return this.panel.locator(`.panel-content[wb-visibility="visible"] #${id}`);
    }

    /// Number of items of the list, whether they stand in the frame or not.
    itemCount() {
        return this.page.evaluate(async () => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            return (await page).panel.commentCount;
        });
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
        await this.until(() => this.isSettled(), Boolean, 'the list is shown');
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

    /// The tree in the browser is the engine's, node by node, in the rows that the browser has.
    async expectSameTree() {
        const end = Date.now() + kPatience;
        for (;;) {
            const shown = JSON.parse(await this.page.evaluate(readShownTree));
            const wishes = shown ? wishesFor(shown) : {lists: [], tooltips: []};
            const engine = JSON.parse(await this.#observer.evaluate(fetchEngineTree, wishes));
            if (shown) {
                cutLists(engine, shown);
                cutLists(shown, engine);
            }
            const [left, right] = [shown, engine].map(describeTree);
            if (left === right) {
                return;
            }
            if (Date.now() > end) {
                assert.deepEqual(left.split('\n'), right.split('\n'), 'the trees are the same');
            }
        }
    }

    /// Does something in windows that are as narrow as a zoomed page, `act(width, height)`.
    async inSmallSizes(act) {
        for (const [width, height] of [
            [320, 640],
            [320, 256],
            [320, 200],
        ]) {
            await this.page.setViewportSize({width, height});
            await act(width, height);
        }
        await this.page.setViewportSize({width: 1200, height: 800});
    }

    /// Scrolls the list to a part of its height.
    async scrollList(part) {
        await this.list.evaluate((list, at) => {
            list.scrollTop = at * list.scrollHeight;
        }, part);
        await this.page.evaluate(() => new Promise(requestAnimationFrame));
    }
}
