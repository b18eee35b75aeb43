// User preferences in the browser's local storage, where it is available.

export function recall(name, otherwise) {
    try {
        return localStorage.getItem(name) ?? otherwise;
    } catch {
        return otherwise;
    }
}

export function remember(name, value) {
    try {
        localStorage.setItem(name, value);
    } catch {
        // Storage is unavailable: the preference lasts until the web page is closed.
    }
}
