// fitting.mjs: the result of the engine for a document.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { isComplete } from './store.mjs';

const SLOW = 5;     // milliseconds that a fit may take between two frames
const PAUSE = 8;    // times its duration, between two searches for blunders of a hasty change

// The parts of a document that the fit depends on.
const INPUTS = ['points', 'options', 'kind', 'crs', 'file', 'unread'];

const STATES = {
    fitted: 'fitted',
    check: 'check point',
    dropped: 'dropped as a blunder',
    unfitted: 'not fitted',
    suspect: 'suspected blunder',
    pending: 'place missing',
};

function columns(positions) {
    return [positions.map(([x]) => x), positions.map(([, y]) => y)];
}

export function wordsOfState(state) {
    return STATES[state];
}

// A name within other text. Whatever its direction of writing, it does not change that of the text.
export function isolated(name) {
    return `\u2068${name}\u2069`;
}

// `report` is the engine's report as an object, or null; then `error` tells why.
export class Fitting {
    #document = null;
    #isQuick = false;
    #milliseconds = 0;  // that the last search for blunders took
    #searched = 0;      // when it ended
    #results = new Map();
    #numbers = [];      // in the table, of the complete points

    constructor(engine) {
        this.engine = engine;
        this.report = null;
        this.error = '';
    }

    // Fits anew if the document has changed in what the fit depends on. isHasty: another change follows at once. Then a
    // fit that takes long leaves out the search for blunders most of the time, and the last ones found stand.
    update(document, isHasty = false) {
        const isNew = this.#document === null || INPUTS.some((key) => this.#document[key] !== document[key]);
        if (!isNew && (isHasty || !this.#isQuick)) {
            return;
        }
        this.#document = document;
        const start = performance.now();
        const complete = document.points.filter(isComplete);
        this.#isQuick = isHasty && !document.options.robust && this.#milliseconds > SLOW
            && start < this.#searched + PAUSE * this.#milliseconds && complete.length === this.#results.size;
        this.#numbers = document.points.flatMap((point, index) => isComplete(point) ? [index + 1] : []);
        this.#fit(document, complete);
        if (!this.#isQuick) {
            this.#searched = performance.now();
            this.#milliseconds = this.#searched - start;
        }
    }

    #fit({ options, kind, crs, file, unread }, complete) {
        const { suspects, warnings } = this.report ?? { suspects: [], warnings: [] };
        this.#results = new Map();
        this.report = null;
        this.error = '';
        if (complete.length === 0) {
            return;
        }
        try {
            this.report = this.engine.fit(complete, { ...options, kind, crs, file, unread, quick: this.#isQuick });
            this.#keep(suspects, warnings);
            this.report.points.forEach((result, index) => this.#results.set(complete[index].id, result));
        } catch (error) {
            this.error = error.message;
        }
    }

    // The points are those of the search, which some warnings tell of.
    #keep(suspects, warnings) {
        if (this.#isQuick) {
            Object.assign(this.report, { suspects, warnings });
            suspects.forEach(({ point }) => (this.report.points[point - 1].suspect = true));
        }
    }

    // Why a file without points has no transformation. The fit of the document is made anew afterwards.
    failureWithoutPoints(file) {
        this.#document = null;
        try {
            return String(this.engine.fit([], { file }));
        } catch (error) {
            return error.message;
        }
    }

    // What the report tells of a point, or null.
    of(id) {
        return this.#results.get(id) ?? null;
    }

    // The number in the table of a point of the report, which counts the complete points alone.
    numberOf({ point }) {
        return this.#numbers[point - 1];
    }

    label(place) {
        return place.name ? `'${isolated(place.name)}'` : `point ${this.numberOf(place)}`;
    }

    stateOf(point) {
        if (!isComplete(point)) {
            return 'pending';
        }
        const result = this.of(point.id);
        if (result === null) {
            return point.check ? 'check' : 'unfitted';
        }
        return result.suspect && result.role !== 'dropped' ? 'suspect' : result.role;
    }

    // The text of a number as the report has it; of none, nothing.
    number(value) {
        return value === null || value === undefined ? '' : this.engine.number(value, 6);
    }

    // Images of source positions. null for one that has none, as all of them without a transformation, or that is
    // beyond the line to infinity.
    images(positions) {
        const { xs, ys, beyond } = this.engine.transform(...columns(positions));
        return positions.map((_, i) => beyond[i] === 0 && Number.isFinite(xs[i]) ? [xs[i], ys[i]] : null);
    }

    // Source positions of target positions, or null.
    sources(positions) {
        const { xs, ys } = this.engine.inverse(...columns(positions));
        return positions.map((_, i) => Number.isFinite(xs[i]) ? [xs[i], ys[i]] : null);
    }

    // The coefficients A to H that count from the origins, {coefficients, source, target}.
    frame() {
        const { local, original } = this.report.frames;
        return local === null ? { coefficients: original.coefficients, source: [0, 0], target: [0, 0] }
            : { coefficients: local.coefficients, source: local.source_origin, target: local.target_origin };
    }
}
