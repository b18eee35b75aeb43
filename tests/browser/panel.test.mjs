// The panel as a person uses it: pointer, keyboard, tooltips, languages, several windows.

import assert from 'node:assert/strict';
import {afterEach, describe, test} from 'node:test';

import {findViolations, letFrameRunScripts} from './support/accessibility.mjs';
import {PageWindow} from './support/browser.mjs';
import {shareWindow} from './support/suite.mjs';

describe('The panel in the browser', () => {
    let browser;
    let workbench;
    let window;

    shareWindow((parts) => ({browser, workbench, window} = parts), '--sample');

    afterEach(() => window.expectSameTree());

    test("shows the engine's tree", async () => {
        await window.expectSameTree();
        const count = await window.itemCount();
        assert.ok(count > 30);
        assert.equal(
            await window.page.locator('#state > span').textContent(),
            `Comments: ${count}`,
        );
    });

    test('shows the annotation of a clicked item in the middle of the pages', async () => {
        await (await window.show('1_1')).click();
        await window.expectCurrent('1_1');
        const mark = window.page.locator('.page[data-page="1"] .annotation.focused');
        await mark.waitFor();
        await window.until(
            () =>
                window.page.evaluate(() => {
                    const view = document.querySelector('.scroller').getBoundingClientRect();
                    const box = document
                        .querySelector('.annotation.focused')
                        .getBoundingClientRect();
                    return Math.abs(box.top + box.height / 2 - view.top - view.height / 2);
                }),
            (distance) => distance < 40,
            'the annotation is in the middle',
        );
    });

    test('moves the current item and the focus with the keys', async () => {
        await (await window.show('0_0')).click();
        const last = '5_6';
        const moves = [
            ['ArrowDown', '0_1'],
            ['ArrowUp', '0_0'],
            ['PageDown', '1_0'],
            ['ArrowDown', '1_1'],
            ['PageUp', '0_6'],
            ['End', last],
            ['Home', '0_0'],
        ];
        for (const [key, name] of moves) {
            await window.page.keyboard.press(key);
            await window.expectCurrent(name);
            const focused = await window.page.evaluate(() =>
                document
                    .getElementById('panel-frame')
                    .contentDocument.activeElement.getAttribute('annot-name'),
            );
            assert.equal(focused, name, `the focus is on the current item after ${key}`);
        }
        const stops = await window.panel
            .locator(
                '.panel-content[wb-visibility="visible"] .results-container, ' +
                    '.panel-content[wb-visibility="visible"] .results-container [tabindex]',
            )
            .evaluateAll((elements) => elements.filter((one) => one.tabIndex === 0).length);
        assert.equal(stops, 1, 'the list is one tab stop');
    });

    test('folds pages with the pointer, with the keys, and with the buttons', async () => {
        const page = window.panel.locator('li[page-index="1"]');
        const isFolded = (folded) =>
            window.until(
                () => page.getAttribute('aria-expanded'),
                (value) => value === String(!folded),
                `the page is ${folded ? 'folded' : 'open'}`,
            );
        await page.locator('div.icon').click();
        await isFolded(true);
        assert.equal(await window.item('1_0').isVisible(), false);
        await page.focus();
        await window.page.keyboard.press('Delete');
        await window.page.keyboard.press('ArrowRight');
        await isFolded(false);
        await window.button('collapse-all').click();
        await isFolded(true);
        await window.until(
            () => window.button('collapse-all').getAttribute('aria-disabled'),
            (value) => value === 'true',
            'all are folded',
        );
        await window.button('expand-all').focus();
        await window.page.keyboard.press('Enter');
        await isFolded(false);
        assert.equal((await window.active()).modified, false, 'a caption deletes nothing');
    });

    test('says which page the list shows, and hides no current item behind it', async () => {
        await (await window.show('1_5')).click();
        const places = () =>
            window.list.evaluate((list) => {
                const item = list.querySelector('li[wb-current]');
                const caption = item.closest('ul[page-item] > li').firstElementChild;
                const topOf = (element) => element.getBoundingClientRect().top;
                return [topOf(caption) - topOf(list), topOf(item) - topOf(list)];
            });
        await window.scrollList(1);
        await window.page.keyboard.press('ArrowUp');
        await window.expectCurrent('1_4');
        const [caption, item] = await window.until(
            places,
            ([top]) => top === 0,
            'it is at the top',
        );
        assert.ok(item >= 25, `${caption} ${item}`);
    });

    for (const [pointer, options] of [
        ['mouse', {}],
        ['fingers', {hasTouch: true, isMobile: true}],
    ]) {
        test(`gives the list at least half of a small or zoomed window: ${pointer}`, async () => {
            const other = await PageWindow.open(browser, workbench, {options});
            const {page} = other;
            for (const key of ['Escape', 'Control+f']) {
                await page.keyboard.press(key);
                await other.inSmallSizes(async (width, height) => {
                    const share = await other.list.evaluate(
                        (list, whole) => list.clientHeight / whole,
                        height,
                    );
                    const what = `${key}, ${width} by ${height}`;
                    assert.ok(share >= 0.5, `${share}, ${what}`);
                    const heights = await page
                        .getByRole('button')
                        .evaluateAll((all) => all.map((one) => one.offsetHeight));
                    assert.ok(pointer === 'mouse' || Math.min(...heights) >= 24, what);
                });
            }
            await other.close();
        });
    }

    test('goes on with the buttons, beyond the end of a page', async () => {
        await (await window.show('0_6')).click();
        await window.button('move-bottom').click();
        await window.expectCurrent('1_0');
        await window.button('move-top').click();
        await window.expectCurrent('0_6');
    });

    test('shows a tooltip inside the window for pointer and keyboard', async () => {
        const tooltip = window.panel.locator('wb-host > popup');
        await (await window.show('0_2')).hover();
        await tooltip.waitFor();
        assert.match(await tooltip.textContent(), /Tomás Rivera/);
        await window.page.keyboard.press('Escape');
        await tooltip.waitFor({state: 'detached'});

        const hovered = (name) =>
            window.until(
                () => window.item(name).evaluate((item) => item.matches(':hover')),
                Boolean,
                `the pointer is over ${name}`,
            );
        await window.page.clock.install();
        await window.item('0_2').hover({position: {x: 60, y: 4}});
        await hovered('0_2');
        await window.page.keyboard.press('Control+f');
        await hovered('0_1');
        await window.page.clock.fastForward(1000);
        assert.equal(await tooltip.count(), 0, 'the pointer has not moved');
        await window.page.keyboard.press('Escape');

        await (await window.show('4_0')).click();
        await window.page.keyboard.press('End');
        await tooltip.waitFor();
        const isInside = await tooltip.evaluate((element) => {
            const box = element.getBoundingClientRect();
            const {clientWidth, clientHeight} = element.ownerDocument.documentElement;
            return (
                box.left >= 0 &&
                box.top >= 0 &&
                box.right <= clientWidth &&
                box.bottom <= clientHeight
            );
        });
        assert.ok(isInside);
    });

    test('draws icons as sharply as the screen is', async () => {
        for (const [deviceScaleFactor, kind] of [
            [1, 'png'],
            [1.1, 'svg'],
            [2, 'svg'],
        ]) {
            const other = await PageWindow.open(browser, workbench, {options: {deviceScaleFactor}});
            await other.expectListed();
            const address = await (
                await other.show('0_0')
            ).evaluate((item) => {
                const {backgroundImage} = item.ownerDocument.defaultView.getComputedStyle(item);
                return backgroundImage.slice('url("'.length, -'")'.length);
            });
            assert.match(address, new RegExp(`/highlight-ico.${kind}$`));
            const size = await other.page.evaluate(async (src) => {
                const image = Object.assign(new Image(), {src});
                await image.decode();
                return [image.naturalWidth, image.naturalHeight];
            }, address);
            assert.deepEqual(size, [16, 16]);
            await other.close();
        }
    });

    test('makes an annotation current that is clicked on its page', async () => {
        await (await window.show('0_0')).click();
        await window.page.locator('.page[data-page="0"] .annotation').nth(2).click();
        await window.expectCurrent('0_2');
    });

    test('tells a screen reader what it is', async () => {
        const list = window.panel.getByRole('tree', {name: 'Comments'});
        await list.waitFor();
        await list.getByRole('treeitem', {name: 'Page 2', exact: true}).waitFor();
        await window.show('1_0');
        const item = list.getByRole('treeitem', {name: 'Highlight A good opening.'});
        await item.click();
        assert.equal(await item.getAttribute('aria-setsize'), '7');
        await window.until(
            () => item.getAttribute('aria-selected'),
            (value) => value === 'true',
            'the item is selected',
        );
        for (const name of [
            'Expand all',
            'Collapse all',
            'Delete comment',
            'Previous comment',
            'Next comment',
        ]) {
            assert.equal(await window.panel.getByRole('button', {name}).count(), 1, name);
        }
    });

    for (const [name, options] of Object.entries({
        light: {colorScheme: 'light'},
        dark: {colorScheme: 'dark'},
        'narrow, for fingers': {
            viewport: {width: 320, height: 640},
            hasTouch: true,
            isMobile: true,
        },
    })) {
        test(`breaks no rule of accessibility: ${name}`, async () => {
            const other = await PageWindow.open(browser, workbench, {
                options,
                prepare: letFrameRunScripts,
            });
            await other.expectListed();
            await (await other.show('0_1')).click();
            const states = {
                list: () => {},
                find: () => other.page.keyboard.press('Control+f'),
                menu: () => other.page.getByRole('button', {name: 'View', exact: true}).click(),
                dialog: async () => {
                    await other.page.keyboard.press('Escape');
                    await other.page.keyboard.press('Control+o');
                    await other.page.getByRole('dialog').waitFor();
                    await other.page.keyboard.type('/none.pdf');
                    await other.page.keyboard.press('Enter');
                    await other.page.getByRole('dialog').getByRole('alert').waitFor();
                },
            };
            for (const [state, reach] of Object.entries(states)) {
                await reach();
                assert.deepEqual(await findViolations(other.page), [], state);
            }
            await other.close();
        });
    }

    test('speaks the chosen language in page and panel', async () => {
        for (const [name, direction, next] of [
            ['ar', 'rtl', 'التعليق التالي'],
            ['ru', 'ltr', 'Следующий комментарий'],
            ['en', 'ltr', 'Next comment'],
        ]) {
            await window.expectCommand('locale', {locale: name});
            await window.until(
                () => window.button('move-bottom').getAttribute('aria-label'),
                (label) => label === next,
                'the button is named anew',
            );
            for (const root of [window.page.locator('html'), window.panel.locator('html')]) {
                assert.equal(await root.getAttribute('dir'), direction);
            }
            await window.expectSameTree();
        }
    });

    test('comes back by itself where it was when the connection is cut', async () => {
        await (await window.show('0_0')).click();
        await window.expectCurrent('0_0');
        await window.scrollList(0.8);
        const firstInSight = () =>
            window.items.evaluateAll((items) => {
                const top = items[0].closest('.results-container').getBoundingClientRect().top;
                const isInSight = (item) => item.getBoundingClientRect().top >= top;
                return items.find(isInSight)?.getAttribute('annot-name');
            });
        await window.until(() => window.isSettled(), Boolean, 'the rows have come');
        const first = await firstInSight();
        const banner = window.page.locator('#banner');
        for (let cuts = 0; cuts < 4; ++cuts) {
            await window.page.evaluate(async () => {
                const {page} = await import(new URL('app/main.js', document.baseURI).href);
                (await page).connection.restart();
            });
            await banner.waitFor();
            await banner.waitFor({state: 'hidden'});
            await window.expectSameTree();
            assert.equal(await firstInSight(), first);
        }
        await (await window.show('1_2')).click();
        await window.expectCurrent('1_2');
    });

    test('is the same in two windows', async () => {
        const other = await PageWindow.open(browser, workbench);
        await (await window.show('1_3')).click();
        await other.expectCurrent('1_3');
        await other.button('delete').click();
        await other.expectActive((active) => active.undo === 'remove', 'the comment is deleted');
        await window.expectSameTree();
        await other.expectSameTree();
        await other.page.keyboard.press('Control+z');
        await window.expectActive((active) => active.undo === null, 'the deletion is undone');
        await window.expectSameTree();
        await other.close();
    });
});
