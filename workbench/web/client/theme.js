// Light or dark theme, by the system's setting or the user's choice.

import {recall, remember} from './memory.js';

export const kThemes = ['system', 'light', 'dark'];

export class Theme {
    #query = matchMedia('(prefers-color-scheme: dark)');
    #onChange;
    choice = recall('theme', 'system');

    /// `onChange` is called with "light" or "dark", at once and after each change.
    constructor(onChange) {
        this.#onChange = onChange;
        this.#query.addEventListener('change', () => this.#apply());
        this.#apply();
    }

    choose(choice) {
        this.choice = choice;
        remember('theme', choice);
        this.#apply();
    }

    #apply() {
        const system = this.#query.matches ? 'dark' : 'light';
        const name = this.choice === 'system' ? system : this.choice;
        document.documentElement.dataset.theme = name;
        this.#onChange(name);
    }
}
