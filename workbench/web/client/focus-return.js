// The place of the keyboard focus, inside the panel's frame too, and the way back to it.

// What the Tab key reaches in a list, a group of tabs and the like.
const kStop = '[tabindex="0"]';

let goHome = () => {};

/// `home()` takes the keyboard focus when nothing near the place to return to can.
export function setFocusHome(home) {
    goHome = home;
}

/// The element that has the keyboard focus, and those around it, innermost first.
export function rememberFocus() {
    const outer = document.activeElement;
    const places = [];
    for (let at = outer?.contentDocument?.activeElement ?? outer; at; at = at.parentElement) {
        places.push(at);
    }
    return places;
}

// Whether that was possible. An item of a list that is no longer the current one gives way to it.
function focus(element) {
    if (!element?.isConnected || element.getAttribute('aria-selected') === 'false') {
        return false;
    }
    const owner = element.ownerDocument;
    const frame = owner.defaultView.frameElement;
    frame?.focus();
    element.focus({preventScroll: true});
    return owner.activeElement === element && (!frame || document.activeElement === frame);
}

/// Gives the focus back to where it was; when that has gone, to what stands there now.
export function returnFocus(places) {
    const [element, ...around] = places;
    if (!element || element === document.body || focus(element)) {
        return;
    }
    const isBack = around
        .filter((place) => !place.matches('body, html'))
        .some((place) => focus(place.matches(kStop) ? place : place.querySelector(kStop)));
    if (!isBack) {
        goHome();
    }
}
