// engine.mjs: fitpoints in a browser or in node. All numbers and texts come from its own sources as WebAssembly.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// const engine = await loadEngine(bytes)            bytes of georeference.wasm
// const engine = await loadPageEngine(document)     those in base64 in the element #engine-module of the page
//
// engine.read(name, text) -> {kind, crs, unread, points: [{name, line, x, y, X, Y, check}]}
//     Reads a file as fitpoints does. x, y: source; X, Y: target. kind: 'csv', 'qgis' or 'gcp'. text: a string, or the
//     bytes of the file in a Uint8Array, which may be no UTF-8.
// engine.fit(points, options) -> the object of `fitpoints --json`
//     Points as read gives them; all but the coordinates may be missing. Options, with their defaults: method 'auto'
//     (or 'richest', 'conformal', 'affine', 'omographic'), level 0.01, robust false, mirrored false, raw false, file
//     'points', kind 'csv', crs '', unread []. quick true: no search for blunders, which takes most of the time for 20
//     to 500 points. Then `level` is 0 and `suspects` is empty; all else is the same unless robust is true. Everything
//     below is about the last fit.
// engine.transform(xs, ys), engine.inverse(xs, ys) -> {xs, ys, beyond}
//     Arrays of numbers give Float64Arrays: target coordinates of source points, and back; NaN where there are none.
//     beyond (Uint8Array) is 1 for a source point beyond the line that an omographic transformation takes to infinity:
//     a drawn line must not cross from 0 to 1.
// engine.report(), engine.json() -> what fitpoints and fitpoints --json print
// engine.export(what) -> the text of a file. what: 'points' (QGIS), 'csv', 'world', 'gcp' or 'proj'
//     gcp: arguments of gdal_translate. csv: with names and check points; fitpoints reads it back with every bit.
// engine.toPixels(kind, xs, ys), engine.fromPixels(kind, xs, ys) -> {xs, ys}
//     Source coordinates of a kind of file -> position in the image: x to the right and y downwards from the outer
//     corner of its first pixel. And back.
// engine.number(value, digits) -> the text of a number with so many significant digits, as the report has them (6 for
//     residuals, 10 for the RMS); without digits, the fewest that give the same number back
//
// Whatever fails throws an EngineError with the message of fitpoints, "name:line: reason" if a line of a file is the
// reason. After a failure of fit there is no transformation: transform and inverse give NaN, the rest fails. After any
// other failure the last transformation is still there.
//
// Images. A page that places points on an image gives them the kind 'qgis': x is the column, y is minus the row, both
// from the outer corner of the first pixel, as toPixels and fromPixels convert them. Then y grows upwards as in a map,
// and a map is no mirror image of it. A target that is an image, too, takes the same coordinates. Points that were read
// from a file keep its kind: in a CSV file y is the row and (0, 0) is the centre of the first pixel. It grows
// downwards, so that a similarity needs mirrored: true; the warnings say so. The kind matters to the exports, not to
// the fit.

const INT = 4;
const DOUBLE = 8;
const OPTION_BITS = { mirrored: 1, raw: 2, robust: 4 }; // enumOption of engine.cpp
const KINDS = ['csv', 'qgis', 'gcp']; // enumFileKind of points.h
const EXPORTS = {
    points: 'exportPoints', csv: 'exportCsv', world: 'exportWorld', gcp: 'exportGcp', proj: 'exportProj',
};

export class EngineError extends Error {
    constructor(message) {
        super(message);
        this.name = 'EngineError';
    }
}

export async function loadEngine(bytes) {
    return new Engine(await WebAssembly.compile(bytes));
}

export function loadPageEngine(document) {
    const text = atob(document.querySelector('#engine-module').textContent);
    return loadEngine(Uint8Array.from(text, (character) => character.charCodeAt(0)));
}

function requireSameLength(xs, ys) {
    if (xs.length !== ys.length) {
        throw new EngineError(`${xs.length} values of x and ${ys.length} of y`);
    }
}

// A text that stands in one line.
function line(text) {
    return `${text ?? ''}`.replaceAll('\n', '?');
}

class Engine {
    #module;
    #functions; // of the instance
    #encoder = new TextEncoder();
    #decoder = new TextDecoder();
    #addresses = []; // to be released
    #input = null; // of the last fit that succeeded
    #fitted = false; // whether this instance has made it

    constructor(module) {
        this.#module = module;
        this.#start();
    }

    read(name, text) {
        return this.#run((functions) => {
            const [nameAt, nameLength] = this.#text(name);
            return JSON.parse(this.#result(functions.read(nameAt, nameLength, ...this.#text(text))));
        });
    }

    fit(points, options = {}) {
        const { method = 'auto', file = 'points', kind = 'csv', crs = '', unread = [], quick = false } = options;
        const texts = [method, file, kind, crs, ...points.map((point) => point.name), ...unread];
        const numbers = points.flatMap(({ x, y, X, Y }) => [x, y, X, Y]);
        const marks = points.flatMap((point, i) => [point.line ?? i + 1, point.check ? 1 : 0]);
        const bits = Object.keys(OPTION_BITS).filter((name) => options[name]).map((name) => OPTION_BITS[name]);
        const sum = bits.reduce((all, bit) => all + bit, 0);
        const level = quick ? 0 : options.level ?? NaN;
        const input = { texts: texts.map((text) => `${line(text)}\n`).join(''), numbers, marks, bits: sum, level };
        this.#input = null;
        const report = this.#run(() => {
            this.#fit(input);
            return JSON.parse(this.#result(this.#functions.reportJson()));
        });
        this.#input = input;
        return report;
    }

    transform(xs, ys) {
        return this.#images(xs, ys, false);
    }

    inverse(xs, ys) {
        return this.#images(xs, ys, true);
    }

    report() {
        return this.#ofFit((functions) => this.#result(functions.reportText()));
    }

    json() {
        return this.#ofFit((functions) => this.#result(functions.reportJson()));
    }

    export(what) {
        if (!Object.hasOwn(EXPORTS, what)) {
            throw new EngineError(`${what} is not one of ${Object.keys(EXPORTS)}`);
        }
        return this.#ofFit((functions) => this.#result(functions[EXPORTS[what]]()));
    }

    toPixels(kind, xs, ys) {
        return this.#pixels(kind, xs, ys, false);
    }

    fromPixels(kind, xs, ys) {
        return this.#pixels(kind, xs, ys, true);
    }

    number(value, digits = 0) {
        return this.#run((functions) => this.#result(functions.numberText(value, digits)));
    }

    #fit({ texts, numbers, marks, bits, level }) {
        const at = [this.#doubles(numbers), this.#ints(marks)];
        this.#functions.fit(...this.#text(texts), marks.length / 2, ...at, bits, level);
        this.#fitted = true;
    }

    // Work about the last fit. An instance that took the place of one that failed must make it again.
    #ofFit(work) {
        return this.#run((functions) => {
            if (!this.#fitted && this.#input !== null) {
                this.#fit(this.#input);
            }
            return work(functions);
        });
    }

    #images(xs, ys, inverse) {
        requireSameLength(xs, ys);
        if (this.#input === null) {
            const none = () => new Float64Array(xs.length).fill(NaN);
            return { xs: none(), ys: none(), beyond: new Uint8Array(xs.length) };
        }
        return this.#ofFit((functions) => {
            const [x, y, beyond] = [this.#doubles(xs), this.#doubles(ys), this.#allocate(xs.length)];
            functions.transform(xs.length, x, y, beyond, inverse);
            return {
                ...this.#pair(x, y, xs.length),
                beyond: new Uint8Array(functions.memory.buffer, beyond, xs.length).slice(),
            };
        });
    }

    #pixels(kind, xs, ys, back) {
        requireSameLength(xs, ys);
        if (!KINDS.includes(kind)) {
            throw new EngineError(`${kind} is not one of ${KINDS}`);
        }
        return this.#run((functions) => {
            const [x, y] = [this.#doubles(xs), this.#doubles(ys)];
            functions.convertPixels(xs.length, x, y, KINDS.indexOf(kind), back);
            return this.#pair(x, y, xs.length);
        });
    }

    // -----------------------------------------------------------------------------------------------------------------
    // The instance and its memory

    #start() {
        const unused = () => { // the C library would write a message of abort
            throw new Error('the module has stopped');
        };
        this.#functions = new WebAssembly.Instance(this.#module, {
            georeference: {
                fail: (start, length) => {
                    throw new EngineError(this.#string(start, length));
                },
            },
            nuv1math: {
                report: (start, length) => {
                    throw new Error(this.#string(start, length));
                },
            },
            wasi_snapshot_preview1: { fd_close: unused, fd_seek: unused, fd_write: unused },
        }).exports;
        this.#functions._initialize();
        this.#addresses = [];
        this.#fitted = false;
    }

    // Runs functions of the module and releases what was allocated for them. An exception leaves the instance in the
    // middle of its work, so that a new one takes its place.
    #run(work) {
        try {
            const result = work(this.#functions);
            this.#addresses.forEach((address) => this.#functions.release(address));
            this.#addresses = [];
            return result;
        } catch (error) {
            this.#start();
            throw error;
        }
    }

    #allocate(size) {
        const address = this.#functions.allocate(Math.max(size, 1));
        this.#addresses.push(address);
        return address;
    }

    // The address and the length of a text.
    #text(text) {
        const bytes = typeof text === 'string' ? this.#encoder.encode(text) : text;
        const address = this.#allocate(bytes.length);
        new Uint8Array(this.#functions.memory.buffer, address, bytes.length).set(bytes);
        return [address, bytes.length];
    }

    #doubles(values) {
        const address = this.#allocate(values.length * DOUBLE);
        new Float64Array(this.#functions.memory.buffer, address, values.length).set(values);
        return address;
    }

    #ints(values) {
        const address = this.#allocate(values.length * INT);
        new Int32Array(this.#functions.memory.buffer, address, values.length).set(values);
        return address;
    }

    #pair(x, y, count) {
        const copy = (address) => new Float64Array(this.#functions.memory.buffer, address, count).slice();
        return { xs: copy(x), ys: copy(y) };
    }

    #string(start, length) {
        return this.#decoder.decode(new Uint8Array(this.#functions.memory.buffer, start, length));
    }

    #result(length) {
        return this.#string(this.#functions.resultText(), length);
    }
}
