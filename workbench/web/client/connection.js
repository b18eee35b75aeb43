// The line to the workbench: one WebSocket that comes back by itself. Messages are handed to those
// who asked for their type; a command is a promise of its reply.

const kFirstDelay = 250;
const kLongestDelay = 10000;
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
    #lastCommand = 0;
    #delay = kFirstDelay;
    #timer = 0;
    #openSince = 0;
    #onState;

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

    /// Sends when there is a line, and says whether it did. Input that nobody can take is dropped:
    /// the panel that comes with the next connection may be another one.
    send(message) {
        if (!this.isOpen) {
            return false;
        }
        this.#socket.send(JSON.stringify(message));
        return true;
    }

    /// The reply, always: a command that could not be sent or was cut off has one with an error.
    command(name, fields = {}) {
        const id = ++this.#lastCommand;
        return new Promise((resolve) => {
            this.#pending.set(id, resolve);
            if (!this.send({type: 'command', id, name, ...fields})) {
                this.#answer({id, error: '', reason: 'disconnected'});
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
        const resolve = this.#pending.get(reply.id);
        this.#pending.delete(reply.id);
        resolve?.(reply);
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
