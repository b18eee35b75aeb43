// The web page of the workbench: creates its parts and dispatches the server's messages to them.

import {Connection, socketAddress} from './connection.js';
import {describeRefusal, Edits} from './edits.js';
import {FindBar} from './find-bar.js';
import {setFocusHome} from './focus-return.js';
import {icon} from './icons.js';
import {Notices} from './notices.js';
import {Panel} from './panel.js';
import {listenToShortcuts} from './shortcuts.js';
import {SplitView} from './split-view.js';
import {Splitter} from './splitter.js';
import {StatusLine} from './status-line.js';
import {Tabs} from './tabs.js';
import {kLanguages, setTextLanguage, text, translatePage} from './texts.js';
import {Theme} from './theme.js';
import {Toolbar} from './toolbar.js';
import {Tools} from './tools.js';

const byId = (id) => document.getElementById(id);

async function loadedFrame(frame) {
    if (
        frame.contentDocument?.readyState !== 'complete' ||
        frame.contentWindow.location.href === 'about:blank'
    ) {
        await new Promise((resolve) => {
            frame.addEventListener('load', resolve, {once: true});
        });
    }
    return frame;
}

/// The web page with all its parts. Its state follows the server's messages.
class Page {
    documents = [];
    activeId = null;
    language = {
        name: 'en',
        choose: (name) => this.edits.run('locale', {locale: name}),
    };
    split = {isOn: false, toggle: () => this.#toggleSplit()};
    #hasEnded = false;
    #ending = null;
    #offers = new Map(); // of recovery, by document: functions that withdraw them

    constructor(frame) {
        this.connection = new Connection(socketAddress(document.baseURI), (state) =>
            this.#connectionChanged(state),
        );
        this.notices = new Notices(byId('notices'), byId('status'), byId('banner'));
        this.edits = new Edits(this.connection, this.notices);
        this.tools = new Tools(this.edits, this.notices, () => this.#toolChosen());
        this.panel = new Panel(
            frame,
            this.connection,
            (reply) => this.edits.tellRefusal(reply),
            () => this.#countComments(),
        );
        setFocusHome(() => this.panel.focusList());
        this.splitView = new SplitView(byId('pages'), this.#viewServices());
        this.tabs = new Tabs(byId('tabs'), {
            activate: ({id}) => this.#activate(id),
            close: (description) => this.edits.close(description),
        });
        this.theme = new Theme((name) => this.panel.setTheme(name));
        this.toolbar = new Toolbar(byId('toolbar'), this);
        this.statusLine = new StatusLine(this.notices, byId('state'));
        this.findBar = new FindBar(byId('find'), this.#findServices());
        new Splitter(byId('splitter'), byId('workspace'));
        this.#listenToControls();
        this.#listenToDrops([document, frame.contentDocument]);
        this.#listenToWorkbench();
        listenToShortcuts([document, frame.contentDocument], this.#shortcuts());
        frame.contentDocument.addEventListener('dblclick', (event) => this.#editItem(event));
        this.#setLocale('en');
        this.connection.open();
    }

    get active() {
        return this.documents.find((one) => one.id === this.activeId) ?? null;
    }

    get view() {
        return this.splitView.activeView;
    }

    // --- Actions on the active document ---

    save() {
        return this.#withActive((active) => this.edits.save(active));
    }

    undo() {
        return this.#withActive((active) => this.edits.undo(active));
    }

    redo() {
        return this.#withActive((active) => this.edits.redo(active));
    }

    editCurrent() {
        return this.#withActive((active) =>
            this.edits.editCurrent(active, this.#currentId, this.view),
        );
    }

    // The first click has made the item current.
    #editItem({target}) {
        if (target.closest?.('li[annot-name]')) {
            this.panel.document.getSelection().removeAllRanges();
            this.editCurrent();
        }
    }

    removeCurrent() {
        return this.#withActive((active) => this.edits.removeCurrent(active, this.#currentId));
    }

    #withActive(act) {
        if (this.active) {
            return act(this.active);
        }
        this.notices.say(text('status.noDocument'));
        return null;
    }

    // Undefined while input is unanswered, because it may make another item current.
    get #currentId() {
        return this.connection.isCaughtUp ? this.panel.currentId : undefined;
    }

    #activate(id) {
        if (id !== this.activeId) {
            this.edits.run('activate', {document: id});
        }
    }

    #viewServices() {
        return {
            connection: this.connection,
            edits: this.edits,
            notice: (words) => this.notices.show(words),
            say: (words) => this.notices.say(words),
            activate: (id) => this.#activate(id),
            serve: (view) => this.tools.serve(view),
        };
    }

    #findServices() {
        const page = this;
        return {
            get active() {
                return page.active;
            },
            get countWords() {
                return page.statusLine.countWords;
            },
            search: (fields) => this.connection.command('find', fields),
            reserve: (change) => this.panel.keepCurrentInSight(change),
            mark: (words, isMatch) => this.panel.markMatches(words, isMatch),
            leave: () => this.panel.focusList(),
        };
    }

    find() {
        this.#showView('comments');
        this.findBar.open();
    }

    // --- Messages ---

    #listenToWorkbench() {
        const {connection} = this;
        connection.on('hello', (message) => {
            connection.mostMessageBytes = message.mostMessageBytes;
            connection.panelKeys = new Set(message.keys);
        });
        connection.on('locale', (message) => this.#setLocale(message.name));
        connection.on('documents', (message) => this.#setDocuments(message));
        connection.on('document', ({document: changed}) =>
            this.#setDocuments({
                documents: this.documents.map((one) => (one.id === changed.id ? changed : one)),
                active: this.activeId,
            }),
        );
        connection.on('panel', (message) => this.panel.receive(message));
        connection.on('scroll', (message) => this.panel.scrollTo(message));
        connection.on('progress', (message) => this.statusLine.tellProgress(message));
        connection.on('notice', ({text: words, reason}) =>
            this.notices.show(describeRefusal(reason, words)),
        );
        connection.on('ending', (message) => this.#askEnding(message));
        connection.on('refused', (message) => console.error('refused:', message.reason));
        connection.on('goodbye', () => {
            this.#hasEnded = true;
        });
    }

    #setDocuments({documents, active}) {
        this.documents = documents;
        this.activeId = active;
        byId('no-document').hidden = documents.length > 0;
        this.#nameWindow();
        this.panel.setListing(this.active?.busy === 'listing');
        this.panel.setCurrent(this.active?.current ?? null);
        this.tabs.update(documents, active);
        this.splitView.update(documents, active);
        this.toolbar.update();
        this.statusLine.update(documents, this.active);
        this.#countComments();
        this.#offerRecovery();
    }

    #countComments() {
        this.statusLine.setCount(this.panel.commentCount);
        this.findBar.update();
    }

    #nameWindow() {
        document.title = [this.active?.name, text('panel.comments')].filter(Boolean).join(' – ');
        byId('title').textContent = document.title;
    }

    #offerRecovery() {
        const offered = this.documents.filter(({recovery}) => recovery !== null);
        for (const [id, withdraw] of this.#offers) {
            if (!offered.some((one) => one.id === id)) {
                withdraw();
                this.#offers.delete(id);
            }
        }
        for (const description of offered) {
            if (!this.#offers.has(description.id)) {
                this.#offers.set(description.id, this.edits.offerRecovery(description));
            }
        }
    }

    // The prompt closes when it is answered, here or by another client, when the workbench ends,
    // and when the connection is lost; a new connection opens it again.
    #askEnding({documents, seconds}) {
        this.#ending?.abort();
        this.#ending = null;
        if (documents.length > 0) {
            this.#ending = new AbortController();
            const asked = this.documents.filter(({id}) => documents.includes(id));
            this.edits.askEnding(asked, seconds, this.#ending.signal);
        }
    }

    #setLocale(name) {
        const direction = kLanguages.find((one) => one.name === name)?.direction ?? 'ltr';
        this.language.name = name;
        setTextLanguage(name);
        document.documentElement.lang = name;
        document.documentElement.dir = direction;
        translatePage();
        this.#nameWindow();
        byId('open-document').setAttribute('aria-label', text('tabs.open'));
        byId('open-document').title = text('tabs.open');
        byId('panel-frame').title = text('panel.comments');
        this.panel.setLanguage(name, direction);
        this.toolbar.translate();
        this.splitView.translate();
        this.tabs.update(this.documents, this.activeId);
        this.statusLine.update(this.documents, this.active);
        this.findBar.translate();
    }

    #connectionChanged(state) {
        if (state === 'open') {
            this.#hasEnded = false;
            this.notices.banner('');
        } else {
            this.#askEnding({documents: []});
            const isReplaced = state === 'replaced';
            const shown = this.#hasEnded && !isReplaced ? 'ended' : state;
            this.notices.banner(text(`banner.${shown}`));
            byId('retry').hidden = isReplaced;
        }
    }

    // --- Controls ---

    #listenToControls() {
        const open = byId('open-document');
        open.append(icon('plus'));
        open.addEventListener('click', () => this.edits.askOpen());
        byId('retry').addEventListener('click', () => this.connection.open());
        for (const button of byId('view-switch').children) {
            button.addEventListener('click', () => this.#showView(button.dataset.view));
        }
        this.#showView('comments');
    }

    // A narrow window shows either the pages or the panel.
    #showView(name) {
        document.body.dataset.view = name;
        for (const button of byId('view-switch').children) {
            button.setAttribute('aria-pressed', String(button.dataset.view === name));
        }
    }

    // The panel's frame has its own DOM document, which receives the drops on the panel.
    #listenToDrops(documents) {
        const isFile = (event) => event.dataTransfer?.types.includes('Files');
        const mark = (isOver) => document.body.classList.toggle('dropping', isOver);
        const listen = (type, handler) =>
            documents.forEach((each) => each.addEventListener(type, handler));
        for (const type of ['dragenter', 'dragover']) {
            listen(type, (event) => {
                if (isFile(event)) {
                    event.preventDefault();
                    mark(true);
                }
            });
        }
        listen('dragleave', (event) => {
            if (!event.relatedTarget) {
                mark(false);
            }
        });
        listen('drop', (event) => {
            mark(false);
            if (isFile(event)) {
                event.preventDefault();
                this.edits.openFiles(event.dataTransfer.files);
            }
        });
    }

    // A drawing tool needs the pages.
    #toolChosen() {
        this.toolbar?.update();
        if (this.tools.isForDrawing) {
            this.#showView('pages');
        }
    }

    #toggleSplit() {
        this.split.isOn = !this.split.isOn;
        this.splitView.setSplit(this.split.isOn);
    }

    // --- Keyboard ---

    #shortcuts() {
        const isOnPages = (event) => byId('pages').contains(event.target);
        const inPages = (event) => event.target === document.body || isOnPages(event);
        const zoom = (act) => (event) => {
            if (!inPages(event) || !this.view) {
                return false;
            }
            act(this.view.zoom);
            return true;
        };
        const isField = (event) => event.target.matches?.('input, textarea, select');
        return {
            'Ctrl+s': () => this.save(),
            'Ctrl+o': () => this.edits.askOpen(),
            'Ctrl+z': (event) => (isField(event) ? false : this.undo()),
            'Ctrl+y': (event) => (isField(event) ? false : this.redo()),
            'Ctrl+Shift+z': (event) => (isField(event) ? false : this.redo()),
            'Ctrl++': zoom((view) => view.step(true)),
            'Ctrl+=': zoom((view) => view.step(true)),
            'Ctrl+-': zoom((view) => view.step(false)),
            'Ctrl+0': zoom((view) => view.fitWidth()),
            'Ctrl+f': (event) => {
                const isElsewhere =
                    isField(event) || isOnPages(event) || event.target.closest?.('dialog');
                return isElsewhere ? false : this.find();
            },
            F2: () => this.editCurrent(),
            F3: (event) => {
                if (!this.findBar.isOpen || isOnPages(event)) {
                    return false;
                }
                this.findBar.go(event.shiftKey ? 'previous' : 'next');
                return true;
            },
            F6: (event) => this.#switchRegion(event),
        };
    }

    #switchRegion(event) {
        if (byId('pages').contains(event.target)) {
            this.#showView('comments');
            this.panel.focusList();
        } else {
            this.#showView('pages');
            this.view?.scroller.focus();
        }
    }
}

/// The web page, once its frame has loaded.
export const page = loadedFrame(byId('panel-frame')).then((frame) => new Page(frame));
