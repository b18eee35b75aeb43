// Messages to the user: notices that stay until dismissed, the status line, which screen readers
// announce, and the banner for a lost connection.

import {icon} from './icons.js';
import {text} from './texts.js';

const kMostNotices = 5;
const kMoment = 300;

function makeAction({key, act}, dismiss) {
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = text(key);
    button.addEventListener('click', () => {
        dismiss();
        act();
    });
    return button;
}

// Counts one more of a notice's message.
function repeat(notice) {
    const times = Number(notice.dataset.times) + 1;
    notice.dataset.times = times;
    notice.querySelector('.times').textContent = `× ${times}`;
}

export class Notices {
    #list;
    #status;
    #banner;
    #said = '';
    #task = '';
    #timer = 0;

    constructor(list, status, banner) {
        this.#list = list;
        this.#status = status;
        this.#banner = banner;
    }

    /// Shows a notice: an error or another message that the user must not miss. `actions`: buttons
    /// `{key, act}`, each of which dismisses it. Returns a function that does so. A message without
    /// actions that still stands is not shown again but counted.
    show(message, actions = []) {
        const standing = [...this.#list.children].find((one) => one.dataset.message === message);
        if (standing && actions.length === 0) {
            repeat(standing);
            return () => standing.remove();
        }
        const notice = document.createElement('div');
        notice.className = 'notice';
        const words = document.createElement('span');
        words.dir = 'auto';
        words.textContent = message;
        const close = document.createElement('button');
        close.type = 'button';
        close.className = 'tool';
        close.setAttribute('aria-label', text('notice.dismiss'));
        close.title = text('notice.dismiss');
        close.append(icon('close'));
        const dismiss = () => notice.remove();
        close.addEventListener('click', dismiss);
        const times = document.createElement('bdi');
        times.className = 'times';
        notice.append(words, times, close);
        if (actions.length === 0) {
            Object.assign(notice.dataset, {message, times: 1});
        } else {
            const row = document.createElement('div');
            row.className = 'buttons';
            row.append(...actions.map((action) => makeAction(action, dismiss)));
            notice.append(row);
        }
        this.#list.append(notice);
        while (this.#list.childElementCount > kMostNotices) {
            this.#list.firstElementChild.remove();
        }
        return dismiss;
    }

    say(message) {
        this.#said = message;
        this.#showStatus();
    }

    /// Reports work in progress, shown in the status line after a short delay. The empty text ends
    /// it and restores the previous message.
    sayMeanwhile(task) {
        clearTimeout(this.#timer);
        if (task === '') {
            this.#task = '';
            this.#showStatus();
            return;
        }
        this.#timer = setTimeout(() => {
            this.#task = task;
            this.#showStatus();
        }, kMoment);
    }

    #showStatus() {
        const words = this.#task || this.#said;
        if (this.#status.textContent !== words) {
            this.#status.textContent = words;
        }
    }

    /// Shows the banner; the empty text hides it.
    banner(message) {
        this.#banner.hidden = message === '';
        this.#banner.querySelector('span').textContent = message;
    }
}
