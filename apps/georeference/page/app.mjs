// app.mjs: the page: the document, its fit, and the parts that show them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { element } from './elements.mjs';
import { Entry } from './entry.mjs';
import { Fitting, isolated, wordsOfState } from './fitting.mjs';
import { keepDocument, keepImage, keptDocument, keptImages } from './keeping.mjs';
import { loadImage } from './images.mjs';
import { powerBelowTenth, roundToPower } from './numbers.mjs';
import { PointsTable } from './points_table.mjs';
import { ResultPanel } from './result_panel.mjs';
import { Scenes, asFields, positionOf } from './scenes.mjs';
import { EMPTY, Store, isComplete } from './store.mjs';
import { View } from './view.mjs';

const SETTLED = 150;        // milliseconds without a change
const EDGE = 24;            // pixels at the edge of a view, in which a point is not well seen
const IMAGES = { sourceImage: 'source', targetImage: 'target' };
const SETTINGS = { blend: 60, mode: 'fade', theme: 'system' };

function other(side) {
    return side === 'source' ? 'target' : 'source';
}

// How many points there are, and how many of them the report and the saved files are without.
function countOf(points) {
    const missing = points.filter((point) => !isComplete(point)).length;
    const without = missing === 0 ? '' : `; ${missing} without a place, not in the report and the saved files`;
    return `${points.length} point${points.length === 1 ? '' : 's'}${without}`;
}

// A position rounded to a power of ten below a tenth of a pixel of the screen, or of the part of it that a key moves.
function roundPosition([x, y], viewport, step = 1) {
    const part = Math.min(step, 1);
    return [roundToPower(x, powerBelowTenth(part / viewport.scaleX)),
        roundToPower(y, powerBelowTenth(part / viewport.scale))];
}

export class App {
    #frame = 0;
    #settling = 0;
    #drag = null;
    #drags = 0;
    #showAll = new Set();
    #keptImages = { sourceImage: null, targetImage: null };
    #keeping = Promise.resolve();
    #isReady = false;   // when the kept images are there

    constructor(engine, messages) {
        this.engine = engine;
        this.messages = messages;
        const kept = keptDocument(EMPTY);
        this.settings = { ...SETTINGS, ...kept?.settings };
        this.keptNames = kept?.images ?? {};
        this.store = new Store(kept?.document ?? EMPTY);
        this.chosen = this.document.points.findLast((point) => !isComplete(point))?.id ?? null;
        this.fitting = new Fitting(engine);
        this.scenes = new Scenes(engine, this.fitting);
        this.views = { source: this.#makeView('source'), target: this.#makeView('target') };
        const edits = { edit: (id, values) => this.edit(id, values), remove: (id, side) => this.remove(id, side),
            goTo: (side) => this.views[side].focus(), choose: (id) => this.choose(id), complain: (text) => messages.show(text, true) };
        this.table = new PointsTable(element('points'), edits);
        this.panel = new ResultPanel(engine);
        this.entry = new Entry(edits);
        this.store.subscribe(() => this.redraw());
        window.addEventListener('pagehide', () => this.#keep());
        this.showAll('source', 'target');
    }

    get document() {
        return this.store.document;
    }

    // ---- views ----

    #makeView(side) {
        return new View(element(`${side}-view`), {
            add: (position, isTouch) => this.#place(side, position, isTouch),
            isAwaited: () => this.#isAwaited(side),
            choose: (id) => this.choose(id),
            dragStart: (id) => this.#startDrag(id),
            move: (id, position) => this.store.edit(id, asFields(side, position), this.#drag ?? `keys ${side} ${id}`),
            dragEnd: (isCancelled) => this.#endDrag(isCancelled),
            remove: (id) => this.remove(id, side),
            hover: (position) => this.#tellPosition(side, position),
            leave: () => this.#tellAxes(side),
            changed: () => this.redraw(),
            showAll: () => this.showAll(side),
            round: roundPosition,
        });
    }

    // Shows all in these views, when they are drawn next.
    showAll(...sides) {
        sides.forEach((side) => this.#showAll.add(side));
        this.redraw();
    }

    #fitViews() {
        for (const side of this.#showAll) {
            const { viewport } = this.views[side];
            viewport.down = this.scenes.isDown(side);
            viewport.stretch = this.scenes.stretch(side);
            viewport.show(this.scenes.box(side));
        }
        this.#showAll.clear();
    }

    #tellPosition(side, position) {
        const from = roundPosition(position, this.views[side].viewport);
        const names = side === 'source' ? ['x', 'y', 'X', 'Y'] : ['X', 'Y', 'x', 'y'];
        const [image] = side === 'source' ? this.fitting.images([position]) : this.fitting.sources([position]);
        const to = image === null ? '' : ` → ${names[2]} ${this.#rounded(image, other(side)).join(`, ${names[3]} `)}`;
        element(`${side}-position`).textContent = `${names[0]} ${from[0]}, ${names[1]} ${from[1]}${to}`;
    }

    // How the coordinates of a view count.
    #tellAxes(side) {
        const { sourceImage, targetImage, place } = this.document;
        const isPixels = side === 'source' ? sourceImage !== null : targetImage !== null && place === null;
        const [first, second] = side === 'source' ? ['x', 'y'] : ['X', 'Y'];
        const direction = this.views[side].viewport.down ? 'down' : 'up';
        const pixels = isPixels ? `: ${element('pixels').selectedOptions[0].text}` : '';
        const output = element(`${side}-position`);
        output.textContent = `${first} to the right, ${second} ${direction}${pixels}`;
        output.title = output.textContent;
    }

    #rounded(position, side) {
        return roundPosition(position, this.views[side].viewport);
    }

    // ---- points ----

    #isAwaited(side) {
        const point = this.store.point(this.chosen);
        return point !== null && positionOf(point, side) === null;
    }

    // A click: the missing place of the chosen point, or a new point.
    #place(side, position, isTouch) {
        if (this.#isAwaited(side)) {
            this.edit(this.chosen, asFields(side, position));
            this.views[side].focusPoint(this.chosen);
            return;
        }
        this.chosen = this.store.add(asFields(side, position));
        this.draw();
        if (!isTouch) {
            this.entry.focus();
        }
    }

    addEmpty() {
        this.chosen = this.store.add({});
        this.draw();
        this.table.focus(this.chosen, 'name');
    }

    choose(id) {
        if (this.chosen !== id) {
            this.chosen = id;
            this.redraw();
        }
    }

    // Changes a point by numbers that were typed or clicked. A view that does not have the place in sight shows all.
    edit(id, values) {
        this.store.edit(id, values);
        this.chosen = id;
        const point = this.store.point(id);
        const hidden = Object.keys(this.views).filter((side) => !this.#isInSight(point, side));
        this.showAll(...hidden);
        this.draw();
    }

    #isInSight(point, side) {
        const position = positionOf(point, side);
        const { viewport } = this.views[side];
        const [x, y] = position === null ? [0, 0] : viewport.toScreen(...position);
        const edge = viewport.isWhole ? EDGE : 0;
        return Math.min(x, y, viewport.width - x, viewport.height - y) >= edge;
    }

    // Removes a point. If it had the focus in a view, its successor gets it.
    remove(id, side = null) {
        const index = this.document.points.findIndex((point) => point.id === id);
        this.store.remove(id);
        const { points } = this.document;
        this.chosen = (points[index] ?? points[index - 1])?.id ?? null;
        this.draw();
        if (side !== null) {
            this.chosen === null ? this.views[side].focus() : this.views[side].focusPoint(this.chosen);
        }
    }

    #startDrag(id) {
        this.#drag = `drag ${++this.#drags} ${id}`;
    }

    #endDrag(isCancelled) {
        this.#drag = null;
        this.store.endMerge();
        if (isCancelled) {
            this.store.cancel();
        }
        this.redraw();
    }

    // ---- drawing ----

    // Draws with the next frame.
    redraw() {
        if (this.#frame === 0) {
            this.#frame = requestAnimationFrame(() => this.draw());
        }
    }

    draw() {
        cancelAnimationFrame(this.#frame);
        this.#frame = 0;
        this.fitting.update(this.document, this.#drag !== null);
        this.scenes.look(this.document);
        this.#fitViews();
        Object.entries(this.views).forEach(([side, view]) => view.draw(this.scenes.of(side, this.chosen)));
        this.table.show(this.document.points, this.fitting, this.chosen, this.#drag !== null);
        this.panel.show(this.fitting, this.document.points.filter(isComplete).length);
        this.#showEntry();
        this.#showControls();
        element('result').setAttribute('aria-busy', 'true');
        clearTimeout(this.#settling);
        this.#settling = setTimeout(() => this.#settle(), SETTLED);
    }

    #showEntry() {
        const point = this.store.point(this.chosen);
        const side = point === null || positionOf(point, 'target') === null ? 'target' : 'source';
        const predicted = point === null || isComplete(point) ? null : this.scenes.predicted(point, side);
        this.entry.show(point, this.document.points.indexOf(point) + 1, predicted && this.#rounded(predicted, side));
    }

    #showControls() {
        const { points, options, kind, crs, sourceImage, targetImage, place } = this.document;
        element('undo').disabled = !this.store.canUndo;
        element('redo').disabled = !this.store.canRedo;
        element('method').value = options.method;
        ['robust', 'mirrored', 'raw'].forEach((name) => (element(name).checked = options[name]));
        element('pixels').value = kind;
        Object.keys(this.views).filter((side) => !element(`${side}-view`).matches(':hover'))
            .forEach((side) => this.#tellAxes(side));
        element('count').textContent = countOf(points);
        element('welcome').hidden = points.length > 0 || sourceImage !== null;
        element('source-remove').hidden = sourceImage === null;
        element('target-remove').hidden = targetImage === null;
        this.#note('source', sourceImage?.name ?? 'points alone');
        this.#note('target', [targetImage === null ? 'map coordinates' : targetImage.name,
            ...targetImage === null ? [] : [place === null ? 'in its pixels' : 'placed by its world file'],
            ...crs === '' ? [] : [crs.replace(/^#CRS:\s*/, '')]].join(', '));
        const isMissing = this.fitting.report === null;
        document.querySelectorAll('[data-export]').forEach((button) => (button.disabled = isMissing));
        this.showBlend();
    }

    #note(side, text) {
        element(`${side}-note`).textContent = text;
        element(`${side}-note`).title = text;
    }

    showBlend() {
        const { blend, mode, theme } = this.settings;
        element('blending').hidden = this.document.sourceImage === null || this.fitting.report === null;
        element('blend').value = blend;
        element('blend-mode').value = mode;
        element('blend-value').textContent = `${blend} %`;
        element('theme').value = theme;
        document.documentElement.dataset.theme = theme;
        this.views.target.blend(mode, blend / 100);
    }

    // ---- what need not follow every frame ----

    #settle() {
        if (this.#drag !== null) {
            return;
        }
        this.fitting.update(this.document);
        this.table.show(this.document.points, this.fitting, this.chosen);
        this.panel.settle();
        Object.entries(this.views).forEach(([side, view]) => view.describe((id) => this.#description(id, side)));
        this.#keep();
        element('result').setAttribute('aria-busy', 'false');
    }

    #description(id, side) {
        const index = this.document.points.findIndex((point) => point.id === id);
        const point = this.document.points[index];
        if (point === undefined) {
            return '';
        }
        const position = positionOf(point, side);
        const where = position === null ? 'no place yet' : position.join(', ');
        const result = this.fitting.of(id);
        const residual = result === null ? '' : `, residual ${this.fitting.number(result.length)}`;
        const state = wordsOfState(this.fitting.stateOf(point));
        return `Point ${index + 1} ${isolated(point.name)}, ${side} ${where}${residual}, ${state}`;
    }

    #keep() {
        if (!this.#isReady) {
            return;
        }
        try {
            keepDocument(this.document, { ...this.settings, views: this.#frames() });
        } catch (error) {
            this.messages.show(`The points are not kept for the next time: ${error.message}`, true);
        }
        this.#keeping = this.#keeping.then(() => this.#keepImages());
    }

    async #keepImages() {
        for (const side of Object.keys(IMAGES)) {
            const image = this.document[side];
            if (image !== this.#keptImages[side]) {
                this.#keptImages[side] = image;
                await keepImage(side, image).catch(({ message }) => this.messages.show(
                    `The ${IMAGES[side]} image is not kept, open it again the next time: ${message}`, true));
            }
        }
    }

    // Shows the images that were kept, and tells of those that were not.
    async showKeptImages() {
        const names = Object.entries(this.keptNames).filter(([, name]) => name !== null);
        const kept = names.length > 0 ? await keptImages().catch(() => ({})) : {};
        const missing = [];
        for (const [side, name] of names) {
            try {
                this.#keptImages[side] = await loadImage(name, kept[side].blob);
                this.store.document = { ...this.document, [side]: this.#keptImages[side] };
            } catch {
                missing.push(name);
            }
        }
        if (missing.length > 0) {
            this.messages.show(`Not kept since the last time, to be opened again: ${missing.join(', ')}`, true);
        }
        this.#isReady = true;
        this.#showFrames();
    }

    // What the views show, as the next visit takes it.
    #frames() {
        const frame = ({ width, height, ...shown }) => shown;
        return Object.fromEntries(Object.entries(this.views).map(([side, { viewport }]) => [side, frame(viewport)]));
    }

    #showFrames() {
        const { views } = this.settings;
        const isKept = Object.keys(this.views).every((side) => ['x', 'y', 'scale', 'whole', 'stretch']
            .every((name) => Number.isFinite(views?.[side]?.[name]) && views[side].scale > 0));
        if (isKept) {
            this.#showAll.clear();
            Object.entries(this.views).forEach(([side, { viewport }]) => Object.assign(viewport, views[side]));
            this.redraw();
        } else {
            this.showAll('source', 'target');
        }
    }
}
