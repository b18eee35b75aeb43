// From a key to the change on the screen: the workbench and headless Chromium together.
//
//   node key-to-visible.mjs [--benchmark_filter=REGEX] [--benchmark_out=FILE] [OPTION ...]
//
// Prints rows as the other benchmark programs do, and writes them in the same form; further options
// of theirs are ignored. Times are medians. WORKBENCH_PROGRAMS and WORKBENCH_NODE_MODULES name the
// folders of the built programs and of the npm packages.

import {writeFileSync} from 'node:fs';

import {PageWindow, startBrowser} from '../../tests/browser/support/browser.mjs';
import {measureFrames} from '../../tests/browser/support/key-latency.mjs';
import {Workbench, makeDocument, makeFolder} from '../../tests/browser/support/workbench.mjs';

const kPresses = 60;
const kSizes = [
    {comments: 1000, pages: 100},
    {comments: 10000, pages: 1000},
];
const kRows = [
    {name: 'BM_Browser_KeyToVisible', isIdle: false},
    {name: 'BM_Browser_Frame', isIdle: true},
];

function optionValue(name) {
    const prefix = `--${name}=`;
    return process.argv.find((argument) => argument.startsWith(prefix))?.slice(prefix.length);
}

async function measure(size, rows) {
    const folder = makeFolder();
    const file = makeDocument(
        folder,
        'population.pdf',
        '--comments',
        String(size.comments),
        '--pages',
        String(size.pages),
    );
    const browser = await startBrowser();
    const workbench = await Workbench.start(folder, [file]);
    const results = [];
    try {
        const window = await PageWindow.open(browser, workbench);
        await window.expectListed();
        for (const row of rows) {
            const times = await measureFrames(window, kPresses, {isIdle: row.isIdle});
            const median = times[times.length / 2];
            results.push({
                name: row.fullName,
                run_name: row.fullName,
                run_type: 'iteration',
                iterations: kPresses,
                real_time: median,
                cpu_time: 0,
                time_unit: 'ms',
                slowest: times.at(-1),
            });
            console.log(
                `${row.fullName.padEnd(50)}${median.toFixed(1).padStart(8)} ms   ` +
                    `slowest ${times.at(-1).toFixed(1)} ms   ${kPresses} times`,
            );
        }
        await window.close();
    } finally {
        await browser.close();
        await workbench.stop();
    }
    return results;
}

const wanted = new RegExp(optionValue('benchmark_filter') ?? '');
const benchmarks = [];
for (const size of kSizes) {
    const rows = kRows
        .map((row) => ({...row, fullName: `${row.name}/${size.comments}/pages:${size.pages}`}))
        .filter(({fullName}) => wanted.test(fullName));
    if (rows.length > 0) {
        benchmarks.push(...(await measure(size, rows)));
    }
}
const output = optionValue('benchmark_out');
if (output && benchmarks.length > 0) {
    writeFileSync(output, `${JSON.stringify({context: {}, benchmarks}, null, 2)}\n`);
}
