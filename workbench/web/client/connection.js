// Connection to the server: one WebSocket, reopened when it is lost. Messages are dispatched to
// listeners by type; a command returns a promise of its reply.

const kFirstDelay = 250;
const kLongestDelay = 10000;
// Commands that never change the current comment.
const kStill = new Set(['annotations', 'current', 'locale', 'save', 'save-as', 'save-copy']);
// A connection of at least this duration resets the delay before the next attempt.
const kGoodConnection = 5000;
const kRefused = 403;

/// URL of the WebSocket for a web page at `location`.
export function socketAddress(location) {
    const address = new URL('socket', location);
    address.protocol = 'ws:';
    address.hash = '';
    address.search = '';
    return address.href;
}

// Each run of the server has an address of its own and refuses those of other runs.
async function isServerReplaced() {
    try {
        const {status} = await fetch(document.baseURI, {cache: 'no-store'});
        return status === kRefused;
    } catch {
        return false;
    }
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
    /// The server's limit for a message; it closes the connection at a longer one.
    mostMessageBytes = Infinity;
    /// The keys that the panel handles.
    panelKeys = new Set();

    /// `onState` is called with "open", with "waiting" when the connection is lost or failed, with
    /// "lost" when this has gone on for some time, and with "replaced" when another run of the server
    /// answers in place of the one that is known; then nothing more is attempted.
    constructor(address, onState) {
        this.#address = address;
        this.#onState = onState;
    }

    on(type, handler) {
        this.#handlers.set(type, handler);
    }

    /// Connects at once; a pending attempt is abandoned.
    open() {
        clearTimeout(this.#timer);
        this.#timer = 0;
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

    /// Closes the connection and reconnects, after a message that does not fit the local state.
    restart() {
        this.#socket?.close();
    }

    get isOpen() {
        return this.#socket?.readyState === WebSocket.OPEN;
    }

    /// Whether every message that may change the current comment has been answered.
    get isCaughtUp() {
        return [...this.#pending.values()].every(({isStill}) => isStill);
    }

    /// Resolves to the reply; to one with an error when the command could not be sent or the
    /// connection was lost.
    command(name, fields = {}) {
        return this.#send({type: 'command', name, ...fields}, kStill.has(name));
    }

    /// Sends a click or a key and resolves to its reply, as above. Input without a connection is
    /// dropped, because the panel may differ after reconnecting.
    input(message) {
        return this.#send(message, false);
    }

    /// Sends a message without a reply; false when there is no connection.
    tell(message) {
        if (this.isOpen) {
            this.#socket.send(JSON.stringify(message));
        }
        return this.isOpen;
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
        this.#onState(this.#delay < kLongestDelay ? 'waiting' : 'lost');
        this.#timer = setTimeout(() => this.#openAgain(), this.#delay);
        this.#delay = Math.min(this.#delay * 2, kLongestDelay);
    }

    async #openAgain() {
        const timer = this.#timer;
        const isReplaced = await isServerReplaced();
        if (timer !== this.#timer) {
            return; // opened meanwhile
        }
        if (isReplaced) {
            this.#onState('replaced');
        } else {
            this.open();
        }
    }
}

// The annotations of a reply with those of the known list that it leaves out.
function merge({count, kept: [begin, end], annotations}, known) {
    const first = known.count - end;
    const behind = known.annotations.filter(({index}) => index >= first);
    const moved = behind.map((one) => ({...one, index: one.index + count - known.count}));
    return [...known.annotations.filter(({index}) => index < begin), ...annotations, ...moved];
}

/// The annotations of a page with their revision; null when the request fails. `known` is an earlier
/// list of the page.
export async function askAnnotations(connection, documentId, page, known) {
    const fields = {document: documentId, page, known: known?.label};
    const reply = await connection.command('annotations', fields);
    if (reply.error !== null) {
        return null;
    }
    return reply.kept ? {...reply, annotations: merge(reply, known)} : reply;
}
