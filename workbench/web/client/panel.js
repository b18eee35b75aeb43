// The comments panel: a frame without scripts that shows the engine's tree. Receives the panel's
// messages; roles, keyboard focus, input and tooltips work on its elements.

import {PanelFocus} from './panel-focus.js';
import {PanelMirror} from './panel-mirror.js';
import {listenToInput} from './panel-input.js';
import {describeElement, describeStates, namePage, translateRoles} from './panel-roles.js';
import {nextFrame, SlicedWork, sliceClock} from './slices.js';
import {text} from './texts.js';
import {Tooltips} from './tooltips.js';

const kPanelPage = 'panel/document-panel-comments/panel.htm';
const kHostSheets = ['panel-host.css', 'panel-dark.css'];
const kItems = ':scope > ul[page-item] > li > div > ul.comments > li';
const kSheetPatience = 2000;
const kShownAtOnce = 200;
// Number of deferred items shown per frame.
const kShownInFrame = 400;

export class Panel {
    #frame;
    #connection;
    #onProgress;
    #onSettled;
    #mirror;
    #work;
    #focus;
    #tooltips;
    #host;
    #title;
    #expected = 0;
    #isListing = false;
    #comeItems = 0;
    #late = [];
    #shownLate = [];
    #renamedPages = new Set();
    #sheets = [];

    /// `frame` has loaded its empty document. `onProgress` is called with the completed fraction of
    /// an insertion, 0 to 1, `onRefusal` with the reply to refused input, and `onSettled` after changes.
    constructor(frame, connection, onProgress, onRefusal, onSettled) {
        this.#frame = frame;
        this.#connection = connection;
        this.#onProgress = onProgress;
        this.#onSettled = onSettled;
        this.#prepareFrame();
        this.#mirror = new PanelMirror(this.document, new URL(kPanelPage, document.baseURI), this);
        this.#focus = new PanelFocus(this.document, frame);
        this.#tooltips = new Tooltips(this.document, this.#host);
        this.#work = new SlicedWork(
            (piece) => this.#perform(piece),
            () => this.#settle(),
        );
        listenToInput(this.document, this.#mirror, this.#focus, connection, onRefusal);
    }

    get document() {
        return this.#frame.contentDocument;
    }

    get isSettled() {
        return this.#work.isEmpty && this.#shownLate.length === 0;
    }

    /// Sets whether a document's list is being rendered, which arrives in many small insertions.
    setListing(isListing) {
        this.#isListing = isListing;
        this.#showLate();
    }

    /// The node id of the current item; undefined when there is none.
    get currentId() {
        return this.#focus.currentId;
    }

    /// Number of comments in the visible list; null until it stands.
    get commentCount() {
        const list = this.#focus.container?.querySelector('.results-container');
        const isComplete = list && this.#expected === 0 && !this.#isListing;
        return isComplete ? list.querySelectorAll(kItems).length : null;
    }

    readTree() {
        return this.#mirror.read();
    }

    get nodeCount() {
        return this.#mirror.size;
    }

    /// Handles a `panel` message.
    receive(message) {
        const pieces = message.changes.map((change) => ({change}));
        if (message.reset) {
            this.#work.clear();
            pieces.unshift({reset: true});
        }
        pieces.push({remaining: message.remaining});
        this.#work.push(pieces);
    }

    scrollTo(id) {
        this.#work.push([{scrollTo: id}]);
    }

    setLanguage(name, direction) {
        const root = this.document.documentElement;
        root.lang = name;
        root.dir = direction;
        root.setAttribute('wb-locale', name);
        this.#title.textContent = text('panel.comments');
        translateRoles(this.document);
    }

    setTheme(name) {
        this.document.documentElement.setAttribute('wb-theme', name);
    }

    focusList() {
        this.#focus.enter();
    }

    // The engine's head and body replace the frame's; elements of the web page follow after them.
    #prepareFrame() {
        const frameDocument = this.document;
        frameDocument.head.remove();
        frameDocument.body.remove();
        this.#host = frameDocument.createElement('wb-host');
        this.#title = frameDocument.createElement('title');
        this.#host.append(this.#title);
        for (const name of kHostSheets) {
            const sheet = frameDocument.createElement('link');
            sheet.rel = 'stylesheet';
            sheet.href = new URL(`app/styles/${name}`, document.baseURI).href;
            this.#host.append(sheet);
            this.sheetAdded(sheet);
        }
        frameDocument.documentElement.append(this.#host);
    }

    #perform(piece) {
        try {
            if (piece.change) {
                this.#mirror.apply(piece.change);
            } else if (piece.reset) {
                this.#reset();
            } else if (piece.scrollTo !== undefined) {
                this.#mirror.node(piece.scrollTo)?.scrollIntoView({block: 'nearest'});
            } else {
                this.#tellProgress(piece.remaining);
            }
        } catch (error) {
            this.#startAnew(error);
        }
    }

    // The message does not fit the tree: a new connection brings the whole tree.
    #startAnew(why) {
        console.error(why);
        this.#work.clear();
        this.#connection.restart();
    }

    #reset() {
        this.#tooltips.hide();
        this.#focus.reset();
        this.#mirror.reset();
        this.#expected = 0;
        this.#late = [];
        this.#comeItems = 0;
    }

    #tellProgress(remaining) {
        const wasExpected = this.#expected;
        this.#expected = remaining === 0 ? 0 : Math.max(wasExpected, remaining);
        this.#showLate();
        if (this.#expected > 0 || wasExpected > 0) {
            this.#onProgress(this.#expected === 0 ? 1 : 1 - remaining / this.#expected);
        }
    }

    #settle() {
        for (const page of this.#renamedPages) {
            namePage(page);
        }
        this.#renamedPages.clear();
        this.#focus.settle();
        this.#tooltips.settle();
        this.#forget();
        this.#onSettled();
    }

    #forget() {
        if (!this.#mirror.forgetDiscarded(sliceClock())) {
            setTimeout(() => this.#forget(), 0);
        }
    }

    // --- Notifications of the mirror ---

    created(element, record) {
        describeElement(element, record);
        if (record.tag === 'li' && element.hasAttribute('page-index')) {
            this.#renamedPages.add(element);
        }
        const isOnItsWay = this.#expected > 0 || this.#isListing;
        if (isOnItsWay && (record.tag === 'li' || record.tag === 'ul')) {
            this.#delay(element);
        }
    }

    // Of a long list only the beginning is shown at first; the rest is laid out when the list is
    // complete.
    #delay(element) {
        const isItem = element.hasAttribute('annot-name');
        this.#comeItems += isItem ? 1 : 0;
        if (this.#comeItems > kShownAtOnce && (isItem || element.hasAttribute('page-item'))) {
            element.setAttribute('wb-late', '');
            this.#late.push(element);
        }
    }

    // The list is complete: shows the deferred items, a number of them in each frame.
    async #showLate() {
        if (this.#expected > 0 || this.#isListing || this.#late.length === 0) {
            return;
        }
        const late = this.#late;
        this.#late = [];
        this.#comeItems = 0;
        this.#shownLate = late;
        for (let at = 0; at < late.length; at += kShownInFrame) {
            for (const element of late.slice(at, at + kShownInFrame)) {
                element.removeAttribute('wb-late');
            }
            await nextFrame();
        }
        if (this.#shownLate === late) {
            this.#shownLate = [];
        }
        this.#focus.followAgain();
        this.#focus.settle();
    }

    statesChanged(element, record, before) {
        describeStates(element, record);
        this.#focus.statesChanged(element, record.states, before);
    }

    attributesChanged(element, record) {
        describeElement(element, record);
        describeStates(element, record);
    }

    textChanged(node) {
        const page = node.parentElement?.closest('li[page-index]');
        if (page) {
            this.#renamedPages.add(page);
        }
    }

    // The panel is shown once its style sheets are loaded.
    sheetAdded(link) {
        this.#frame.classList.add('unstyled');
        const loaded = new Promise((resolve) => {
            link.addEventListener('load', resolve);
            link.addEventListener('error', resolve);
            setTimeout(resolve, kSheetPatience);
        });
        this.#sheets.push(loaded);
        const known = this.#sheets.length;
        Promise.all(this.#sheets).then(() => {
            if (known === this.#sheets.length) {
                this.#sheets = [];
                this.#frame.classList.remove('unstyled');
            }
        });
    }
}
