// The annotations of pages, asked of the workbench when somebody needs them.

export class AnnotationLists {
    #connection;
    #waiting = new Map();

    constructor(connection) {
        this.#connection = connection;
        connection.on('annotations', (message) => this.#receive(message));
    }

    /// The `annotations` message of a page; null when the workbench gives none.
    async ask(documentId, page) {
        const key = `${documentId} ${page}`;
        const waiting = this.#waiting.get(key) ?? [];
        this.#waiting.set(key, waiting);
        const answer = new Promise((resolve) => {
            waiting.push(resolve);
        });
        const reply = await this.#connection.command('annotations', {document: documentId, page});
        if (reply.error !== null) {
            this.#settle(key, null);
        }
        return answer;
    }

    #receive(message) {
        this.#settle(`${message.document} ${message.page}`, message);
    }

    #settle(key, answer) {
        for (const resolve of this.#waiting.get(key) ?? []) {
            resolve(answer);
        }
        this.#waiting.delete(key);
    }
}
