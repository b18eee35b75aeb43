// Comments from strangers: their markup is shown, and nothing else comes of it.

import assert from 'node:assert/strict';
import {describe, test} from 'node:test';

import {shareWindow} from './support/suite.mjs';

const kHarm = 'top.harmed = true; parent.harmed = true; alert(1)';
const kFar = 'http://elsewhere.invalid/thing';

/// Contents that would do something in a page that puts them in as they are.
const kContents = {
    script: `<script>${kHarm}</script>`,
    'script from elsewhere': `<script src="${kFar}.js"></script>`,
    'event attributes':
        `<b onclick="${kHarm}" onpointerover="${kHarm}">b</b><img src=x onerror="${kHarm}">` +
        `<details open ontoggle="${kHarm}"></details><input autofocus onfocus="${kHarm}">`,
    links:
        `<a href="javascript:${kHarm}">1</a><a href="data:text/html,x" target="_top">2</a>` +
        `<a href="${kFar}" ping="${kFar}">3</a><map><area href="javascript:0"></map>`,
    'things that load':
        `<img src="${kFar}.png" srcset="${kFar} 2x"><video src="${kFar}" ` +
        `poster="${kFar}"></video><audio src="${kFar}"></audio><object data="${kFar}">` +
        `</object><embed src="${kFar}"><iframe src="${kFar}" srcdoc="<script>${kHarm}</script>">` +
        `</iframe><table background="${kFar}"><tr><td>x</table><input type=image src="${kFar}">`,
    'style sheets':
        `<style>* { display: none }</style><link rel="stylesheet" href="${kFar}.css">` +
        `<link rel="stylesheet" href="../common/styles/button.css">`,
    'style that loads': `<p style="background: url(${kFar}); list-style-image: url(${kFar})">x</p>`,
    'base and refresh': `<base href="${kFar}"><meta http-equiv="refresh" content="0; ${kFar}">`,
    forms: `<form action="${kFar}"><button formaction="javascript:${kHarm}">send</button></form>`,
    drawings:
        `<svg onload="${kHarm}"><script>${kHarm}</script><foreignObject><body onload="${kHarm}">` +
        `</foreignObject><a xlink:href="javascript:${kHarm}"><text>x</text></a></svg>` +
        `<math><mtext><style><img src=x onerror="${kHarm}"></style></mtext></math>`,
    popovers:
        `<button popovertarget="hostile">x</button><div id="hostile" popover>over all</div>` +
        `<dialog open style="position: fixed; inset: 0">over all</dialog>`,
    'covers everything':
        '<div class="hostile" style="position: fixed !important; inset: -2000px ' +
        '!important; z-index: 2147483647 !important; background: red; margin: -999px">x</div>',
    'moves away':
        '<div class="hostile" style="transform: translate(-300px, -600px) scale(20); ' +
        'position: absolute; top: -900px">x</div>',
    'breaks out':
        '</p></li></ul></div></li></ul><div class="hostile" style="position: fixed !important; ' +
        'inset: 0 !important; margin: -500px 0 0 -500px !important; background: red">x</div>',
    'forged item':
        '</p></li><li annot-name="0_0" class="hostile" style="margin-top: -400px !important; ' +
        'position: absolute !important; height: 900px; background: red">forged</li><li>',
    'nested item':
        '<ul><li annot-name="99_99" titleid="x" wb-current role="alert" tabindex="1">x</li></ul>',
    'forged states':
        '<button id="delete" class="button" wb-visibility="collapse" disabled>x</button>',
    'names that are none':
        '<x-y"z a<b="1" =="2" \'=\'3\' über="4">x</x-y"z><a:b:c>y</a:b:c><p \u0001="1">',
    broken: '<b><i></b></p></div></i><table><tr><li></td></body></html><!-- never closed <p>',
    deep: '<div>'.repeat(3000) + 'x',
    long: 'x'.repeat(1 << 20),
};

describe('Contents from strangers', () => {
    let workbench;
    let window;

    const options = ['--comments', '4', '--pages', '2'];
    shareWindow((parts) => ({workbench, window} = parts), ...options);

    // What covers the middle of each button, and the left edge of the pages beside the panel.
    const whatLiesOnTop = () =>
        window.page.evaluate(() => {
            const panel = document.getElementById('panel-frame').contentDocument;
            const container = panel.querySelector('.panel-content[wb-visibility="visible"]');
            const buttons = [...container.querySelectorAll(':scope > .buttons-container > button')];
            return buttons
                .filter((button) => button.offsetWidth > 0)
                .map((button) => {
                    const box = button.getBoundingClientRect();
                    const top = panel.elementFromPoint(
                        box.left + box.width / 2,
                        box.top + box.height / 2,
                    );
                    return top === button ? '' : (top?.outerHTML.slice(0, 200) ?? 'nothing');
                });
        });

    // Parts of hostile elements that can be seen outside the comment around them, or else the list.
    const whatHasEscaped = () =>
        window.page.evaluate(() => {
            const panel = document.getElementById('panel-frame').contentDocument;
            const list = panel.querySelector(
                '.panel-content[wb-visibility="visible"] .results-container',
            );
            const escaped = [];
            for (const element of list.querySelectorAll('.hostile')) {
                const comment = element.parentElement.closest('ul.comments > li') ?? list;
                const room = comment.getBoundingClientRect();
                for (const [x, y] of [
                    [5, 5],
                    [5, 100],
                    [150, 60],
                    [room.left + 2, room.top - 3],
                    [room.left + 2, room.bottom + 3],
                ]) {
                    const isInside =
                        x >= room.left && x <= room.right && y >= room.top && y <= room.bottom;
                    if (!isInside && element.contains(panel.elementFromPoint(x, y))) {
                        escaped.push(element.outerHTML.slice(0, 100));
                    }
                }
            }
            return escaped;
        });

    for (const [name, contents] of Object.entries(kContents)) {
        test(name, async () => {
            const {id} = await window.active();
            const requestsBefore = window.requests.length;
            const {index} = await window.expectCommand('add', {
                document: id,
                page: 1,
                subtype: 'Text',
                contents,
                rect: [9, 9, 29, 29],
            });
            await window.expectCommand('focus', {document: id, page: 1, index});
            await window.expectSameTree();

            const parts = window.panel.locator('.results-container :is(a, button)');
            for (const part of await parts.all()) {
                await part.dispatchEvent('click');
            }
            await window.expectCommand('focus', {document: id, page: null, index: null});
            assert.equal((await window.active()).undo, 'add', 'a click on contents does nothing');
            assert.deepEqual((await whatLiesOnTop()).filter(Boolean), [], 'the buttons are free');
            assert.deepEqual(await whatHasEscaped(), [], 'nothing has left its box');
            assert.equal(await window.page.evaluate(() => globalThis.harmed), undefined);
            const address = await window.panel.locator('html').evaluate(() => location.href);
            assert.equal(
                address,
                `${workbench.address}app/panel.html`,
                'the panel is where it was',
            );
            const foreign = window.requests
                .slice(requestsBefore)
                .filter((request) => !request.replace(/^ws/, 'http').startsWith(workbench.address));
            assert.deepEqual(foreign, [], 'nothing is loaded from elsewhere');

            await window.expectCommand('undo', {document: id});
            await window.expectSameTree();
            assert.ok(workbench.isAlive);
        });
    }
});
