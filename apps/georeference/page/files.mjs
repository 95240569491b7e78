// files.mjs: opens files, and saves results as files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { loadImage } from './images.mjs';
import { readWorldFile } from './pixels.mjs';

const LARGEST = 256 * 2 ** 20; // bytes, more than which the engine does not read either
const WORLD_FILE = /\.(wld|[a-z]{2,4}w)$/i;
const IMAGE_FILE = /\.(png|jpe?g|webp|gif|bmp|svg|avif|tiff?|jp2|ecw|sid|heic)$/i;
const ORDER = ['image', 'points', 'world']; // a world file needs its image, which stands behind it by name
const SAVED = {
    points: { suffix: '.points', type: 'text/plain' },
    csv: { suffix: '.csv', type: 'text/csv' },
    world: { suffix: '.wld', type: 'text/plain' },
    gcp: { suffix: '.gcp.txt', type: 'text/plain' },
    proj: { suffix: '.proj.txt', type: 'text/plain' },
    report: { suffix: '.report.txt', type: 'text/plain' },
    json: { suffix: '.json', type: 'application/json' },
};

function kindOf(file) {
    return WORLD_FILE.test(file.name) ? 'world' : file.type.startsWith('image/') || IMAGE_FILE.test(file.name)
        ? 'image' : 'points';
}

function baseOf(name) {
    return name.replace(/\.[^.]*$/, '') || 'points';
}

// The text of a result for saving.
function textOf(engine, what) {
    return what === 'report' ? engine.report() : what === 'json' ? engine.json() : engine.export(what);
}

// Offers a result as a download. Fails with the engine's reason if there is no such result.
export function saveResult(engine, what, { file, sourceImage }) {
    const { suffix, type } = SAVED[what];
    const name = baseOf(what === 'world' && sourceImage !== null ? sourceImage.name : file) + suffix;
    const url = URL.createObjectURL(new Blob([textOf(engine, what)], { type }));
    const link = document.createElement('a');
    link.href = url;
    link.download = name;
    link.click();
    setTimeout(() => URL.revokeObjectURL(url), 10000);
    return name;
}

export class Opener {
    constructor(fitting, store) {
        this.fitting = fitting;
        this.engine = fitting.engine;
        this.store = store;
    }

    // Opens files of any kind, in any order. side: 'source' or 'target' for images that belong there, else null. Returns what
    // happened, a sentence each; failures are {failed: text}.
    async open(files, side) {
        const told = [];
        const order = (file) => ORDER.indexOf(kindOf(file));
        for (const file of [...files].sort((a, b) => order(a) - order(b))) {
            try {
                told.push(await this.#openOne(file, side));
            } catch (error) {
                told.push({ failed: error.message });
            }
        }
        return told;
    }

    async #openOne(file, side) {
        const kind = kindOf(file);
        if (kind === 'image') {
            return this.openImage(await loadImage(file.name, file), side);
        }
        if (file.size > LARGEST) {
            throw new Error(`${file.name}: larger than 256 MiB`);
        }
        return kind === 'world' ? this.#openWorldFile(file.name, await file.text())
            : this.openPoints(file.name, new Uint8Array(await file.arrayBuffer()));
    }

    // text: a string, or the bytes of a file.
    openPoints(name, text) {
        const read = this.engine.read(name, text);
        if (read.points.length === 0) {
            throw new Error(this.fitting.failureWithoutPoints(name));
        }
        this.store.open(name, read);
        const unread = read.unread.length > 0 ? ` Not read: the columns ${read.unread.join(', ')}.` : '';
        const isAbove = read.kind === 'csv' && read.points.every((point) => point.y < 0);
        const above = isAbove ? ' All y are negative: if they are minus the row, choose so at "Source pixels".' : '';
        return `${name}: ${read.points.length} points.${unread}${above}`;
    }

    openImage(image, side) {
        const isTarget = side === 'target' || (side === null && this.store.document.sourceImage !== null);
        const size = `${image.name}: ${image.width} × ${image.height} pixels, `;
        if (!isTarget) {
            const isFirst = this.store.document.points.length === 0;
            this.store.change({ sourceImage: image, ...isFirst ? { file: baseOf(image.name) } : {} });
            return `${size}the source image.`;
        }
        this.store.change({ targetImage: image, place: null });
        return `${size}the target image. Target coordinates are its pixels until its world file is opened.`;
    }

    #openWorldFile(name, text) {
        const place = readWorldFile(name, text);
        if (this.store.document.targetImage === null) {
            throw new Error(`${name}: a world file places a target image; open that image first`);
        }
        this.store.change({ place });
        return `${name}: places the target image.`;
    }
}
