// The time from a key to the change on the screen, in a window of the workbench whose list stands.

/// Presses a key `presses` times, Down and now and then PageDown, or only waits for a frame each
/// time when `isIdle`. The times in milliseconds, in order.
export async function measureFrames(window, presses, {isIdle = false} = {}) {
    await window.items.first().click();
    const times = await window.page.evaluate(
        async ({count, isFrameAlone}) => {
            const panel = document.getElementById('panel-frame').contentDocument;
            // A message after the frame's callback comes when the frame has been drawn.
            const drawn = (whenDrawn) =>
                requestAnimationFrame(() => {
                    const {port1, port2} = new MessageChannel();
                    port1.onmessage = whenDrawn;
                    port2.postMessage(null);
                });
            const measure = (key) =>
                new Promise((resolve) => {
                    const begin = performance.now();
                    const end = () => resolve(performance.now() - begin);
                    if (isFrameAlone) {
                        drawn(end);
                        return;
                    }
                    const current = () =>
                        panel.querySelector('[wb-visibility="visible"] li[wb-current]');
                    const before = current();
                    const observer = new MutationObserver(() => {
                        if (current() && current() !== before) {
                            observer.disconnect();
                            drawn(end);
                        }
                    });
                    observer.observe(panel, {
                        subtree: true,
                        childList: true,
                        attributeFilter: ['wb-current'],
                    });
                    panel.activeElement.dispatchEvent(
                        new KeyboardEvent('keydown', {key, bubbles: true, cancelable: true}),
                    );
                });
            const measured = [];
            for (let at = 0; at < count; ++at) {
                measured.push(await measure(at % 4 === 3 ? 'PageDown' : 'ArrowDown'));
            }
            return measured;
        },
        {count: presses, isFrameAlone: isIdle},
    );
    return times.sort((left, right) => left - right);
}
