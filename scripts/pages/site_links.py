"""site_links: the links of a site of HTML files: which lead nowhere, and which files nothing leads to.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import html.parser
import re
import urllib.parse


class Page(html.parser.HTMLParser):
    """The anchors of a page, and what it links to or shows."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links = set(), []
        self.feed(path.read_text())

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id" or (name, tag) == ("name", "a"):
                self.anchors.add(value)
            elif name in ("href", "src", "data") and not urllib.parse.urlparse(value).scheme:
                self.links.append(value)


def pages_of(site):
    return {path.name: Page(path) for path in sorted(site.glob("*.html"))}


def broken_links(site):
    """One line for each link of a page that leads to no file or to no anchor of its page."""
    pages, broken = pages_of(site), []
    for name, page in pages.items():
        for link in page.links:
            target, _, anchor = urllib.parse.unquote(link).partition("#")
            target = target or name
            if not (site / target).exists():
                broken.append(f"{name}: {link}: no such file")
            elif anchor and (target not in pages or anchor not in pages[target].anchors):
                broken.append(f"{name}: {link}: no such anchor")
    return broken


def remove_unused(site):
    """Removes the files that no link from index.html reaches."""
    pages, used, waiting = pages_of(site), set(), ["index.html"]
    while waiting:
        name = waiting.pop()
        if name in used:
            continue
        used.add(name)
        links = pages[name].links if name in pages else []
        if name.endswith(".css"):
            links = re.findall(r"url\(['\"]?([^'\")]+)", (site / name).read_text())
        waiting += [urllib.parse.unquote(link).partition("#")[0] or name for link in links]
    for path in site.iterdir():
        if path.name not in used:
            path.unlink()
