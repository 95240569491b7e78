// nuv1math.d.mts: types of nuv1math.mjs.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import type {
    Functions, Records, TJudgement, TKindRow, TOmographicParams, TPointJudgement, TShape,
} from './interface.mjs';
import * as constants from './interface.mjs';

export { constants };
export type { Functions, Records, TJudgement, TKindRow, TOmographicParams, TPointJudgement, TShape };

/** x and y. */
export type Point = [number, number];

/** What functions read. */
export type Points = readonly (readonly [number, number])[];

export type Kind = 'conformal' | 'affine' | 'omographic';

export interface FitOptions {
    /** The kind, or how it is chosen: by the least leave-one-out error ('auto', the default), or the richest one. */
    kind?: Kind | 'auto' | 'richest';
    /** The conformal kind reverses the orientation of the axes. Default: false. */
    mirrored?: boolean;
    /** Compute with coordinates that count from local origins. Default: true. */
    localOrigin?: boolean;
    /** Drop suspected blunders one by one. Default: false. */
    robust?: boolean;
    /** Level of the test of blunders, between 0 and 1; 0 for no test. Default: 0.01. */
    level?: number;
    /** Indices of check points: not fitted, but with residuals. */
    checks?: Iterable<number>;
}

/** There is no such transformation. */
export class FitError extends Error {
    private constructor();
    /** One of constants.enumReason. */
    readonly reason: number;
}

/** A transformation with all that is known of it. */
export class Fit {
    private constructor();
    readonly kind: Kind;
    /** A to H, for coordinates that count from `judgement.Origins`. */
    readonly coefficients: TOmographicParams;
    /** Why this kind was taken. */
    readonly choice: string;
    /** The table of kinds, poorest first; `reason` is empty for a kind that exists. */
    readonly kinds: (TKindRow & { kind: Kind; reason: string })[];
    /** In original coordinates; null if the transformation has no such coefficients. */
    readonly matrix: [number[], number[], number[]] | null;
    /** Root mean square by degrees of freedom, target units; null without redundancy. */
    readonly rms: number | null;
    /** Computed less given, target units. */
    readonly residuals: Point[];
    /** Scales, and skew and rotation in radians; null if there are none. */
    readonly parameters: TShape | null;
    readonly judgement: TJudgement;
    readonly points: TPointJudgement[];
    /** Images of source points. Throws a FitError for a point without an image; all must be pairs of finite numbers. */
    transform(points: Points): Point[];
    /** Source points of images. Throws a FitError for an image without a source point. */
    inverse(points: Points): Point[];
    toString(): string;
}

export interface LoadOptions {
    /** The contents of the module, instead of the files beside nuv1math.mjs. */
    bytes?: ArrayBuffer | ArrayBufferView;
    /** Take the module with vectors. Default: if the engine has them. */
    vectors?: boolean;
    /** Gets the text of an assertion report. Default: console.error. */
    report?: (text: string) => void;
}

/** Memory of the module while `Library.using` works. What is allocated in it is an address. */
export interface Arena {
    allocate(size: number): number;
    doubles(values: ArrayLike<number>): number;
    ints(values: ArrayLike<number>): number;
    /** A record of interface.d.mts; fields that the values lack become 0. */
    record<Name extends keyof Records>(name: Name, values?: Partial<Records[Name]>): number;
    write<Name extends keyof Records>(name: Name, address: number, values: Partial<Records[Name]>): void;
    read<Name extends keyof Records>(name: Name, address: number): Records[Name];
}

/** An instance of the module. */
export class Library {
    private constructor();
    /** The functions of C; arrays and records are addresses in `functions.memory`. */
    readonly functions: Functions;
    /** The text of an assertion report, after which `fit` and `using` throw; else null. */
    readonly broken: string | null;
    fit(source: Points, target: Points, options?: FitOptions): Fit;
    /** Calls a function, which must not be async, with memory that is released when it ends, also by an exception. */
    using<T>(work: (arena: Arena, functions: Functions) => T): T;
}

export function load(options?: LoadOptions): Promise<Library>;
