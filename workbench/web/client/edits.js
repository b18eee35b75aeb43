// What the user does to documents: commands to the workbench, the questions that some of them need,
// and a word about the outcome.

import {ask, kCancel} from './dialogs.js';
import {text} from './texts.js';

function isDisconnected(reply) {
    return reply.reason === 'disconnected';
}

export class Edits {
    #connection;
    #lists;
    #notices;
    #passwords = new Map();

    constructor(connection, lists, notices) {
        this.#connection = connection;
        this.#lists = lists;
        this.#notices = notices;
    }

    /// One command. An error becomes a notice, success the line `doneKey` of the status.
    async run(name, fields, doneKey) {
        const reply = await this.#connection.command(name, fields);
        if (reply.error !== null) {
            this.#notices.show(isDisconnected(reply) ? text('status.disconnected') : reply.error);
        } else if (doneKey) {
            this.#notices.say(text(doneKey));
        }
        return reply;
    }

    // --- Comments ---

    focus({id}, page, index) {
        return this.run('focus', {document: id, page, index});
    }

    remove({id}, page, index) {
        return this.run('remove', {document: id, page, index}, 'done.remove');
    }

    async add({id}, page, subtype, rect) {
        const title = text('contents.new', text(`subtype.${subtype}`));
        const answer = await this.#askContents(title, '');
        if (!answer) {
            return;
        }
        const fields = {document: id, page, subtype, rect, contents: answer.text};
        const reply = await this.run('add', fields, 'done.add');
        if (reply.error === null && reply.index !== undefined) {
            await this.focus({id}, page, reply.index);
        }
    }

    async editContents({id}, page, index) {
        const list = await this.#lists.ask(id, page);
        const annotation = list?.annotations.find((one) => one.index === index);
        if (!annotation) {
            return;
        }
        const title = text('contents.edit', text(`subtype.${annotation.subtype}`));
        const contents = await this.#askContents(title, annotation.contents);
        if (contents !== null && contents.text !== annotation.contents) {
            const fields = {document: id, page, index, contents: contents.text};
            await this.run('edit', fields, 'done.edit');
        }
    }

    async #askContents(title, value) {
        const answer = await ask({
            title,
            fields: [{name: 'contents', label: text('contents.label'), type: 'lines', value}],
            buttons: [kCancel, {key: 'dialog.accept', value: 'accept', isMain: true}],
        });
        return answer && {text: answer.values.contents};
    }

    // --- Pages ---

    insertPage({id}, at) {
        return this.run('insert-page', {document: id, at}, 'done.insert-page');
    }

    deletePage({id}, page) {
        return this.run('delete-page', {document: id, page}, 'done.delete-page');
    }

    movePage({id}, from, to) {
        return this.run('move-page', {document: id, from, to}, 'done.move-page');
    }

    async askMovePage(description, from) {
        const answer = await ask({
            title: text('move.title', from + 1),
            fields: [
                {
                    name: 'to',
                    label: text('move.label', description.pages),
                    type: 'number',
                    value: from + 1,
                },
            ],
            buttons: [kCancel, {key: 'move.accept', value: 'move', isMain: true}],
        });
        const to = Number(answer?.values.to) - 1;
        if (answer && Number.isInteger(to) && to >= 0 && to < description.pages && to !== from) {
            await this.movePage(description, from, to);
        }
    }

    // --- Documents ---

    undo({id, undo}) {
        return undo ? this.run('undo', {document: id}, 'done.undo') : null;
    }

    redo({id, redo}) {
        return redo ? this.run('redo', {document: id}, 'done.redo') : null;
    }

    /// Saves; a document that came without a path is asked for one.
    save(description) {
        return description.path === null
            ? this.saveAs(description)
            : this.run('save', {document: description.id}, 'done.save');
    }

    saveAs(description) {
        return this.#saveTo(description, 'save-as', 'save.asTitle');
    }

    saveCopy(description) {
        return this.#saveTo(description, 'save-copy', 'save.copyTitle');
    }

    async #saveTo({id, name, path}, command, titleKey) {
        const answer = await ask({
            title: text(titleKey),
            fields: [{name: 'path', label: text('save.path'), value: path ?? name}],
            buttons: [kCancel, {key: 'save.accept', value: 'save', isMain: true}],
        });
        if (!answer?.values.path) {
            return {error: '', reason: 'cancelled'};
        }
        return this.run(command, {document: id, path: answer.values.path}, 'done.save');
    }

    download({id}) {
        const link = document.createElement('a');
        link.href = new URL(`documents/${id}/download`, document.baseURI).href;
        link.download = '';
        link.click();
    }

    /// Closes; unsaved changes are asked about.
    async close(description) {
        const {id, name} = description;
        const reply = await this.#connection.command('close', {document: id, unsaved: 'ask'});
        if (reply.error === null) {
            return;
        }
        if (reply.reason !== 'unsaved') {
            this.#notices.show(reply.error || text('status.disconnected'));
            return;
        }
        const answer = await ask({
            title: text('close.title', name),
            message: text('close.message'),
            buttons: [
                {key: 'close.discard', value: 'discard'},
                kCancel,
                {key: 'close.save', value: 'save', isMain: true},
            ],
        });
        if (answer) {
            await this.#closeWith(description, answer.choice);
        }
    }

    async #closeWith(description, choice) {
        if (choice === 'save' && description.path === null) {
            const saved = await this.saveAs(description);
            if (saved.error !== null) {
                return;
            }
        }
        await this.run('close', {document: description.id, unsaved: choice});
    }

    // --- Opening ---

    /// Asks for a path or a file.
    async askOpen() {
        const chooser = document.createElement('input');
        chooser.type = 'file';
        chooser.accept = 'application/pdf,.pdf';
        chooser.multiple = true;
        chooser.addEventListener('change', () => this.openFiles(chooser.files));
        const answer = await ask({
            title: text('open.title'),
            message: text('open.message'),
            fields: [{name: 'path', label: text('open.path'), hint: '/…/document.pdf'}],
            buttons: [
                {key: 'open.choose', value: 'choose'},
                kCancel,
                {key: 'open.accept', value: 'open', isMain: true},
            ],
        });
        if (answer?.choice === 'choose') {
            chooser.click();
        } else if (answer?.values.path) {
            await this.openPath(answer.values.path);
        }
    }

    async openPath(path) {
        const open = (password) =>
            this.#connection.command('open', {path, ...(password !== null && {password})});
        await this.#openWithPassword(path.split('/').pop(), open);
    }

    async openFiles(files) {
        for (const file of files) {
            await this.#openWithPassword(file.name, (password) => this.#post(file, password));
        }
    }

    async #post(file, password) {
        const address = new URL('documents', document.baseURI);
        address.searchParams.set('name', file.name);
        if (password !== null) {
            address.searchParams.set('password', password);
        }
        try {
            const response = await fetch(address, {method: 'POST', body: file});
            const answer = await response.json();
            return {error: null, ...answer};
        } catch {
            return {error: text('open.failed', file.name)};
        }
    }

    async #openWithPassword(name, open) {
        this.#notices.say(text('status.opening', name));
        let reply = await open(null);
        for (let wasWrong = false; reply.reason === 'password'; wasWrong = true) {
            const password = await this.#askPasswordOf(name, wasWrong);
            if (password === null) {
                this.#notices.say('');
                return;
            }
            reply = await open(password);
            if (reply.document !== undefined) {
                this.#passwords.set(reply.document, password);
            }
        }
        if (reply.error !== null) {
            this.#notices.say('');
            this.#notices.show(reply.error || text('status.disconnected'));
        }
    }

    /// The password of an open document, for the picture of its pages: the one that opened it, or
    /// a new one.
    async askPassword(id, name, wasWrong) {
        const known = this.#passwords.get(id);
        if (known !== undefined && !wasWrong) {
            return known;
        }
        const password = await this.#askPasswordOf(name, wasWrong);
        if (password !== null) {
            this.#passwords.set(id, password);
        }
        return password;
    }

    async #askPasswordOf(name, wasWrong) {
        const answer = await ask({
            title: text('password.title'),
            message: text(wasWrong ? 'password.wrong' : 'password.message', name),
            fields: [{name: 'password', label: text('password.label'), type: 'password'}],
            buttons: [kCancel, {key: 'open.accept', value: 'open', isMain: true}],
        });
        return answer ? answer.values.password : null;
    }
}
