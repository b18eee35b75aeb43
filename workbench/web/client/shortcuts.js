// Keyboard shortcuts of the web page and the panel's frame. All use Ctrl or are function keys, so
// that none conflicts with the keys of the panel's list.

// The letter of a key: from the layout if it is Latin, else from the key's position.
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

/// `actions` maps names such as "Ctrl+Shift+z" and "F6" to functions; the browser handles the key
/// when the function returns false.
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
