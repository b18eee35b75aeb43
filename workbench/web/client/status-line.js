// The line at the foot of the page: what is going on, and how the active document stands.

import {text} from './texts.js';

const kTasks = {listing: 'status.listing', saving: 'status.saving'};

export class StatusLine {
    #notices;
    #state;
    #busy = new Map();
    #revisions = new Map();

    constructor(notices, state) {
        this.#notices = notices;
        this.#state = state;
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
            this.#tellTask(description);
        }
        const words = [
            active?.readOnly && text('status.readOnly'),
            active?.modified && text('status.kept'),
            ...(active?.warnings ?? []),
        ];
        this.#state.textContent = words.filter(Boolean).join(' · ');
    }

    // Changes come from the panel and from other windows, too.
    #tellChange({id, revision, undo}) {
        const before = this.#revisions.get(id);
        this.#revisions.set(id, revision);
        if (before !== undefined && before !== revision && undo) {
            this.#notices.say(text(`done.${undo}`));
        }
    }

    #tellTask({id, name, busy}) {
        if ((this.#busy.get(id) ?? null) === busy) {
            return;
        }
        this.#busy.set(id, busy);
        this.#notices.say(kTasks[busy] ? text(kTasks[busy], name) : '');
    }
}
