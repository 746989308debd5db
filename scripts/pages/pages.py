"""The pages of the project: what is common to the programs that make and check them."""
import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LINK = re.compile(r"(!?)\[([^\]]*)\]\(([^)\s]+)\)")
# How a header names a page: docs/known-behaviour.md#serial-ports, in backticks or not.
MENTION = re.compile(r"`?\bdocs/([\w-]+)\.md(#[\w-]+)?`?")


def all_pages():
    """The Markdown files that are for people, as paths from the root."""
    return sorted(ROOT.glob("*.md")) + sorted(ROOT.glob("docs/*.md"))


def public_headers():
    return sorted(h for h in ROOT.glob("*/Kor*.h") if not h.stem.endswith("Detail")
                  and h.parent.name in LIBRARY_FOLDERS)


LIBRARY_FOLDERS = ("base", "text", "time", "fs", "config", "serial", "event", "app")


def slug(heading):
    """The anchor that a heading has, as the usual viewers of Markdown make it."""
    text = LINK.sub(r"\2", heading).replace("`", "").lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def outside_code(text):
    """Yields number, line and whether the line is text, not code."""
    fenced = False
    for number, line in enumerate(text.splitlines(), 1):
        fence = line.startswith("```")
        yield number, line, not (fenced or fence or line.startswith("    "))
        fenced ^= fence


def anchors(page):
    """The anchors of a page with the numbers of their lines."""
    found = {}
    for number, line, is_text in outside_code(page.read_text()):
        heading = re.match(r"#+ (.*)", line) if is_text else None
        if heading:
            base = name = slug(heading[1])
            count = 0
            while name in found:
                count += 1
                name = f"{base}-{count}"
            found[name] = number
    return found
