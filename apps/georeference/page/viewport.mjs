// viewport.mjs: the part of a plane that a view shows.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const MARGIN = 0.09;        // of the view, on each side, when all is shown
const MOST_ZOOM = 1e12;     // in relation to a view that shows all

// (x, y): the middle of the view; scale: pixels of the screen per unit of y; stretch: of x in relation to y;
// down: y grows downwards. isWhole: all is shown since the last call of show.
export class Viewport {
    constructor() {
        Object.assign(this, { x: 0, y: 0, scale: 1, stretch: 1, down: true, width: 300, height: 200, whole: 1,
            isWhole: true });
    }

    toScreen(x, y) {
        return [(x - this.x) * this.scaleX + this.width / 2, (y - this.y) * this.scaleY + this.height / 2];
    }

    toPlane(px, py) {
        return [this.x + (px - this.width / 2) / this.scaleX, this.y + (py - this.height / 2) / this.scaleY];
    }

    get scaleX() {
        return this.scale * this.stretch;
    }

    get scaleY() {
        return this.down ? this.scale : -this.scale;
    }

    pan(dx, dy) {
        this.isWhole = false;
        this.x -= dx / this.scaleX;
        this.y -= dy / this.scaleY;
    }

    // The point of the plane at (px, py) stays there.
    zoom(px, py, factor) {
        this.isWhole = false;
        const [x, y] = this.toPlane(px, py);
        const scale = Math.min(Math.max(this.scale * factor, this.whole / 100), this.whole * MOST_ZOOM);
        this.x = x + (this.x - x) * this.scale / scale;
        this.y = y + (this.y - y) * this.scale / scale;
        this.scale = scale;
    }

    // Shows a box {left, right, low, high}.
    show({ left, right, low, high }) {
        const room = 1 - 2 * MARGIN;
        this.isWhole = true;
        this.x = (left + right) / 2;
        this.y = (low + high) / 2;
        const across = this.width * room / (right - left) / this.stretch;
        const upright = this.height * room / (high - low);
        const scale = Math.min(across, upright);
        this.scale = this.whole = Number.isFinite(scale) && scale > 0 ? scale : 1;
    }
}

// The box around positions, or null if there are none.
export function boxAround(positions) {
    const box = { left: Infinity, right: -Infinity, low: Infinity, high: -Infinity };
    for (const [x, y] of positions) {
        if (Number.isFinite(x) && Number.isFinite(y)) {
            box.left = Math.min(box.left, x);
            box.right = Math.max(box.right, x);
            box.low = Math.min(box.low, y);
            box.high = Math.max(box.high, y);
        }
    }
    return box.left > box.right ? null : box;
}
