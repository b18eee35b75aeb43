// Keyboard shortcuts of the page, in it and in the panel's frame. All of them have Ctrl or are
// function keys, so that none is taken from the panel's list.

// The letter of a key: as written in a Latin layout, as placed on the keyboard in another one.
function letterOf(event) {
    if (/^[a-z]$/i.test(event.key)) {
        return event.key.toLowerCase();
    }
    return event.code.startsWith('Key') ? event.code.slice(3).toLowerCase() : event.key;
}

function nameOf(event) {
    const isCommand = event.ctrlKey || event.metaKey;
    const name = isCommand ? letterOf(event) : event.key;
    const isShifted = event.shiftKey && isCommand && /^[a-z]$/.test(name);
    return [isCommand && 'Ctrl', event.altKey && 'Alt', isShifted && 'Shift', name]
        .filter(Boolean)
        .join('+');
}

/// `actions` maps names such as "Ctrl+Shift+z" and "F6" to functions; one that returns false lets
/// the browser have the key.
export function listenToShortcuts(documents, actions) {
    const listen = (event) => {
        const action = actions[nameOf(event)];
        if (action && action(event) !== false) {
            event.preventDefault();
        }
    };
    for (const each of documents) {
        each.addEventListener('keydown', listen);
    }
}
