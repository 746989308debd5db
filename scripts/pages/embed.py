#!/usr/bin/env python3
"""Puts programs into the pages that show them: what stands between

    <!-- program: examples/format_time.cpp -->
    <!-- end -->

is the text of that file, as a block of code. Without arguments every page is brought up to date."""
import re

from pages import ROOT, all_pages

BLOCK = re.compile(r"(<!-- program: (\S+) -->\n).*?(<!-- end -->)", re.S)
LANGUAGES = {".cpp": "cpp", ".ini": "ini", ".service": "ini"}


def pages():
    return [page for page in all_pages() if BLOCK.search(page.read_text())]


def block(match):
    file = ROOT / match[2]
    language = LANGUAGES.get(file.suffix, "sh")
    return f"{match[1]}```{language}\n{file.read_text().rstrip()}\n```\n{match[3]}"


def embedded(page):
    """The text of a page with its programs as they are now."""
    return BLOCK.sub(block, page.read_text())


if __name__ == "__main__":
    for page in pages():
        page.write_text(embedded(page))
