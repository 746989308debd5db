#!/usr/bin/env python3
"""Doxygen's filter: turns links between pages, and from headers to pages, into its own.

usage: site_filter.py FILE   (writes the file as Doxygen wants it to the standard output)

Markdown links reach a heading by its text (page.md#some-heading), which Doxygen does not know; links
to files that are no pages, such as programs, would lead nowhere in the site and stay as text."""
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # Doxygen runs it in the tree
from pages import LINK, MENTION, ROOT, anchors, outside_code  # noqa: E402


def label(page, anchor=""):
    name = "index" if page.name == "README.md" else page.stem.lower()
    return f"{name}--{anchor}" if anchor else name


def reference(page, anchor, text):
    return f'@ref {label(page, anchor)} "{text}"'


def link(match, page_of_link):
    picture, text, target = match.groups()
    if picture or "://" in target:
        return match[0]
    path, _, anchor = target.partition("#")
    page = (page_of_link.parent / path).resolve() if path else page_of_link
    if page.suffix != ".md":
        return text
    if page.name == "README.md" and not anchor:
        return f"[{text}](@ref index)"
    return reference(page, anchor, text.replace("`", ""))


def markdown(page):
    names = {number: name for name, number in anchors(page).items()}
    for number, line, is_text in outside_code(page.read_text()):
        if is_text:
            line = LINK.sub(lambda match: link(match, page), line)
        if number in names and number > 1:
            line += f" {{#{label(page, names[number])}}}"
        elif number in names and page.name != "README.md":
            line += f" {{#{label(page)}}}"
        yield line


def header(path):
    def mention(match):
        page, anchor = ROOT / "docs" / f"{match[1]}.md", (match[2] or "#")[1:]
        return reference(page, anchor, page.read_text().splitlines()[0].lstrip("# "))
    for line in path.read_text().splitlines():
        yield MENTION.sub(mention, line) if line.lstrip().startswith("//") else line


if __name__ == "__main__":
    source = Path(sys.argv[1]).resolve()
    print("\n".join(markdown(source) if source.suffix == ".md" else header(source)))
