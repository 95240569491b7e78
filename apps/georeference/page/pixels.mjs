// pixels.mjs: where the pixels of an image are in the plane of a view.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

// Six numbers a, b, c, d, e, f: x = a p + b q + c, y = d p + e q + f for p pixels to the right and q down, from the
// outer corner of the image. The engine knows how each kind of file counts.
export function placeOfPixels(engine, kind) {
    const { xs, ys } = engine.fromPixels(kind, [0, 1, 0], [0, 0, 1]);
    return [xs[1] - xs[0], xs[2] - xs[0], xs[0], ys[1] - ys[0], ys[2] - ys[0], ys[0]];
}

// Whether y grows with the row of the pixel.
export function countsDown(place) {
    return place[4] > 0;
}

// The same of a world file, whose numbers are a, d, b, e and the place of the centre of the first pixel.
export function placeOfWorldFile([a, d, b, e, x, y]) {
    return [a, b, x - (a + b) / 2, d, e, y - (d + e) / 2];
}

// A number for each of the six lines of a world file. Fails with the line and what it has instead.
export function readWorldFile(name, text) {
    const lines = text.trimEnd().split(/\r?\n/);
    if (lines.length !== 6) {
        const line = Math.min(lines.length, 7);
        throw new Error(`${name}:${line}: a world file has six lines, this one has ${lines.length}`);
    }
    const place = lines.map((line, index) => {
        const value = Number(line);
        if (line.trim() === '' || !Number.isFinite(value)) {
            throw new Error(`${name}:${index + 1}: '${line}' is not a number`);
        }
        return value;
    });
    const [a, d, b, e] = place;
    if (a * e - b * d === 0) {
        throw new Error(`${name}: the first four numbers give the pixels no area`);
    }
    return place;
}

// The positions of the corners of an image, clockwise from the upper left one.
export function cornersOfImage(image, place) {
    const [a, b, c, d, e, f] = place;
    return [[0, 0], [image.width, 0], [image.width, image.height], [0, image.height]]
        .map(([p, q]) => [a * p + b * q + c, d * p + e * q + f]);
}
