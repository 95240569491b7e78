// drawing.mjs: elements of SVG, the symbols of points, arrows and names.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const SVG = 'http://www.w3.org/2000/svg';
const HEAD = 7;         // pixels, length of the head of an arrow
const WING = 0.45;      // of this length, half the width of the head
export const LETTER = 7;       // pixels, about the width of a letter
const LINE = 13;        // pixels, height of a name

const CIRCLE = 'M5 0A5 5 0 1 1-5 0A5 5 0 1 1 5 0M.6 0H-.6';

// What a point looks like, by its state. The shapes differ, not the colours alone.
export const SYMBOLS = {
    fitted: CIRCLE,
    unfitted: CIRCLE,
    suspect: 'M-7-7H7V7H-7ZM.6 0H-.6',
    dropped: 'M-7-7L7 7M-7 7L7-7',
    check: 'M0-8L7 5H-7Z',
    pending: 'M6 0A6 6 0 1 1-6 0A6 6 0 1 1 6 0',
};

export function svgElement(name, attributes = {}, parent = null) {
    const element = document.createElementNS(SVG, name);
    Object.entries(attributes).forEach(([key, value]) => element.setAttribute(key, value));
    parent?.append(element);
    return element;
}

// Sets an attribute only if it changes.
export function setAttribute(element, name, value) {
    if (element.getAttribute(name) !== value) {
        element.setAttribute(name, value);
    }
}

// The path of an arrow from (x, y).
export function arrowPath(x, y, dx, dy) {
    const length = Math.hypot(dx, dy);
    if (length < 0.5) {
        return '';
    }
    const head = Math.min(HEAD, length) / length;
    const [ux, uy] = [dx * head, dy * head];
    const place = (px, py) => `${px.toFixed(1)} ${py.toFixed(1)}`;
    const wing = (side) => place(x + dx - ux - side * uy * WING, y + dy - uy + side * ux * WING);
    const tip = place(x + dx, y + dy);
    return `M${place(x, y)}L${tip}M${wing(1)}L${tip}L${wing(-1)}`;
}

// Which names have room: each {x, y, text} gets `side`, 1 to the right of its point, -1 to the left, 0 for no room. The
// first ones come first.
export function placeNames(names, room) {
    const taken = [];
    for (const name of names) {
        const width = name.text.length * LETTER;
        name.side = [1, -1].find((side) => {
            const [low, high] = side > 0 ? [name.x + 9, name.x + 9 + width] : [name.x - 9 - width, name.x - 9];
            const isFree = low > 0 && high < room && !taken.some((box) => low < box.high && high > box.low
                && Math.abs(box.y - name.y) < LINE);
            if (isFree) {
                taken.push({ low, high, y: name.y });
            }
            return isFree;
        }) ?? 0;
    }
}
