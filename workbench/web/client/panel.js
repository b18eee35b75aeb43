// The comments panel: a frame without scripts that shows the engine's tree. Receives the panel's
// messages; roles, keyboard focus, input and tooltips work on its elements.

import {MatchMarks} from './match-marks.js';
import {PanelFocus} from './panel-focus.js';
import {PanelLists} from './panel-lists.js';
import {PanelMirror} from './panel-mirror.js';
import {listenToInput} from './panel-input.js';
import {describeElement, describeStates, namePage, translateRoles} from './panel-roles.js';
import {SlicedWork, sliceClock} from './slices.js';
import {text} from './texts.js';
import {Tooltips} from './tooltips.js';

const kPanelPage = 'panel/document-panel-comments/panel.htm';
const kHostSheets = ['panel-host.css', 'panel-dark.css'];
const kSheetPatience = 2000;

export class Panel {
    #frame;
    #connection;
    #onSettled;
    #mirror;
    #lists;
    #work;
    #focus;
    #tooltips;
    #marks;
    #host;
    #title;
    #remaining = 0;
    #isListing = false;
    #renamedPages = new Set();
    #sheets = [];

    /// `frame` has loaded its empty document. `onRefusal` is called with the reply to refused input,
    /// and `onSettled` after changes.
    constructor(frame, connection, onRefusal, onSettled) {
        this.#frame = frame;
        this.#connection = connection;
        this.#onSettled = onSettled;
        this.#prepareFrame();
        this.#mirror = new PanelMirror(this.document, new URL(kPanelPage, document.baseURI), this);
        this.#lists = new PanelLists(connection);
        this.#focus = new PanelFocus(this.document, frame, this.#lists);
        this.#tooltips = new Tooltips(this.document, this.#host, connection);
        this.#marks = new MatchMarks(
            this.document,
            (item) => this.#tooltips.openedPopupOf(item),
            (change) => this.keepCurrentInSight(change),
        );
        this.#work = new SlicedWork(
            () => this.#isStyled && this.#lists.note(),
            (piece) => this.#perform(piece),
            () => this.#settle(),
        );
        listenToInput(this.document, {
            mirror: this.#mirror,
            focus: this.#focus,
            lists: this.#lists,
            connection,
            onRefusal,
        });
        new ResizeObserver(() => this.#settleLists()).observe(frame);
    }

    get document() {
        return this.#frame.contentDocument;
    }

    /// Whether everything that has come is shown, and nothing more of it is wanted.
    get isSettled() {
        const isShown = this.#isStyled && this.#work.isEmpty;
        return isShown && this.#lists.all.every(({isComplete}) => isComplete);
    }

    /// Sets whether the active document's list is being rendered.
    setListing(isListing) {
        this.#isListing = isListing;
    }

    /// Sets the current comment of the active document, `current` of its description.
    setCurrent(current) {
        this.#work.push([{current}]);
    }

    /// The node id of the current item; undefined when there is none.
    get currentId() {
        return this.#focus.currentId;
    }

    /// Number of comments in the visible list; null until it stands.
    get commentCount() {
        const isComplete = this.#remaining === 0 && !this.#isListing;
        return isComplete ? (this.#focus.list?.itemCount ?? null) : null;
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

    /// Handles a `scroll` message.
    scrollTo({element, row}) {
        this.#work.push([{scrollTo: element, row}]);
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

    /// Makes a change that may take space from the list. The current item stays in sight if it is.
    keepCurrentInSight(change) {
        const keep = this.#focus.seenCurrent();
        change();
        keep?.();
        this.#settleLists();
    }

    /// Marks a text in the visible list; '' removes the marks. `isMatch`: whether the current item
    /// is one of the matches. To be called again when the list has changed.
    markMatches(words, isMatch) {
        const {list, currentItem} = this.#focus;
        this.#marks.mark(words, list?.element, isMatch ? currentItem : null);
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
                this.#scrollTo(piece);
            } else if (piece.current !== undefined) {
                this.#focus.setCurrent(piece.current);
            } else {
                this.#remaining = piece.remaining;
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
        this.#lists.reset();
        this.#focus.reset();
        this.#mirror.reset();
        this.#remaining = 0;
    }

    #scrollTo({scrollTo, row}) {
        if (row) {
            this.#lists.withId(row.list)?.reveal(row);
        } else {
            this.#mirror.node(scrollTo)?.scrollIntoView({block: 'nearest'});
        }
    }

    // Without its sheets nothing stands where it will stand.
    get #isStyled() {
        return this.#sheets.length === 0;
    }

    #settleLists() {
        if (this.#isStyled) {
            this.#lists.settle();
        }
    }

    #settle() {
        if (!this.#isStyled) {
            return;
        }
        for (const page of this.#renamedPages) {
            namePage(page);
        }
        this.#renamedPages.clear();
        this.#lists.restore();
        this.#focus.settle();
        this.#lists.settle();
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
    }

    listCreated(element, sizes) {
        this.#lists.created(element, sizes);
    }

    listChanged(element, splice) {
        this.#lists.changed(element, splice);
    }

    sizesChanged(element, at, sizes) {
        this.#lists.sizesChanged(element, at, sizes);
    }

    statesChanged(element, record, before) {
        describeStates(element, record);
        this.#lists.statesChanged(element);
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
                this.#settle();
            }
        });
    }
}
