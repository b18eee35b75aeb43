// Accessibility of the panel: roles, names and states that its markup lacks. They are added to the
// elements in the frame and are not part of the engine's tree.

import {text} from './texts.js';
import {kCurrent, valueOf} from './panel-mirror.js';

const kDisabled = 128;
const kExpanded = 512;
const kCollapsed = 1024;

/// Accessible names of a container's buttons, which have images only.
const kButtonTexts = {
    'expand-all': 'panel.expandAll',
    'collapse-all': 'panel.collapseAll',
    delete: 'panel.delete',
    'move-top': 'panel.previous',
    'move-bottom': 'panel.next',
};

function hasClass(record, name) {
    const classes = valueOf(record.attributes, 'class');
    return classes !== null && classes.split(' ').includes(name);
}

function nameButton(element, key) {
    element.setAttribute('aria-label', text(key));
    element.title = text(key);
}

function describeItem(element) {
    element.setAttribute('role', 'treeitem');
    element.setAttribute('aria-selected', 'false');
    element.tabIndex = -1;
}

function describePage(element) {
    element.setAttribute('role', 'treeitem');
    element.setAttribute('aria-expanded', 'true');
    element.tabIndex = -1;
}

const kDescriptions = {
    li(element, record) {
        if (valueOf(record.attributes, 'annot-name') !== null) {
            describeItem(element);
        } else if (valueOf(record.attributes, 'page-index') !== null) {
            describePage(element);
        }
    },
    ul(element, record) {
        if (valueOf(record.attributes, 'page-item') !== null) {
            element.setAttribute('role', 'none');
        } else if (hasClass(record, 'comments')) {
            element.setAttribute('role', 'group');
        }
    },
    div(element, record) {
        if (hasClass(record, 'results-container')) {
            element.setAttribute('role', 'tree');
            element.setAttribute('aria-label', text('panel.comments'));
            element.tabIndex = 0;
        } else if (hasClass(record, 'buttons-container')) {
            element.setAttribute('role', 'toolbar');
            element.setAttribute('aria-label', text('panel.actions'));
        } else if (valueOf(record.attributes, 'preloader') !== null) {
            element.setAttribute('role', 'img');
            element.setAttribute('aria-label', text('panel.loading'));
        } else if (hasClass(record, 'icon') && hasClass(record, 'document')) {
            // The caption of a page, above the headings of its comments.
            element.setAttribute('role', 'heading');
            element.setAttribute('aria-level', '2');
        }
    },
    // Contents have their own text direction, independent of the panel's language.
    p(element, record) {
        if (valueOf(record.attributes, 'dir') === null) {
            element.dir = 'auto';
        }
    },
    button(element, record) {
        element.type = 'button';
        const key = kButtonTexts[valueOf(record.attributes, 'id')];
        if (key) {
            nameButton(element, key);
        }
    },
};

export function describeElement(element, record) {
    kDescriptions[record.tag]?.(element, record);
}

/// Names a page item by its caption, without the text of its comments.
export function namePage(pageElement) {
    pageElement.setAttribute('aria-label', pageElement.firstElementChild?.textContent.trim() ?? '');
}

export function describeStates(element, record) {
    const {states} = record;
    if (element.getAttribute('role') === 'treeitem') {
        if (element.hasAttribute('page-index')) {
            element.setAttribute('aria-expanded', String((states & kCollapsed) === 0));
        } else {
            element.setAttribute('aria-selected', String((states & kCurrent) !== 0));
        }
    } else if (record.tag === 'button') {
        element.setAttribute('aria-disabled', String((states & kDisabled) !== 0));
    } else if (states & (kExpanded | kCollapsed)) {
        element.setAttribute('aria-expanded', String((states & kExpanded) !== 0));
    }
}

/// Rewrites the names in the present language.
export function translateRoles(frameDocument) {
    for (const [id, key] of Object.entries(kButtonTexts)) {
        for (const button of frameDocument.querySelectorAll(`.buttons-container > #${id}`)) {
            nameButton(button, key);
        }
    }
    const named = {tree: 'panel.comments', toolbar: 'panel.actions', img: 'panel.loading'};
    for (const [role, key] of Object.entries(named)) {
        for (const element of frameDocument.querySelectorAll(`div[role="${role}"]`)) {
            element.setAttribute('aria-label', text(key));
        }
    }
}
