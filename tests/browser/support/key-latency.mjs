// The time from a key to the change on the screen, in a window of the workbench whose list stands.

const kKeys = ['ArrowDown', 'ArrowDown', 'ArrowDown', 'PageDown'];

/// Presses keys `presses` times in turn, each of which makes another item current, or only waits for
/// a frame each time when `isIdle`. The times in milliseconds, in order.
export async function measureFrames(window, presses, {isIdle = false, keys = kKeys} = {}) {
    await window.items.first().click();
    const times = await window.page.evaluate(
        async ({count, isFrameAlone, pressed}) => {
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
                measured.push(await measure(pressed[at % pressed.length]));
            }
            return measured;
        },
        {count: presses, isFrameAlone: isIdle, pressed: keys},
    );
    return times.sort((left, right) => left - right);
}
