// test.mjs: the package in node. NUV_PACKAGE is the path of nuv1math.mjs, with its modules beside it, and NUV_PLAIN that of
// the module without vectors as it was built.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import process from 'node:process';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';

const { constants, FitError, load } = await import(process.env.NUV_PACKAGE);

const SOURCE = [[0, 0], [100, 0], [100, 80], [0, 80], [40, 30], [70, 60], [20, 50]];
const TARGET = SOURCE.map(([x, y]) => [1000 + 2 * x - 0.5 * y, 2000 + 0.5 * x + 2 * y]);

const libraries = { vectors: await load({ vectors: true }), plain: await load({ vectors: false }) };

function bits(value) {
    return new BigUint64Array(new Float64Array([value]).buffer)[0].toString(16).padStart(16, '0');
}

for (const [name, library] of Object.entries(libraries)) {
    test(`${name}: the C functions give the bits that C, C# and Pascal print`, () => {
        const used = library.using((arena, functions) => {
            const [x, y, xa, ya] = [[0, 100, 100, 0, 40], [0, 0, 80, 80, 30], [12.1, 110.7, 112.4, 9.8, 51.3],
                [7.9, 11.2, 92.6, 86.1, 38.5]].map((values) => arena.doubles(values));
            const [kind, coefs] = [arena.ints([0]), arena.record('TOmographicParams')];
            const omographic = constants.enumMethodUsed.METHOD_OMOGRAPHIC;
            assert.equal(functions.nuv_CalcCoefs(5, x, y, xa, ya, 1, omographic, kind, coefs), 1);
            return arena.read('TOmographicParams', coefs);
        });
        assert.equal(bits(used.dA), process.env.NUV_EXPECTED_BITS);
    });

    test(`${name}: a similarity is found, and goes both ways`, () => {
        const fit = library.fit(SOURCE, TARGET);
        assert.equal(fit.kind, 'conformal');
        assert.ok(fit.rms < 1e-9);
        assert.equal(fit.coefficients.dA, fit.coefficients.dE);
        assert.ok(Math.abs(fit.matrix[0][0] - 2) < 1e-12 && Math.abs(fit.matrix[1][0] - 0.5) < 1e-12);
        const [[x, y]] = fit.inverse(fit.transform([[12, 34]]));
        assert.ok(Math.hypot(x - 12, y - 34) < 1e-9);
        assert.match(String(fit), /^conformal transformation of 7 points, RMS /);
    });

    test(`${name}: a blunder is suspected`, () => {
        const target = TARGET.map(([x, y], i) => [x + (i === 3 ? 50 : 0.01 * (i % 2)), y - 0.01 * (i % 3)]);
        const fit = library.fit(SOURCE, target, { kind: 'affine' });
        assert.deepEqual(fit.points.map((point) => point.bSuspect), [0, 0, 0, 1, 0, 0, 0]);
        const robust = library.fit(SOURCE, target, { kind: 'affine', robust: true });
        assert.equal(robust.judgement.iDropped, 1);
        assert.ok(robust.rms < 0.05);
    });

    test(`${name}: check points are not fitted`, () => {
        const target = TARGET.map(([x, y], i) => [x + (i === 6 ? 5 : 0), y]);
        const fit = library.fit(SOURCE, target, { checks: [6] });
        assert.equal(fit.judgement.iChecks, 1);
        assert.ok(Math.abs(fit.residuals[6][0] + 5) < 1e-9);
    });
}

test('the module without vectors is the one that was built', async () => {
    const { applyDifference } = await import(new URL('difference.mjs', pathToFileURL(process.env.NUV_PACKAGE)));
    const read = (name) => readFileSync(new URL(name, pathToFileURL(process.env.NUV_PACKAGE)));
    const made = applyDifference(read('nuv1math-vectors.wasm'), read('nuv1math-plain.difference'));
    assert.equal(Buffer.compare(made, readFileSync(process.env.NUV_PLAIN)), 0);
});

test('both modules give the same bits', () => {
    const [one, other] = Object.values(libraries).map((library) => {
        const fit = library.fit(SOURCE, TARGET.map(([x, y], i) => [x + Math.sin(i), y + Math.cos(3 * i)]));
        return JSON.stringify([fit.judgement, fit.points]);
    });
    assert.equal(one, other);
});

test('a failure is an error that tells the reason', () => {
    const same = SOURCE.map(() => [1, 1]);
    assert.throws(() => libraries.plain.fit(same, TARGET), (error) => error instanceof FitError
        && error.reason === constants.enumReason.REASON_SOURCE_EQUAL
        && error.message === 'all source points are equal');
    const few = (options) => () => libraries.plain.fit(SOURCE.slice(0, 3), TARGET.slice(0, 3), options);
    assert.throws(few({ kind: 'omographic' }),
        { message: 'no omographic transformation: only 3 points: the omographic kind needs 4' });
    assert.throws(few({ checks: [0, 1] }), { message: 'only 1 point: the conformal kind needs 2' });
    assert.throws(few({ checks: [0, 1, 2] }), { message: 'no points: a transformation needs at least 2' });
    assert.deepEqual(few({ kind: 'affine' })().kinds.map((row) => row.reason),
        ['', '', 'only 3 points: the omographic kind needs 4']);
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET.slice(1)), /7 source points and 6 target points/);
    assert.throws(() => libraries.plain.fit([...SOURCE.slice(1), [NaN, 1]], TARGET), /source point 6 is not a pair/);
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET, { kind: 'cubic' }), /unknown kind cubic/);
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET, { checks: [7] }), /check point 7/);
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET, { kind: 5 }), /unknown kind 5/);
    for (const level of [NaN, -0.1, 1, '0.5', 0n, Symbol('often')]) {
        assert.throws(() => libraries.plain.fit(SOURCE, TARGET, { level }), /is not a number from 0 to 1/);
    }
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET, { local_origin: false }), /option local_origin is not/);
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET, 'affine'), /the options are not an object: affine/);
    assert.throws(() => libraries.plain.fit(SOURCE, TARGET, null), /the options are not an object: null/);
    assert.throws(() => libraries.plain.fit(null, TARGET), /source points are not an array/);
    assert.throws(() => libraries.plain.fit([null], TARGET), /source point 0 is not a pair/);
    const rows = [[1n, 2n], [Symbol('1'), 2], Object.create(null), { 0: 1, 1: 2, length: 2 }, '12',
        new DataView(new ArrayBuffer(16))];
    for (const row of rows) {
        assert.throws(() => libraries.plain.fit([row], [[1, 1]]), /^TypeError: source point 0 is not a pair of finite/);
    }
    const fit = libraries.plain.fit(SOURCE, TARGET);
    assert.throws(() => fit.transform([[1, 2], ['1', 2]]), /given point 1 is not a pair/);
    assert.throws(() => fit.inverse([[1, 2, 3]]), /given point 0 is not a pair/);
});

test('a point on the horizon has no image', () => {
    const fit = libraries.plain.fit([[0, 0], [1, 0], [0, 1], [1, 1]], [[0, 0], [0.5, 0], [0, 0.5], [1 / 3, 1 / 3]],
        { kind: 'omographic', localOrigin: false });
    fit.judgement.Fit.Coefs = { dA: 1, dB: 0, dC: 0, dD: 0, dE: 1, dF: 0, dG: 1, dH: 1 };
    assert.throws(() => fit.transform([[1, 1], [-1, 0]]), /^FitError: point 1 has no image$/);
    assert.throws(() => fit.inverse([[0.25, 0.25], [0.5, 0.5]]), /^FitError: point 1 has no source point$/);
});

test('an option that is on is any true value', () => {
    const [one, other] = [true, 'yes'].map((on) => libraries.plain.fit(SOURCE, TARGET, {
        kind: 'conformal', mirrored: on, robust: on,
    }));
    assert.deepEqual(other.judgement, one.judgement);
    assert.equal(one.judgement.Fit.bMirrored, 1);
});

test('an assertion report reaches its reader and stops the library', async () => {
    let shown = '';
    const library = await load({ vectors: false, report: (text) => { shown = text; } });
    const untransform = () => library.using((arena, functions) => {
        const coefs = arena.record('TAffineCoefs', { dA: 1, dB: 1, dC: 0, dD: 1, dE: 1, dF: 0 });
        functions.nuv_AffineUntransform(coefs, 1, 0, arena.doubles([0]), arena.doubles([0]));
    });
    assert.throws(untransform, WebAssembly.RuntimeError);
    assert.match(shown, /affine\.cpp:443 assertion failure:\niResult!= RET_IMPOSSIBLE$/);
    assert.throws(() => library.fit(SOURCE, TARGET), /the library has stopped/);
});

test('memory grows while it is used, and is released', async () => {
    const library = await load({ vectors: false });
    const many = Array.from({ length: 100000 }, (_, i) => [i % 317, Math.floor(i / 317)]);
    const before = library.functions.memory.buffer.byteLength;
    assert.equal(library.fit(many, many, { kind: 'affine', level: 0 }).kind, 'affine');
    const after = library.functions.memory.buffer.byteLength;
    assert.ok(after > before);
    library.fit(many, many, { kind: 'affine', level: 0 });
    assert.equal(library.functions.memory.buffer.byteLength, after);
});

test('values survive memory that grows', async () => {
    const library = await load();
    library.using((arena, functions) => {
        const [before, address] = [functions.memory.buffer, arena.doubles([1.5, -2.5])];
        const record = arena.record('TVector', { dX: 3.5, dY: -4.5 });
        arena.allocate(before.byteLength);
        assert.equal(before.byteLength, 0, 'the views of before are detached');
        assert.deepEqual([...new Float64Array(functions.memory.buffer, address, 2)], [1.5, -2.5]);
        assert.deepEqual(arena.read('TVector', record), { dX: 3.5, dY: -4.5 });
    });
});

test('memory that cannot grow is an error, and what was allocated before is released', async () => {
    const library = await load();
    const allocateAll = () => library.using((arena) => {
        for (;;) {
            arena.allocate(2 ** 29);
        }
    });
    assert.throws(allocateAll, /the library has no memory for 536870912 bytes/);
    const grown = library.functions.memory.buffer.byteLength;
    assert.throws(allocateAll, RangeError);
    assert.equal(library.functions.memory.buffer.byteLength, grown);
    assert.equal(library.fit(SOURCE, TARGET).kind, 'conformal');
});

test('a size that no memory has is refused', async () => {
    const library = await load();
    for (const size of [2 ** 32, 2 ** 32 + 8, -1, 1.5, NaN, '8', undefined]) {
        assert.throws(() => library.using((arena) => arena.allocate(size)), RangeError);
    }
});

test('an arena ends with its work', async () => {
    const library = await load();
    let kept;
    let record;
    assert.throws(() => library.using((arena) => {
        kept = arena;
        record = arena.record('TVector', { dX: 1 });
        throw new SyntaxError('of the caller');
    }), SyntaxError);
    const uses = [() => kept.doubles([1]), () => kept.read('TVector', record), () => kept.write('TVector', record, {})];
    for (const use of uses) {
        assert.throws(use, /the memory of the arena was released/);
    }
    await assert.rejects(library.using(async (arena) => {
        await null;
        arena.doubles([1]);
    }), /the memory of the arena was released/);
});

test('the upper half of the memory is used as the lower one', async () => {
    const library = await load();
    const usual = library.fit(SOURCE, TARGET);
    library.using((arena) => {
        for (let i = 0; i < 5; ++i) {
            arena.allocate(2 ** 29);
        }
        const address = arena.doubles([1.5, -2.5]);
        assert.ok(address > 2 ** 31);
        assert.deepEqual([...new Float64Array(library.functions.memory.buffer, address, 2)], [1.5, -2.5]);
        assert.equal(arena.read('TControlPoints', arena.record('TControlPoints', { vdX: address })).vdX, address);
        assert.deepEqual(library.fit(SOURCE, TARGET), usual);
    });
});

test('what is read of a record can be written, and has the fields that the record has', async () => {
    const { judgement } = libraries.plain.fit(SOURCE, TARGET);
    libraries.plain.using((arena) => {
        assert.deepEqual(arena.read('TJudgement', arena.record('TJudgement', judgement)), judgement);
        assert.throws(() => arena.record('TVector', { dx: 1 }), /TVector: dx is not one of dX, dY/);
        assert.throws(() => arena.record('Vector'), /there is no record Vector/);
    });
});

test('rows of points can be typed arrays, also of shared memory', () => {
    const rows = SOURCE.map((point) => {
        const row = new Float64Array(new SharedArrayBuffer(16));
        row.set(point);
        return row;
    });
    assert.deepEqual(libraries.plain.fit(rows, TARGET), libraries.plain.fit(SOURCE, TARGET));
});

test('a million calls leak nothing', async () => {
    const library = await load();
    const call = () => library.using((arena, functions) => {
        functions.nuv_ConformalParamsToCoefs(2, 0.5, 1, 1, arena.record('TConformalCoefs'));
    });
    call();
    const before = library.functions.memory.buffer.byteLength;
    for (let i = 0; i < 1000000; ++i) {
        call();
    }
    for (let i = 0; i < 1000; ++i) {
        library.fit(SOURCE, TARGET);
        assert.throws(() => library.fit(SOURCE, SOURCE.map(() => [1, 1])), FitError);
    }
    assert.equal(library.functions.memory.buffer.byteLength, before);
});
