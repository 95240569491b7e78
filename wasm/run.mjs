// run.mjs: runs a program of WebAssembly, with the files of this system and its arguments.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

import { readFileSync } from 'node:fs';
import { argv, env, exit } from 'node:process';
import { WASI } from 'node:wasi';

const wasi = new WASI({ version: 'preview1', args: argv.slice(2), env, preopens: { '/': '/' }, returnOnExit: true });

// The text of an assertion report. The library traps after it.
function report(start, length) {
    console.error(new TextDecoder().decode(new Uint8Array(instance.exports.memory.buffer, start, length)));
}

const { instance } = await WebAssembly.instantiate(readFileSync(argv[2]), {
    wasi_snapshot_preview1: wasi.wasiImport,
    nuv1math: { report },
});
exit(wasi.start(instance));
