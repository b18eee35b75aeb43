// What the workbench has to say: notices that stay until they are dismissed, one line of status
// that is read out, and the banner that tells of a lost connection.

import {icon} from './icons.js';
import {text} from './texts.js';

const kMostNotices = 5;
const kMoment = 300;

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

    /// An error, or another thing that the user must not overlook.
    show(message) {
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
        close.addEventListener('click', () => notice.remove());
        notice.append(words, close);
        this.#list.append(notice);
        while (this.#list.childElementCount > kMostNotices) {
            this.#list.firstElementChild.remove();
        }
    }

    say(message) {
        this.#said = message;
        this.#showStatus();
    }

    /// What is going on; when it takes longer than a moment it stands in the line of status, and
    /// what was said before comes back when it is over, with the empty text.
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
