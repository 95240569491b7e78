// view.mjs: the view of a plane: an image, the grid, the control points with their residuals.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { LETTER, SYMBOLS, arrowPath, placeNames, setAttribute, svgElement } from './drawing.mjs';
import { isolated } from './fitting.mjs';
import { Gestures } from './gestures.mjs';
import { gridOf } from './grid.mjs';
import { niceAbove, shortNumber } from './numbers.mjs';
import { Viewport } from './viewport.mjs';
import { meshPaths, stylePlaced, styleWarped } from './warp.mjs';

const NEAR = { mouse: 13, touch: 24 };  // pixels within which a pointer finds a point
const MOST_NAMES = 300;                 // of more points only the suspected ones have names
const BAR = 60;                         // pixels of the bar of the legend
const LONGEST = 80;                     // pixels of the longest arrow, at most
const LARGE_PIXEL = 3;                  // pixels of the screen for one of an image, from which on it has sharp edges
const MOVE = 40;                        // pixels by which a key moves the view
const ZOOM = 1.4;                       // by which a key zooms
const ARROWS = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
const PAGES = { PageDown: 1, PageUp: -1 };  // the next point, the one before
const ARROW_CLASS = { fitted: 'fitted', suspect: 'suspect', dropped: 'other', check: 'other' };
const EMPTY_SCENE = { points: [], image: null, place: null, cells: [], warped: null, longest: 0, units: '' };

// The actions: add(position, isTouch); isAwaited(), whether a chosen point lacks its place here; choose(id),
// dragStart(id), move(id, position), dragEnd(isCancelled), remove(id), hover(position), leave(), changed() when the
// viewport is another one.
export class View {
    #handles = new Map();
    #spots = [];
    #grab = null;

    constructor(root, actions) {
        this.root = root;
        this.actions = actions;
        this.viewport = new Viewport();
        this.scene = EMPTY_SCENE;
        this.svg = root.querySelector('svg');
        this.base = root.querySelector('.base');
        this.warped = root.querySelector('.warped');
        this.swipe = null;
        this.#makeLayers();
        this.#measure();
        this.#listen();
    }

    #makeLayers() {
        const path = (name) => svgElement('path', { class: name }, this.svg);
        const group = (name) => svgElement('g', { class: name }, this.svg);
        this.layers = {
            grid: path('grid'), scales: group('scales'), mesh: path('mesh'), outline: path('outline'),
            halo: path('arrows-halo'), fitted: path('arrows'), suspect: path('arrows suspect'),
            other: path('arrows other'), points: group('points'), cross: path('cross'), swipe: path('swipe'),
            legend: group('legend'),
        };
        this.layers.scales.setAttribute('aria-hidden', 'true');
        const legend = this.layers.legend;
        this.legendBox = svgElement('rect', { height: 20, rx: 3 }, legend);
        svgElement('path', { d: `M6 6v8M6 10h${BAR}m0-4v8` }, legend);
        this.legendText = svgElement('text', { x: BAR + 14, y: 14 }, legend);
    }

    #listen() {
        new Gestures(this.svg, {
            pick: (x, y, isTouch) => this.#nearest(x, y, isTouch ? NEAR.touch : NEAR.mouse),
            tap: (x, y, id, isTouch) => this.#tap(x, y, id, isTouch),
            dragStart: (id) => this.#startDrag(id),
            drag: (id, dx, dy) => this.actions.move(id, this.position(this.#grab.x + dx, this.#grab.y + dy)),
            dragEnd: (_, isCancelled) => this.actions.dragEnd(isCancelled),
            pan: (dx, dy) => this.change(() => this.viewport.pan(dx, dy)),
            zoom: (x, y, factor) => this.change(() => this.viewport.zoom(x, y, factor)),
            hover: (x, y) => this.actions.hover(this.viewport.toPlane(x, y)),
            leave: () => this.actions.leave(),
        });
        this.svg.addEventListener('keydown', (event) => this.#key(event));
        this.svg.addEventListener('focusin', (event) => this.#focused(event));
        new ResizeObserver(() => this.#resized()).observe(this.root);
    }

    // What shows all goes on doing so.
    #resized() {
        this.#measure();
        this.viewport.isWhole ? this.actions.showAll() : this.actions.changed();
    }

    // Takes the size of the view, unless it is not shown.
    #measure() {
        const { clientWidth: width, clientHeight: height } = this.root;
        if (width > 0 && height > 0) {
            Object.assign(this.viewport, { width, height });
        }
    }

    // Changes the viewport by a function.
    change(how) {
        how();
        this.actions.changed();
    }

    zoomBy(factor) {
        this.change(() => this.viewport.zoom(this.viewport.width / 2, this.viewport.height / 2, factor));
    }

    zoomIn() {
        this.zoomBy(ZOOM);
    }

    zoomOut() {
        this.zoomBy(1 / ZOOM);
    }

    // A position of the plane, rounded to what the screen can tell.
    position(px, py) {
        return this.actions.round(this.viewport.toPlane(px, py), this.viewport);
    }

    // ---- pointers and keys ----

    #nearest(x, y, within) {
        let [found, least] = [null, within];
        for (const spot of this.#spots) {
            const distance = Math.hypot(spot.x - x, spot.y - y);
            if (distance < least || (distance === least && spot.chosen)) {
                [found, least] = [spot.id, distance];
            }
        }
        return found;
    }

    #tap(x, y, id, isTouch) {
        if (id === null || this.actions.isAwaited()) {
            this.actions.add(this.position(x, y), isTouch);
        } else {
            this.#choose(id);
        }
    }

    #choose(id) {
        this.actions.choose(id);
        this.focusPoint(id);
    }

    #startDrag(id) {
        this.#grab = this.#spots.find((spot) => spot.id === id);
        this.actions.dragStart(id);
        this.focusPoint(id);
    }

    focus() {
        this.svg.focus({ preventScroll: true });
    }

    focusPoint(id) {
        this.#handles.get(id)?.element.focus({ preventScroll: true });
    }

    #focused(event) {
        const handle = event.target.closest('.point');
        if (handle !== null) {
            this.actions.choose(Number(handle.dataset.id));
        }
    }

    #key(event) {
        const step = event.shiftKey ? 10 : event.altKey ? 0.1 : 1;
        const handle = event.target.closest('.point');
        if (event.ctrlKey || event.metaKey) {
            return;
        }
        const isDone = handle === null ? this.#viewKey(event.key, step)
            : this.#pointKey(event.key, step, Number(handle.dataset.id));
        if (isDone) {
            event.preventDefault();
        }
    }

    #pointKey(key, step, id) {
        if (key in ARROWS) {
            const spot = this.#spots.find((each) => each.id === id);
            const [dx, dy] = ARROWS[key];
            const position = this.actions.round(this.viewport.toPlane(spot.x + dx * step, spot.y + dy * step),
                this.viewport, step);
            this.actions.move(id, position, 'keys');
        } else if (key in PAGES) {
            const index = this.#spots.findIndex((each) => each.id === id);
            this.focusPoint(this.#spots[index + PAGES[key]]?.id ?? id);
        } else if (key === 'Delete' || key === 'Backspace') {
            this.actions.remove(id);
        } else if (key === 'Escape') {
            this.focus();
        } else if (key === 'Enter' || key === ' ') {
            this.actions.choose(id);
        } else {
            return false;
        }
        return true;
    }

    #viewKey(key, step) {
        const { viewport } = this;
        if (key in ARROWS) {
            this.change(() => viewport.pan(-ARROWS[key][0] * MOVE * step, -ARROWS[key][1] * MOVE * step));
        } else if (key === '+' || key === '=') {
            this.zoomIn();
        } else if (key === '-') {
            this.zoomOut();
        } else if (key === '0') {
            this.actions.showAll();
        } else if (key === 'Enter') {
            this.actions.add(this.position(viewport.width / 2, viewport.height / 2), false);
        } else {
            return false;
        }
        return true;
    }

    // ---- drawing ----

    // The scene: points as {id, number, name, state, place, arrow, chosen}; image and its place; cells of the warped
    // mesh; warped as {image, place, frame}; longest: the longest arrow; units of the arrows.
    draw(scene) {
        this.scene = { ...EMPTY_SCENE, ...scene };
        this.#drawImages();
        this.#drawGrid();
        const [mesh, outline] = meshPaths(this.scene.cells, this.viewport);
        setAttribute(this.layers.mesh, 'd', mesh);
        setAttribute(this.layers.outline, 'd', outline);
        this.#placePoints();
        this.#drawArrows();
        this.#drawPoints();
    }

    #drawImages() {
        const { image, place, warped } = this.scene;
        this.#showImage(this.base, image, () => stylePlaced(place, this.viewport));
        const pixel = image === null ? 0 : this.viewport.scale * Math.hypot(place[1], place[4]);
        this.base.classList.toggle('near', pixel > LARGE_PIXEL);
        if (this.warped !== null) {
            this.#showImage(this.warped, warped?.image ?? null,
                () => styleWarped(warped.place, warped.frame, this.viewport));
        }
    }

    #showImage(element, image, style) {
        element.hidden = image === null;
        if (image === null) {
            element.removeAttribute('src');
            return;
        }
        if (element.getAttribute('src') !== image.url) {
            element.src = image.url;
            element.style.width = `${image.width}px`;
            element.style.height = `${image.height}px`;
        }
        element.style.transform = style();
    }

    #drawGrid() {
        const { width, height } = this.viewport;
        const { path, labels } = gridOf(this.viewport);
        const { grid, scales, cross, legend } = this.layers;
        setAttribute(grid, 'd', path);
        setAttribute(cross, 'd', `M${width / 2 - 12} ${height / 2}h24M${width / 2} ${height / 2 - 12}v24`);
        setAttribute(legend, 'transform', `translate(6 ${height - 26})`);
        while (scales.childElementCount < labels.length) {
            svgElement('text', { class: 'scale' }, scales);
        }
        [...scales.children].forEach((text, index) => {
            const { x, y, text: content, anchor } = labels[index] ?? { x: 0, y: 0, text: '', anchor: 'start' };
            setAttribute(text, 'x', String(x));
            setAttribute(text, 'y', String(y));
            setAttribute(text, 'text-anchor', anchor);
            text.textContent !== content && (text.textContent = content);
        });
    }

    #placePoints() {
        this.#spots = this.scene.points.filter((point) => point.place !== null).map((point) => {
            const [x, y] = this.viewport.toScreen(...point.place);
            return { id: point.id, x, y, point, chosen: point.chosen };
        });
    }

    #drawArrows() {
        const { longest, units } = this.scene;
        const bar = longest > 0 ? niceAbove(longest * BAR / LONGEST) : 0;
        const paths = { fitted: '', suspect: '', other: '' };
        for (const { x, y, point } of this.#spots) {
            if (point.arrow !== null && bar > 0) {
                const [dx, dy] = point.arrow.map((value) => value / bar * BAR);
                paths[ARROW_CLASS[point.state]] += arrowPath(x, y, dx, this.viewport.down ? dy : -dy);
            }
        }
        setAttribute(this.layers.halo, 'd', paths.fitted + paths.suspect + paths.other);
        Object.entries(paths).forEach(([name, path]) => setAttribute(this.layers[name], 'd', path));
        this.layers.legend.style.display = bar > 0 ? '' : 'none';
        const text = `residuals: the bar is ${shortNumber(bar)} ${units}`;
        this.legendText.textContent !== text && (this.legendText.textContent = text);
        setAttribute(this.legendBox, 'width', String(BAR + 20 + text.length * LETTER));
    }

    #drawPoints() {
        const names = this.#names();
        const old = new Set(this.#handles.keys());
        const stop = this.#spots.find((spot) => spot.chosen) ?? this.#spots[0]; // Tab stops at one point of the view
        for (const spot of this.#spots) {
            old.delete(spot.id);
            const handle = this.#handleOf(spot.id);
            this.#drawPoint(handle, spot, names.get(spot.id));
            setAttribute(handle.element, 'tabindex', spot === stop ? '0' : '-1');
        }
        old.forEach((id) => {
            this.#handles.get(id).element.remove();
            this.#handles.delete(id);
        });
    }

    #handleOf(id) {
        if (!this.#handles.has(id)) {
            const element = svgElement('g', { class: 'point', role: 'button', 'data-id': id,
                'aria-roledescription': 'control point' }, this.layers.points);
            this.#handles.set(id, { element, symbol: svgElement('path', {}, element), text: null, drawn: {} });
        }
        return this.#handles.get(id);
    }

    #drawPoint(handle, { x, y, point }, name) {
        const { element, symbol, drawn } = handle;
        const place = `translate(${x.toFixed(1)} ${y.toFixed(1)})`;
        if (drawn.place !== place) {
            element.setAttribute('transform', place);
        }
        if (drawn.state !== point.state) {
            element.dataset.state = point.state;
            symbol.setAttribute('d', SYMBOLS[point.state]);
        }
        if (drawn.number !== point.number || drawn.chosen !== point.chosen) {
            element.dataset.number = point.number;
            element.toggleAttribute('data-chosen', point.chosen);
        }
        handle.drawn = { place, state: point.state, number: point.number, chosen: point.chosen };
        this.#drawName(handle, name);
    }

    #drawName(handle, name) {
        if (name === undefined) {
            handle.text?.remove();
            handle.text = null;
            return;
        }
        handle.text ??= svgElement('text', { 'aria-hidden': 'true' }, handle.element);
        setAttribute(handle.text, 'x', String(9 * name.side));
        setAttribute(handle.text, 'y', '-6');
        setAttribute(handle.text, 'text-anchor', name.side > 0 ? 'start' : 'end');
        handle.text.textContent !== name.text && (handle.text.textContent = name.text);
    }

    // The names that have room, by the id of their point.
    #names() {
        const { width, height } = this.viewport;
        const few = this.#spots.length <= MOST_NAMES;
        const wanted = this.#spots.filter(({ x, y, point }) => (few || point.state === 'suspect' || point.chosen)
            && x > -50 && x < width + 50 && y > -20 && y < height + 20)
            .map(({ id, x, y, point }) => ({ id, x, y, text: nameOf(point), isFirst: point.state === 'suspect' }));
        wanted.sort((a, b) => b.isFirst - a.isFirst);
        placeNames(wanted, width);
        return new Map(wanted.filter((name) => name.side !== 0).map((name) => [name.id, name]));
    }

    // The descriptions for screen readers, which need not follow every frame.
    describe(textOf) {
        this.#handles.forEach(({ element }, id) => setAttribute(element, 'aria-label', textOf(id)));
    }

    // What of the warped image is shown: 'fade' or 'swipe', up to a fraction.
    blend(mode, part) {
        const over = this.warped.parentElement;
        over.style.opacity = mode === 'fade' ? String(part) : '1';
        over.style.clipPath = mode === 'swipe' ? `inset(0 ${(1 - part) * 100}% 0 0)` : '';
        const x = Math.round(part * this.viewport.width) + 0.5;
        const isSwiped = mode === 'swipe' && this.scene.warped !== null;
        setAttribute(this.layers.swipe, 'd', isSwiped ? `M${x} 0V${this.viewport.height}` : '');
    }
}

function nameOf(point) {
    const name = point.name === '' ? String(point.number) : isolated(point.name);
    return point.state === 'suspect' ? `${name}: suspected` : point.state === 'pending' ? `${name}?` : name;
}
