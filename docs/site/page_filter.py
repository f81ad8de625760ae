#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Makes a Markdown page of the repository a page of the site: page_filter.py FILE (Doxygen's FILTER_PATTERNS).

Pages are written for a forge. There a link names a file, and an anchor is made of its heading. Doxygen has names for pages
and sections that are its own, so this gives each heading the name that a forge's anchor has and turns links into
references to it, which Doxygen checks. The page of the examples gets their sources, since the site has no other place for
them.
"""
import os
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
MAIN_PAGE = "docs/README.md"
EXAMPLES = "examples/README.md"
LINK = re.compile(r"(?<!!)\[([^]\n]*)\]\(([^)\s]+)\)")


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


def reference(page, text, target):
    """A link as Doxygen wants it, where target is what stands in the parentheses."""
    if re.match(r"[a-z]+:", target):
        return f"[{text}]({target})"
    file, _, anchor = target.partition("#")
    path = os.path.relpath(ROOT / pathlib.Path(page).parent / file, ROOT) if file else page
    if os.path.dirname(path) == "examples" and path.endswith((".c", ".cpp")):
        return f'<a href="examples.html#{section_name(EXAMPLES, forge_anchor(os.path.basename(path)))}">{code(text)}</a>'
    if not path.endswith(".md"):
        return f'<a href="{os.path.basename(path)}">{code(text)}</a>'
    if anchor:
        return f"[{text}](@ref {section_name(path, anchor)})"
    return f'<a href="{page_name(path)}.html">{code(text)}</a>'


def code(text):
    return re.sub(r"`([^`]*)`", r"<code>\1</code>", text)


def lines_of(page, text):
    fenced, first, seen = False, True, {}
    for line in text.splitlines():
        fence = line.lstrip().startswith("```")
        fenced ^= fence
        heading = None if fenced or fence else re.match(r"(#+) (.*)", line)
        if heading and first:
            first = False
            name = "" if page == MAIN_PAGE else f" {{#{page_name(page)}}}"
            yield f"{heading[1]} {heading[2].replace('`', '')}{name}"
            if page != MAIN_PAGE:
                yield "[TOC]"
        elif heading:
            anchor = forge_anchor(heading[2])
            seen[anchor] = seen.get(anchor, -1) + 1
            numbered = f"{anchor}-{seen[anchor]}" if seen[anchor] else anchor  # as forges do
            yield f"{heading[1]} {heading[2]} {{#{section_name(page, numbered)}}}"
        elif fenced or fence:
            yield line
        else:
            yield LINK.sub(lambda link: reference(page, link[1], link[2]), line)


def sources():
    for path in sorted((ROOT / "examples").glob("*.c*")):
        yield f"\n## {path.name} {{#{section_name(EXAMPLES, forge_anchor(path.name))}}}\n\n@include {path.name}"


def main():
    path = pathlib.Path(sys.argv[1]).resolve()
    page = str(path.relative_to(ROOT))
    print("\n".join(lines_of(page, path.read_text())))
    if page == EXAMPLES:
        print("\n".join(sources()))


if __name__ == "__main__":
    main()
