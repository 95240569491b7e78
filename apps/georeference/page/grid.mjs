// grid.mjs: the lines of the coordinates of a view, with their numbers at the edges.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { niceAbove } from './numbers.mjs';

const SPACE = 90; // least pixels between lines

// The multiples of a step between two values.
function multiples(from, to, step) {
    const [first, last] = [Math.ceil(Math.min(from, to) / step), Math.floor(Math.max(from, to) / step)];
    return Array.from({ length: Math.max(last - first + 1, 0) }, (_, i) => (first + i) * step);
}

function written(value, step) {
    return value.toFixed(Math.min(Math.max(0, -Math.floor(Math.log10(step) + 1e-9)), 12));
}

// {path, labels: [{x, y, text, anchor}]}
export function gridOf(viewport) {
    const { width, height } = viewport;
    const [left, top] = viewport.toPlane(0, 0);
    const [right, bottom] = viewport.toPlane(width, height);
    const [stepX, stepY] = [SPACE / viewport.scaleX, SPACE / viewport.scale].map(niceAbove);
    let path = '';
    const labels = [];
    for (const value of multiples(left, right, stepX)) {
        const x = Math.round(viewport.toScreen(value, 0)[0]) + 0.5;
        path += `M${x} 0V${height}`;
        labels.push({ x, y: 12, text: written(value, stepX), anchor: 'middle' });
    }
    for (const value of multiples(top, bottom, stepY)) {
        const y = Math.round(viewport.toScreen(0, value)[1]) + 0.5;
        path += `M0 ${y}H${width}`;
        labels.push({ x: 3, y: y + 4, text: written(value, stepY), anchor: 'start' });
    }
    return { path, labels: labels.filter(({ x, y }) => y > 24 || x > 60) };
}
