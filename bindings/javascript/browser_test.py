#!/usr/bin/env python3
"""browser_test.py CHROMIUM PACKAGE DIGITS: a page and a worker in a browser get the digits of all languages from both
modules.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import functools
import http.server
import json
import pathlib
import queue
import shutil
import subprocess
import sys
import tempfile
import threading

SECONDS = 600
FILES = {
    "index.html": """<!DOCTYPE html><meta charset="utf-8"><title>nuv1math</title>
<script>
function tell(value) { fetch('/', { method: 'POST', body: JSON.stringify(value) }); }
addEventListener('error', (event) => tell(event.message));
addEventListener('unhandledrejection', (event) => tell(String(event.reason)));
</script>
<script type="module">
import { digits } from './digits.mjs';
const worker = new Worker('./worker.mjs', { type: 'module' });
worker.onerror = (event) => tell(event.message);
const ofWorker = new Promise((resolve) => { worker.onmessage = (event) => resolve(event.data); });
tell([...await digits(), ...await ofWorker]);
</script>""",
    "worker.mjs": """import { digits } from './digits.mjs';
postMessage(await digits());
""",
    "digits.mjs": """import { load } from './package/nuv1math.mjs';
const source = [[0, 0], [100, 0], [100, 80], [0, 80], [40, 30]];
const target = [[12.1, 7.9], [110.7, 11.2], [112.4, 92.6], [9.8, 86.1], [51.3, 38.5]];
export function digits() {
    return Promise.all([true, false].map(async (vectors) => {
        const fit = (await load({ vectors })).fit(source, target, { kind: 'omographic', localOrigin: false });
        return new BigUint64Array(Float64Array.of(fit.matrix[0][0]).buffer)[0].toString(16);
    }));
}
""",
}


class Handler(http.server.SimpleHTTPRequestHandler):
    """Serves files, and keeps what the page tells."""

    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map, ".mjs": "text/javascript"}
    told = queue.Queue()

    def do_POST(self):
        """The page tells the result, or an error."""
        self.told.put(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
        self.send_response(204)
        self.end_headers()

    def log_message(self, *_):
        """Nothing is printed."""


def told(chromium, folder):
    """What the page tells."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, directory=folder))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        browser = subprocess.Popen(
            [chromium, "--headless", "--no-sandbox", "--disable-gpu", f"--user-data-dir={profile}",
             "--remote-debugging-port=0", f"http://127.0.0.1:{server.server_port}/"], # with a port it waits to be ended
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            return Handler.told.get(timeout=SECONDS)
        except queue.Empty:
            return f"nothing in {SECONDS} s"
        finally:
            browser.terminate()
            browser.wait()
            server.shutdown()


def main():
    """Serves the package with a page beside it."""
    chromium, package, digits = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(package, pathlib.Path(folder, "package"))
        for name, text in FILES.items():
            pathlib.Path(folder, name).write_text(text, encoding="utf-8")
        result = told(chromium, folder)
    if result != [digits] * 4:
        sys.exit(f"the page tells: {result}")


if __name__ == "__main__":
    main()
