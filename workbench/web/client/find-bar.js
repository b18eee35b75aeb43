// The bar above the panel's list that finds comments by their texts. The server searches all comments
// of the active document and makes the match the current comment, which the panel shows.

import {describeRefusal} from './edits.js';
import {icon} from './icons.js';
import {text} from './texts.js';

// Time without typing after which the text is searched for.
const kPause = 150;

const kButtons = [
    ['previous', 'up'],
    ['next', 'down'],
    ['close', 'close'],
];

const stateOf = (id, revision, current) =>
    JSON.stringify([id, revision, current?.page, current?.index]);

const numeral = (value) => value.toLocaleString(document.documentElement.lang);

export class FindBar {
    #element;
    #services;
    #field = document.createElement('input');
    #place = document.createElement('output');
    #buttons = new Map();
    #timer = 0;
    #asked = 0; // number of the last search
    #isAsking = false; // until its reply comes
    #answer = null; // the last reply
    #state = ''; // what the answer belongs to: document, revision and current comment

    /// `services`: `active` (description of the active document or null), `countWords` (number of its
    /// comments in words), `search(fields)` (resolves to the reply to `find`), `reserve(change)`
    /// (carries out a change that takes space from the list), `mark(words, isMatch)` (marks them in
    /// the items of the list; whether the current one is a match), `leave()` (focuses the list).
    constructor(element, services) {
        this.#element = element;
        this.#services = services;
        this.#field.type = 'text';
        this.#field.dir = 'auto';
        this.#field.autocomplete = 'off';
        this.#field.spellcheck = false;
        this.#field.enterKeyHint = 'search';
        this.#field.addEventListener('input', () => this.#typed());
        element.append(this.#field, this.#place);
        const acts = {
            previous: () => this.go('previous'),
            next: () => this.go('next'),
            close: () => this.close(),
        };
        for (const [name, picture] of kButtons) {
            const button = document.createElement('button');
            button.type = 'button';
            button.className = 'tool';
            button.append(icon(picture));
            button.addEventListener('click', acts[name]);
            this.#buttons.set(name, button);
            element.append(button);
        }
        element.addEventListener('keydown', (event) => this.#key(event));
    }

    get isOpen() {
        return !this.#element.hidden;
    }

    /// Opens the bar, or returns to it, with its text selected.
    open() {
        if (!this.isOpen) {
            this.#services.reserve(() => {
                this.#element.hidden = false;
            });
            this.#answer = null;
            this.#state = '';
            this.update();
        }
        this.#field.focus();
        this.#field.select();
    }

    close() {
        this.#drop();
        this.#element.hidden = true;
        this.#services.mark('', false);
        this.#services.leave();
    }

    /// Makes the next or the previous match current; the first one for a text that has just been
    /// typed.
    go(step) {
        this.#search(this.#timer === 0 ? step : 'here');
    }

    /// To be called when documents, the current comment or the number of comments may have changed.
    update() {
        this.#mark();
        if (!this.isOpen || this.#timer !== 0 || this.#isAsking) {
            return;
        }
        if (this.#field.value === '') {
            this.#show();
        } else if (this.#state !== this.#presentState()) {
            this.#search();
        }
    }

    translate() {
        this.#field.setAttribute('aria-label', text('find.label'));
        this.#field.placeholder = text('find.label');
        for (const [name, button] of this.#buttons) {
            button.setAttribute('aria-label', text(`find.${name}`));
            button.title = text(`find.${name}`);
        }
        this.#show();
    }

    #presentState() {
        const {active} = this.#services;
        return stateOf(active?.id, active?.revision, active?.current);
    }

    #typed() {
        clearTimeout(this.#timer);
        this.#timer = setTimeout(() => this.#search('here'), kPause);
    }

    // Without a step nothing becomes current, only the number of the match is told anew.
    async #search(step) {
        this.#drop();
        const {active, search} = this.#services;
        const words = this.#field.value;
        if (words === '' || active === null) {
            this.#show();
            return;
        }
        const asked = this.#asked;
        this.#isAsking = true;
        this.#state = this.#presentState();
        const answer = await search({document: active.id, text: words, step});
        if (asked !== this.#asked) {
            return;
        }
        this.#isAsking = false;
        this.#answer = answer;
        if (step && answer.number) {
            this.#state = stateOf(active.id, answer.revision, answer);
        }
        this.#show();
        this.update();
    }

    // What is on its way is not wanted any more.
    #drop() {
        clearTimeout(this.#timer);
        this.#timer = 0;
        this.#isAsking = false;
        ++this.#asked;
    }

    #show() {
        const words = this.#describe();
        if (this.#place.textContent !== words) {
            this.#place.textContent = words;
        }
        this.#mark();
        const hasMatches = this.#hasMatches;
        this.#place.classList.toggle('none', this.#field.value !== '' && this.#answer?.count === 0);
        for (const name of ['previous', 'next']) {
            this.#buttons.get(name).setAttribute('aria-disabled', String(!hasMatches));
        }
    }

    get #hasMatches() {
        return this.#answer?.count > 0;
    }

    #mark() {
        const isMarking = this.isOpen && this.#hasMatches;
        this.#services.mark(
            isMarking ? this.#field.value : '',
            isMarking && this.#answer.number > 0,
        );
    }

    #describe() {
        if (this.#field.value === '') {
            return this.#services.countWords;
        }
        if (this.#answer === null || this.#services.active === null) {
            return '';
        }
        const {error, reason, count, number: at} = this.#answer;
        if (error !== null) {
            return describeRefusal(reason, error);
        }
        if (count === 0) {
            return text('find.none');
        }
        return at === null
            ? text('find.count', numeral(count))
            : text('find.place', numeral(at), numeral(count));
    }

    #key(event) {
        if (event.key === 'Escape') {
            this.close();
        } else if (event.key === 'Enter' && event.target === this.#field && !event.isComposing) {
            this.go(event.shiftKey ? 'previous' : 'next');
        } else {
            return;
        }
        event.preventDefault();
    }
}
