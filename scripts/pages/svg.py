"""Pictures in the style of the pages."""
from html import escape

STYLE = """<style>
text { font: 14px "Liberation Sans", Roboto, Arial, sans-serif; fill: #1c2b33; }
text.name { font-weight: 700; font-size: 16px; }
text.small { font-size: 12.5px; fill: #40545e; }
text.code { font: 13px "Liberation Mono", "DejaVu Sans Mono", monospace; }
rect { stroke: #7d99a5; fill: #f3f6f7; }
path { stroke: #7d99a5; stroke-width: 1.5; fill: none; }
</style>
<defs><marker id="tip" markerWidth="8" markerHeight="8" refX="7" refY="4" orient="auto">
<path d="M1,1 L7,4 L1,7" fill="none"/></marker></defs>"""


def picture(width, height, title, parts):
    """A whole picture of a white ground; screen readers say the title."""
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
            f'width="{width}" height="{height}" role="img">')
    ground = f'<rect width="{width}" height="{height}" style="fill:#fff;stroke:none"/>'
    return "\n".join([head, f"<title>{escape(title)}</title>", STYLE, ground, *parts, "</svg>", ""])


def text(x, y, words, kind="", anchor="start"):
    return f'<text x="{x:g}" y="{y:g}" class="{kind}" text-anchor="{anchor}">{escape(words)}</text>'


def box(x, y, width, height, fill="#f3f6f7"):
    return f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" rx="6" style="fill:{fill}"/>'


def wrapped(words, length):
    """Cuts a text into lines of at most so many characters."""
    lines = [""]
    for word in words.split():
        if lines[-1] and len(lines[-1]) + 1 + len(word) > length:
            lines.append("")
        lines[-1] = f"{lines[-1]} {word}".strip()
    return lines
