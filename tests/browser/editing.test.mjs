// Documents changed from the page: comments, pages, undo, saving, tabs.

import assert from 'node:assert/strict';
import {appendFileSync, mkdirSync, readFileSync, writeFileSync} from 'node:fs';
import {join} from 'node:path';
import {after, afterEach, before, beforeEach, describe, test} from 'node:test';

import {PageWindow, startBrowser} from './support/browser.mjs';
import {Workbench, makeDocument, makeFolder} from './support/workbench.mjs';

describe('Editing in the browser', () => {
    let browser;
    let folder;
    let workbench;
    let window;
    let ended;

    before(async () => {
        browser = await startBrowser();
    });

    after(() => browser.close());

    beforeEach(async () => {
        folder = makeFolder();
        workbench = await Workbench.start(folder, [
            makeDocument(folder, 'small.pdf', '--comments', '12', '--pages', '4'),
            makeDocument(folder, 'sample.pdf', '--sample'),
        ]);
        ended = false;
        window = await PageWindow.open(browser, workbench);
        await window.expectActive(
            (active) => active.name === 'sample.pdf' && active.busy === null,
            'both documents are open',
        );
    });

    afterEach(async () => {
        if (!ended) {
            await window.expectSameTree();
        }
        await window.close();
        await workbench.stop();
    });

    const tool = (name) =>
        window.page.getByRole('toolbar', {name: 'Tools'}).getByRole('button', {name, exact: true});

    const chooseInMenu = async (menu, item) => {
        await window.page.getByRole('button', {name: menu, exact: true}).click();
        await window.page.locator('.menu').getByText(item).click();
    };

    const wordsOf = (name) => window.item(name).locator('p').textContent();

    const expectMark = (place) =>
        window.until(
            () =>
                window.page.evaluate(() =>
                    [...document.querySelectorAll('.annotation.focused')].map(
                        (mark) => `${mark.closest('.page').dataset.page}_${mark.dataset.index}`,
                    ),
                ),
            (marks) => marks.join() === place,
            `${place} is marked on its page`,
        );

    // Where the keyboard focus is: the name of an item of the list, else what it is.
    const focusedPlace = () =>
        window.page.evaluate(() => {
            const outer = document.activeElement;
            const element = outer.contentDocument?.activeElement ?? outer;
            return (
                element.getAttribute('annot-name') ??
                (element.textContent.trim() || element.className || element.tagName)
            );
        });

    // Nothing is waited for between the keys: what is done behind others is meant for where they
    // lead.
    test('deletes and edits the highlighted comment, in every way', async () => {
        const {keyboard} = window.page;
        const count = await window.itemCount();
        const words = [await wordsOf('0_2'), await wordsOf('0_3')];
        const deletions = {
            'a key of the list': () => keyboard.press('Delete'),
            "the panel's button": () => window.button('delete').click(),
            'the bin beside the pages, where there is no room for the list': async () => {
                await window.page.setViewportSize({width: 600, height: 800});
                await window.page.getByRole('button', {name: 'Pages', exact: true}).click();
                await tool('Delete highlighted comment').click();
                await window.page.setViewportSize({width: 1200, height: 800});
            },
            'a key that is held': async () => {
                for (let times = 0; times < 5; ++times) {
                    await keyboard.down('Delete');
                }
                await keyboard.up('Delete');
            },
            'a key on the page': () =>
                window.page
                    .locator('.page[data-page="0"] .annotations:not(.stale) [data-index="2"]')
                    .press('Delete'),
        };
        for (const [name, remove] of Object.entries(deletions)) {
            await (await window.show('0_0')).click();
            await keyboard.press('ArrowDown');
            await keyboard.press('ArrowDown');
            await remove();
            await window.expectItems(count - 1);
            await window.expectCurrent('0_2');
            assert.equal(await wordsOf('0_2'), words[1], name);
            await expectMark('0_2');
            await keyboard.press('Control+z');
            await window.expectItems(count);
            await window.expectCurrent('0_2');
            assert.equal(await wordsOf('0_2'), words[0], name);
        }
        await (await window.show('0_0')).click();
        await keyboard.press('ArrowDown');
        await keyboard.press('F2');
        const field = window.page.getByRole('textbox', {name: 'Contents'});
        assert.equal(await field.inputValue(), await wordsOf('0_1'));
        await expectMark('0_1');
        await keyboard.press('Escape');
        await window.item('0_2').dblclick();
        assert.equal(await field.inputValue(), await wordsOf('0_2'));
    });

    test('gives the focus back after every question', async () => {
        const {keyboard} = window.page;
        const field = window.page.getByRole('textbox', {name: 'Contents'});
        const dialog = window.page.getByRole('dialog');
        const inMenu = (menu, item) => async () => {
            await window.page.getByRole('button', {name: menu, exact: true}).focus();
            await chooseInMenu(menu, item);
        };
        const press = (key) => () => keyboard.press(key);
        const taken = join(folder, 'taken.pdf');
        writeFileSync(taken, 'taken');
        await window.expectCommand('add', {document: 2, page: 0, subtype: 'Text'});
        await (await window.show('0_1')).click();
        const questions = [
            ['0_1', press('F2'), press('Escape')],
            ['0_1', press('Control+o'), press('Escape')],
            [
                '0_1',
                press('F2'),
                async () => {
                    await field.fill('other words');
                    workbench.interrupt();
                    await dialog.getByRole('button', {name: 'Go on working'}).click();
                    await field.press('Control+Enter');
                },
            ],
            ['0_1', () => workbench.interrupt(), press('Escape')],
            ['Page', inMenu('Page', 'Move page 1 to'), press('Escape')],
            [
                'File',
                inMenu('File', 'Save a copy'),
                async () => {
                    const path = window.page.getByRole('textbox', {name: 'Path of the file'});
                    assert.equal(await path.inputValue(), join(folder, 'sample (copy).pdf'));
                    await path.fill(taken);
                    await keyboard.press('Enter');
                    await dialog.getByText('exists already').waitFor();
                    await dialog.last().getByRole('button', {name: 'Cancel'}).click();
                    await path.press('Escape');
                },
            ],
            ['File', inMenu('File', 'Close'), press('Escape')],
        ];
        for (const [place, open, close] of questions) {
            if (place === '0_1') {
                await (await window.show('0_1')).click();
            }
            await open();
            await dialog.waitFor();
            await close();
            await dialog.waitFor({state: 'detached'});
            await window.until(focusedPlace, (now) => now === place, `the focus is on ${place}`);
            if (place === '0_1') {
                await keyboard.press('ArrowDown');
                await window.expectCurrent('0_2');
            }
        }
    });

    test('edits contents at the comment, in the list and on the page', async () => {
        const {page} = window;
        const {keyboard} = page;
        const {id} = await window.active();
        const editor = page.getByRole('dialog');
        const onPage = page.locator(
            '.page[data-page="0"] .annotations:not(.stale) [data-index="1"]',
        );
        const contents = `${await wordsOf('0_1')}\r\nanother line`;
        await window.expectCommand('edit', {document: id, page: 0, index: 1, contents});
        await window.item('0_1').getByText('another line').waitFor();
        const former = await wordsOf('0_1');
        const leave = () => keyboard.press('Escape');
        const leaveTyped = async () => {
            await leave();
            await page.getByRole('alert').getByText('Escape').waitFor();
            await leave();
        };
        const accept = () => keyboard.press('Control+Enter');
        const goElsewhere = () => window.item('0_0').click();
        const tabOut = async () => {
            for (const key of ['Tab', 'Tab', 'Tab']) {
                await keyboard.press(key);
            }
        };
        // The focus moves to the browser's own controls, and from there to the list.
        const goAround = async () => {
            await page.evaluate(async () => {
                document.hasFocus = () => false;
                document.activeElement.blur();
                await new Promise((resolve) => {
                    setTimeout(resolve);
                });
                delete document.hasFocus;
            });
            await window.item('0_1').focus();
        };
        const area = (view) =>
            view === 'pages'
                ? page.locator('.scroller')
                : window.panel.locator(
                      '.panel-content[wb-visibility="visible"] .results-container',
                  );
        const expectInside = async (view, part) => {
            await area(view).evaluate((it, at) => it.scrollTo(0, at * it.scrollHeight), part);
            const edges = async (it) => {
                const {y, height} = await it.boundingBox();
                return [y, y + height];
            };
            const [top, bottom] = await edges(area(view));
            const isInside = ([from, to]) => from >= top && to <= bottom;
            await window.until(() => edges(editor), isInside, `the editor is inside the ${view}`);
        };
        for (const [view, width, typed, end, taken] of [
            ['comments', 1200, null, leave, former],
            ['comments', 1200, 'typed', leaveTyped, former],
            ['comments', 1200, 'accepted', accept, 'accepted'],
            ['comments', 1200, 'left', goElsewhere, 'left'],
            ['comments', 1200, 'tabbed', tabOut, 'tabbed'],
            ['comments', 1200, 'back', () => keyboard.press('Shift+Tab'), 'back'],
            ['comments', 1200, 'around', goAround, 'around'],
            ['comments', 320, 'small', accept, 'small'],
            ['pages', 1200, null, leave, former],
            ['pages', 1200, 'page', accept, 'page'],
            ['pages', 320, 'zoomed', accept, 'zoomed'],
        ]) {
            const what = [view, width, typed].join();
            await window.item('0_1').dispatchEvent('click');
            await window.expectCurrent('0_1');
            await page.setViewportSize({width, height: width === 320 ? 256 : 800});
            await page.locator(`button[data-view="${view}"]`).dispatchEvent('click');
            const comment = view === 'pages' ? onPage : window.item('0_1');
            await comment.press('F2');
            await editor.waitFor();
            const [box, place] = [await editor.boundingBox(), await comment.boundingBox()];
            assert.ok(box.x >= 0 && box.x + box.width <= width, what);
            assert.ok(width > 320 || (box.y >= 0 && box.y + box.height <= 256), what);
            const isAtComment = box.y > place.y && box.y < place.y + place.height + 10;
            assert.ok(width === 320 || isAtComment, what);
            assert.ok(view === 'pages' || Math.abs(box.width - place.width) < 1, what);
            if (view === 'comments') {
                const heading = await comment.locator(':scope > :first-child').boundingBox();
                const isCovered = heading.y + heading.height > box.y + 1;
                assert.equal(await editor.locator('.caption').isVisible(), isCovered, what);
                assert.equal(isCovered, width === 320, what);
            }
            if (width === 1200) {
                await expectInside(view, 1);
                await expectInside(view, 0);
            }
            if (typed) {
                await editor.getByRole('textbox').fill(typed);
            }
            await end();
            await editor.waitFor({state: 'detached'});
            const inList = end === goElsewhere ? '0_0' : '0_1';
            await window.until(
                focusedPlace,
                (now) => (view === 'pages' ? now.startsWith('annotation') : now === inList),
                `the focus is back, ${what}`,
            );
            await window.until(
                () => wordsOf('0_1'),
                (words) => words === taken,
                what,
            );
            if (taken !== former) {
                await window.expectCommand('undo', {document: id});
            }
        }
    });

    test('adds a highlight where it was dragged, and edits it', async () => {
        const count = await window.itemCount();
        await tool('Highlight').click();
        const box = await window.page.locator('.page[data-page="0"]').boundingBox();
        await window.page.mouse.move(box.x + 100, box.y + 400);
        await window.page.mouse.down();
        await window.page.mouse.move(box.x + 260, box.y + 440, {steps: 4});
        await window.page.mouse.up();
        await window.page.getByRole('textbox', {name: 'Contents'}).fill('see <u>here</u>');
        await window.page.keyboard.press('Control+Enter');
        await window.expectItems(count + 1);
        const mark = window.page.locator('.page[data-page="0"] .annotation.focused');
        await mark.waitFor();
        const marked = await mark.boundingBox();
        assert.ok(Math.abs(marked.x - box.x - 100) < 3 && Math.abs(marked.width - 160) < 3);
        const current = await window.currentName();
        assert.equal(await window.item(current).locator('p u').textContent(), 'here');

        await window.page.keyboard.press('F2');
        await window.page.getByRole('textbox', {name: 'Contents'}).fill('gone');
        await window.page.getByRole('button', {name: 'OK'}).click();
        await window.until(
            () => window.item(current).locator('p').textContent(),
            (words) => words === 'gone',
            'the contents are others',
        );
    });

    test('marks the selected text, line by line, under the name of the author', async () => {
        const {page} = window;
        await chooseInMenu('View', 'Author of comments');
        await page.getByRole('textbox', {name: 'Name'}).fill('Ж. Reviewer');
        await page.keyboard.press('Enter');
        const turned = join(folder, 'turned.pdf');
        const upright = readFileSync(join(folder, 'sample.pdf'), 'latin1');
        const pages = upright.replaceAll('/Type /Page >>', '/Type /Page /Rotate 90 >>');
        assert.notEqual(pages, upright);
        writeFileSync(turned, pages, 'latin1');
        const rects = [];
        for (const path of [null, turned]) {
            if (path) {
                await window.expectCommand('open', {path});
            }
            const {id} = await window.expectActive(
                (one) => !path || one.path === path,
                'it is open',
            );
            await page.locator('.page-words span').nth(4).waitFor();
            const selected = await page.evaluate(() => {
                const [, , first, second] = document.querySelectorAll('.page-words span');
                getSelection().setBaseAndExtent(first.firstChild, 9, second.firstChild, 7);
                const {x, y, width, height} = getSelection().getRangeAt(0).getBoundingClientRect();
                return {x, y, width, height};
            });
            await tool('Strikeout').click();
            await page.locator('.marking > :nth-child(2)').waitFor();
            await page.getByRole('textbox', {name: 'Contents'}).fill('gone');
            await page.keyboard.press('Control+Enter');
            const mark = page.locator('.page[data-page="0"] .focused[aria-label$="gone"]');
            await mark.waitFor();
            const box = await mark.boundingBox();
            for (const [side, value] of Object.entries(selected)) {
                assert.ok(Math.abs(box[side] - value) < 5, `${side}: ${box[side]}, ${value}`);
            }
            const {annotations} = await window.expectCommand('annotations', {
                document: id,
                page: 0,
            });
            assert.equal(annotations.at(-1).title, 'Ж. Reviewer');
            rects.push(annotations.at(-1).rect);
        }
        const [rect, other] = rects;
        assert.ok(
            rect.every((side, at) => Math.abs(side - other[at]) < 1),
            `the same words of an upright and of a turned page: ${rect}; ${other}`,
        );
    });

    test('selects and marks words up to the end of a line when the pointer leaves it', async () => {
        const {page} = window;
        const words = page.locator('.page-words').first();
        await words.locator('span').nth(9).waitFor();
        const {x, y, width, height} = await words.getByText('year.', {exact: true}).boundingBox();
        const moveTo = (across) => page.mouse.move(across, y + height / 2, {steps: 4});
        const selected = () => page.evaluate(() => getSelection().toString());
        await moveTo(x + 1);
        await page.mouse.down();
        for (const beyond of [2, 60, 200]) {
            await moveTo(x + width + beyond);
            assert.equal(await selected(), 'year.');
        }
        await page.mouse.move(x, 1);
        const kept = await selected();
        await page.mouse.up();
        await moveTo(x - 3);
        assert.equal(await selected(), kept, 'the button is up');
        await page.evaluate(() => getSelection().removeAllRanges());
        await tool('Underline').click();
        await moveTo(x + 1);
        await page.mouse.down();
        await moveTo(x + width + 200);
        await page.mouse.up();
        await page.getByRole('textbox', {name: 'Contents'}).waitFor();
        assert.equal(await page.locator('.marking > *').count(), 1, 'one line is marked');
        await page.keyboard.press('Escape');
        await page.locator('.marking').waitFor({state: 'detached'});
    });

    test('marks words that a comment covers, whether tool or selection comes first', async () => {
        const {page} = window;
        await page.locator('.page-words span').nth(4).waitFor();
        await page.locator('.page[data-page="0"] .annotation').nth(2).click();
        await window.expectCurrent('0_2');
        const {x, y, height} = await page
            .locator('.page[data-page="0"] .annotation')
            .first()
            .boundingBox();
        const choose = () => tool('Underline').click();
        const drag = async () => {
            await page.mouse.move(x + 5, y + height / 2);
            await page.mouse.down();
            await page.mouse.move(x + 155, y + height / 2, {steps: 4});
            await page.mouse.up();
        };
        for (const [first, second] of [
            [choose, drag],
            [drag, choose],
        ]) {
            await first();
            await second();
            await page.getByRole('textbox', {name: 'Contents'}).fill('twice');
            await page.keyboard.press('Control+Enter');
            const mark = page.locator('.page[data-page="0"] .focused[aria-label$="twice"]');
            await mark.waitFor();
            const box = await mark.boundingBox();
            assert.ok(Math.abs(box.x - x - 5) < 8 && Math.abs(box.width - 150) < 12, box);
            assert.ok(Math.abs(box.y - y) < 5 && box.height < height + 5, box);
            await page.keyboard.press('Control+z');
            await mark.waitFor({state: 'detached'});
        }
    });

    test('places a rectangle with the keyboard alone', async () => {
        await window.page.locator('.page canvas').first().waitFor();
        await tool('Rectangle').focus();
        await window.page.keyboard.press('Enter');
        await window.page.locator('.scroller').focus();
        await window.page.keyboard.press('Enter');
        await window.page.locator('.drawing').waitFor();
        await window.page.keyboard.press('ArrowDown');
        await window.page.keyboard.press('Shift+ArrowRight');
        await window.page.keyboard.press('Enter');
        await window.page.getByRole('textbox', {name: 'Contents'}).fill('framed');
        await window.page.keyboard.press('Control+Enter');
        await window.expectActive((active) => active.undo === 'add', 'it is added');
        await window.panel.getByRole('treeitem', {name: 'framed'}).waitFor();
    });

    test('inserts, moves and deletes pages', async () => {
        const steps = [
            ['Insert a page after page 1', 7, 'insert-page'],
            ['Move page 1 down', 7, 'move-page'],
            ['Delete page 1', 6, 'delete-page'],
        ];
        for (const [item, pages, step] of steps) {
            await chooseInMenu('Page', item);
            await window.expectActive((one) => one.pages === pages && one.undo === step, item);
            await window.until(
                () => window.page.locator('.page').count(),
                (count) => count === pages,
                'the pages are there',
            );
        }
        for (let step = 0; step < steps.length; ++step) {
            await window.page.getByRole('button', {name: /^Undo/}).click();
        }
        await window.expectActive((one) => one.pages === 6 && one.undo === null, 'all undone');
    });

    test('saves, and what is opened again is what was saved', async () => {
        const {id} = await window.active();
        const added = await window.expectCommand('add', {
            document: id,
            page: 2,
            subtype: 'Text',
            contents: 'kept',
            rect: [50, 50, 70, 70],
        });
        await window.page.keyboard.press('Control+s');
        await window.expectActive((active) => !active.modified && active.busy === null, 'saved');
        await chooseInMenu('File', 'Close');
        await window.expectActive(
            (active) => active.name === 'small.pdf',
            'the other one is active',
        );

        await window.page.getByRole('button', {name: 'Open a document'}).click();
        await window.page
            .getByRole('textbox', {name: 'Path of the file'})
            .fill(join(folder, 'sample.pdf'));
        await window.page.keyboard.press('Enter');
        await window.expectActive(
            (active) => active.name === 'sample.pdf' && active.busy === null,
            'it is open again',
        );
        assert.match(await window.item(`2_${added.index}`).textContent(), /kept/);
    });

    test('asks before unsaved changes are dropped, and keeps them until the answer', async () => {
        await (await window.show('0_0')).click();
        await window.button('delete').click();
        await window.expectActive((active) => active.modified, 'it is changed');
        const close = window.page.getByRole('button', {name: 'Close sample.pdf'});
        await close.click();
        await window.page.getByRole('button', {name: 'Cancel'}).click();
        assert.equal((await window.active()).modified, true);
        await close.click();
        await window.page.getByRole('button', {name: 'Discard'}).click();
        await window.expectActive((active) => active.name === 'small.pdf', 'it is closed');
    });

    test('keeps scroll place and zoom of each document behind its tab', async () => {
        const scroller = window.page.locator('.scroller');
        await window.page.locator('.page canvas').first().waitFor();
        await window.page.getByRole('button', {name: 'Zoom in'}).click();
        await scroller.evaluate((element) => {
            element.scrollTop = 900;
        });
        await window.page.getByRole('tab', {name: 'small.pdf'}).click();
        await window.expectActive((active) => active.name === 'small.pdf', 'the other tab');
        await window.until(
            () => scroller.evaluate((element) => element.scrollTop),
            (top) => top === 0,
            'the other document is at its beginning',
        );
        await window.page.getByRole('tab', {name: 'sample.pdf'}).press('Enter');
        await window.expectActive((active) => active.name === 'sample.pdf', 'the first tab');
        await window.until(
            () => scroller.evaluate((element) => element.scrollTop),
            (top) => top === 900,
            'the place is the old one',
        );
        const mode = window.page.getByRole('button', {name: 'Fit width'});
        assert.equal(await mode.getAttribute('aria-pressed'), 'false');
    });

    test('lists all documents while there is no room for every tab', async () => {
        const {keyboard} = window.page;
        const all = window.page.getByRole('button', {name: 'All documents'});
        await window.page.setViewportSize({width: 520, height: 700});
        assert.equal(await all.isVisible(), false, 'there is room');
        mkdirSync(join(folder, 'other'));
        for (const name of [
            'a-contract-with-a-long-name-1.pdf',
            join('other', 'small.pdf'),
            'z.pdf',
        ]) {
            const path = makeDocument(folder, name, '--comments', '1', '--pages', '1');
            await window.expectCommand('open', {path});
        }
        await all.press('Enter');
        await keyboard.press('End');
        await keyboard.press('s');
        await keyboard.press('s');
        await keyboard.press('s');
        await keyboard.press('Enter');
        await window.expectActive(({path}) => path?.endsWith('other/small.pdf'), 'it is chosen');
        const name = `small.pdf – other`;
        await window.page.getByRole('tab', {name, exact: true, selected: true}).waitFor();
        await window.until(focusedPlace, (now) => now === 'tool', 'the focus is on the button');
        // Whether the end of the title and the cross of the selected tab are in sight.
        const showsEnds = () =>
            window.page.getByRole('tab', {selected: true}).evaluate((tab) => {
                const end = document.createRange();
                const last = tab.querySelector('bdi').lastChild;
                end.setStart(last, last.childNodes.length);
                const title = tab.querySelector('bdi').getBoundingClientRect();
                const words = [...tab.querySelectorAll('bdi span')].at(-1).getBoundingClientRect();
                const cross = tab.nextSibling.getBoundingClientRect();
                const area = document.getElementById('tabs').getBoundingClientRect();
                return words.right <= title.right + 1 && cross.right <= area.right;
            });
        for (const width of [520, 320]) {
            await window.page.setViewportSize({width, height: 700});
            for (const id of [1, 2, 3, 4, 5]) {
                await window.expectCommand('activate', {document: id});
                await window.expectActive((one) => one.id === id, 'it is active');
                await window.until(showsEnds, Boolean, `the ends of tab ${id} are in sight`);
            }
        }
        for (const id of [1, 2, 4, 5]) {
            await window.expectCommand('close', {document: id});
        }
        await window.page.setViewportSize({width: 300, height: 700});
        await window.until(showsEnds, Boolean, 'the ends of the only tab are in sight');
        assert.equal(await all.isVisible(), false, 'one document is no list');
    });

    test('shows every page of two documents, behind tabs and side by side', async () => {
        const height = () =>
            window.page.locator('#workspace').evaluate((area) => area.clientHeight);
        const room = await height();
        const lastPages = {'small.pdf': 3, 'sample.pdf': 5};
        const expectLastPage = async (slot, name) => {
            await slot.locator('.page').nth(lastPages[name]).scrollIntoViewIfNeeded();
            await slot.locator(`.page[data-page="${lastPages[name]}"] canvas`).waitFor();
        };
        const slots = window.page.locator('.slot');
        for (const name of ['small.pdf', 'sample.pdf', 'small.pdf', 'sample.pdf']) {
            await window.page.getByRole('tab', {name}).click();
            await window.expectActive((active) => active.name === name, name);
            await expectLastPage(slots, name);
        }
        await chooseInMenu('View', 'Two documents');
        for (const name of ['Document in the first half', 'Document in the second half']) {
            assert.equal(await window.page.getByRole('combobox', {name}).count(), 1, name);
        }
        await expectLastPage(
            slots.filter({has: window.page.locator('.page[data-page="5"]')}),
            'sample.pdf',
        );
        await expectLastPage(
            slots.filter({hasNot: window.page.locator('.page[data-page="5"]')}),
            'small.pdf',
        );
        assert.equal(await height(), room, 'what lies around leaves the pages their room');
        await window.page.locator('.slot:not(.active) .scroller').focus();
        await window.expectActive(
            (active) => active.name === 'small.pdf',
            'the other half is active',
        );
    });

    test('draws what is in sight as sharply as the screen is, at any zoom', async () => {
        const isSharp = () =>
            window.page.evaluate(() => {
                const canvases = [...document.querySelectorAll('.page:first-child canvas')];
                const pixels = canvases.map(({width, clientWidth}) => width / clientWidth);
                return Math.max(0, ...pixels) > devicePixelRatio * 0.99;
            });
        const session = await window.page.context().newCDPSession(window.page);
        for (const [zoom, deviceScaleFactor] of [
            [1, 1],
            [1, 2],
            [6, 2],
        ]) {
            await session.send('Emulation.setDeviceMetricsOverride', {
                width: 1200,
                height: 800,
                deviceScaleFactor,
                mobile: false,
            });
            await window.page.evaluate(async (scale) => {
                const {page} = await import(new URL('app/main.js', document.baseURI).href);
                (await page).view.zoom.setScale(scale);
            }, zoom);
            await window.until(
                () => isSharp(),
                Boolean,
                `the page is sharp at ${zoom} with ${deviceScaleFactor} pixels`,
            );
        }
        const fonts = window.requests.filter((address) => address.includes('/standard_fonts/'));
        assert.ok(fonts.length > 0, 'fonts that a file lacks are those of the library');
    });

    test('refuses edits of a document that is read-only', async () => {
        await (await window.show('0_0')).click();
        await window.page.getByRole('button', {name: 'File', exact: true}).click();
        await window.page.getByRole('menuitemcheckbox', {name: 'Read-only'}).click();
        await window.expectActive((active) => active.readOnly, 'it is read-only');
        for (const name of ['Note', 'Rectangle', 'Edit comment (F2)']) {
            assert.equal(await tool(name).getAttribute('aria-disabled'), 'true', name);
        }
        await window.item('0_0').press('F2');
        await window.page.locator('#status').getByText('read-only').waitFor();
    });

    test('hits no other comment when the document changes under the editor', async () => {
        const {id} = await window.active();
        const words = await window.item('0_2').locator('p').textContent();
        await (await window.show('0_1')).click();
        await window.expectCurrent('0_1');
        await window.page.keyboard.press('F2');
        const field = window.page.getByRole('textbox', {name: 'Contents'});
        await field.fill('meant for the second comment');
        await window.expectCommand('remove', {document: id, page: 0, index: 0});
        await window.page.keyboard.press('Control+Enter');
        await window.page.getByRole('alert').getByText('changed meanwhile').waitFor();
        assert.equal(await field.inputValue(), 'meant for the second comment');
        await window.page.getByRole('button', {name: 'Cancel'}).click();
        assert.equal(await window.item('0_1').locator('p').textContent(), words);
    });

    test('asks before it replaces what another program has written', async () => {
        const active = await window.active();
        await window.expectCommand('add', {document: active.id, page: 0, subtype: 'Text'});
        appendFileSync(active.path, '% changed by another program');
        await window.page.keyboard.press('Control+s');
        await window.page.getByRole('dialog').getByRole('button', {name: 'Replace'}).click();
        await window.expectActive((one) => !one.modified && one.busy === null, 'it is saved');
        assert.doesNotMatch(readFileSync(active.path, 'latin1'), /another program/);
    });

    test('asks what becomes of changes before the workbench ends', async () => {
        const {id, path} = await window.active();
        const original = readFileSync(path);
        await window.expectCommand('add', {document: id, page: 0, subtype: 'Text'});
        workbench.interrupt();
        const dialog = window.page.getByRole('dialog', {name: 'The workbench is about to end'});
        await dialog.getByRole('button', {name: 'Go on working'}).click();
        await dialog.waitFor({state: 'detached'});
        assert.ok(workbench.isAlive);
        assert.deepEqual(readFileSync(path), original);

        workbench.interrupt();
        await dialog.getByRole('button', {name: 'Save all and end'}).click();
        await window.page.getByText('The workbench has ended.').waitFor();
        await workbench.expectEnd();
        assert.ok(readFileSync(path).length > original.length, 'it is saved');
        ended = true;
    });

    test('says that another run answers in place of the one it belongs to', async () => {
        const {port} = new URL(workbench.address);
        await workbench.stop();
        ended = true;
        folder = makeFolder();
        workbench = await Workbench.start(folder, [], ['--port', port]);
        await window.page.locator('#banner').getByText('Another run of the workbench').waitFor();
        assert.equal(await window.page.getByRole('button', {name: 'Try now'}).count(), 0);
    });

    test('counts a notice that comes again', async () => {
        const open = () =>
            window.page.evaluate(async () => {
                const {page} = await import(new URL('app/main.js', document.baseURI).href);
                await (await page).edits.openPath('/none.pdf');
            });
        const notices = window.page.locator('.notice');
        await open();
        await open();
        assert.match(await notices.textContent(), /× 2$/);
        await notices.getByRole('button').click();
        await open();
        assert.doesNotMatch(await notices.textContent(), /×/);
    });

    test('keeps what was written until it is taken', async () => {
        const {id} = await window.active();
        await (await window.show('0_0')).click();
        await window.expectCurrent('0_0');
        await window.page.keyboard.press('F2');
        const field = window.page.getByRole('textbox', {name: 'Contents'});
        await field.fill('long words');
        await window.expectCommand('read-only', {document: id, on: true});
        await window.page.keyboard.press('Control+Enter');
        await window.page.getByRole('alert').getByText('read-only').waitFor();
        assert.equal(await field.inputValue(), 'long words');
        await window.expectCommand('read-only', {document: id, on: false});
        await window.page.getByRole('button', {name: 'OK'}).click();
        await field.waitFor({state: 'detached'});
        assert.equal((await window.active()).undo, 'edit');
    });

    test('keeps the focus on the pages when a comment there is deleted', async () => {
        await window.page.getByRole('tab', {name: 'small.pdf'}).click();
        await window.expectActive((active) => active.name === 'small.pdf', 'the other tab');
        const annotations = window.page.locator('.page[data-page="0"] .annotation');
        await annotations.first().focus();
        for (let left = (await annotations.count()) - 1; left >= 0; --left) {
            await window.page.keyboard.press('Delete');
            await window.until(
                () => annotations.count(),
                (count) => count === left,
                `${left} are left`,
            );
            const focused = await window.page.evaluate(() => document.activeElement.className);
            assert.equal(focused.split(' ')[0], left > 0 ? 'annotation' : 'scroller');
        }
    });

    test('makes buttons of a crowded page for what is pointed at and what has the focus', async () => {
        const path = makeDocument(folder, 'crowded.pdf', '--comments', '600', '--pages', '1');
        await window.expectCommand('open', {path});
        await window.expectListed();
        const buttons = window.page.locator('.pages-view .annotation');
        await window.page.locator('.annotation.focused').waitFor();
        // The last one of the smallest annotations in sight lies above all others.
        const [index, x, y] = await window.page.evaluate(async () => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            const view = (await page).splitView.activeView;
            const seen = view.scroller.getBoundingClientRect();
            const boxes = Array.from({length: 600}, (_, at) => [at, view.boxOf(0, at)])
                .filter(([, box]) => box && box.top > seen.top && box.bottom < seen.bottom)
                .sort(([, one], [, other]) => one.width * one.height - other.width * other.height);
            const isSmallest = ([, {width, height}]) =>
                width * height <= boxes[0][1].width * boxes[0][1].height;
            const [at, {left, top, width, height}] = boxes.findLast(isSmallest);
            return [at, left + width / 2, top + height / 2];
        });
        await window.page.mouse.click(x, y);
        await window.expectCurrent(`0_${index}`);
        await window.page.keyboard.press('ArrowDown');
        await window.expectCurrent(`0_${index + 1}`);
        const current = window.page.locator('.annotation.focused');
        assert.equal(await current.getAttribute('data-index'), `${index + 1}`);
        await window.page.keyboard.press('Delete');
        await window.expectItems(599);
        const focused = () => window.page.evaluate(() => document.activeElement.dataset.index);
        await window.until(focused, (at) => at === `${index + 1}`, 'the next one has the focus');
        assert.ok((await buttons.count()) <= 4);
    });

    test('takes a file that is dropped on it', async () => {
        const bytes = readFileSync(
            makeDocument(folder, 'dropped.pdf', '--comments', '3', '--pages', '1'),
        ).toString('base64');
        await window.page.evaluate((content) => {
            const data = Uint8Array.from(atob(content), (character) => character.charCodeAt(0));
            const transfer = new DataTransfer();
            transfer.items.add(new File([data], 'dropped.pdf', {type: 'application/pdf'}));
            const event = {bubbles: true, cancelable: true, dataTransfer: transfer};
            const panel = document.getElementById('panel-frame').contentDocument.body;
            panel.dispatchEvent(new DragEvent('dragover', event));
            if (!document.body.classList.contains('dropping')) {
                throw new Error('nothing shows that the file may be dropped');
            }
            panel.dispatchEvent(new DragEvent('drop', event));
        }, bytes);
        const active = await window.expectActive(
            (one) => one.name === 'dropped.pdf' && one.busy === null,
            'it is open',
        );
        assert.equal(active.path, null);
        await window.expectItems(3);
    });
});
