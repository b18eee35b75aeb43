// Finding comments by their texts, in the bar above the list.

import assert from 'node:assert/strict';
import {afterEach, describe, test} from 'node:test';

import {shareWindow} from './support/suite.mjs';

describe('Finding comments', () => {
    let window;
    let field;
    let told;

    shareWindow((parts) => {
        ({window} = parts);
        field = window.page.getByRole('textbox', {name: 'Find in comments'});
        told = window.page.getByRole('search').getByRole('status');
    }, '--sample');

    afterEach(() => window.expectSameTree());

    const expectTold = (words) =>
        window.until(
            () => told.textContent(),
            (now) => now === words,
            `"${words}" is told`,
        );

    // Whether the current item is in the visible part of the list, below the caption of its page.
    const isCurrentInSight = () =>
        window.list.evaluate((list) => {
            const item = list.querySelector('li[wb-current]')?.getBoundingClientRect();
            const view = list.getBoundingClientRect();
            return item && item.top >= view.top + 24 && item.bottom <= view.bottom + 1;
        });
    const expectCurrentInSight = () =>
        window.until(isCurrentInSight, Boolean, 'the current item is in sight');

    const focusedName = () =>
        window.page.evaluate(() =>
            document
                .getElementById('panel-frame')
                .contentDocument.activeElement.getAttribute('annot-name'),
        );

    test('leads from match to match by the keys, and back to the list', async () => {
        const {keyboard} = window.page;
        const count = await window.itemCount();
        await (await window.show('0_0')).click();
        await keyboard.press('Control+f');
        await expectTold(`Comments: ${count}`);
        await keyboard.type('SURVEY');
        await window.expectCurrent('0_1');
        await expectTold('1 of 2');
        const moves = [
            ['Enter', '0_5', '2 of 2'],
            ['F3', '0_1', '1 of 2'],
            ['Shift+Enter', '0_5', '2 of 2'],
            ['Shift+F3', '0_1', '1 of 2'],
        ];
        for (const [key, name, words] of moves) {
            await keyboard.press(key);
            await window.expectCurrent(name);
            await expectTold(words);
        }
        await field.fill('nowhere at all');
        await expectTold('Not found');
        assert.equal(await window.currentName(), '0_1');
        await keyboard.press('Escape');
        await field.waitFor({state: 'hidden'});
        await window.until(focusedName, (name) => name === '0_1', 'the focus is on the item');
    });

    test('finds what does not stand in the frame, also on a folded page', async () => {
        const {keyboard} = window.page;
        await keyboard.press('Control+f');
        await field.fill('GRÜßE');
        await window.expectCurrent('3_2');
        await expectCurrentInSight();
        await field.fill('thorough');
        await expectTold('1 of 1');
        await window.expectCurrent('4_0');
        await window.button('collapse-all').click();
        const page = window.panel.locator('li[page-index="1"][aria-expanded="false"]');
        await page.waitFor();
        await field.fill('path of the cable');
        await expectTold('1 of 1');
        await window.until(() => window.isSettled(), Boolean, 'the list is shown');
        assert.equal(await page.locator('div.icon').count(), 1, 'it stays folded');
        await window.button('expand-all').click();
        await field.press('Escape');
    });

    test('marks in the items where the text is, also in author and subject', async () => {
        const marks = () =>
            window.page.evaluate(() => {
                const {CSS: styles} = document.getElementById('panel-frame').contentWindow;
                const ranges = [...(styles.highlights.get('wb-match') ?? [])];
                return ranges.map(
                    (range) =>
                        `${range.startContainer.parentElement.closest('li').getAttribute('annot-name')}: ` +
                        `${range.startContainer.parentElement.closest('p') ? '' : 'tooltip: '}${range}`,
                );
            });
        const rows = [
            ['Which  SOURCE', ['0_1: Which source']],
            ['x2, h2o', ['4_4: x2, H2O']],
            ['rivera', ['0_2: tooltip: Rivera']],
            ['praise', ['0_0: tooltip: Praise']],
            ['nowhere at all', []],
        ];
        await window.page.keyboard.press('Control+f');
        for (const [words, found] of rows) {
            await field.fill(words);
            await window.until(marks, (now) => `${now}` === `${found}`, `${words}: ${found}`);
            await expectCurrentInSight();
        }
        await field.fill('rivera');
        await window.until(marks, (now) => now.length === 1, 'one is marked');
        await field.press('Escape');
        assert.deepEqual(await marks(), []);
        assert.equal(await window.list.locator('wb-found').count(), 0);
    });

    test('tells the number of what becomes current by other means', async () => {
        await (await window.show('0_0')).click();
        await window.page.getByRole('button', {name: 'View', exact: true}).click();
        await window.page.getByRole('menuitem', {name: 'Find in comments'}).click();
        await window.page.keyboard.type('layout');
        await expectTold('1 of 6');
        await (await window.show('1_3')).click();
        await expectTold('4 of 6');
        await (await window.show('0_0')).click();
        await expectTold('Found: 6');
        await window.expectCommand('remove', {document: 1, page: 1, index: 0});
        await expectTold('1 of 5');
        await window.expectCommand('undo', {document: 1});
        await expectTold('1 of 6');
        await window.page.getByRole('button', {name: 'Close the search (Escape)'}).click();
    });

    test("leaves the browser's own search to fields and pages", async () => {
        const press = (focus) =>
            window.page.evaluate((selector) => {
                const target = document.querySelector(selector);
                const event = new KeyboardEvent('keydown', {
                    key: 'f',
                    code: 'KeyF',
                    ctrlKey: true,
                    bubbles: true,
                    cancelable: true,
                });
                return !target.dispatchEvent(event);
            }, focus);
        const rows = [
            ['.page-field', false],
            ['.scroller', false],
            ['body', true],
            ['#find input', false],
        ];
        for (const [focus, isTaken] of rows) {
            assert.equal(await press(focus), isTaken, focus);
        }
        await window.page.keyboard.press('Escape');
    });

    test('leaves the current item in sight in a small window', async () => {
        await window.inSmallSizes(async (width) => {
            await (await window.show('4_4')).click();
            await window.page.keyboard.press('ArrowUp');
            await window.expectCurrent('4_2');
            await window.page.keyboard.press('Control+f');
            await field.waitFor();
            await expectCurrentInSight();
            await field.fill('H2O');
            await window.expectCurrent('4_4');
            await expectTold('1 of 1');
            const close = window.page.getByRole('button', {name: 'Close the search'});
            const {x, width: own} = await close.boundingBox();
            assert.ok(x + own <= width, 'the bar has room for all of its parts');
            await window.page.keyboard.press('Escape');
        });
    });
});
