// A long list stays quick. Budgets of time on a clock are those of the benchmarks; here the time of
// the processor is limited, which is the same on a busy machine.

import assert from 'node:assert/strict';
import {after, before, describe, test} from 'node:test';

import {PageWindow, startBrowser} from './support/browser.mjs';
import {measureFrames} from './support/key-latency.mjs';
import {countListeners, measureLongestTask, measureMainThread} from './support/processor-time.mjs';
import {Workbench, makeDocument, makeFolder, makeWords} from './support/workbench.mjs';

const kComments = 10000;
const kWords = 5000;
const kPresses = 40;
// Milliseconds of the processor. Beyond these something is wrong, on any machine.
const kKeyLimit = 100;
const kTaskLimit = 150;
const kNodeLimit = 6000;

describe('Ten thousand comments', () => {
    let browser;
    let workbench;
    let window;
    let folder;

    before(async () => {
        folder = makeFolder();
        browser = await startBrowser();
        workbench = await Workbench.start(folder, [
            makeDocument(folder, 'long.pdf', '--comments', String(kComments), '--pages', '500'),
        ]);
    });

    after(async () => {
        await window.close();
        await browser.close();
        await workbench.stop();
    });

    test('come in while the page stays usable', async (context) => {
        const begin = Date.now();
        const longest = await measureLongestTask(browser, async () => {
            window = await PageWindow.open(browser, workbench);
            await window.page.getByRole('button', {name: 'File', exact: true}).click();
            await window.page.getByRole('menuitem', {name: 'Open'}).waitFor();
            await window.page.keyboard.press('Escape');
            context.diagnostic(`a menu opened after ${Date.now() - begin} ms`);
            await window.expectListed();
            context.diagnostic(`the list stood after ${Date.now() - begin} ms`);
            return window.page;
        });
        assert.equal(await window.itemCount(), kComments);
        context.diagnostic(`the longest task took ${longest.toFixed()} ms of the processor`);
        assert.ok(longest < kTaskLimit, `the page stood still for ${longest} ms`);
    });

    test('cost a key little', async (context) => {
        let times;
        const spent = await measureMainThread(window.page, async () => {
            times = await measureFrames(window, kPresses);
        });
        const each = spent / kPresses;
        context.diagnostic(
            `a key is seen after ${times[kPresses / 2].toFixed(1)} ms in the median and ` +
                `${times.at(-1).toFixed(1)} ms at most, ${each.toFixed(1)} ms of the processor`,
        );
        assert.ok(each < kKeyLimit, `a key takes ${each} ms`);
    });

    test('are shown as the engine has them wherever the list is scrolled to', async () => {
        for (const part of [0.9, 0.25, 0.26, 0.27, 1, 0.5, 0]) {
            await window.scrollList(part);
            await window.expectSameTree();
            assert.ok((await window.items.count()) > 10, `rows at ${part} of the list`);
        }
        const count = await window.page.evaluate(async () => {
            const {page} = await import(new URL('app/main.js', document.baseURI).href);
            return (await page).panel.nodeCount;
        });
        assert.ok(count < kNodeLimit, `${count} nodes`);
    });

    test('do not jump while rows that were not shown before come in above', async () => {
        await window.scrollList(0.5);
        await window.expectSameTree();
        const kStep = 150;
        for (let step = 0; step < 15; ++step) {
            const moved = await window.page.evaluate(async (distance) => {
                const list = document
                    .getElementById('panel-frame')
                    .contentDocument.querySelector('.results-container');
                const topOf = (item) => item.getBoundingClientRect().top;
                const edge = topOf(list) + 30;
                const items = [...list.querySelectorAll('li[annot-name]')];
                const item = items.find((one) => topOf(one) > edge);
                const former = topOf(item);
                list.scrollTop -= distance;
                for (let frame = 0; frame < 5; ++frame) {
                    await new Promise(requestAnimationFrame);
                }
                return topOf(item) - former;
            }, kStep);
            assert.ok(Math.abs(moved - kStep) < 2, `step ${step} moved the rows by ${moved}`);
        }
    });

    // An annotation that is not listed goes, so the comments of its page are named anew; its removal
    // leaves the current comment as it is.
    test('stay where they are while the page at the top or above is brought up to date', async () => {
        const page = 250;
        const rect = [9, 9, 29, 29];
        const add = (fields) => window.expectCommand('add', {document: 1, page, rect, ...fields});
        for (const [top, current] of [
            [`${page + 1}_2`, [page + 1, 5]],
            [`${page}_7`, [page, 9]],
        ]) {
            const {index} = await add({subtype: 'Link', contents: ''});
            await add({subtype: 'Text', contents: 'named anew'});
            await window.expectCommand('focus', {document: 1, page: current[0], index: current[1]});
            await window.expectCurrent(current.join('_'));
            const topOf = () =>
                window.item(top).evaluate((item) => {
                    const list = item.closest('.results-container');
                    return item.getBoundingClientRect().top - list.getBoundingClientRect().top;
                });
            await (
                await window.show(top)
            ).evaluate((item) => {
                const list = item.closest('.results-container');
                const edge = list.getBoundingClientRect().top + 25;
                list.scrollTop += item.getBoundingClientRect().top - edge;
            });
            await window.expectSameTree();
            const former = await topOf();
            await window.expectCommand('remove', {document: 1, page, index});
            await window.expectSameTree();
            await window.until(() => window.isSettled(), Boolean, 'the list is filled');
            const moved = (await topOf()) - former;
            assert.ok(Math.abs(moved) < 2, `${top} has moved by ${moved}`);
        }
    });

    test('leave time for others while a page of many words is laid out', async (context) => {
        const path = makeWords(folder, 'words.pdf', kWords);
        const longest = await measureLongestTask(browser, async () => {
            const {document: id} = await window.expectCommand('open', {path});
            const read = () =>
                window.page.evaluate(() => document.querySelector('.page-words')?.textContent);
            const all = Array.from({length: kWords}, (_, at) => at).join('');
            const isAll = (text) => text?.replaceAll(' ', '') === all;
            await window.until(read, isAll, 'the words are there in order');
            await window.expectCommand('close', {document: id});
            return window.page;
        });
        context.diagnostic(`the longest task took ${longest.toFixed()} ms of the processor`);
        assert.ok(longest < 2 * kTaskLimit, `the page stood still for ${longest} ms`);
    });

    // The library's worker keeps hundreds of megabytes of a large file that nothing refers to.
    test('end the worker that read a former state of their large file', async () => {
        const workers = () => window.page.workers();
        const comment = {subtype: 'Text', contents: '', rect: [9, 9, 29, 29]};
        for (let times = 0; times < 3; ++times) {
            const former = workers();
            await window.expectCommand('add', {document: 1, page: 0, ...comment});
            const isReplaced = (now) =>
                now.length === former.length && now.some((one) => !former.includes(one));
            await window.until(workers, isReplaced, 'another worker is there instead');
        }
    });

    test('leave nothing of their pages when they are closed', async () => {
        const drawn = window.page.locator('.pages-view .page canvas').first();
        const count = () => countListeners(window.page);
        let first = Infinity;
        for (let times = 0; times < 3; ++times) {
            const path = makeDocument(folder, 'closed.pdf', '--comments', '200', '--pages', '200');
            const {document: id} = await window.expectCommand('open', {path});
            await window.expectListed();
            await drawn.waitFor();
            await window.expectCommand('close', {document: id});
            await drawn.waitFor();
            await window.until(count, (now) => now < first + 200, 'its listeners are gone');
            first = Math.min(first, await count());
        }
    });
});
