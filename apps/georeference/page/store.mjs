// store.mjs: the document, with undo and redo.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const STEPS = 300;

// A point has null for coordinates that it lacks. Documents and points are never changed, only replaced. An image is
// {name, blob, url, width, height}; place: the six numbers of a world file of the target image, or null.
export const EMPTY = {
    file: 'points', kind: 'qgis', crs: '', unread: [], points: [], nextId: 1, sourceImage: null, targetImage: null,
    place: null,
    options: { method: 'auto', robust: false, mirrored: false, raw: false },
};

export function isComplete(point) {
    return point.x !== null && point.y !== null && point.X !== null && point.Y !== null;
}

export class Store {
    #past = [];
    #future = [];
    #merge = null;
    #listeners = [];

    constructor(document) {
        this.document = document;
    }

    subscribe(listener) {
        this.#listeners.push(listener);
    }

    get canUndo() {
        return this.#past.length > 0;
    }

    get canRedo() {
        return this.#future.length > 0;
    }

    // Replaces parts of the document. Changes with the same merge key, one after the other, are one step.
    change(parts, merge = null) {
        if (merge === null || merge !== this.#merge) {
            this.#past.push(this.document);
            this.#past.splice(0, this.#past.length - STEPS);
        }
        this.#merge = merge;
        this.#future = [];
        this.#show({ ...this.document, ...parts });
    }

    // All changes of some work are one step.
    async asOneStep(work) {
        const count = this.#past.length;
        try {
            return await work();
        } finally {
            this.#past.length = Math.min(this.#past.length, count + 1);
        }
    }

    // The next change is a step of its own.
    endMerge() {
        this.#merge = null;
    }

    undo() {
        this.#move(this.#past, this.#future);
    }

    redo() {
        this.#move(this.#future, this.#past);
    }

    // Takes the last step back for good.
    cancel() {
        this.#move(this.#past, []);
    }

    #move(from, to) {
        if (from.length > 0) {
            to.push(this.document);
            this.#merge = null;
            this.#show(from.pop());
        }
    }

    #show(document) {
        this.document = document;
        this.#listeners.forEach((listener) => listener());
    }

    // ---- points ----

    point(id) {
        return this.document.points.find((point) => point.id === id) ?? null;
    }

    add(values) {
        const id = this.document.nextId;
        const point = { id, name: '', line: null, x: null, y: null, X: null, Y: null, check: false, ...values };
        this.change({ points: [...this.document.points, point], nextId: id + 1 });
        return id;
    }

    edit(id, values, merge = null) {
        this.change({ points: this.document.points.map((point) => point.id === id ? { ...point, ...values } : point) },
            merge);
    }

    remove(id) {
        this.change({ points: this.document.points.filter((point) => point.id !== id) });
    }

    // Takes what the engine has read from a file.
    open(name, read) {
        const points = read.points.map((point, index) => ({ ...point, id: index + 1 }));
        const { kind, crs, unread } = read;
        this.change({ file: name, kind, crs, unread, points, nextId: points.length + 1 });
    }
}
