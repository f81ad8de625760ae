#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Makes pages of the repository pages of the site.

    page_filter.py PAGE.md                    prints the page as Doxygen is to read it (FILTER_PATTERNS)
    page_filter.py --copy FOLDER PAGE.md...   copies the files that the pages link to into the site's folder

Pages are written for a forge. There a link names a file, and an anchor is made of its heading. Doxygen has names for
pages and sections that are its own, so this gives each heading the name that a forge's anchor has and turns links into
references to it, which Doxygen checks. The page of the examples gets their sources, since the site has no other place
for them.
"""
import os
import pathlib
import re
import shutil
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
MAIN_PAGE = "docs/README.md"
EXAMPLES = "examples/README.md"
FENCED = re.compile(r"(^ *```\w*$.*?^ *```$)", re.MULTILINE | re.DOTALL)
HEADING = re.compile(r"^(#+) (.*)$", re.MULTILINE)
LINK = re.compile(r"(?<!!)\[([^][]*)\]\(([^)\s]+)\)")


def page_name(path):
    """docs/format.md becomes format, bench/README.md bench."""
    if path in (MAIN_PAGE, "README.md"):
        return "index"
    return re.sub(r"^docs/|(/README)?\.md$", "", path).replace("/", "_").lower()


def forge_anchor(heading):
    words = re.sub(r"[^\w\- ]", "", re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading)).strip().lower()
    return words.replace(" ", "-")


def section_name(page, anchor):
    return f"{page_name(page)}--{anchor}"


def path_of(page, file):
    """The file that a link names, seen from the root of the repository."""
    return os.path.relpath(ROOT / pathlib.Path(page).parent / file, ROOT) if file else page


def reference(page, text, target):
    """A link as Doxygen wants it, where target is what stands in the parentheses."""
    text = " ".join(text.split())  # Doxygen wants it on one line
    if re.match(r"[a-z]+:", target):
        return f"[{text}]({target})"
    file, _, anchor = target.partition("#")
    path = path_of(page, file)
    if os.path.dirname(path) == "examples" and path.endswith((".c", ".cpp")):
        section = section_name(EXAMPLES, forge_anchor(os.path.basename(path)))
        return f'<a href="{page_name(EXAMPLES)}.html#{section}">{code(text)}</a>'
    if not path.endswith(".md"):
        return f'<a href="files/{path}">{code(text)}</a>'
    if anchor:
        return f"[{text}](@ref {section_name(path, anchor)})"
    return f'<a href="{page_name(path)}.html">{code(text)}</a>'


def code(text):
    return re.sub(r"`([^`]*)`", r"<code>\1</code>", text)


class Headings:
    """Gives headings their names, one after the other. The first one is that of the page."""

    def __init__(self, page):
        self.page, self.seen = page, None

    def __call__(self, match):
        level, text = match[1], match[2].replace("`", "")  # Doxygen shows code in headings as it stands
        if self.seen is None:
            self.seen = {}
            title = f"{level} {text}"
            return title if self.page == MAIN_PAGE else f"{title} {{#{page_name(self.page)}}}\n[TOC]"
        anchor = forge_anchor(text)
        self.seen[anchor] = self.seen.get(anchor, -1) + 1
        numbered = f"{anchor}-{self.seen[anchor]}" if self.seen[anchor] else anchor  # as forges do
        return f"{level} {text} {{#{section_name(self.page, numbered)}}}"


def for_the_site(page, text):
    parts = FENCED.split(text)
    headings = Headings(page)
    for i in range(0, len(parts), 2):  # those between are fenced
        named = HEADING.sub(headings, parts[i])
        parts[i] = LINK.sub(lambda link: reference(page, link[1], link[2]), named)
    return "".join(parts)


def sources():
    for path in sorted((ROOT / "examples").glob("*.c*")):
        yield f"\n## {path.name} {{#{section_name(EXAMPLES, forge_anchor(path.name))}}}\n\n@include {path.name}"


def copy_files(site, pages):
    """Files and folders that pages link to, but no pages and no examples, which the site has in another form."""
    for page in pages:
        for _, target in LINK.findall("".join(FENCED.split((ROOT / page).read_text())[::2])):
            path = path_of(page, target.partition("#")[0])
            if re.match(r"[a-z]+:", target) or path.endswith((".md", ".c", ".cpp")):
                continue
            copy = shutil.copytree if (ROOT / path).is_dir() else shutil.copyfile
            (site / path).parent.mkdir(parents=True, exist_ok=True)
            copy(ROOT / path, site / path, **({"dirs_exist_ok": True} if copy is shutil.copytree else {}))


def main():
    path = pathlib.Path(sys.argv[-1]).resolve()
    page = str(path.relative_to(ROOT))
    if sys.argv[1] == "--copy":
        pages = [str(pathlib.Path(each).resolve().relative_to(ROOT)) for each in sys.argv[3:]]
        return copy_files(pathlib.Path(sys.argv[2]) / "files", pages)
    print(for_the_site(page, path.read_text()))
    if page == EXAMPLES:
        print("\n".join(sources()))


if __name__ == "__main__":
    main()
