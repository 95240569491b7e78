// gestures.mjs: pointers and the wheel over a view, as taps, drags, moves and zooms.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const STILL = 4; // pixels that a tap may move

function middle([a, b]) {
    return [(a.x + b.x) / 2, (a.y + b.y) / 2];
}

function gap([a, b]) {
    return Math.hypot(a.x - b.x, a.y - b.y) || 1;
}

// The actions: pick(x, y, isTouch) gives what is there or null; tap(x, y, what, isTouch); dragStart(what), drag(what,
// dx, dy) since the start, dragEnd(what, isCancelled); pan(dx, dy); zoom(x, y, factor); hover(x, y); leave().
export class Gestures {
    #fingers = new Map();
    #box = null;
    #what = null;
    #start = null;
    #moved = false;

    constructor(element, actions) {
        this.element = element;
        this.actions = actions;
        element.addEventListener('pointerdown', (event) => this.#down(event));
        element.addEventListener('pointermove', (event) => this.#move(event));
        element.addEventListener('pointerup', (event) => this.#up(event, false));
        element.addEventListener('pointercancel', (event) => this.#up(event, true));
        element.addEventListener('pointerleave', () => this.actions.leave());
        element.addEventListener('wheel', (event) => this.#wheel(event), { passive: false });
    }

    // The box of the element is asked for only when no finger is down: asking makes the browser arrange the page.
    #place(event) {
        if (this.#fingers.size === 0) {
            this.#box = this.element.getBoundingClientRect();
        }
        return { x: event.clientX - this.#box.left, y: event.clientY - this.#box.top };
    }

    #down(event) {
        if (event.button !== 0) {
            return;
        }
        const place = this.#place(event);
        this.element.setPointerCapture(event.pointerId);
        this.#fingers.set(event.pointerId, place);
        if (this.#fingers.size === 1) {
            this.#start = place;
            this.#moved = false;
            this.#what = this.actions.pick(place.x, place.y, event.pointerType === 'touch');
        } else {
            this.#stopDrag(true);
            this.#moved = true;
        }
    }

    #move(event) {
        const place = this.#place(event);
        const before = this.#fingers.get(event.pointerId);
        if (before === undefined) {
            this.actions.hover(place.x, place.y);
            return;
        }
        if (this.#fingers.size === 1) {
            this.#moveOne(before, place);
        } else {
            this.#pinch(event.pointerId, place);
        }
        if (this.#moved) {
            this.#fingers.set(event.pointerId, place);
        }
    }

    #moveOne(before, place) {
        const [dx, dy] = [place.x - this.#start.x, place.y - this.#start.y];
        if (!this.#moved && Math.hypot(dx, dy) < STILL) {
            return;
        }
        if (!this.#moved && this.#what !== null) {
            this.actions.dragStart(this.#what);
        }
        this.#moved = true;
        if (this.#what !== null) {
            this.actions.drag(this.#what, dx, dy);
        } else {
            this.element.classList.add('panning');
            this.actions.pan(place.x - before.x, place.y - before.y);
        }
    }

    #pinch(id, place) {
        const pair = () => [...this.#fingers.values()].slice(0, 2);
        const [from, gapBefore] = [middle(pair()), gap(pair())];
        this.#fingers.set(id, place);
        const [to, gapAfter] = [middle(pair()), gap(pair())];
        this.actions.pan(to[0] - from[0], to[1] - from[1]);
        this.actions.zoom(...to, gapAfter / gapBefore);
    }

    #up(event, isCancelled) {
        if (!this.#fingers.delete(event.pointerId)) {
            return;
        }
        if (this.#fingers.size === 0) {
            this.element.classList.remove('panning');
            if (!this.#moved && !isCancelled) {
                this.actions.tap(this.#start.x, this.#start.y, this.#what, event.pointerType === 'touch');
            }
        }
        this.#stopDrag(isCancelled);
    }

    #stopDrag(isCancelled) {
        if (this.#what !== null && this.#moved) {
            this.actions.dragEnd(this.#what, isCancelled);
        }
        this.#what = null;
    }

    #wheel(event) {
        event.preventDefault();
        const place = this.#place(event);
        const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 30 : 1;
        this.actions.zoom(place.x, place.y, 2 ** (-event.deltaY * lines / 250));
    }
}
