// Places of comments in the window: of the current item in the panel's list, and of annotations on
// pages. A place is `{isInList, find(), otherwise}`; `find` returns the box in window coordinates,
// null while there is none; `otherwise` is the box until there was one. Elements of the panel's frame
// may be removed at any time and are not kept.

const kContainer = 'body > .panel-content[wb-visibility="visible"]';

const frameElement = () => document.getElementById('panel-frame');

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
        return boxInFrame(item, item.firstElementChild?.getBoundingClientRect().bottom);
    }
    return null;
}

function listBox() {
    const list = frameElement().contentDocument.querySelector(`${kContainer} .results-container`);
    return list ? boxInFrame(list) : null;
}

/// Place of a new comment or of an annotation on a page.
export function placeOnPage(find) {
    return {isInList: false, find, otherwise: null};
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
    return {isInList: true, find: () => findInList(`${page}_${index}`), otherwise: listBox()};
}

/// Calls `listener` when places may have moved, until `signal` ends it.
export function onMovedPlaces(listener, signal) {
    const options = {signal, capture: true, passive: true};
    for (const each of [document, frameElement().contentDocument]) {
        each.addEventListener('scroll', listener, options);
    }
    window.addEventListener('resize', listener, options);
}
