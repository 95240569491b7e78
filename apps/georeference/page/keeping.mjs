// keeping.mjs: what the browser keeps: points and settings in its local storage, images in its database.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const KEY = 'nuv1math.georeference';
const IMAGES = 'images';
const IMAGE_SIDES = ['sourceImage', 'targetImage'];

function request(work) {
    return new Promise((resolve, reject) => {
        work.onsuccess = () => resolve(work.result);
        work.onerror = () => reject(work.error);
    });
}

async function imageTable(mode) {
    const opening = indexedDB.open(KEY, 1);
    opening.onupgradeneeded = () => opening.result.createObjectStore(IMAGES);
    const database = await request(opening);
    return database.transaction(IMAGES, mode).objectStore(IMAGES);
}

// Keeps points, settings and the names of the images. Throws if the browser refuses.
export function keepDocument(document, settings) {
    const kept = { ...document, sourceImage: null, targetImage: null };
    const images = Object.fromEntries(IMAGE_SIDES.map((side) => [side, document[side]?.name ?? null]));
    localStorage.setItem(KEY, JSON.stringify({ document: kept, settings, images }));
}

function isPoint({ id, name, check, x, y, X, Y }) {
    return Number.isInteger(id) && typeof name === 'string' && typeof check === 'boolean'
        && [x, y, X, Y].every((value) => value === null || Number.isFinite(value));
}

// Whether each part of the kept document has the type that it has in an empty one.
function isDocument(kept, empty) {
    return Object.keys(empty).every((key) => empty[key] === null || typeof kept[key] === typeof empty[key])
        && Array.isArray(kept.points) && kept.points.every(isPoint);
}

// What was kept, or null. Anything that is not a document of this page counts as nothing.
export function keptDocument(empty) {
    try {
        const { document, settings, images } = JSON.parse(localStorage.getItem(KEY)) ?? {};
        return isDocument(document, empty) ? { document, settings: settings ?? {}, images: images ?? {} } : null;
    } catch {
        return null;
    }
}

// Keeps or forgets an image. Throws if the browser refuses.
export async function keepImage(side, image) {
    const table = await imageTable('readwrite');
    await request(image === null ? table.delete(side) : table.put({ name: image.name, blob: image.blob }, side));
}

// The kept images as {sourceImage: {name, blob}, targetImage: ...}, without those that were not kept.
export async function keptImages() {
    const table = await imageTable('readonly');
    const images = await Promise.all(IMAGE_SIDES.map((side) => request(table.get(side))));
    return Object.fromEntries(IMAGE_SIDES.map((side, index) => [side, images[index]]).filter(([, image]) => image));
}
