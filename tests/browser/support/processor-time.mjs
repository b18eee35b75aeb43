// The time that the processor spends on a page of the workbench: unlike the time on a clock it does
// not grow when the machine does other things besides.

/// Longest task of a page while `work` is done, in milliseconds of the processor; `work` resolves to
/// the page. The browser draws parts of its own window with pages, too, which do not count.
export async function measureLongestTask(browser, work) {
    const kMark = 'the page that is measured';
    await browser.startTracing(undefined, {
        categories: ['toplevel', 'blink.user_timing', 'disabled-by-default-thread_time'],
    });
    const page = await work();
    await page.evaluate((mark) => performance.mark(mark), kMark);
    const {traceEvents} = JSON.parse(await browser.stopTracing());
    const {pid, tid} = traceEvents.find(({name}) => name === kMark);
    const tasks = traceEvents.filter((one) => one.pid === pid && one.tid === tid && one.tdur > 0);
    return Math.max(...tasks.map(({tdur}) => tdur)) / 1000;
}

/// Number of event listeners of a page that can still be reached.
export async function countListeners(page) {
    const session = await page.context().newCDPSession(page);
    await session.send('Performance.enable');
    await session.send('HeapProfiler.collectGarbage');
    const {metrics} = await session.send('Performance.getMetrics');
    return metrics.find(({name}) => name === 'JSEventListeners').value;
}

/// Time of a page's main thread while `work` is done, in milliseconds of the processor.
export async function measureMainThread(page, work) {
    const session = await page.context().newCDPSession(page);
    await session.send('Performance.enable', {timeDomain: 'threadTicks'});
    const read = async () => {
        const {metrics} = await session.send('Performance.getMetrics');
        return metrics.find(({name}) => name === 'ThreadTime').value * 1000;
    };
    const begin = await read();
    await work();
    return (await read()) - begin;
}
