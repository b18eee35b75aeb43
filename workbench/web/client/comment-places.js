// Places of comments in the window: of the current item in the panel's list, and of annotations on
// pages. A place is `{isInList, find(), bounds(), otherwise}`; `find` returns the box in window
// coordinates, in the list with the top of the comment's heading as `headingTop`, null while there is
// none; `bounds` the visible part of the list or the pages, null while they are hidden; `otherwise` is
// the box until there was one. Elements of the panel's frame may be removed at any time and are not kept.

// Height of a page's caption in the list (styles/panel-host.css).
const kPageCaption = 25;
const kContainer = 'body > .panel-content[wb-visibility="visible"]';

const frameElement = () => document.getElementById('panel-frame');

const boxInWindow = (element) =>
    element?.getClientRects().length > 0 ? element.getBoundingClientRect() : null;

// The box of an element in the frame, or the part of it below `top`.
function boxInFrame(element, top = element.getBoundingClientRect().top) {
    const frame = frameElement().getBoundingClientRect();
    const {left, bottom, width} = element.getBoundingClientRect();
    return {left: frame.left + left, top: frame.top + top, width, height: bottom - top};
}

// The current item below its heading, if it is the one of this name and part of the frame.
function findInList(name) {
    const container = frameElement().contentDocument.querySelector(kContainer);
    const item = container?.querySelector('li[wb-current]');
    if (item?.getAttribute('annot-name') === name) {
        const heading = item.firstElementChild?.getBoundingClientRect();
        const headingTop = boxInFrame(item).top;
        return {...boxInFrame(item, heading?.bottom), headingTop};
    }
    return null;
}

function listBox() {
    const list = frameElement().contentDocument.querySelector(`${kContainer} .results-container`);
    return list ? boxInFrame(list) : null;
}

// The visible part of the list below the caption of its page, which stays at the top.
function listBounds() {
    const box = boxInWindow(frameElement()) && listBox();
    return (
        box && new DOMRect(box.left, box.top + kPageCaption, box.width, box.height - kPageCaption)
    );
}

/// Place of a new comment or of an annotation on a page, where the focus is or the active document.
export function placeOnPage(find) {
    const scroller =
        document.activeElement?.closest('.scroller') ??
        document.querySelector('.slot.active .scroller');
    return {isInList: false, find, bounds: () => boxInWindow(scroller), otherwise: null};
}

/// Place of the current comment: in the list, or in `view` when the edit began on its pages; where
/// only one of both is visible, there.
export function placeOfCurrent({page, annotation: {index}}, view, beganOnPages) {
    const isListShown = frameElement().getClientRects().length > 0;
    const arePagesShown = Boolean(view) && view.scroller.getClientRects().length > 0;
    if (!isListShown || (beganOnPages && arePagesShown)) {
        return placeOnPage(() => view?.boxOf(page, index) ?? null);
    }
    const container = frameElement().contentDocument.querySelector(kContainer);
    container?.querySelector('li[wb-current]')?.scrollIntoView({block: 'nearest'});
    return {
        isInList: true,
        find: () => findInList(`${page}_${index}`),
        bounds: listBounds,
        otherwise: listBox(),
    };
}

/// Calls `listener` for events of a type on the whole web page, also in the panel's frame.
export function listenEverywhere(type, listener, signal) {
    for (const each of [document, frameElement().contentDocument]) {
        each.addEventListener(type, listener, {signal, capture: true, passive: true});
    }
}

/// Calls `listener` when places may have moved, until `signal` ends it.
export function onMovedPlaces(listener, signal) {
    listenEverywhere('scroll', listener, signal);
    window.addEventListener('resize', listener, {signal, passive: true});
}
