// Small choices that the browser remembers for the next visit, where it allows that.

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
        // Then it holds for this visit.
    }
}
