#!/usr/bin/python3
"""Draws columns of a CSV file as lines over its first column.

usage: plot.py CSV SVG TITLE X-LABEL Y-LABEL [log]     (log: the vertical axis is logarithmic)
"""
import csv
import math
import sys
from html import escape

WIDTH, HEIGHT, LEFT, RIGHT, TOP, BOTTOM = 760, 380, 76, 16, 40, 56
COLOURS = ["#0b6e99", "#c4442e", "#3d8b37", "#8a4fbe", "#b8860b"]


def steps(highest):
    """About five round values from 0 to the highest."""
    rough = max(highest, 1e-9) / 5
    unit = 10 ** math.floor(math.log10(rough))
    step = next(unit * n for n in (1, 2, 5, 10) if unit * n >= rough)
    return [step * n for n in range(int(highest / step) + 1)]


def main(source, target, title, x_label, y_label, scale="linear"):
    with open(source, newline="") as file:
        header, *rows = list(csv.reader(file))
    rows = [[float(cell) for cell in row] for row in rows]
    x_last = max(row[0] for row in rows) or 1
    y_last = max(max(row[1:]) for row in rows) or 1
    log = scale == "log"

    def x(value):
        return LEFT + value / x_last * (WIDTH - LEFT - RIGHT)

    def y(value):
        part = math.log10(max(value, 1)) / math.log10(max(y_last, 10)) if log else value / y_last
        return HEIGHT - BOTTOM - part * (HEIGHT - TOP - BOTTOM)

    marks = [10 ** n for n in range(int(math.log10(y_last)) + 1)] if log else steps(y_last)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
           'font-family="sans-serif" font-size="12">',
           f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
           f'<text x="{LEFT}" y="20" font-size="15">{escape(title)}</text>',
           f'<text x="{(LEFT + WIDTH) / 2}" y="{HEIGHT - 14}" text-anchor="middle">'
           f'{escape(x_label)}</text>',
           f'<text transform="translate(16 {HEIGHT / 2}) rotate(-90)" text-anchor="middle">'
           f'{escape(y_label)}</text>']
    for mark in marks:
        out.append(f'<path d="M{LEFT} {y(mark):.1f}H{WIDTH - RIGHT}" stroke="#ddd"/>'
                   f'<text x="{LEFT - 6}" y="{y(mark) + 4:.1f}" text-anchor="end">{mark:g}</text>')
    for mark in steps(x_last):
        out.append(f'<text x="{x(mark):.1f}" y="{HEIGHT - BOTTOM + 18}" '
                   f'text-anchor="middle">{mark:g}</text>')
    for n, name in enumerate(header[1:]):
        colour = COLOURS[n % len(COLOURS)]
        points = " ".join(f"{x(row[0]):.1f},{y(row[n + 1]):.1f}" for row in rows)
        out.append(f'<polyline points="{points}" fill="none" stroke="{colour}" stroke-width="1.5"/>'
                   f'<text x="{WIDTH - RIGHT}" y="{TOP + 14 + 16 * n}" text-anchor="end" '
                   f'fill="{colour}">{escape(name)}</text>')
    with open(target, "w") as file:
        file.write("\n".join(out) + "\n</svg>\n")


if __name__ == "__main__":
    if len(sys.argv) not in (6, 7):
        sys.exit(__doc__)
    main(*sys.argv[1:])
