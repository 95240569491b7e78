// numbers.mjs: numbers as text, and text as numbers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const DECIMAL = /^[+-]?(\d+([.,]\d*)?|[.,]\d+)(e[+-]?\d+)?$/i;

// The number that the text states, with a decimal point or comma, or null.
export function parseNumber(text) {
    const trimmed = text.trim();
    const value = DECIMAL.test(trimmed) ? Number(trimmed.replace(',', '.')) : NaN;
    return Number.isFinite(value) ? value : null;
}

// Two numbers between blanks, tabs, semicolons, or a comma and a blank; or null.
export function parsePair(text) {
    const parts = text.trim().split(/\s*[;\t]\s*|,\s+|\s+/);
    const numbers = parts.map(parseNumber);
    return parts.length === 2 && !numbers.includes(null) ? numbers : null;
}

// Six significant digits at most.
export function shortNumber(value) {
    return String(Number(value.toPrecision(6)));
}

// The number rounded to a multiple of a power of ten, without the digits that only the rounding makes.
export function roundToPower(value, power) {
    return Number(power < 0 ? value.toFixed(Math.min(-power, 100)) : Math.round(value / 10 ** power) * 10 ** power);
}

// The power of ten at or below a tenth of the size.
export function powerBelowTenth(size) {
    return Math.floor(Math.log10(size / 10) + 1e-9);
}

// The least of 1, 2, 5, 10, 20, ... that is not below the size.
export function niceAbove(size) {
    const power = 10 ** Math.floor(Math.log10(size));
    return [1, 2, 5, 10].map((digit) => digit * power).find((step) => step >= size * (1 - 1e-9)) ?? 10 * power;
}
