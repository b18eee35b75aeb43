// The line to the workbench: one WebSocket that comes back by itself. Messages are handed to those
// who asked for their type; a command is a promise of its reply.

const kFirstDelay = 250;
const kLongestDelay = 10000;
// Commands that leave the current comment as it is.
const kStill = new Set(['annotations', 'current', 'locale', 'save', 'save-as', 'save-copy']);
// A connection that lasts this long counts as a good one: the next attempt comes soon again.
const kGoodConnection = 5000;

/// The address of the socket beside the page that `location` names.
export function socketAddress(location) {
    const address = new URL('socket', location);
    address.protocol = 'ws:';
    address.hash = '';
    address.search = '';
    return address.href;
}

export class Connection {
    #address;
    #socket = null;
    #handlers = new Map();
    #pending = new Map();
    #lastId = 0;
    #delay = kFirstDelay;
    #timer = 0;
    #openSince = 0;
    #onState;
    /// What the workbench takes; it closes the line at a longer message.
    mostMessageBytes = Infinity;
    /// The keys that the panel reacts to.
    panelKeys = new Set();

    /// `onState` is told "open", or "waiting" when the connection is lost or was not to be had.
    constructor(address, onState) {
        this.#address = address;
        this.#onState = onState;
    }

    on(type, handler) {
        this.#handlers.set(type, handler);
    }

    /// Begins a connection, now; one that is still being made is given up for it.
    open() {
        clearTimeout(this.#timer);
        this.#openSince = Infinity;
        this.#socket?.close();
        const socket = new WebSocket(this.#address);
        this.#socket = socket;
        const listen = (type, handler) =>
            socket.addEventListener(type, (event) => {
                if (socket === this.#socket) {
                    handler(event);
                }
            });
        listen('open', () => {
            this.#openSince = performance.now();
            this.#onState('open');
        });
        listen('message', (event) => this.#receive(event.data));
        listen('close', () => this.#closed());
    }

    /// Cuts the line and begins anew, for a page that finds itself out of step.
    restart() {
        this.#socket?.close();
    }

    get isOpen() {
        return this.#socket?.readyState === WebSocket.OPEN;
    }

    /// Whether what has been sent so far, and may make another comment current, has been answered.
    get isCaughtUp() {
        return [...this.#pending.values()].every(({isStill}) => isStill);
    }

    /// The reply, always: a command that could not be sent or was cut off has one with an error.
    command(name, fields = {}) {
        return this.#send({type: 'command', name, ...fields}, kStill.has(name));
    }

    /// A click or a key for the panel; its reply, as above. What nobody can take is dropped: the
    /// panel that comes with the next connection may be another one.
    input(message) {
        return this.#send(message, false);
    }

    #send(message, isStill) {
        const id = ++this.#lastId;
        return new Promise((resolve) => {
            this.#pending.set(id, {resolve, isStill});
            const words = JSON.stringify({id, ...message});
            if (!this.isOpen) {
                this.#answer({id, error: '', reason: 'disconnected'});
            } else if (new Blob([words]).size > this.mostMessageBytes) {
                this.#answer({id, error: '', reason: 'too-long'});
            } else {
                this.#socket.send(words);
            }
        });
    }

    #receive(data) {
        const message = JSON.parse(data);
        if (message.type === 'reply') {
            this.#answer(message);
            return;
        }
        this.#handlers.get(message.type)?.(message);
    }

    #answer(reply) {
        const pending = this.#pending.get(reply.id);
        this.#pending.delete(reply.id);
        pending?.resolve(reply);
    }

    #closed() {
        for (const id of [...this.#pending.keys()]) {
            this.#answer({id, error: '', reason: 'disconnected'});
        }
        if (performance.now() - this.#openSince > kGoodConnection) {
            this.#delay = kFirstDelay;
        }
        this.#onState('waiting');
        this.#timer = setTimeout(() => this.open(), this.#delay);
        this.#delay = Math.min(this.#delay * 2, kLongestDelay);
    }
}

/// The annotations of a page and the revision that they are of; null when they are not to be had.
export async function askAnnotations(connection, documentId, page) {
    const reply = await connection.command('annotations', {document: documentId, page});
    return reply.error === null ? reply : null;
}
