// Saving and restoring the keyboard focus, including focus inside the panel's frame.

// The tab stop of a composite widget such as a list or a group of tabs.
const kStop = '[tabindex="0"]';

let goHome = () => {};

/// `home()` takes the keyboard focus when no element near the former one can.
export function setFocusHome(home) {
    goHome = home;
}

/// The focused element and its ancestors, innermost first.
export function rememberFocus() {
    const outer = document.activeElement;
    const places = [];
    for (let at = outer?.contentDocument?.activeElement ?? outer; at; at = at.parentElement) {
        places.push(at);
    }
    return places;
}

// Returns whether the element took the focus. A list item that is no longer current refuses it.
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

/// Restores the focus to the former element, or to its replacement when it was removed.
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
