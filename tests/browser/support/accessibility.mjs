// The rules of accessibility, applied by axe to the page and to the panel's frame in it.

import {readFileSync} from 'node:fs';

const kAxe = readFileSync(`${process.env.WORKBENCH_NODE_MODULES}/axe-core/axe.min.js`, 'utf8');
const kRules = {
    'target-size': {enabled: true},
    // A page item is named by its caption alone: the comments below it are items of their own.
    'label-content-name-mismatch': {enabled: false},
};

/// To be called before the page is loaded. Axe waits for timers and messages in every frame, and the
/// panel's runs no scripts, so a frame without a sandbox takes its place before it is loaded.
export function letFrameRunScripts(page) {
    return page.addInitScript(() => {
        new MutationObserver((records, observer) => {
            const frame = document.querySelector('iframe[sandbox]');
            if (frame) {
                observer.disconnect();
                const copy = frame.cloneNode();
                copy.removeAttribute('sandbox');
                frame.replaceWith(copy);
            }
        }).observe(document, {childList: true, subtree: true});
    });
}

/// The rules that page and panel break, each with the elements.
export async function findViolations(page) {
    for (const frame of page.frames()) {
        await frame.evaluate(kAxe);
    }
    const {violations} = await page.evaluate(
        (rules) => globalThis.axe.run(document, {resultTypes: ['violations'], rules}),
        kRules,
    );
    return violations.flatMap(({id, nodes}) => nodes.map(({target}) => `${id}: ${target}`));
}
