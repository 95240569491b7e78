#!/usr/bin/env python3
"""browser_test.py CHROMIUM PACKAGE DIGITS: a page in a browser, with both modules, prints the digits of all languages.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import functools
import http.server
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading

PAGE = """<!DOCTYPE html><meta charset="utf-8"><title>nuv1math</title>
<script type="module">
import { load } from './package/nuv1math.mjs';
const source = [[0, 0], [100, 0], [100, 80], [0, 80], [40, 30]];
const target = [[12.1, 7.9], [110.7, 11.2], [112.4, 92.6], [9.8, 86.1], [51.3, 38.5]];
for (const vectors of [true, false]) {
    const fit = (await load({ vectors })).fit(source, target, { kind: 'omographic', localOrigin: false });
    const bits = new BigUint64Array(Float64Array.of(fit.matrix[0][0]).buffer)[0];
    document.body.append(`[${bits.toString(16)}]`);
}
</script>"""


class Handler(http.server.SimpleHTTPRequestHandler):
    """Serves files without a word."""

    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map, ".mjs": "text/javascript"}

    def log_message(self, *_):
        """Nothing is printed."""


def shown(chromium, folder):
    """The page as the browser has it in the end."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, directory=folder))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        page = subprocess.run(
            [chromium, "--headless", "--no-sandbox", "--disable-gpu", f"--user-data-dir={profile}",
             "--virtual-time-budget=20000", "--dump-dom", f"http://127.0.0.1:{server.server_port}/"],
            check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, timeout=600).stdout
    server.shutdown()
    return page


def main():
    """Serves the package with a page beside it."""
    chromium, package, digits = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(package, pathlib.Path(folder, "package"))
        pathlib.Path(folder, "index.html").write_text(PAGE, encoding="utf-8")
        page = shown(chromium, folder)
    if re.findall(r"\[(\w+)\]", page.split("</script>")[1]) != [digits, digits]:
        sys.exit(f"the page is\n{page}")


if __name__ == "__main__":
    main()
