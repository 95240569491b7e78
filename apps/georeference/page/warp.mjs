// warp.mjs: where an image lies in a view, and the mesh of the source in the target view.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const CELLS = 10; // of the mesh, across and down

// The product of two matrices of three rows.
function product(a, b) {
    return a.map(([x, y, z]) => [0, 1, 2].map((column) => x * b[0][column] + y * b[1][column] + z * b[2][column]));
}

// From positions that count from an origin to the screen.
function viewMatrix(viewport, [x, y]) {
    const [px, py] = viewport.toScreen(x, y);
    return [[viewport.scaleX, 0, px], [0, viewport.scaleY, py], [0, 0, 1]];
}

// From pixels to positions that count from an origin.
function pixelMatrix([a, b, c, d, e, f], [x, y]) {
    return [[a, b, c - x], [d, e, f - y], [0, 0, 1]];
}

// As a transformation of style sheets.
function styleOf(matrix) {
    const unit = Math.abs(matrix[2][2]) || 1;
    const [[a, b, c], [d, e, f], [g, h, w]] = matrix.map((row) => row.map((value) => value / unit));
    return `matrix3d(${[a, d, 0, g, b, e, 0, h, 0, 0, 1, 0, c, f, 0, w].join(',')})`;
}

// Of an image that has its place in the plane of the view.
export function stylePlaced(place, viewport) {
    const origin = [place[2], place[5]];
    return styleOf(product(viewMatrix(viewport, origin), pixelMatrix(place, origin)));
}

// Of the source image in the target view, by the engine's coefficients.
export function styleWarped(place, frame, viewport) {
    const { A, B, C, D, E, F, G, H } = frame.coefficients;
    const transformation = [[A, B, C], [D, E, F], [G, H, 1]];
    const fromPixels = product(transformation, pixelMatrix(place, frame.source));
    return styleOf(product(viewMatrix(viewport, frame.target), fromPixels));
}

// Source positions of the nodes of a mesh over the corners, row by row.
export function meshNodes([first, second, , fourth]) {
    const nodes = [];
    for (let row = 0; row <= CELLS; ++row) {
        for (let column = 0; column <= CELLS; ++column) {
            const [u, v] = [column / CELLS, row / CELLS];
            const along = (axis) => first[axis] + u * (second[axis] - first[axis]) + v * (fourth[axis] - first[axis]);
            nodes.push([along(0), along(1)]);
        }
    }
    return nodes;
}

// The cells of the warped mesh as {corners, row, column}, without those that reach beyond the line to infinity.
export function meshCells(images) {
    const cells = [];
    for (let row = 0; row < CELLS; ++row) {
        for (let column = 0; column < CELLS; ++column) {
            const at = row * (CELLS + 1) + column;
            const corners = [at, at + 1, at + CELLS + 2, at + CELLS + 1].map((index) => images[index]);
            if (!corners.includes(null)) {
                cells.push({ corners, row, column });
            }
        }
    }
    return cells;
}

// Paths on the screen: the lines within the mesh, and its outline.
export function meshPaths(cells, viewport) {
    let [mesh, outline] = ['', ''];
    for (const { corners, row, column } of cells) {
        const place = ([x, y]) => viewport.toScreen(x, y).map((value) => value.toFixed(1)).join(' ');
        const [a, b, c, d] = corners.map(place);
        const edge = (isOuter, from, to) => {
            const line = `M${from}L${to}`;
            isOuter ? outline += line : mesh += line;
        };
        edge(row === 0, a, b);
        edge(column === 0, a, d);
        if (column === CELLS - 1) {
            edge(true, b, c);
        }
        if (row === CELLS - 1) {
            edge(true, d, c);
        }
    }
    return [mesh, outline];
}
