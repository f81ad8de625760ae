#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Says which links of a site lead nowhere: check_links.py FOLDER. Links that leave the site are not followed.

Says also where Doxygen gave up on a page in the middle, which it does without a warning: markup is shown as text then.
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    """The anchors of a page, and what it links to or shows."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.targets, self.shown_markup = set(), [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id" or (tag == "a" and name == "name"):
                self.anchors.add(value)
            elif name in ("href", "src") or (tag == "object" and name == "data"):
                self.targets.append(value)


    def handle_data(self, data):
        self.shown_markup += re.findall(r"</?tt>|^@\w+ ", data)


def dead_links(folder):
    pages = {path.resolve(): Page(path) for path in sorted(folder.rglob("*.html"))}
    if not pages:
        yield f"{folder} has no pages"
    for path, page in pages.items():
        if page.shown_markup:
            yield f"{path.name}: shows {page.shown_markup[0]}"
        for target in page.targets:
            parts = urllib.parse.urlsplit(target)
            if parts.scheme or parts.netloc:
                continue
            goal = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            anchor = urllib.parse.unquote(parts.fragment)
            if not goal.exists() or (anchor and goal in pages and anchor not in pages[goal].anchors):
                yield f"{path.name}: {target}"


def main():
    dead = list(dead_links(pathlib.Path(sys.argv[1])))
    for link in dead:
        print(f"not right: {link}")
    sys.exit(1 if dead else 0)


if __name__ == "__main__":
    main()
