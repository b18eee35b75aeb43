// Icons of buttons: line drawings of 16 by 16 units in the colour of the surrounding text.

const kNamespace = 'http://www.w3.org/2000/svg';

const kPaths = {
    open: 'M1.5 13V3.5h4l1.5 2h6V7M1.5 13l2-6h11l-2 6z',
    save: 'M2.5 2.5h9l2 2v9h-11zM5 2.5v4h5v-4M4.5 13.5v-4h7v4',
    undo: 'M6 3L2.5 6.5 6 10M2.5 6.500H10a3.5 3.5 0 0 1 0 7H6',
    redo: 'M10 3l3.5 3.500L10 10M13.5 6.500H6a3.5 3.5 0 0 0 0 7h4',
    select: 'M3.5 2l9 5.5-4 1-2 4z',
    note: 'M2.5 2.500h11v8h-5l-3.5 3v-3h-2.500zM5 5.500h6M5 7.500h4',
    highlight: 'M9.5 2.500l4 4-5.5 5.500h-3l-1-1v-3zM2 14.500h12M6.5 5.500l4 4',
    underline: 'M4.5 2.500v5a3.5 3.5 0 0 0 7 0v-5M3 13.500h10',
    strikeout:
        'M11 4.500C11 3.300 9.7 2.500 8 2.500S5 3.400 5 4.700C5 7.500 11 8 11 11c0 1.500-1.300 2.500-3 2.500s-3-1-3-2.300M2.500 8h11',
    rectangle: 'M2.5 4h11v8.500h-11z',
    oval: 'M8 3.500c3.3 0 6 2 6 4.500s-2.7 4.5-6 4.5-6-2-6-4.5 2.7-4.5 6-4.500z',
    edit: 'M11 2.500l2.5 2.5-8 8-3.5 1 1-3.500zM9.5 4l2.5 2.5',
    remove: 'M2.5 4.500h11M6 4.500v-2h4v2M4 4.500l.7 9h6.6l.7-9M6.7 7v4M9.3 7v4',
    split: 'M1.5 3h13v10h-13zM8 3v10',
    up: 'M4 10l4-4 4 4',
    down: 'M4 6l4 4 4-4',
    minus: 'M3.5 8h9',
    plus: 'M3.5 8h9M8 3.500v9',
    fitWidth: 'M1.5 3v10M14.5 3v10M3.5 8h9M5.5 6l-2 2 2 2M10.5 6l2 2-2 2',
    close: 'M4 4l8 8M12 4l-8 8',
    check: 'M3 8.500l3.5 3.500L13 4.5',
};

/// Creates an icon without an accessible name, which its button has.
export function icon(name) {
    const picture = document.createElementNS(kNamespace, 'svg');
    picture.setAttribute('viewBox', '0 0 16 16');
    picture.setAttribute('class', 'picture');
    picture.setAttribute('aria-hidden', 'true');
    const path = document.createElementNS(kNamespace, 'path');
    path.setAttribute('d', kPaths[name]);
    picture.append(path);
    return picture;
}
