// nuv1math.mjs: the library nuv1math and the judgement of control points, as WebAssembly, in node and in browsers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// All numbers are computed by the module of WebAssembly. This file only moves them into its memory and out of it.
// nuv1math.d.mts documents what it exports.

import * as constants from './interface.mjs';

const {
    enumChoice, enumMethod, enumMethodUsed, enumReason, enumRole, records, KINDS, REASON_TEXTS, USUAL_LEVEL,
} = constants;
export { constants };

const DOUBLE = 8;
const INT = 4;
const GREATEST_SIZE = 2 ** 32 - 1; // of a memory with addresses of 32 bits
const OPTIONS = ['kind', 'mirrored', 'localOrigin', 'robust', 'level', 'checks'];

// A module that uses vectors, and does nothing else.
const VECTOR_PROBE = new Uint8Array([0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0,
    65, 0, 253, 15, 253, 98, 11]);

export class FitError extends Error {
    constructor(reason, text) {
        super(text);
        this.name = 'FitError';
        this.reason = reason;
    }
}

// 'METHOD_AFFINE' of enumMethodUsed -> 'affine'.
function nameOf(enumeration, value, prefix) {
    const found = Object.keys(enumeration).find((name) => enumeration[name] === value);
    return found.slice(prefix.length).toLowerCase().replaceAll('_', ' ');
}

function kindName(kind) {
    return nameOf(enumMethodUsed, kind, 'METHOD_');
}

// Why there is no transformation of a kind for so many points, in the words of fitpoints.
function textOf(functions, reason, kind, count) {
    if (reason === enumReason.REASON_TOO_FEW_POINTS && count === 0) {
        return 'no points: a transformation needs at least 2';
    }
    if (reason === enumReason.REASON_TOO_FEW_POINTS) {
        const points = `${count} point${count === 1 ? '' : 's'}`;
        return `only ${points}: the ${kindName(kind)} kind needs ${functions.nuv_LeastPoints(kind)}`;
    }
    return REASON_TEXTS[reason] ?? nameOf(enumReason, reason, 'REASON_');
}

// A value in a message. Not every one can become a text.
function shown(value) {
    try {
        return String(value);
    } catch {
        return typeof value;
    }
}

// Fails unless the names of all values are known.
function requireNames(values, names, what) {
    const unknown = Object.keys(values).find((name) => !names.includes(name));
    if (unknown !== undefined) {
        throw new TypeError(`${what} ${unknown} is not one of ${names.join(', ')}`);
    }
}

// The bytes of a file beside this one.
async function readBytes(name) {
    const url = new URL(name, import.meta.url);
    if (url.protocol === 'file:') {
        const { readFile } = await import('node:fs/promises');
        return readFile(url);
    }
    const answer = await fetch(url);
    if (!answer.ok) {
        throw new Error(`${url}: ${answer.status} ${answer.statusText}`);
    }
    return new Uint8Array(await answer.arrayBuffer());
}

// The module with vectors, or the one without them, of which the package has what differs.
async function readModule(vectors) {
    const bytes = await readBytes('nuv1math-vectors.wasm');
    if (vectors) {
        return bytes;
    }
    const { applyDifference } = await import('./difference.mjs');
    return applyDifference(bytes, await readBytes('nuv1math-plain.difference'));
}

export async function load(options = {}) {
    const vectors = options.vectors ?? WebAssembly.validate(VECTOR_PROBE);
    const bytes = options.bytes ?? await readModule(vectors);
    return new Library(await WebAssembly.compile(bytes), options.report ?? ((text) => console.error(text)));
}

export class Library {
    constructor(module, report) {
        this.broken = null;
        const show = (start, length) => {
            this.broken = new TextDecoder().decode(new Uint8Array(this.functions.memory.buffer, start >>> 0, length));
            report(this.broken);
        };
        this.functions = new WebAssembly.Instance(module, { nuv1math: { report: show } }).exports;
        this.functions._initialize();
    }

    using(work) {
        if (this.broken !== null) {
            throw new Error(`the library has stopped: ${this.broken}`);
        }
        const arena = new Arena(this.functions);
        try {
            return work(arena, this.functions);
        } finally {
            if (this.broken === null) {
                arena.release();
            }
        }
    }

    fit(source, target, options = {}) {
        return this.using((arena, functions) => judge(this, arena, functions, source, target, options));
    }
}

// The size of a value in the memory of the module.
function sizeOf(kind) {
    return records[kind]?.size ?? (kind === 'double' ? DOUBLE : INT);
}

function fieldsOf(name) {
    if (!Object.hasOwn(records, name)) {
        throw new TypeError(`there is no record ${shown(name)}`);
    }
    return records[name].fields;
}

// Memory of the module. Memory that grows takes its views with it, so that views are made anew for every access.
// Addresses have no sign here; from the module those of the upper half come as negative numbers.
class Arena {
    constructor(functions) {
        this.functions = functions;
        this.addresses = [];
    }

    requireOpen() {
        if (this.addresses === null) {
            throw new Error('the memory of the arena was released');
        }
    }

    get memory() {
        this.requireOpen();
        return this.functions.memory.buffer;
    }

    allocate(size) {
        this.requireOpen();
        if (!(Number.isInteger(size) && size >= 0)) {
            throw new RangeError(`${shown(size)} is not a number of bytes`);
        }
        const address = size > GREATEST_SIZE ? 0 : this.functions.malloc(Math.max(size, 1)) >>> 0;
        if (address === 0) {
            throw new RangeError(`the library has no memory for ${size} bytes`);
        }
        this.addresses.push(address);
        return address;
    }

    release() {
        this.addresses.forEach((address) => this.functions.free(address));
        this.addresses = null;
    }

    doubles(values) {
        const address = this.allocate(values.length * DOUBLE);
        new Float64Array(this.memory, address, values.length).set(values);
        return address;
    }

    ints(values) {
        const address = this.allocate(values.length * INT);
        new Int32Array(this.memory, address, values.length).set(values);
        return address;
    }

    record(name, values = {}) {
        fieldsOf(name);
        const address = this.allocate(records[name].size);
        this.write(name, address, values);
        return address;
    }

    write(name, address, values) {
        const view = new DataView(this.memory);
        const fields = fieldsOf(name);
        requireNames(values, fields.map(([field]) => field), `${name}:`);
        for (const [field, kind, place, count] of fields) {
            const elements = count === 0 ? [values[field]] : values[field] ?? [];
            for (let i = 0, at = address + place; i < Math.max(count, 1); ++i, at += sizeOf(kind)) {
                if (kind === 'double') {
                    view.setFloat64(at, elements[i] ?? 0, true);
                } else if (kind in records) {
                    this.write(kind, at, elements[i] ?? {});
                } else {
                    view.setInt32(at, elements[i] ?? 0, true);
                }
            }
        }
    }

    read(name, address) {
        const view = new DataView(this.memory);
        const value = (kind, at) => kind in records ? this.read(kind, at)
            : kind === 'double' ? view.getFloat64(at, true)
            : kind === 'pointer' ? view.getUint32(at, true) : view.getInt32(at, true);
        return Object.fromEntries(fieldsOf(name).map(([field, kind, place, count]) => [field, count === 0
            ? value(kind, address + place)
            : Array.from({ length: count }, (_, i) => value(kind, address + place + i * sizeOf(kind)))]));
    }
}

// Fails unless all points are pairs of finite numbers.
function requirePairs(points, what) {
    if (!Array.isArray(points)) {
        throw new TypeError(`${what} points are not an array of pairs`);
    }
    const bad = points.findIndex((point) => !(Array.isArray(point) || ArrayBuffer.isView(point)) || point.length !== 2
        || !Array.from(point).every(Number.isFinite));
    if (bad >= 0) {
        throw new TypeError(`${what} point ${bad} is not a pair of finite numbers: ${shown(points[bad])}`);
    }
}

function columns(points) {
    return [points.map(([x]) => x), points.map(([, y]) => y)];
}

function roleOf(options, count) {
    const checks = options.checks ?? [];
    const roles = new Array(count).fill(enumRole.ROLE_FITTED);
    for (const index of checks) {
        if (!(Number.isInteger(index) && index >= 0 && index < count)) {
            throw new RangeError(`check point ${shown(index)} is not one of ${count} points`);
        }
        roles[index] = enumRole.ROLE_CHECK;
    }
    return roles;
}

function methodOf(options) {
    const kind = shown(options.kind ?? 'auto');
    const method = enumMethod[`ASK_${kind.toUpperCase()}`];
    if (method === undefined) {
        throw new TypeError(`unknown kind ${kind}: auto, richest, conformal, affine or omographic`);
    }
    return method;
}

function levelOf(options) {
    const level = options.level ?? USUAL_LEVEL;
    if (!(typeof level === 'number' && level >= 0 && level < 1)) {
        throw new RangeError(`level ${shown(level)} is not a number from 0 to 1`);
    }
    return level;
}

function failure(functions, reason, method, count) {
    if (method >= KINDS) { // no kind was asked for: the poorest one does not exist either
        return new FitError(reason, textOf(functions, reason, enumMethodUsed.METHOD_CONFORMAL, count));
    }
    return new FitError(reason, `no ${kindName(method)} transformation: ${textOf(functions, reason, method, count)}`);
}

function judge(library, arena, functions, source, target, options) {
    requirePairs(source, 'source');
    requirePairs(target, 'target');
    if (source.length !== target.length) {
        throw new TypeError(`${source.length} source points and ${target.length} target points`);
    }
    if (typeof options !== 'object' || options === null) {
        throw new TypeError(`the options are not an object: ${shown(options)}`);
    }
    requireNames(options, OPTIONS, 'option');
    const count = source.length;
    const [x, y, xa, ya] = [...columns(source), ...columns(target)].map((v) => arena.doubles(v));
    const points = arena.record('TControlPoints', { iCount: count, vdX: x, vdY: y, vdXa: xa, vdYa: ya });
    const asked = arena.record('TOptions', {
        Method: methodOf(options), bMirrored: Number(Boolean(options.mirrored)),
        bRaw: Number(!(options.localOrigin ?? true)), bRobust: Number(Boolean(options.robust)),
        dLevel: levelOf(options),
    });
    const result = arena.record('TJudgement');
    const size = records.TPointJudgement.size;
    const told = arena.allocate(count * size);
    const roles = roleOf(options, count);
    const reason = functions.nuv_Judge(points, arena.ints(roles), asked, result, told);
    if (reason !== enumReason.REASON_NONE) {
        throw failure(functions, reason, methodOf(options),
            roles.filter((role) => role === enumRole.ROLE_FITTED).length);
    }
    const each = Array.from({ length: count }, (_, i) => arena.read('TPointJudgement', told + i * size));
    return new Fit(library, arena.read('TJudgement', result), each);
}

export class Fit {
    #library;

    constructor(library, judgement, points) {
        this.#library = library;
        this.judgement = judgement;
        this.points = points;
    }

    get kind() {
        return kindName(this.judgement.Fit.Kind);
    }

    get coefficients() {
        return this.judgement.Fit.Coefs;
    }

    get choice() {
        return nameOf(enumChoice, this.judgement.Choice, 'CHOICE_');
    }

    get kinds() {
        return this.judgement.vKinds.slice(0, KINDS).map((row, kind) => ({
            ...row, kind: kindName(kind), reason: row.Reason === enumReason.REASON_NONE ? ''
                : textOf(this.#library.functions, row.Reason, kind, this.judgement.iFitted),
        }));
    }

    get matrix() {
        const c = this.judgement.Original;
        return this.judgement.bOriginal ? [[c.dA, c.dB, c.dC], [c.dD, c.dE, c.dF], [c.dG, c.dH, 1]] : null;
    }

    get rms() {
        return this.judgement.iFreedom > 0 ? this.judgement.dRms : null;
    }

    get residuals() {
        return this.points.map((point) => [point.dX, point.dY]);
    }

    get parameters() {
        return this.judgement.Shape.bExists ? this.judgement.Shape : null;
    }

    transform(points) {
        return this.#map('nuv_TransformPoint', 'image', points);
    }

    inverse(points) {
        return this.#map('nuv_InversePoint', 'source point', points);
    }

    #map(name, what, points) {
        requirePairs(points, 'given');
        return this.#library.using((arena, functions) => {
            const coefs = arena.record('TOmographicParams', this.judgement.Fit.Coefs);
            const origins = arena.record('TOrigins', this.judgement.Origins);
            const [from, to] = [arena.record('TVector'), arena.record('TVector')];
            return points.map(([x, y], index) => {
                arena.write('TVector', from, { dX: x, dY: y });
                const reason = functions[name](coefs, origins, from, to);
                if (reason !== enumReason.REASON_NONE) {
                    throw new FitError(reason, `point ${index} has no ${what}`);
                }
                const { dX, dY } = arena.read('TVector', to);
                return [dX, dY];
            });
        });
    }

    toString() {
        const rms = this.rms === null ? 'no redundancy' : `RMS ${this.rms.toPrecision(4)}`;
        const suspects = this.judgement.iSuspects;
        return `${this.kind} transformation of ${this.judgement.iFitted} points, ${rms}`
            + (suspects > 0 ? `, ${suspects} suspected blunder${suspects > 1 ? 's' : ''}` : '');
    }
}
