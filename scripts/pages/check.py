#!/usr/bin/env python3
"""Checks that the pages are true to what they speak of.

usage: check.py links | names | programs | tests | pictures   (prints what is wrong; status 1 then)"""
import re
import sys

import embed
import floors
import journeys
from pages import LINK, MENTION, ROOT, all_pages, anchors, outside_code, public_headers

TEST = re.compile(r"\bTEST(?:_F|_P)?\((\w+),\s*(\w+)\)")

NAMED_FILE = re.compile(r"`((?:\w+/)+[\w.-]+\.(?:h|cpp|sh|py|md|txt|cmake))`")

OURS = re.compile(r"\b([CS]?Kor[A-Z]\w*|IOX_\w+)(?:::(\w+))?")


def where(path, number):
    return f"{path.relative_to(ROOT)}:{number}"


def broken(target, folder):
    """What is wrong with a link from a file of a folder; empty when nothing is."""
    path, _, anchor = target.partition("#")
    file = (folder / path).resolve() if path else None
    if file is not None and not file.exists():
        return "leads nowhere"
    if anchor and anchor not in anchors(file):
        return "has no such heading"
    return ""


def page_links():
    for page in all_pages():
        for number, line, is_text in outside_code(page.read_text()):
            if is_text and "](" in LINK.sub("", line):
                yield where(page, number), line, "is a link in two lines, which nobody checks"
            for match in LINK.finditer(line) if is_text else ():
                target = match[3] if not match[3].startswith("#") else page.name + match[3]
                if "://" not in target:
                    yield where(page, number), target, broken(target, page.parent)


def header_links():
    for header in public_headers():
        for number, line in enumerate(header.read_text().splitlines(), 1):
            for match in MENTION.finditer(line):
                target = f"docs/{match[1]}.md{match[2] or ''}"
                yield where(header, number), target, broken(target, ROOT)


def named_files():
    """Files of the tree that the pages name without a link."""
    for page in all_pages():
        for number, line in enumerate(page.read_text().splitlines(), 1):
            for name in NAMED_FILE.findall(line):
                yield where(page, number), name, "" if (ROOT / name).exists() else "is not there"


def links():
    """Every link leads to a file, its anchor to a heading of it, and every file that is named is
    there."""
    for place, target, wrong in [*page_links(), *header_links(), *named_files()]:
        if wrong:
            yield f"{place}: {target} {wrong}"


def names():
    """Every class, function and member of ours that a page names is there."""
    words = set(re.findall(r"\w+", "".join(h.read_text() for h in public_headers())))
    words |= {file.stem for file in ROOT.glob("*/Kor*")} | {file.stem for file in ROOT.glob("tests/*/*")}
    for page in all_pages():
        for number, line in enumerate(page.read_text().splitlines(), 1):
            for code in re.findall(r"`([^`]+)`", line):
                for name, member in OURS.findall(code):
                    if "." not in code and not {name, member or name} <= words:
                        yield f"{where(page, number)}: there is no {code}"


def tests():
    """Every test that a page names as its witness is there."""
    known = {f"{suite}.{name}" for file in ROOT.glob("tests/**/*.cpp")
             for suite, name in TEST.findall(file.read_text())}
    suites = {name.split(".")[0] for name in known}
    for page in all_pages():
        for number, line in enumerate(page.read_text().splitlines(), 1):
            for name in re.findall(r"`([A-Z]\w+\.[A-Z]\w+)`", line):
                suite = name.split(".")[0]
                if name not in known and (suite in suites or suite.startswith(("Kor", "Small"))):
                    yield f"{where(page, number)}: there is no test {name}"


def programs():
    """Every program on a page is the file that the tests compile and run."""
    for page in embed.pages():
        if embed.embedded(page) != page.read_text():
            yield f"{page.relative_to(ROOT)}: a program differs; run scripts/pages.sh"
    recipes = re.findall(r"<!-- program: (\S+) -->", (ROOT / "docs/cookbook.md").read_text())
    for file in ROOT.glob("examples/*.cpp"):
        longest = 30 if str(file.relative_to(ROOT)) in recipes else 40
        if len(file.read_text().splitlines()) > longest:
            yield f"examples/{file.name}: has more than {longest} lines"


def pictures():
    """The pictures are those that the scripts draw now."""
    for file, text in [*floors.pictures(), *journeys.pictures()]:
        if not file.exists() or file.read_text() != text:
            yield f"{file.relative_to(ROOT)}: is not what it shows any more; run scripts/pages.sh"


if __name__ == "__main__":
    found = list({"links": links, "names": names, "tests": tests, "programs": programs,
                  "pictures": pictures}[sys.argv[1]]())
    for wrong in found:
        print(wrong)
    sys.exit(1 if found else 0)
