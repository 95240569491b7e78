// entry.mjs: the form for the place that a new point lacks.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { element } from './elements.mjs';
import { parseNumber, parsePair } from './numbers.mjs';
import { isComplete } from './store.mjs';

// The actions: edit(id, values); remove(id, side), goTo(side), which give the focus to the view of that side.
export class Entry {
    constructor(actions) {
        this.form = element('entry');
        this.first = element('entry-first');
        this.second = element('entry-second');
        this.point = null;
        this.form.addEventListener('submit', (event) => this.#set(event));
        const remove = () => actions.remove(this.point.id, this.#sideThere());
        element('entry-cancel').addEventListener('click', remove);
        this.form.addEventListener('keydown', (event) => event.key === 'Escape' && remove());
        this.actions = actions;
    }

    // Shows the form if the point lacks a place; predicted: where the transformation puts it, or null.
    show(point, number, predicted) {
        const before = [this.point?.id, this.names?.[0]];
        this.point = point;
        this.form.hidden = point === null || isComplete(point);
        if (this.form.hidden) {
            return;
        }
        this.names = point.X === null || point.Y === null ? ['X', 'Y'] : ['x', 'y'];
        const view = this.names[0] === 'X' ? 'target' : 'source';
        element('entry-text').textContent = `Point ${number}: click its place in the ${view} view, or type it.`;
        element('entry-first-name').textContent = this.names[0];
        element('entry-second-name').textContent = this.names[1];
        const [first, second] = predicted ?? ['', ''];
        this.first.placeholder = first === '' ? '' : `about ${first}`;
        this.second.placeholder = second === '' ? '' : `about ${second}`;
        if (before[0] !== point.id || before[1] !== this.names[0]) {
            [this.first.value, this.second.value] = this.names.map((name) => point[name] ?? '');
            element('entry-error').textContent = '';
        }
    }

    focus() {
        if (!this.form.hidden) {
            this.first.focus({ preventScroll: true });
        }
    }

    // The view from which the point comes: not that of the missing place.
    #sideThere() {
        return this.names[0] === 'X' ? 'source' : 'target';
    }

    // Takes two numbers, or a pair in the first field.
    #set(event) {
        event.preventDefault();
        const pair = parsePair(this.first.value);
        const values = pair ?? [parseNumber(this.first.value), parseNumber(this.second.value)];
        const missing = values.indexOf(null);
        if (missing < 0) {
            const side = this.#sideThere();
            this.actions.edit(this.point.id, { [this.names[0]]: values[0], [this.names[1]]: values[1] });
            this.form.hidden ? this.actions.goTo(side) : this.first.focus();
            return;
        }
        const input = [this.first, this.second][missing];
        element('entry-error').textContent = input.value.trim() === '' ? ''
            : `'${input.value}' is not a number for ${this.names[missing]}`;
        input.focus();
    }
}
