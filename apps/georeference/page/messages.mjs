// messages.mjs: the line in which the page tells what happened, and what failed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

export class Messages {
    constructor(box) {
        this.box = box;
        this.text = box.querySelector('p');
        box.querySelector('#message-close').addEventListener('click', () => (box.hidden = true));
    }

    show(text, isBad = false) {
        this.text.textContent = text;
        this.box.classList.toggle('bad', isBad);
        this.box.hidden = false;
    }
}
