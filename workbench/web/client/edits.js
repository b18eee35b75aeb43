// The user's actions on documents: commands to the server, their dialogs, and messages about the
// outcome.

import {placeOfCurrent} from './comment-places.js';
import {askAnnotations} from './connection.js';
import {editContents} from './contents-editor.js';
import {ask, kCancel} from './dialogs.js';
import {recall, remember} from './memory.js';
import {hasText, subtypeName, text} from './texts.js';

/// The message of a refusal: a localised text for a known reason, else the server's text.
export function describeRefusal(reason, words) {
    if (reason === 'disconnected') {
        return text('status.disconnected');
    }
    return reason && hasText(`reason.${reason}`) ? text(`reason.${reason}`, words) : words;
}

function isSameComment(one, other) {
    const looks = ({subtype, rect, contents, title}) =>
        JSON.stringify([subtype, rect, contents, title]);
    return one !== undefined && looks(one) === looks(other);
}

// A path for a copy beside the document that no open document has.
function proposeCopy({path, name}, documents) {
    const [, folder, stem, ending] = (path ?? name).match(/^(.*\/)?(.*?)(\.pdf)?$/is);
    const taken = new Set(documents.map((one) => one.path ?? one.name));
    const make = (words) => `${folder ?? ''}${words}${ending ?? '.pdf'}`;
    let proposed = make(text('save.copyName', stem));
    for (let number = 2; taken.has(proposed); ++number) {
        proposed = make(text('save.copyNumber', stem, number));
    }
    return proposed;
}

// Success is reported in the status line only.
const kNothingAmiss = new Set(['no-comment', 'other-comment', 'listing', 'folded', 'disconnected']);

export class Edits {
    #connection;
    #notices;
    #isFetchingCurrent = false;

    constructor(connection, notices) {
        this.#connection = connection;
        this.#notices = notices;
    }

    /// Runs one command. On success the status line shows the text `doneKey`.
    async run(name, fields, doneKey) {
        const reply = await this.#connection.command(name, fields);
        if (reply.error !== null) {
            this.tellRefusal(reply);
        } else if (doneKey) {
            this.#notices.say(text(doneKey));
        }
        return reply;
    }

    tellRefusal({reason, error}) {
        const words = describeRefusal(reason, error);
        if (kNothingAmiss.has(reason)) {
            this.#notices.say(words);
        } else {
            this.#notices.show(words);
        }
    }

    // Runs one command for a dialog; resolves to the error text, or null on success.
    async #attempt(name, fields, doneKey) {
        const reply = await this.#connection.command(name, fields);
        if (reply.error === null) {
            this.#notices.say(text(doneKey));
            return null;
        }
        return describeRefusal(reply.reason, reply.error);
    }

    // --- Comments ---
    //
    // A comment is `{page, annotation, revision}`, as read at that revision. For the current
    // comment, which the server knows, `item` is the id of the item that the user sees as current;
    // undefined when that may have changed.

    focus({id}, {page, annotation: {index}, revision}) {
        return this.run('focus', {document: id, page, index, revision});
    }

    remove({id}, {page, annotation: {index}, revision}) {
        return this.run('remove', {document: id, page, index, revision}, 'done.remove');
    }

    removeCurrent({id}, item) {
        return this.run('remove', {document: id, item}, 'done.remove');
    }

    /// Adds a comment `{page, subtype, rect or quads}` with contents that the user writes at `place`.
    async add(description, comment, place) {
        if (this.#saysWhyNot(description)) {
            return;
        }
        const author = recall('author', '');
        const fields = {document: description.id, ...comment, ...(author && {author})};
        await editContents({
            title: text('contents.new', subtypeName(comment.subtype)),
            value: '',
            isNew: true,
            place,
            attempt: (contents) => this.#attempt('add', {...fields, contents}, 'done.add'),
        });
    }

    /// Asks for the name that new comments of this browser bear.
    async askAuthor() {
        await ask({
            title: text('author.title'),
            message: text('author.message'),
            fields: [{name: 'author', label: text('author.label'), value: recall('author', '')}],
            buttons: [kCancel, {key: 'dialog.accept', value: 'accept', isMain: true}],
            attempt: ({values}) => {
                remember('author', values.author.trim());
                return null;
            },
        });
    }

    /// `view`: the pages of the document. However often the key is pressed, one editor opens.
    async editCurrent(description, item, view) {
        if (this.#isFetchingCurrent) {
            return;
        }
        const beganOnPages = Boolean(view?.element.contains(document.activeElement));
        this.#isFetchingCurrent = true;
        const comment = await this.run('current', {document: description.id, item});
        this.#isFetchingCurrent = false;
        if (comment.error === null) {
            const place = placeOfCurrent(comment, view, beganOnPages);
            await this.editContents(description, comment, place);
        }
    }

    async editContents(description, comment, place) {
        const {annotation} = comment;
        if (this.#saysWhyNot(description, annotation)) {
            return;
        }
        await editContents({
            title: text('contents.edit', subtypeName(annotation.subtype)),
            value: annotation.contents,
            place,
            attempt: (contents) => this.#changeContents(description.id, comment, contents),
        });
    }

    // Changes made while the editor was open are accepted as long as the comment is the same.
    async #changeContents(id, {page, annotation, revision}, contents) {
        const {index} = annotation;
        for (let known = revision; ;) {
            const fields = {document: id, page, index, contents, revision: known};
            const reply = await this.#connection.command('edit', fields);
            if (reply.error === null) {
                this.#notices.say(text('done.edit'));
                return null;
            }
            const isOutdated = reply.reason === 'changed';
            const now = isOutdated ? await askAnnotations(this.#connection, id, page) : null;
            const same = now?.annotations.find((one) => one.index === index);
            if (!isSameComment(same, annotation) || now.revision === known) {
                return describeRefusal(reply.reason, reply.error);
            }
            known = now.revision;
        }
    }

    // Opens no editor for an edit that would be refused; the status line gives the reason.
    #saysWhyNot({readOnly, deletionPermitted}, annotation = null) {
        const reason =
            (readOnly && 'read-only') ||
            (annotation?.locked && 'locked') ||
            (deletionPermitted === false && 'not-permitted');
        if (reason) {
            this.#notices.say(text(`reason.${reason}`));
        }
        return Boolean(reason);
    }

    // --- Pages ---

    insertPage({id, revision}, at) {
        return this.run('insert-page', {document: id, at, revision}, 'done.insert-page');
    }

    deletePage({id, revision}, page) {
        return this.run('delete-page', {document: id, page, revision}, 'done.delete-page');
    }

    movePage({id, revision}, from, to) {
        return this.run('move-page', {document: id, from, to, revision}, 'done.move-page');
    }

    async askMovePage({id, pages, revision}, from) {
        await ask({
            title: text('move.title', from + 1),
            fields: [
                {
                    name: 'to',
                    label: text('move.label', pages),
                    type: 'number',
                    value: from + 1,
                },
            ],
            buttons: [kCancel, {key: 'move.accept', value: 'move', isMain: true}],
            attempt: ({values}) => {
                const to = Number(values.to) - 1;
                if (!Number.isInteger(to) || to < 0 || to >= pages) {
                    return text('move.range', pages);
                }
                const fields = {document: id, from, to, revision};
                return to === from ? null : this.#attempt('move-page', fields, 'done.move-page');
            },
        });
    }

    // --- Documents ---

    undo({id, undo}) {
        return this.#travel('undo', id, undo, 'status.noUndo');
    }

    redo({id, redo}) {
        return this.#travel('redo', id, redo, 'status.noRedo');
    }

    #travel(name, id, step, noneKey) {
        if (!step && this.#connection.isCaughtUp) {
            this.#notices.say(text(noneKey));
            return null;
        }
        return this.run(name, {document: id}, `done.${name}`);
    }

    /// Saves the document; asks for a path when it has none.
    async save(description) {
        if (description.path === null) {
            return this.saveAs(description);
        }
        const {id, name} = description;
        const save = (fields) => this.#connection.command('save', {document: id, ...fields});
        const reply = await this.#withReplacement(name, save);
        this.#tellOutcome(reply, 'done.save');
        return reply;
    }

    saveAs(description) {
        const {path, name} = description;
        return this.#saveTo(description, 'save-as', 'save.asTitle', path ?? name);
    }

    /// `documents`: the open ones, whose names the copy does not get.
    saveCopy(description, documents) {
        const proposed = proposeCopy(description, documents);
        return this.#saveTo(description, 'save-copy', 'save.copyTitle', proposed);
    }

    async #saveTo({id}, command, titleKey, proposed) {
        let reply = {error: '', reason: 'cancelled'};
        await ask({
            title: text(titleKey),
            fields: [{name: 'path', label: text('save.path'), value: proposed}],
            buttons: [kCancel, {key: 'save.accept', value: 'save', isMain: true}],
            attempt: async ({values}) => {
                if (!values.path) {
                    return '';
                }
                const target = {document: id, path: values.path};
                reply = await this.#withReplacement(values.path, (fields) =>
                    this.#connection.command(command, {...target, ...fields}),
                );
                if (reply.reason === 'cancelled') {
                    return '';
                }
                return reply.error === null ? null : describeRefusal(reply.reason, reply.error);
            },
        });
        if (reply.error === null) {
            this.#notices.say(text('done.save'));
        }
        return reply;
    }

    // Asks before a file is replaced; `save(fields)` is repeated with the permission.
    async #withReplacement(name, save) {
        const reply = await save({});
        const questions = {exists: 'replace.exists', 'changed-on-disk': 'replace.changed'};
        if (reply.error === null || !questions[reply.reason]) {
            return reply;
        }
        const answer = await ask({
            title: text('replace.title'),
            message: text(questions[reply.reason], name),
            buttons: [
                {key: 'replace.accept', value: 'replace'},
                {...kCancel, isMain: true},
            ],
        });
        return answer ? save({overwrite: true}) : {error: '', reason: 'cancelled'};
    }

    #tellOutcome({error, reason}, doneKey) {
        if (error === null) {
            this.#notices.say(text(doneKey));
        } else if (reason !== 'cancelled') {
            this.#notices.show(describeRefusal(reason, error));
        }
    }

    download({id}) {
        const link = document.createElement('a');
        link.href = new URL(`documents/${id}/download`, document.baseURI).href;
        link.download = '';
        link.click();
    }

    /// Closes the document; asks about unsaved changes.
    async close(description) {
        const {id, name} = description;
        const reply = await this.#connection.command('close', {document: id, unsaved: 'ask'});
        if (reply.error === null) {
            return;
        }
        if (reply.reason !== 'unsaved') {
            this.#notices.show(describeRefusal(reply.reason, reply.error));
            return;
        }
        await ask({
            title: text('close.title', name),
            message: text('close.message'),
            buttons: [
                {key: 'close.discard', value: 'discard'},
                kCancel,
                {key: 'close.save', value: 'save', isMain: true},
            ],
            attempt: ({choice}) => this.#closeWith(description, choice),
        });
    }

    // Null when the document is closed; else the error text, empty when the user cancelled.
    async #closeWith(description, unsaved) {
        const {id, name, path} = description;
        if (unsaved === 'save' && path === null) {
            const saved = await this.saveAs(description);
            if (saved.error !== null) {
                return '';
            }
        }
        const reply = await this.#withReplacement(name, (fields) =>
            this.#connection.command('close', {document: id, unsaved, ...fields}),
        );
        if (reply.reason === 'cancelled') {
            return '';
        }
        return reply.error === null ? null : describeRefusal(reply.reason, reply.error);
    }

    /// Opens the save-before-exit prompt. `documents`: the descriptions of the unsaved documents;
    /// `signal` closes the prompt.
    async askEnding(documents, seconds, signal) {
        const due = Date.now() + 1000 * seconds;
        const countdown = () =>
            text('ending.seconds', Math.max(0, Math.round((due - Date.now()) / 1000)));
        const end = async (unsaved) => {
            const reply = await this.#connection.command('end', {unsaved});
            if (reply.error !== null) {
                return describeRefusal(reply.reason, reply.error);
            }
            this.#notices.say(text(unsaved === 'cancel' ? 'status.goesOn' : 'status.ending'));
            return null;
        };
        const answer = await ask({
            title: text('ending.title'),
            message: text('ending.message', documents.map(({name}) => name).join(', ')),
            countdown,
            buttons: [
                {key: 'ending.save', value: 'save', isMain: true},
                {key: 'ending.copies', value: 'copies'},
                {key: 'ending.discard', value: 'discard'},
                {key: 'ending.cancel', value: 'cancel'},
            ],
            attempt: ({choice}) => end(choice),
            signal,
        });
        if (!answer && !signal.aborted) {
            await end('cancel');
        }
    }

    // --- Recovery ---

    /// Offers to restore a document from the copy that an earlier run has left. Returns a function
    /// that withdraws the offer.
    offerRecovery({id, name, recovery}) {
        const answer = (use, doneKey) => this.run('recovery', {document: id, use}, doneKey);
        return this.#notices.show(text('recovery.offer', name, recovery), [
            {key: 'recovery.restore', act: () => answer('restore', 'done.restore')},
            {key: 'recovery.discard', act: () => answer('discard')},
        ]);
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
            attempt: ({choice, values}) =>
                choice === 'open' && values.path ? this.#openPath(values.path) : null,
        });
        if (answer?.choice === 'choose') {
            chooser.click();
        }
    }

    async openPath(path) {
        this.#showFailure(await this.#openPath(path));
    }

    #openPath(path) {
        const open = (password) =>
            this.#connection.command('open', {path, ...(password !== null && {password})});
        return this.#openWithPassword(path.split('/').pop(), open);
    }

    #showFailure(words) {
        if (words) {
            this.#notices.show(words);
        }
    }

    async openFiles(files) {
        for (const file of files) {
            const open = (password) => this.#post(file, password);
            this.#showFailure(await this.#openWithPassword(file.name, open));
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

    // Null when the document is open; else the error text, empty when the user cancelled.
    async #openWithPassword(name, open) {
        this.#notices.say(text('status.opening', name));
        let reply = await open(null);
        for (let wasWrong = false; reply.reason === 'password'; wasWrong = true) {
            const password = await this.#askPassword(name, wasWrong);
            if (password === null) {
                this.#notices.say('');
                return '';
            }
            reply = await open(password);
        }
        if (reply.error === null) {
            return null;
        }
        this.#notices.say('');
        return describeRefusal(reply.reason, reply.error);
    }

    async #askPassword(name, wasWrong) {
        const answer = await ask({
            title: text('password.title'),
            message: text(wasWrong ? 'password.wrong' : 'password.message', name),
            fields: [{name: 'password', label: text('password.label'), type: 'password'}],
            buttons: [kCancel, {key: 'open.accept', value: 'open', isMain: true}],
        });
        return answer ? answer.values.password : null;
    }
}
