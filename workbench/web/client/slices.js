// Time-sliced work: pieces are processed in order, a small number at once, more in slices of a few
// milliseconds with a frame of the browser between them.

const kSliceMilliseconds = 10;
const kHiddenPause = 50;

/// Whether the slice has time left; evaluated after each piece of work.
export function sliceClock(milliseconds = kSliceMilliseconds) {
    const end = performance.now() + milliseconds;
    return () => performance.now() < end;
}

/// A hidden browser window has no frames.
export function nextFrame() {
    return new Promise((resolve) => {
        if (document.hidden) {
            setTimeout(resolve, kHiddenPause);
        } else {
            requestAnimationFrame(resolve);
        }
    });
}

export class SlicedWork {
    #pieces = [];
    #next = 0;
    #waiting = false;
    #beforeSlice;
    #perform;
    #afterSlice;

    /// `beforeSlice()` is called before each slice; `perform(piece)` processes one piece;
    /// `afterSlice(finished)` is called after each slice with whether all pieces are done.
    constructor(beforeSlice, perform, afterSlice) {
        this.#beforeSlice = beforeSlice;
        this.#perform = perform;
        this.#afterSlice = afterSlice;
    }

    get isEmpty() {
        return this.#next === this.#pieces.length;
    }

    push(pieces) {
        this.#pieces.push(...pieces);
        if (!this.#waiting) {
            this.#slice();
        }
    }

    clear() {
        this.#pieces = [];
        this.#next = 0;
    }

    #slice() {
        const mayGoOn = sliceClock();
        this.#beforeSlice();
        while (!this.isEmpty) {
            this.#perform(this.#pieces[this.#next++]);
            if (!mayGoOn()) {
                break;
            }
        }
        if (this.isEmpty) {
            this.clear();
        } else {
            this.#waitForFrame();
        }
        this.#afterSlice(this.isEmpty);
    }

    async #waitForFrame() {
        this.#waiting = true;
        await nextFrame();
        this.#waiting = false;
        this.#slice();
    }
}
