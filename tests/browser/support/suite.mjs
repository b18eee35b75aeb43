// Set-up of a suite whose tests share one window of a workbench.

import {after, before} from 'node:test';

import {PageWindow, startBrowser} from './browser.mjs';
import {Workbench, makeDocument, makeFolder} from './workbench.mjs';

/// To be called inside `describe`. `take` gets `{browser, workbench, window}` when the list of the
/// document stands; `options` are those of `makeDocument`.
export function shareWindow(take, ...options) {
    const parts = {};
    before(async () => {
        const folder = makeFolder();
        parts.browser = await startBrowser();
        parts.workbench = await Workbench.start(folder, [
            makeDocument(folder, 'sample.pdf', ...options),
        ]);
        parts.window = await PageWindow.open(parts.browser, parts.workbench);
        await parts.window.expectListed();
        take(parts);
    });
    after(async () => {
        await parts.window.close();
        await parts.browser.close();
        await parts.workbench.stop();
    });
}
