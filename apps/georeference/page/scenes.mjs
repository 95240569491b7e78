// scenes.mjs: what the two views show of a document and its transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { isComplete } from './store.mjs';
import { cornersOfImage, countsDown, placeOfPixels, placeOfWorldFile } from './pixels.mjs';
import { boxAround } from './viewport.mjs';
import { meshCells, meshNodes } from './warp.mjs';

const FIELDS = { source: ['x', 'y'], target: ['X', 'Y'] };
const NOTHING = { left: 0, right: 1000, low: 0, high: 1000 }; // what a view without contents shows
const DEGREES_BELOW = 0.05; // target units per source unit, below which small coordinates are taken as degrees
const NOISE = 1e-9;         // of the size of a view's own contents, below which residuals are rounding errors
const LARGE = 5;            // times the box of its own contents, up to which a view shows all of the warped outline

// The position of a point in its view, or null.
export function positionOf(point, side) {
    const [first, second] = FIELDS[side].map((field) => point[field]);
    return first === null || second === null ? null : [first, second];
}

// A position as the fields of a point.
export function asFields(side, position) {
    return Object.fromEntries(FIELDS[side].map((field, index) => [field, position[index]]));
}

export class Scenes {
    constructor(engine, fitting) {
        this.engine = engine;
        this.fitting = fitting;
    }

    // Looks at a document after its fit.
    look(document) {
        this.document = document;
        const { sourceImage, targetImage, place, kind } = document;
        const pixels = placeOfPixels(this.engine, kind);
        this.sourcePlace = pixels;
        this.targetPlace = place === null ? pixels : placeOfWorldFile(place);
        this.corners = { source: sourceImage && cornersOfImage(sourceImage, pixels),
            target: targetImage && cornersOfImage(targetImage, this.targetPlace) };
        const outline = this.corners.source ?? this.#cornersOfPoints();
        this.cells = outline === null || this.fitting.report === null ? []
            : meshCells(this.fitting.images(meshNodes(outline)));
    }

    #cornersOfPoints() {
        const box = boxAround(this.#positions('source'));
        return box === null ? null
            : [[box.left, box.low], [box.right, box.low], [box.right, box.high], [box.left, box.high]];
    }

    #positions(side) {
        return this.document.points.map((point) => positionOf(point, side)).filter((position) => position !== null);
    }

    // The scene of a view (see View.draw).
    of(side, chosen) {
        const { sourceImage, targetImage, points } = this.document;
        const isTarget = side === 'target';
        const shown = points.map((point, index) => this.#shown(point, index, side, chosen));
        const fitted = shown.filter(({ state, arrow }) => arrow !== null && ['fitted', 'suspect'].includes(state));
        return {
            points: shown,
            image: isTarget ? targetImage : sourceImage,
            place: isTarget ? this.targetPlace : this.sourcePlace,
            cells: isTarget ? this.cells : [],
            warped: isTarget && sourceImage !== null && this.fitting.report !== null
                ? { image: sourceImage, place: this.sourcePlace, frame: this.fitting.frame() } : null,
            longest: this.#longest(fitted, side),
            units: isTarget ? 'target units' : 'source units',
        };
    }

    // The length of the longest arrow; 0 if the arrows would only show how numbers are rounded.
    #longest(points, side) {
        const longest = points.reduce((most, { arrow }) => Math.max(most, Math.hypot(...arrow)), 0);
        const box = boxAround(this.#positions(side));
        return box !== null && longest > NOISE * sizeOf(box) ? longest : 0;
    }

    #shown(point, index, side, chosen) {
        const result = this.fitting.of(point.id);
        const arrow = result === null ? null : side === 'target' ? [result.dX, result.dY] : result.source_residual;
        return { id: point.id, number: index + 1, name: point.name, state: this.fitting.stateOf(point), arrow,
            chosen: point.id === chosen, place: positionOf(point, side) ?? this.predicted(point, side) };
    }

    // Where the transformation puts a point whose place in this view is missing, or null.
    predicted(point, side) {
        const other = positionOf(point, side === 'target' ? 'source' : 'target');
        if (other === null || this.fitting.report === null) {
            return null;
        }
        return side === 'target' ? this.fitting.images([other])[0] : this.fitting.sources([other])[0];
    }

    // ---- the frame of a view ----

    // The box around all that a view has.
    box(side) {
        const warped = side === 'target' ? this.cells.flatMap((cell) => cell.corners) : [];
        const own = boxAround([...this.corners[side] ?? [], ...this.#positions(side)]);
        const withWarped = boxAround([...this.corners[side] ?? [], ...this.#positions(side), ...warped]);
        return own === null ? NOTHING : sensible(withWarped, own);
    }

    // Whether y is drawn downwards: as the rows of the image; without one, if the transformation reverses the
    // orientation.
    isDown(side) {
        const { targetImage, place } = this.document;
        if (side === 'target') {
            return targetImage !== null && place === null && countsDown(this.targetPlace);
        }
        return this.corners.source === null ? this.#isReversed() : countsDown(this.sourcePlace);
    }

    #isReversed() {
        if (this.cells.length === 0) {
            return countsDown(this.sourcePlace);
        }
        const [a, b, , d] = this.cells[0].corners;
        return (b[0] - a[0]) * (d[1] - a[1]) - (b[1] - a[1]) * (d[0] - a[0]) < 0;
    }

    // How long a unit of x is drawn in relation to one of y: degrees of longitude shrink with the latitude.
    stretch(side) {
        const box = side === 'target' ? boxAround(this.#positions('target')) : null;
        if (box === null || this.document.targetImage !== null || !this.#hasDegrees(box)) {
            return 1;
        }
        return Math.max(Math.cos((box.low + box.high) / 2 * Math.PI / 180), 0.05);
    }

    #hasDegrees(box) {
        const source = boxAround(this.#positions('source'));
        const isInRange = box.left >= -180 && box.right <= 180 && box.low >= -90 && box.high <= 90;
        const isGeographic = /GEOGC|EPSG:4326/.test(this.document.crs);
        return isInRange && (isGeographic || (source !== null && this.document.points.filter(isComplete).length > 1
            && box.high - box.low < DEGREES_BELOW * (source.high - source.low)));
    }
}

function sizeOf({ left, right, low, high }) {
    return Math.max(right - left, high - low);
}

// A box that the line to infinity makes very large gives way to the box of the points.
function sensible(box, own) {
    return sizeOf(box) > LARGE * sizeOf(own) && sizeOf(own) > 0 ? own : box;
}
