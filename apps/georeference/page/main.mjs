// main.mjs: starts the page.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { App } from './app.mjs';
import { Commands } from './commands.mjs';
import { loadPageEngine } from '../engine.mjs';
import { Messages } from './messages.mjs';

const messages = new Messages(document.getElementById('message'));
try {
    const app = new App(await loadPageEngine(document), messages);
    new Commands(app, messages);
    await app.showKeptImages();
    document.documentElement.dataset.state = 'ready';
} catch (error) {
    messages.show(`The page cannot start: ${error.message}`, true);
}
