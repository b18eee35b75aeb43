// The status line: work in progress, and the state of the active document.

import {ask} from './dialogs.js';
import {text} from './texts.js';

const kTasks = {listing: 'status.listing', saving: 'status.saving'};

/// The edit made to a document, derived from its undo and redo kinds before and after, because the
/// server sends only the present state.
function describeChange(before, now) {
    const isUndo = now.redo !== null && now.redo === before.undo;
    const isRedo = now.undo !== null && now.undo === before.redo;
    if (isUndo && !isRedo) {
        return text('done.undone', text(`step.${now.redo}`));
    }
    if (!isUndo && now.undo !== null && (isRedo || now.redo === null)) {
        return text(`done.${now.undo}`);
    }
    return text('done.changed', now.name);
}

// The dialog's title names the file.
function withoutPath(words, path) {
    return words.startsWith(path) ? words.slice(path.length).replace(/^[:\s]+/, '') : words;
}

export class StatusLine {
    #notices;
    #state = document.createElement('span');
    #count = null;
    #faults = document.createElement('button');
    #documents = new Map();
    #active = null;

    /// `state` is the element for the state of the active document.
    constructor(notices, state) {
        this.#notices = notices;
        this.#faults.type = 'button';
        this.#faults.addEventListener('click', () => this.#showFaults());
        state.append(this.#state, this.#faults);
    }

    tellProgress({state, name}) {
        if (state === 'begun') {
            this.#notices.say(text('status.opening', name));
        } else if (state === 'done') {
            this.#notices.say(text('status.opened', name));
        } else {
            this.#notices.say(text('open.failed', name));
        }
    }

    update(documents, active) {
        for (const description of documents) {
            this.#tellChange(description);
        }
        this.#documents = new Map(documents.map((one) => [one.id, one]));
        this.#tellTask(documents);
        this.#active = active;
        this.#showState();
        this.#faults.textContent = text('status.faults');
        this.#faults.hidden = !active?.warnings.length;
    }

    /// Number of comments in the list; null when it is not known yet.
    setCount(count) {
        if (count !== this.#count) {
            this.#count = count;
            this.#showState();
        }
    }

    /// The number of comments of the active document in words; empty when it is not known.
    get countWords() {
        const number = this.#count?.toLocaleString(document.documentElement.lang);
        return this.#active && number ? text('status.comments', number) : '';
    }

    #showState() {
        const active = this.#active;
        const words = [
            this.countWords,
            active?.readOnly && text('status.readOnly'),
            active?.modified && text('status.kept'),
        ];
        this.#state.textContent = words.filter(Boolean).join(' · ');
    }

    #showFaults() {
        const {name, path, warnings} = this.#active;
        ask({
            title: text('faults.title', name),
            details: warnings.map((words) => withoutPath(words, path ?? name)),
            buttons: [{key: 'dialog.close', isMain: true}],
        });
    }

    // Changes come also from the panel and from other clients.
    #tellChange(description) {
        const before = this.#documents.get(description.id);
        if (before && before.revision !== description.revision) {
            this.#notices.say(describeChange(before, description));
        }
    }

    #tellTask(documents) {
        const busy = documents.find((one) => kTasks[one.busy]);
        this.#notices.sayMeanwhile(busy ? text(kTasks[busy.busy], busy.name) : '');
    }
}
