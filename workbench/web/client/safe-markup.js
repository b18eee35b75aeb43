// Allow lists for the panel's frame. Contents of comments are markup by design and untrusted: an
// element or attribute outside the lists stays in the tree, but in a form that the browser ignores.

/// Namespace of elements that are not allowed, in which they have no effect.
export const kInertNamespace = 'urn:workbench:inert';

/// Name prefix of attributes that are not allowed; they are kept without effect, to be read back.
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

// Removes from an inline style what could override the rules that confine it (`!important`, custom
// properties) or load a resource.
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

// Most styles are harmless and do not set visibility; these are not parsed.
const kPlainStyle = /^[^!(\\]*$/;
const kVisibility = /visibility/i;

/// Sets an inline style, and mirrors its visibility in the attribute that the style sheets use. The
/// original text is kept when the style had to be changed.
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
        return; // an element without a style
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
