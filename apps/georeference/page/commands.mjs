// commands.mjs: buttons, keys, dropped and pasted files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { element } from './elements.mjs';
import { Opener, saveResult } from './files.mjs';
import { loadImage } from './images.mjs';
import { SAMPLE_PLACE, sampleMap, sampleScan } from './sample.mjs';
import { EMPTY, isComplete } from './store.mjs';

// What the engine's reasons mean here.
const HINTS = { world: ' (here: choose it at "Kind")', proj: ' (here: choose it at "Kind")' };

function onClick(id, action) {
    element(id).addEventListener('click', action);
}

function isField(target) {
    return target.closest('input:not([type="checkbox"], [type="range"]), textarea') !== null;
}

// Whether the target is a field with a text that is not yet taken.
function isBeingEdited(target) {
    return isField(target) && target.value !== (target.dataset.value ?? '');
}

export class Commands {
    constructor(app, messages) {
        this.app = app;
        this.messages = messages;
        this.opener = new Opener(app.fitting, app.store);
        this.#files();
        this.#drops();
        this.#pasting();
        this.#steps();
        this.#settings();
        this.#zooms();
        document.querySelectorAll('[data-export]').forEach((button) => button.addEventListener('click',
            () => this.#save(button.dataset.export)));
    }

    // ---- opening ----

    // Tells what an action did, or why it failed.
    async #tell(action) {
        try {
            this.messages.show(await action());
        } catch (error) {
            this.messages.show(error.message, true);
        }
    }

    async openFiles(files, side) {
        const told = await this.app.store.asOneStep(() => this.opener.open(files, side));
        const failed = told.some((each) => typeof each !== 'string');
        this.messages.show(told.map((each) => each.failed ?? each).join('\n'), failed);
        this.app.showAll('source', 'target');
    }

    #files() {
        const sides = { 'open-files': null, 'source-image': 'source', 'target-image': 'target' };
        Object.entries(sides).forEach(([id, side]) => element(id).addEventListener('change', async (event) => {
            const files = [...event.target.files];
            event.target.value = '';
            await this.openFiles(files, side);
        }));
        onClick('sample', () => this.#openSample(false));
        onClick('sample-two', () => this.#openSample(true));
    }

    #drops() {
        const sideOf = (event) => ['source', 'target'].find((side) => element(side).contains(event.target)) ?? null;
        const mark = (side) => ['source', 'target'].forEach((each) => element(`${each}-view`)
            .classList.toggle('dropping', each === side));
        document.addEventListener('dragover', (event) => {
            event.preventDefault();
            mark(sideOf(event));
        });
        document.addEventListener('dragleave', () => mark(null));
        document.addEventListener('drop', (event) => {
            event.preventDefault();
            mark(null);
            const files = [...event.dataTransfer.files];
            const text = event.dataTransfer.getData('text/plain');
            files.length > 0 ? this.openFiles(files, sideOf(event)) : text && this.#openText(text);
        });
    }

    #openText(text) {
        return this.#tell(() => {
            const told = this.opener.openPoints('pasted', text);
            this.app.showAll('source', 'target');
            return told;
        });
    }

    #pasting() {
        const dialog = element('paste-dialog');
        document.addEventListener('paste', (event) => {
            const files = [...event.clipboardData.files];
            const text = event.clipboardData.getData('text/plain');
            if (isField(event.target) || (files.length === 0 && text === '')) {
                return;
            }
            event.preventDefault();
            files.length > 0 ? this.openFiles(files, null) : this.#openText(text);
        });
        onClick('paste', () => {
            element('paste-error').textContent = '';
            dialog.showModal();
        });
        onClick('paste-open', () => {
            try {
                this.messages.show(this.opener.openPoints('pasted', element('paste-text').value));
                this.app.showAll('source', 'target');
                dialog.close();
            } catch (error) {
                element('paste-error').textContent = error.message;
            }
        });
    }

    async #openSample(isWithMap) {
        const { app, opener } = this;
        await this.#tell(() => app.store.asOneStep(async () => {
            const told = opener.openPoints('sample.csv', element('sample-csv').content.textContent);
            opener.openImage(await loadImage('sample scan', sampleScan()), 'source');
            app.store.change({ targetImage: null, place: null });
            app.draw();
            if (isWithMap) {
                const map = sampleMap((positions) => app.fitting.images(positions));
                opener.openImage(await loadImage('sample map', map), 'target');
                app.store.change({ place: SAMPLE_PLACE });
            }
            app.showAll('source', 'target');
            return `${told} Images and points are made up.`;
        }));
    }

    // ---- saving ----

    #save(what) {
        try {
            const name = saveResult(this.app.engine, what, this.app.document);
            const missing = this.app.document.points.filter((point) => !isComplete(point)).length;
            const without = missing > 0 ? ` Points that lack a place are not in it: ${missing}.` : '';
            this.messages.show(`Saved ${name}.${without}`);
        } catch (error) {
            this.messages.show(error.message + (HINTS[what] ?? ''), true);
        }
    }

    // ---- steps and settings ----

    #steps() {
        const { app } = this;
        onClick('undo', () => app.store.undo());
        onClick('redo', () => app.store.redo());
        onClick('add', () => app.addEmpty());
        onClick('clear', () => {
            app.store.change({ ...EMPTY, options: app.document.options });
            app.showAll('source', 'target');
            this.messages.show('Started anew. Undo brings everything back.');
        });
        ['source', 'target'].forEach((side) => onClick(`${side}-remove`, () => app.store.change(
            side === 'source' ? { sourceImage: null } : { targetImage: null, place: null })));
        document.addEventListener('keydown', (event) => this.#stepKey(event));
    }

    #stepKey(event) {
        const key = event.key.toLowerCase();
        const isElsewhere = isBeingEdited(event.target) || event.target.closest('dialog') !== null;
        if (!(event.ctrlKey || event.metaKey) || isElsewhere || !['z', 'y'].includes(key)) {
            return;
        }
        event.preventDefault();
        key === 'y' || event.shiftKey ? this.app.store.redo() : this.app.store.undo();
    }

    #settings() {
        const { app } = this;
        const option = (name, value) => app.store.change({ options: { ...app.document.options, [name]: value } });
        element('method').addEventListener('change', (event) => option('method', event.target.value));
        ['robust', 'mirrored', 'raw'].forEach((name) => element(name).addEventListener('change',
            (event) => option(name, event.target.checked)));
        element('pixels').addEventListener('change', (event) => {
            app.store.change({ kind: event.target.value });
            app.showAll('source', 'target');
        });
        const setting = (name, value) => {
            app.settings = { ...app.settings, [name]: value };
            app.redraw();
        };
        element('blend').addEventListener('input', (event) => setting('blend', Number(event.target.value)));
        element('blend-mode').addEventListener('change', (event) => setting('mode', event.target.value));
        element('theme').addEventListener('change', (event) => setting('theme', event.target.value));
    }

    #zooms() {
        for (const [side, view] of Object.entries(this.app.views)) {
            onClick(`${side}-in`, () => view.zoomIn());
            onClick(`${side}-out`, () => view.zoomOut());
            onClick(`${side}-all`, () => this.app.showAll(side));
        }
    }
}
