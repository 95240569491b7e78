// engine_test.mjs: the page computes what fitpoints prints.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// NUV_GEOREFERENCE_MODULE is the module, NUV_FITPOINTS the program of this system, NUV_CONTROL_POINTS a directory of
// files of control points, which need not exist.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { env } from 'node:process';
import { after, test } from 'node:test';
import { fileURLToPath } from 'node:url';

import { EngineError, loadEngine } from './engine.mjs';

// The instances that the engine makes, to see their memory.
const instances = [];
WebAssembly.Instance = class extends WebAssembly.Instance {
    constructor(...parts) {
        super(...parts);
        instances.push(this);
    }
};

const METHODS = ['auto', 'richest', 'conformal', 'affine', 'omographic'];
const SAMPLE = fileURLToPath(new URL('../fitpoints/sample.csv', import.meta.url));
const engine = await loadEngine(readFileSync(env.NUV_GEOREFERENCE_MODULE));
const directory = mkdtempSync(join(tmpdir(), 'georeference-'));
after(() => rmSync(directory, { recursive: true }));

// What fitpoints prints: {out, error}, one of which is empty.
function fitpoints(file, ...options) {
    const { status, stdout, stderr } = spawnSync(env.NUV_FITPOINTS, [file, ...options], { encoding: 'utf8' });
    return status === 0 ? { out: stdout, error: '' } : { out: '', error: stderr.trimEnd().replace('fitpoints: ', '') };
}

// The same of the engine.
function attempt(work) {
    try {
        return { out: work(), error: '' };
    } catch (error) {
        assert.ok(error instanceof EngineError, error);
        return { out: '', error: error.message };
    }
}

function fitFile(file, options = {}) {
    const { points, ...about } = engine.read(file, readFileSync(file));
    return engine.fit(points, { ...options, ...about, file });
}

function write(name, text) {
    const file = join(directory, name);
    writeFileSync(file, text);
    return file;
}

// Angles, which come from atan2 of the C library. The libraries differ by one or two units in the last place.
const OF_LIBRARY = /(?<="(?:rotation|skew)": |(?:rotation|skew) *= |\+theta=)[-+.e\d]+/g;

function assertSame(actual, expected, what) {
    assert.equal(actual.replace(OF_LIBRARY, '#'), expected.replace(OF_LIBRARY, '#'), what);
    const [ours, theirs] = [actual, expected].map((text) => (text.match(OF_LIBRARY) ?? []).map(Number));
    ours.forEach((value, i) => assert.ok(Math.abs(value - theirs[i]) <= 2 * Number.EPSILON * Math.abs(theirs[i]),
        `${what}: ${value} and ${theirs[i]}`));
}

// `count` points of an affine transformation with errors; index 3 is a blunder.
function makePoints(count) {
    return Array.from({ length: count }, (_, i) => {
        const [x, y] = [(i * 37) % 101, (i * 61) % 89];
        return { name: `p${i}`, x, y, X: 2 * x - y + 0.01 * ((i * 7) % 11) + (i === 3 ? 20 : 0), Y: x + 2 * y };
    });
}

const files = [SAMPLE, ...existsSync(env.NUV_CONTROL_POINTS) ? readdirSync(env.NUV_CONTROL_POINTS)
    .filter((name) => name.endsWith('.csv')).map((name) => join(env.NUV_CONTROL_POINTS, name)) : []];

test(`the reports of ${files.length} files are those of fitpoints, every bit`, () => {
    for (const file of files) {
        const ways = [...METHODS.map((method) => ({ method })), { method: 'auto', robust: true },
            { method: 'affine', raw: true }, { method: 'conformal', mirrored: true }];
        for (const way of ways) {
            const flags = Object.keys(way).filter((name) => name !== 'method').map((name) => `--${name}`);
            const expected = fitpoints(file, '--json', '--method', way.method, ...flags);
            const actual = attempt(() => (fitFile(file, way), engine.json()));
            assert.equal(actual.error, expected.error);
            assertSame(actual.out, expected.out, `${file} ${JSON.stringify(way)}`);
        }
    }
});

test('the object of a fit has the bits of the JSON', () => {
    assert.deepEqual(fitFile(SAMPLE), JSON.parse(fitpoints(SAMPLE, '--json').out));
});

test('the level of the test of blunders', () => {
    const rows = makePoints(12).map(({ x, y, X, Y }) => `${x},${y},${X},${Y}\n`);
    const file = write('level.csv', `x,y,X,Y\n${rows.join('')}`);
    for (const level of [0.5, 1e-30]) {
        fitFile(file, { level });
        assertSame(engine.json(), fitpoints(file, '--json', '--level', level).out, level);
    }
    assert.throws(() => fitFile(file, { level: 1 }), new EngineError('level: 1 is not between 0 and 1'));
});

test('the report as text', () => {
    for (const method of METHODS) {
        fitFile(SAMPLE, { method });
        assertSame(engine.report(), fitpoints(SAMPLE, '--method', method).out, method);
    }
});

test('exports are those of fitpoints, and so are their failures', () => {
    const gcp = write('gcp.txt', '-gcp 1 2 100 200\n-gcp 50 2.5 150 200\n-gcp 1 70 100 130\n');
    const qgis = write('q.points', '#CRS: EPSG:2056\nmapX,mapY,sourceX,sourceY,enable\n'
        + '100,200,1,-2,1\n150,200,50,-2.5,1\n100,130,1,-70,1\n150.5,131,51,-69,0\n');
    for (const file of [SAMPLE, gcp, qgis]) {
        for (const method of ['auto', 'affine', 'conformal']) {
            fitFile(file, { method });
            for (const what of ['points', 'world', 'gcp', 'proj']) {
                const expected = fitpoints(file, '--method', method, `--${what}`, '-');
                const actual = attempt(() => engine.export(what));
                assert.equal(actual.error, expected.error);
                assertSame(actual.out, expected.out, `${file} ${method} ${what}`);
            }
        }
    }
});

test('the CSV file has the points with every bit, names and check points', () => {
    const points = makePoints(6).map((point) => ({ ...point, x: point.x / 3, Y: -point.Y / 7 }));
    Object.assign(points[1], { name: ' "a", b; \u00e9#', check: true });
    Object.assign(points[2], { name: '#', x: -0, X: 5e-324, y: 1.7976931348623157e+308 / 1e200 });
    for (const kind of ['csv', 'qgis', 'gcp']) {
        engine.fit(points, { kind, crs: '#CRS: EPSG:2056' });
        const again = engine.read('again.csv', engine.export('csv'));
        assert.equal(again.kind, kind === 'csv' ? 'csv' : 'qgis');
        assert.deepEqual([again.crs, again.unread], ['#CRS: EPSG:2056', []]);
        points.forEach(({ name, x, y, X, Y, check = false }, i) => assert.deepEqual(again.points[i],
            { name, line: i + 3, x, y: kind === 'gcp' ? 0 - y : y, X, Y, check }));
        assert.equal(fitpoints(write('again.csv', engine.export('csv'))).error, '');
    }
});

const HEAD = 'x,y,X,Y\n';
const BAD_FILES = ['', '# a\n\n', HEAD, '# c\nx,y,z,t\n0,0,0,0\n', 'Y;x;y;h\n', 'mapX,sourceX,sourceY\n', 'x,x,y,X,Y\n',
    'name|x|y|X|Y\n', 'x  y  X  Y\n0 0 0 0\n', `${HEAD}0;0;0;0\n`, 'x\ty\tX\tY\n1,5,2,5,3,5,4,5\n',
    'x;y;X;Y\n1,5;2;3;4\n1.5;2;3;4\n', 'x;y;X;Y\n1;2;3.5;1,234\n', 'x,y,X,Y,check\n0,0,0,0,yes\n', '-gcp 1 2 3\n',
    '-gcp 1 2 3 4\n-gcp 1 2 3m 4\n', '-gcp 1 2 3 4 5 6\n', '-gcp 1 2 3 4\nmap.tif\n', '1,2,3,4\n5,6,7,8\n',
    `${HEAD}1,2,three,4\n`, `${HEAD}0x10,2,3,4\n`, `${HEAD}+-1,2,3,4\n`, `${HEAD}1,,3,4\n`, `${HEAD}1,1,1,nan\n`,
    `${HEAD}1,1,-inf,1\n`, `${HEAD}1e999,1,1,1\n`, `${HEAD}1e-999,1,1,1\n`, `${HEAD}1e,1,1,1\n`, `${HEAD}.,1,1,1\n`,
    `${HEAD}"1,2,3,4\n5,6,7,8\n`, `${HEAD}1,2"2,3,4\n`, `${HEAD}1,2,3,4\r5,6,7,8\n`, `${HEAD}1,2,3,4\0\n`,
    Buffer.from('name,x,y,X,Y\n\xE9t\xE9,1,2,3,4\n', 'latin1'), 'name,x,y,X,Y\na\x1B[2Jb,1,2,3,4\n',
    `${HEAD}${'\u00e9'.repeat(60)},2,3,4\n`, 'mapX,mapY,sourceX,sourceY,enable\n0,0,0,0,2\n', `${HEAD}1,2,3,4\n`,
    `${HEAD}7,7,0,0\n7,7,1,0\n7,7,1,1\n`, `${HEAD}0,0,7,7\n1,0,7,7\n`,
    `${HEAD}-1e308,0,0,0\n1e308,0,1,0\n0,1e308,1,1\n`,
    `${HEAD}1,2,3,4${' '.repeat(70000)}\n`];

test(`${BAD_FILES.length} bad files get the messages of fitpoints`, () => {
    BAD_FILES.forEach((text, i) => {
        const file = write(`bad${i}.csv`, text);
        const { error } = fitpoints(file);
        assert.notEqual(error, '');
        const shown = attempt(() => fitFile(file)).error.replace(/[\0-\x1f\x7f]/g, '?'); // as fitpoints prints it
        assert.equal(shown, Buffer.isBuffer(text) ? error.replaceAll('\xE9', '\ufffd') : error);
    });
});

test('files that are read alike', () => {
    const texts = ['\ufeffname,x,y,X,Y\r\n\r\n# c\r\n"a ""b""","1", 2 ,+3,4e0\r\n\u00e9,5,.5,-7,8.\r\n',
        'x;y;X;Y;h\n0,5;0;100;7;1\n1;0;101;7;"2;3"\n',
        'gdal_translate -gcp 0 0 100 200 -gcp 1 0 101 200 7.5 \\\n -gcp 1 1 9 9\n',
        `${HEAD}0.1,1e-310,123456789012345678901234567890,4.9e-324\n1,2.2250738585072011e-308,3,4\n`];
    texts.forEach((text, i) => {
        const file = write(`good${i}.csv`, text);
        const expected = JSON.parse(fitpoints(file, '--json').out);
        const read = engine.read(file, text);
        assert.equal(read.kind, expected.format);
        assert.deepEqual(read.unread, expected.columns_not_read);
        read.points.forEach(({ name, line, x, y, X, Y }, k) => {
            const point = expected.points[k];
            assert.deepEqual([name, line, x, y, X, Y], [point.name, point.line, point.x, point.y, point.X, point.Y]);
        });
        fitFile(file);
        assertSame(engine.report(), fitpoints(file).out);
    });
});

test('a failure of reading or saving leaves the last fit', () => {
    fitFile(SAMPLE);
    const report = engine.report();
    const count = instances.length;
    assert.throws(() => engine.read('bad.csv', 'x,y\n'), EngineError);
    assert.throws(() => engine.export('world'), /a world file cannot hold an omographic transformation/);
    assert.equal(instances.length, count + 2);
    assert.equal(engine.report(), report);
});

test('after a fit that fails there is none', () => {
    fitFile(SAMPLE);
    assert.throws(() => engine.fit(makePoints(1), { file: 'f' }),
        new EngineError('f: only 1 point: the conformal kind needs 2'));
    assert.throws(() => engine.report(), new EngineError('georeference: there is no transformation'));
    const { xs, ys, beyond } = engine.transform([1, 2], [3, 4]);
    assert.deepEqual([...xs, ...ys, ...beyond], [NaN, NaN, NaN, NaN, 0, 0]);
    assert.throws(() => engine.fit([]), /no points: a transformation needs at least 2/);
});

test('points that no file could have are refused', () => {
    const points = makePoints(5);
    const withOne = (change) => points.map((point, i) => i === 2 ? { ...point, ...change } : point);
    assert.throws(() => engine.fit(withOne({ X: NaN }), { file: 'f' }),
        new EngineError("f: 'p2': nan is not a finite number"));
    assert.throws(() => engine.fit(withOne({ y: undefined })), EngineError);
    assert.throws(() => engine.fit(withOne({ name: 'a\x01' })), /the name is not plain UTF-8 text/);
    assert.throws(() => engine.fit(points, { method: 'best' }), new EngineError("method: 'best' is not a method"));
    assert.throws(() => engine.fit(points, { kind: 'tiff' }), new EngineError("kind: 'tiff' is not a kind of file"));
    assert.throws(() => engine.fit(points, { crs: 'EPSG:2056' }),
        new EngineError("crs: 'EPSG:2056' does not start with #CRS"));
    assert.throws(() => engine.export('tiff'), EngineError);
    assert.throws(() => engine.export('toString'), EngineError);
    engine.fit(points);
    for (const convert of [engine.transform, engine.inverse, (...columns) => engine.toPixels('csv', ...columns)]) {
        assert.throws(() => convert.call(engine, [1, 2, 3], [1]), new EngineError('3 values of x and 1 of y'));
    }
});

test('images and source points are those of fitpoints', () => {
    fitFile(SAMPLE);
    const { points } = JSON.parse(engine.json());
    const given = points.map(({ x, y }) => [x * 3 - 1000, y / 7]);
    const table = write('table.csv', `x,y\n${given.map((pair) => pair.join()).join('\n')}\n`);
    const rows = fitpoints(SAMPLE, '--apply', table).out.trimEnd().split('\n').slice(1);
    const { xs, ys } = engine.transform(given.map(([x]) => x), given.map(([, y]) => y));
    assert.deepEqual(rows.map((row) => row.split(',').map(Number)), given.map(([x, y], i) => [x, y, xs[i], ys[i]]));
    const back = engine.inverse(xs, ys);
    given.forEach(([x, y], i) => assert.ok(Math.hypot(back.xs[i] - x, back.ys[i] - y) < 1e-6));
});

test('a point beyond the line that goes to infinity is told, and an image beyond a double is none', () => {
    const image = (x, y) => [x / (1 - x / 4), y / (1 - x / 4)]; // x = 4 goes to infinity
    engine.fit([[0, 0], [1, 0], [0, 1], [1, 1], [2, 1]].map(([x, y]) => {
        const [X, Y] = image(x, y);
        return { x, y, X, Y };
    }), { method: 'omographic', raw: true });
    const { xs, beyond } = engine.transform([0, 3, 5], [0, 0, 0]);
    assert.deepEqual([...beyond], [0, 0, 1]);
    assert.ok(Math.abs(xs[1] - 12) < 1e-6 && Math.abs(xs[2] + 20) < 1e-6);
    assert.deepEqual([...engine.inverse([12, -20], [0, 0]).beyond], [0, 1]);
    engine.fit(makePoints(5), { method: 'affine' });
    const tooFar = engine.transform([1e308], [-1e308]); // X would be infinite, and Y finite
    assert.deepEqual([tooFar.xs[0], tooFar.ys[0]], [NaN, NaN]);
});

test('the quick fit leaves out the search for blunders and nothing else', () => {
    const points = makePoints(30);
    const full = engine.fit(points);
    assert.equal(full.suspects[0].point, 4);
    assert.match(full.warnings.join(), /^without the suspected blunders the affine kind would be taken: [^,]*, [^,]*$/);
    const quick = engine.fit(points, { quick: true });
    assert.deepEqual(quick, {
        ...full, level: 0, suspects: [], warnings: [], points: full.points.map((point) => ({ ...point, suspect: false })),
    });
});

test('pixels of each kind of file', () => {
    const pixels = { csv: [10.5, 20.5], qgis: [10, -20], gcp: [10, 20] };
    for (const [kind, [x, y]] of Object.entries(pixels)) {
        const { xs, ys } = engine.toPixels(kind, [10], [20]);
        assert.deepEqual([xs[0], ys[0]], [x, y]);
        const back = engine.fromPixels(kind, xs, ys);
        assert.deepEqual([back.xs[0], back.ys[0]], [10, 20]);
    }
    assert.throws(() => engine.toPixels('tiff', [1], [2]), EngineError);
});

test('numbers are written as in the reports', () => {
    assert.equal(engine.number(0.1 + 0.2), '0.30000000000000004');
    assert.equal(engine.number(-1234567.5, 6), '-1.23457e+06');
    assert.equal(engine.number(1 / 3, 17), '0.33333333333333331');
    assert.equal(engine.number(NaN), 'nan');
});

test('a lack of memory is told', async () => {
    const large = 0xFFF00000;
    for (const allocating of [({ allocate }) => allocate(large), ({ read }) => read(0, large, 0, 0)]) {
        await loadEngine(readFileSync(env.NUV_GEOREFERENCE_MODULE));
        assert.throws(() => allocating(instances.at(-1).exports), new EngineError('georeference: not enough memory'));
    }
});

test('100000 fits leave the memory as it was, and so do 10000 with their reports', () => {
    const points = makePoints(5);
    assert.throws(() => engine.fit([]), EngineError); // which makes an instance
    const used = instances.at(-1);
    engine.fit(points);
    const count = instances.length;
    const { memory, allocate, fit } = used.exports;
    const size = memory.buffer.byteLength;
    for (let i = 0; i < 10000; ++i) {
        engine.fit(points, { quick: true });
        engine.report();
    }
    const texts = new TextEncoder().encode(`affine\nfile\ncsv\n\n${'name\n'.repeat(points.length)}`);
    const sizes = [texts.length, 32 * points.length, 8 * points.length];
    const [textsAt, numbersAt, marksAt] = sizes.map((bytes) => allocate(bytes));
    new Uint8Array(memory.buffer, textsAt, texts.length).set(texts);
    new Float64Array(memory.buffer, numbersAt, 4 * points.length).set(points.flatMap(({ x, y, X, Y }) => [x, y, X, Y]));
    new Int32Array(memory.buffer, marksAt, 2 * points.length).fill(0);
    for (let i = 0; i < 100000; ++i) {
        fit(textsAt, texts.length, points.length, numbersAt, marksAt, 0, 0.01);
    }
    assert.equal(memory.buffer.byteLength, size);
    assert.equal(instances.length, count);
});
