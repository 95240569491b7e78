// types_test.mts: a program that the compiler of TypeScript checks. It prints the bits of a coefficient.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { constants, FitError, load } from 'nuv1math';
import type { Fit, FitOptions, Kind, Library, Point, Records } from 'nuv1math';

declare const console: { log(text: string): void; error(text: string): void }; // the types need none of a browser

const source: Point[] = [[0, 0], [100, 0], [100, 80], [0, 80], [40, 30]];
const target: Point[] = [[12.1, 7.9], [110.7, 11.2], [112.4, 92.6], [9.8, 86.1], [51.3, 38.5]];
const options: FitOptions = { kind: 'omographic', localOrigin: false, checks: [], level: constants.USUAL_LEVEL };

const library: Library = await load({ vectors: false, report: (text: string) => console.error(text) });
const fit: Fit = library.fit(source, target, options);
const kind: Kind = fit.kind;
const [x, y]: Point = fit.inverse(fit.transform([[50, 50]]))[0];
const rms: number = fit.rms ?? 0;
const leastPoints: number = library.functions.nuv_LeastPoints(constants.enumMethodUsed.METHOD_AFFINE);
const reasons: string[] = fit.kinds.map((row) => row.reason);
const sum: number = library.using((arena, functions) => {
    const address: number = arena.doubles([0, 3, 4]);
    functions.nuv_SetRandomSeed(1);
    const { dX }: Records['TVector'] = arena.read('TVector', arena.record('TVector', { dX: 1 }));
    functions.nuv_SetRandomSeed(dX);
    return new Float64Array(functions.memory.buffer, address, 3).reduce((one, other) => one + other);
});
if (sum !== 7 || kind !== 'omographic' || Math.hypot(x - 50, y - 50) > 1e-9 || rms <= 0
    || leastPoints !== 3 || reasons.length !== 3) {
    throw new Error(`${fit}`);
}
try {
    library.fit([[0, 0], [1, 1]] as const, source.slice(0, 2).map((): Point => [1, 1]), { checks: new Set([1]) });
} catch (error) {
    if (!(error instanceof FitError) || error.reason === constants.enumReason.REASON_NONE) {
        throw error;
    }
}

// What the types refuse.
// @ts-expect-error: there is no such kind
const wrongKind: FitOptions = { kind: 'cubic' };
// @ts-expect-error: a point has two coordinates
const wrongPoint: Point = [1, 2, 3];
// @ts-expect-error: the function has one argument
const wrongCall = () => library.functions.nuv_LeastPoints(1, 2);
// @ts-expect-error: the record has no such field
const wrongField = () => library.using((arena) => arena.record('TVector', { dx: 1 }));
// @ts-expect-error: the matrix can be missing
const wrongMatrix = () => fit.matrix[0][0];
void [wrongKind, wrongPoint, wrongCall, wrongField, wrongMatrix];

const coefficient = fit.judgement.Original.dA;
console.log(new BigUint64Array(new Float64Array([coefficient]).buffer)[0].toString(16));
