// What may stand in the panel's frame as it is. Contents of comments are markup by design and come
// from strangers: an element or an attribute that is not named here keeps its place in the tree,
// but as a thing without meaning to a browser.

/// Where elements go that must not be what their names say.
export const kInertNamespace = 'urn:workbench:inert';

/// Put before the name of an attribute that is kept to be read, and not to work.
export const kKeptPrefix = 'wb-kept-';

const kElements = new Set(
    (
        'html head body h1 h2 h3 h4 h5 h6 p div span ul ol li dl dt dd table caption colgroup ' +
        'col thead tbody tfoot tr td th a b i u s em strong small big sub sup br hr wbr abbr ' +
        'acronym address article aside bdi bdo blockquote button center cite code del dfn dir ' +
        'figcaption figure font footer header hgroup ins kbd main mark nav nobr popup pre q rp rt ruby samp ' +
        'section strike time tt var'
    ).split(' '),
);

const kAttributes = new Set(
    (
        'class id title lang dir align valign abbr border cellpadding cellspacing colspan ' +
        'rowspan width height color face size start reversed nowrap bgcolor clear noshade span ' +
        'scope datetime annot-name page-item page-index titleid doc-view-addr localize preloader ' +
        'disabled-when-document-locked-for-write __l_o_c_a_l_e__t_o_k_e_n__'
    ).split(' '),
);

export function isSafeElement(name) {
    return kElements.has(name);
}

/// The name under which an attribute is set.
export function attributeNameInFrame(name) {
    return kAttributes.has(name) ? name : kKeptPrefix + name;
}

const kLoads = /(?:url|image|image-set|src|element|cross-fade)\(/i;

// What a comment's style may not do: win over the rules that keep it in its box by calling itself
// important, and load something.
function tame(style) {
    for (const property of [...style]) {
        const value = style.getPropertyValue(property);
        if (property.startsWith('--') || kLoads.test(value)) {
            style.removeProperty(property);
        } else if (style.getPropertyPriority(property)) {
            style.setProperty(property, value, '');
        }
    }
}

// Styles that say nothing of visibility and can do no harm are the most by far; they are not looked
// at.
const kPlainStyle = /^[^!(\\]*$/;
const kVisibility = /visibility/i;

/// Sets an inline style, and mirrors its visibility where the style sheets look for it. What is
/// written there is also kept as it came, when it had to be changed.
export function setInlineStyle(element, text) {
    element.setAttribute('style', text);
    element.removeAttribute(kKeptPrefix + 'style');
    element.removeAttribute('wb-visibility');
    const isPlain = kPlainStyle.test(text);
    if (isPlain && !kVisibility.test(text)) {
        return;
    }
    const {style} = element;
    if (!style) {
        return; // not an element that has looks
    }
    if (!isPlain) {
        tame(style);
        element.setAttribute(kKeptPrefix + 'style', text);
    }
    if (style.visibility) {
        element.setAttribute('wb-visibility', style.visibility);
    }
}

export function removeInlineStyle(element) {
    element.removeAttribute('style');
    element.removeAttribute(kKeptPrefix + 'style');
    element.removeAttribute('wb-visibility');
}
