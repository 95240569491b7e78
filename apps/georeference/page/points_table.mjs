// points_table.mjs: the table of control points. Of many points only the rows in sight exist.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { parseNumber, parsePair } from './numbers.mjs';
import { wordsOfState } from './fitting.mjs';

const ALL = 40;         // points up to which all rows exist: fields take much of the time of a frame
const BEYOND = 6;       // rows above and below the visible ones
const FIELDS = ['name', 'x', 'y', 'X', 'Y'];
const CONTROL = /\p{Cc}+/gu; // characters that a name must not have, as the tab behind a cell of a spreadsheet
const PARTNER = { x: 'y', X: 'Y' };
const RESULTS = ['dX', 'dY', 'length', 'leave'];

function cell(row, className, content = null) {
    const element = row.insertCell();
    element.className = className;
    if (content !== null) {
        element.append(content);
    }
    return element;
}

// A cell whose text changes without making the browser arrange the table anew. Returns what has the text.
function changing(row, className) {
    const box = document.createElement('div');
    cell(row, className, box);
    return box;
}

function field(name, type) {
    const input = document.createElement('input');
    input.type = type;
    input.dataset.field = name;
    return input;
}

// The actions: edit(id, values), choose(id), remove(id), complain(text).
export class PointsTable {
    #rows = new Map();
    #first = 0;
    #height = 0;
    #seen = [0, 0];     // rows: the first one in sight, and the one after the last
    #near = [0, 0];     // the same with those just out of sight

    constructor(table, actions) {
        this.table = table;
        this.body = table.tBodies[0];
        this.scroller = table.parentElement;
        this.actions = actions;
        this.points = [];
        this.above = this.#spacer();
        this.below = this.#spacer();
        this.#listen();
    }

    #spacer() {
        const row = document.createElement('tr');
        row.setAttribute('aria-hidden', 'true');
        row.insertCell().colSpan = 13;
        return row;
    }

    #listen() {
        new ResizeObserver(() => (this.#height = 0)).observe(this.scroller);
        this.scroller.addEventListener('scroll', () => {
            this.#takeHidden();
            this.show(this.points, this.fitting, this.chosen);
        }, { passive: true });
        this.body.addEventListener('change', (event) => this.#changed(event.target));
        this.body.addEventListener('focusin', (event) => {
            const id = this.#idOf(event.target);
            if (id !== this.chosen) {
                this.actions.choose(id);
            }
        });
        this.body.addEventListener('click', (event) => {
            if (event.target.closest('button')) {
                this.#remove(this.#idOf(event.target));
            }
        });
        this.body.addEventListener('keydown', (event) => this.#key(event));
    }

    #idOf(element) {
        return Number(element.closest('tr').dataset.id);
    }

    // Enter and the vertical arrows go to the same field of the next row.
    #key(event) {
        const step = { Enter: event.shiftKey ? -1 : 1, ArrowDown: 1, ArrowUp: -1 }[event.key];
        const name = event.target.dataset.field;
        if (step === undefined || name === undefined || name === 'check') {
            return;
        }
        event.preventDefault();
        const index = this.points.findIndex((point) => point.id === this.#idOf(event.target)) + step;
        if (index >= 0 && index < this.points.length) {
            this.focus(this.points[index].id, name);
        } else {
            event.target.blur();
        }
    }

    // The focus goes to the same button of the next point.
    #remove(id) {
        const index = this.points.findIndex((point) => point.id === id);
        this.actions.remove(id);
        const next = this.points[index] ?? this.points[index - 1];
        this.#rows.get(next?.id)?.button.focus();
    }

    focus(id, name) {
        this.#scrollTo(this.points.findIndex((point) => point.id === id));
        this.#rows.get(id)?.inputs[name].focus();
    }

    #scrollTo(index) {
        const height = this.#rowHeight();
        const [top, room] = [index * height, this.scroller.clientHeight - 2 * height];
        if (top < this.scroller.scrollTop || top > this.scroller.scrollTop + room) {
            this.scroller.scrollTop = top - room / 2;
            this.show(this.points, this.fitting, this.chosen);
        }
    }

    #changed(input) {
        const id = this.#idOf(input);
        const name = input.dataset.field;
        if (name === 'check') {
            this.actions.edit(id, { check: input.checked });
        } else if (name === 'name') {
            this.actions.edit(id, { name: input.value.replaceAll(CONTROL, ' ').trim() });
        } else {
            this.#coordinate(id, name, input);
        }
    }

    #coordinate(id, name, input) {
        const pair = name in PARTNER ? parsePair(input.value) : null;
        const value = input.value.trim() === '' ? null : parseNumber(input.value);
        const isBad = pair === null && value === null && input.value.trim() !== '';
        input.toggleAttribute('aria-invalid', false);
        if (isBad) {
            input.setAttribute('aria-invalid', 'true');
            const number = this.points.findIndex((point) => point.id === id) + 1;
            this.actions.complain(`point ${number}: '${input.value}' is not a number for ${name}`);
        } else {
            this.actions.edit(id, pair === null ? { [name]: value } : { [name]: pair[0], [PARTNER[name]]: pair[1] });
        }
    }

    // ---- drawing ----

    // The height of a row, which the style sheet fixes. Asking for it makes the browser arrange the page, so it is
    // kept.
    #rowHeight() {
        if (this.#height === 0 && this.#rows.size > 0) {
            this.#height = this.#rows.values().next().value.row.offsetHeight;
        }
        return this.#height;
    }

    // Finds which rows are in sight.
    #look() {
        const height = this.#rowHeight() || 1;
        const first = Math.floor(this.scroller.scrollTop / height);
        const end = first + Math.ceil(this.scroller.clientHeight / height);
        this.#seen = [first, end];
        this.#near = [Math.max(0, first - BEYOND), end + BEYOND];
    }

    // isHasty: only the rows in sight get what has changed.
    show(points, fitting, chosen, isHasty = false) {
        Object.assign(this, { points, fitting, chosen });
        if (!isHasty) {
            this.#look();
        }
        const [first, end] = points.length <= ALL ? [0, points.length] : this.#clipped(this.#near);
        const wanted = points.slice(first, end);
        this.#arrange(wanted, first, points.length - end);
        const [low, high] = isHasty ? this.#clipped(this.#seen) : [first, end];
        for (let i = low; i < high; ++i) {
            this.#fill(this.#rows.get(points[i].id), points[i], i + 1);
        }
        this.table.setAttribute('aria-rowcount', String(points.length + 1));
    }

    // Takes what was typed into a row that goes out of sight.
    #takeHidden() {
        this.#look();
        const row = document.activeElement?.closest('#points tbody tr');
        const index = Number(row?.ariaRowIndex) - 2;
        if (this.points.length > ALL && row && (index < this.#near[0] || index >= this.#near[1])) {
            document.activeElement.blur();
        }
    }

    #clipped([first, end]) {
        const start = Math.min(first, Math.max(0, this.points.length - 1));
        return [start, Math.min(end, this.points.length)];
    }

    // Makes the rows that are missing and removes those that are out of sight. A row keeps its fields while it is
    // there.
    #arrange(wanted, countAbove, countBelow) {
        const height = this.#rowHeight();
        const keep = new Set(wanted.map((point) => point.id));
        for (const [id, { row }] of this.#rows) {
            if (!keep.has(id)) {
                row.remove();
                this.#rows.delete(id);
            }
        }
        let before = this.above;
        this.body.firstElementChild === this.above || this.body.prepend(this.above);
        for (const point of wanted) {
            const parts = this.#rows.get(point.id) ?? this.#make(point.id);
            before.nextElementSibling === parts.row || before.after(parts.row);
            before = parts.row;
        }
        before.nextElementSibling === this.below || before.after(this.below);
        this.#space(this.above, countAbove * height);
        this.#space(this.below, countBelow * height);
    }

    #space(spacer, height) {
        spacer.hidden = height === 0;
        spacer.style.height = `${height}px`;
    }

    #make(id) {
        const row = document.createElement('tr');
        row.dataset.id = id;
        const inputs = {};
        const results = {};
        const number = cell(row, 'number');
        for (const name of FIELDS) {
            inputs[name] = field(name, 'text');
            cell(row, name === 'name' ? 'text' : 'number', inputs[name]);
        }
        inputs.check = field('check', 'checkbox');
        cell(row, 'check', inputs.check);
        for (const name of RESULTS) {
            results[name] = changing(row, 'number');
            results[name].dataset.result = name;
        }
        const state = changing(row, 'state');
        const button = document.createElement('button');
        button.type = 'button';
        button.textContent = '✕';
        cell(row, '', button);
        const parts = { row, number, inputs, results, state, button };
        this.#rows.set(id, parts);
        return parts;
    }

    #fill(parts, point, number) {
        const result = this.fitting.of(point.id);
        const state = this.fitting.stateOf(point);
        this.#write(parts.number, String(number));
        parts.row.setAttribute('aria-rowindex', String(number + 1));
        parts.row.toggleAttribute('data-chosen', point.id === this.chosen);
        parts.row.dataset.state = state;
        this.#fillFields(parts, point, number);
        const leave = result?.leave_one_out;
        const values = { dX: result?.dX, dY: result?.dY, length: result?.length,
            leave: leave ? Math.hypot(...leave) : null };
        for (const name of RESULTS) {
            this.#write(parts.results[name], this.fitting.number(values[name]));
            parts.results[name].dataset.value = values[name] ?? '';
        }
        const largest = this.fitting.report?.largest_residual.point;
        const isLargest = result !== null && result.point === largest;
        this.#write(parts.state, wordsOfState(state) + (isLargest ? ', largest' : ''));
    }

    #fillFields({ inputs, button }, point, number) {
        for (const name of FIELDS) {
            const input = inputs[name];
            const value = point[name] === null ? '' : String(point[name]);
            if (input.dataset.value !== value) {
                input.dataset.value = value;
                input.value = value;
                input.removeAttribute('aria-invalid');
            }
            input.dataset.number === String(number) || input.setAttribute('aria-label', `${name} of point ${number}`);
            input.dataset.number = number;
        }
        inputs.check.checked = point.check;
        inputs.check.setAttribute('aria-label', `point ${number} is a check point`);
        button.setAttribute('aria-label', `delete point ${number}`);
    }

    #write(element, text) {
        if (element.textContent !== text) {
            element.textContent = text;
        }
    }
}
