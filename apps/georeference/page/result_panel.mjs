// result_panel.mjs: what the report tells of the transformation as a whole.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { element } from './elements.mjs';

const CHOICES = {
    asked: 'the kind that was asked for',
    richest: 'the richest kind that the points support',
    least_leave_one_out_error: 'the least leave-one-out error',
    poorer_as_good: 'a richer kind predicts no better',
    not_judged: 'nothing can be judged by leave-one-out',
};
const DEGREES = 180 / Math.PI;
const PARAMETERS = [['sx', 'scale x', 1, ''], ['sy', 'scale y', 1, ''], ['rotation', 'rotation', DEGREES, '°'],
    ['skew', 'skew', DEGREES, '°']];

const NO_POINTS = 'No transformation yet: two points give a conformal one, three an affine, four an omographic one.';

function write(target, text) {
    if (target.textContent !== text) {
        target.textContent = text;
    }
}

// A list of texts, in the items that are there already.
function fillList(list, texts) {
    while (list.childElementCount > texts.length) {
        list.lastElementChild.remove();
    }
    texts.forEach((text, index) => write(list.children[index] ?? list.appendChild(document.createElement('li')), text));
}

// The result in a sentence.
function verdict(fitting, complete) {
    const { report, error } = fitting;
    if (report === null) {
        return complete === 0 ? NO_POINTS : error;
    }
    const rms = report.rms === null ? 'no redundancy, so nothing checks it'
        : `RMS ${fitting.number(report.rms)} target units`;
    const count = report.suspects.length;
    const suspects = count === 0 ? 'no suspected blunder' : `${count} suspected blunder${count > 1 ? 's' : ''}: `
        + `${report.suspects.slice(0, 5).map((suspect) => fitting.label(suspect)).join(', ')}${count > 5 ? ', …' : ''}`;
    const kind = report.mirrored ? `mirrored ${report.kind}` : report.kind;
    return `${kind[0].toUpperCase()}${kind.slice(1)} transformation of ${report.n} points: ${rms}; ${suspects}.`;
}

export class ResultPanel {
    constructor(engine) {
        this.engine = engine;
        this.kinds = element('kinds').tBodies[0];
    }

    show(fitting, complete) {
        this.fitting = fitting;
        const text = verdict(fitting, complete);
        write(element('verdict'), text);
        element('result').dataset.kind = fitting.report?.kind ?? '';
        this.#showKinds(fitting.report);
        this.#showSuspects(fitting.report);
        this.#showWarnings(fitting.report);
        this.#showParameters(fitting.report);
    }

    #showKinds(report) {
        const kinds = report?.kinds ?? [];
        while (this.kinds.rows.length > kinds.length) {
            this.kinds.deleteRow(-1);
        }
        kinds.forEach((kind, index) => this.#showKind(this.kinds.rows[index] ?? this.#newKind(), kind, report));
    }

    #newKind() {
        const row = this.kinds.insertRow();
        const head = document.createElement('th');
        head.scope = 'row';
        row.append(head);
        return row;
    }

    #showKind(row, kind, report) {
        const greatest = kind.greatest_leave_one_out;
        const judged = kind.not_judged !== null ? [[kind.not_judged, 'why']]
            : [[kind.leave_one_out_rms], [greatest?.length ?? null], [greatest ? greatest.name || String(this.fitting.numberOf(greatest)) : '', 'why']];
        const values = kind.missing !== null ? [[kind.missing, 'why']]
            : [[kind.coefficients], [kind.degrees_of_freedom], [kind.rms], ...judged];
        row.dataset.kind = kind.kind;
        row.classList.toggle('taken', kind.kind === report.kind);
        row.ariaCurrent = String(kind.kind === report.kind);
        write(row.cells[0], kind.kind);
        while (row.cells.length > values.length + 1) {
            row.deleteCell(-1);
        }
        values.forEach(([value, className = 'number'], index) => {
            const cell = row.cells[index + 1] ?? row.insertCell();
            cell.className = className;
            cell.colSpan = className === 'why' ? 6 - index : 1;
            cell.dataset.value = value ?? '';
            cell.title = className === 'why' ? value : '';
            write(cell, typeof value === 'number' ? this.fitting.number(value) : value ?? 'none');
        });
    }

    #showSuspects(report) {
        const level = report?.level ?? 0;
        const texts = (report?.suspects ?? []).map((suspect) => `${this.fitting.label(suspect)}`
            + `${suspect.name ? `, point ${this.fitting.numberOf(suspect)}` : ''}: residual `
            + `${this.fitting.number(suspect.length)}, suspect under the ${suspect.under_kind} kind`
            + (suspect.dropped === null ? '' : `, dropped as number ${suspect.dropped}`));
        const none = report === null ? [] : [`none, at the level ${level}`];
        fillList(element('suspects'), texts.length > 0 ? texts : none);
    }

    #showWarnings(report) {
        const warnings = report?.warnings ?? [];
        element('warnings-part').hidden = warnings.length === 0;
        fillList(element('warnings'), warnings);
    }

    #showParameters(report) {
        const told = report === null ? [] : this.#told(report);
        const list = element('parameters');
        while (list.childElementCount > 2 * told.length) {
            list.lastElementChild.remove();
        }
        told.forEach(([name, text, value = ''], index) => {
            if (list.children[2 * index] === undefined) {
                list.append(document.createElement('dt'), document.createElement('dd'));
            }
            const [term, definition] = [list.children[2 * index], list.children[2 * index + 1]];
            write(term, name);
            write(definition, text);
            definition.dataset.parameter = name;
            definition.dataset.value = value;
        });
    }

    // [name, text, value] of all that is told beside the tables.
    #told(report) {
        const { largest_residual: largest, parameters } = report;
        const number = (value) => this.fitting.number(value);
        const check = report.check_rms === null ? [] : [['check RMS', number(report.check_rms), report.check_rms]];
        const without = report.kind === 'omographic' ? 'change from point to point' : 'a scale counts as zero';
        const shape = parameters === null ? [['scale, rotation', without]]
            : PARAMETERS.map(([key, name, factor, unit]) => [name, number(parameters[key] * factor) + unit,
                parameters[key]]);
        const notRicher = report.choice === 'asked' ? [] : report.not_richer;
        return [
            ['chosen by', CHOICES[report.choice] ?? report.choice],
            ...notRicher.map((text) => ['not richer', text]),
            ['points', `${report.n} fitted, ${report.dropped} dropped, ${report.check_points} check points`],
            ...check,
            ['largest', `${number(largest.length)} at ${this.fitting.label(largest)}`, largest.length],
            ...shape,
        ];
    }

    // What need not follow every frame: the announcement and the report.
    settle() {
        write(element('live'), element('verdict').textContent);
        write(element('report'), this.fitting.report === null ? 'There is no transformation.' : this.engine.report());
    }
}
