// The time that the processor spends on a page of the workbench: unlike the time on a clock it does
// not grow when the machine does other things besides.

/// Longest task of a page while `work` is done, in milliseconds of the processor.
export async function measureLongestTask(browser, work) {
    await browser.startTracing(undefined, {
        categories: ['toplevel', '__metadata', 'disabled-by-default-thread_time'],
    });
    await work();
    const {traceEvents} = JSON.parse(await browser.stopTracing());
    const threadOf = ({pid, tid}) => `${pid} ${tid}`;
    const isMain = ({name, args}) => name === 'thread_name' && args.name === 'CrRendererMain';
    const mainThreads = new Set(traceEvents.filter(isMain).map(threadOf));
    const tasks = traceEvents.filter((one) => one.tdur > 0 && mainThreads.has(threadOf(one)));
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
