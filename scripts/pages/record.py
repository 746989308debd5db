#!/usr/bin/env python3
"""Runs a command in a terminal and draws what it showed as a picture.

usage: record.py [--from TEXT] [--rows N] [--columns N] [--seconds N] PICTURE COMMAND...
  --from TEXT   begins with the first line that holds TEXT
  --rows N      draws at most so many lines (30); longer ones are cut
  --columns N   width of the terminal (96)
  --seconds N   ends the command with SIGINT after so long (120)"""
import argparse
import fcntl
import os
import pty
import re
import select
import signal
import struct
import termios
import time
from html import escape

COLOURS = {30: "#8a99a0", 31: "#ff8c82", 32: "#8fd694", 33: "#f0cf78", 34: "#8ab8ff", 35: "#e0a3e8",
           36: "#7fd6dc", 37: "#e6edf0"}
INK, PAPER, CELL, LINE, EDGE = "#d6e2e7", "#10262f", 8.0, 18, 14
TOKEN = re.compile(r"\x1b\[([?0-9;]*)([A-Za-z])|\x1b.|[\r\n\b\t\a]|[^\x00-\x1f\x7f]+|.", re.S)


class Screen:
    """The lines that a terminal showed, none of them forgotten; each cell with its looks."""

    def __init__(self):
        self.lines, self.row, self.column, self.look = [[]], 0, 0, (None, False)

    def put(self, text):
        line = self.lines[self.row]
        line.extend([(" ", (None, False))] * (self.column - len(line)))
        line[self.column:self.column + len(text)] = [(letter, self.look) for letter in text]
        self.column += len(text)

    def move_to_row(self, row):
        self.row = max(row, 0)
        while len(self.lines) <= self.row:
            self.lines.append([])

    def set_look(self, codes):
        colour, bold = self.look
        for code in [int(code or 0) for code in codes.split(";")]:
            if code == 0:
                colour, bold = None, False
            elif code in (1, 22):
                bold = code == 1
            elif code == 39:
                colour = None
            else:
                colour = COLOURS.get(code - 60 if code >= 90 else code, colour)
        self.look = (colour, bold)

    def control(self, numbers, letter):
        count = int(numbers) if numbers.isdigit() and numbers != "0" else 1
        if letter == "m":
            self.set_look(numbers)
        elif letter == "K":
            del self.lines[self.row][self.column:]
        elif letter in "AB":
            self.move_to_row(self.row + (count if letter == "B" else -count))
        elif letter in "CD":
            self.column = max(self.column + (count if letter == "C" else -count), 0)
        elif letter == "G":
            self.column = count - 1
        elif letter in "HJ":  # a new screen: what was there stays above
            self.move_to_row(len(self.lines) if self.lines[-1] else len(self.lines) - 1)
            self.column = 0

    def feed(self, text):
        for match in TOKEN.finditer(text):
            token = match[0]
            if match[2]:
                self.control(match[1], match[2])
            elif token == "\n":
                self.move_to_row(self.row + 1)
            elif token == "\r":
                self.column = 0
            elif token == "\b":
                self.column = max(self.column - 1, 0)
            elif token == "\t":
                self.column += 8 - self.column % 8
            elif token >= " " and token != "\x7f":
                self.put(token)


def recorded(command, columns, seconds):
    """What a command writes to its terminal."""
    child, terminal = pty.fork()
    if child == 0:
        os.environ["TERM"] = "xterm"
        os.execvp(command[0], command)
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("4H", 40, columns, 0, 0))
    output, limit = b"", time.monotonic() + seconds
    while True:
        ready, _, _ = select.select([terminal], [], [], max(limit - time.monotonic(), 0.01))
        if not ready:
            os.killpg(child, signal.SIGINT)
            limit += 10
            continue
        try:
            piece = os.read(terminal, 65536)
        except OSError:  # the last writer is gone
            piece = b""
        if not piece:
            break
        output += piece
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    return output.decode("utf-8", "replace"), status


def runs(line):
    """Cuts a line into pieces of one look."""
    start = 0
    for column in range(1, len(line) + 1):
        if column == len(line) or line[column][1] != line[start][1]:
            yield start, "".join(letter for letter, _ in line[start:column]), line[start][1]
            start = column


def drawn_line(number, line):
    y = EDGE + 30 + number * LINE
    for column, text, (colour, bold) in runs(line):
        if text.strip():
            looks = f' fill="{colour}"' if colour else ""
            looks += ' font-weight="700"' if bold else ""
            yield (f'<text x="{EDGE + column * CELL:g}" y="{y}" textLength="{len(text) * CELL:g}" '
                   f'xml:space="preserve"{looks}>{escape(text)}</text>')


def picture(lines, columns, title):
    width, height = 2 * EDGE + columns * CELL, 2 * EDGE + 24 + len(lines) * LINE
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width:g} {height}" '
            f'width="{width:g}" height="{height}" role="img"><title>{escape(title)}</title>')
    style = (f'<style>text {{ font: 13.2px "Liberation Mono", "DejaVu Sans Mono", monospace; }}</style>'
             f'<rect width="{width:g}" height="{height}" rx="8" fill="{PAPER}"/><g fill="{INK}">')
    dots = [f'<circle cx="{EDGE + 6 + 18 * n}" cy="14" r="5" fill="{colour}"/>'
            for n, colour in enumerate(("#ff8c82", "#f0cf78", "#8fd694"))]
    texts = [text for number, line in enumerate(lines) for text in drawn_line(number, line)]
    return "\n".join([head, style, *dots, *texts, "</g></svg>", ""])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--from", dest="begin", default="")
    parser.add_argument("--rows", type=int, default=30)
    parser.add_argument("--columns", type=int, default=96)
    parser.add_argument("--seconds", type=float, default=120)
    parser.add_argument("picture")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    asked = parser.parse_args()
    output, status = recorded(asked.command, asked.columns, asked.seconds)
    screen = Screen()
    screen.feed(output)
    lines = screen.lines
    texts = ["".join(letter for letter, _ in line).rstrip() for line in lines]
    begin = next((n for n, text in enumerate(texts) if asked.begin in text), None)
    if begin is None:
        raise SystemExit(f"record.py: no line holds {asked.begin!r}:\n{output}")
    while lines and not texts[len(lines) - 1]:
        lines.pop()
    lines = [line[:asked.columns] for line in lines[begin:begin + asked.rows]]
    with open(asked.picture, "w") as file:
        file.write(picture(lines, asked.columns, " ".join(asked.command)))
    return 0 if status in (0, -signal.SIGINT, 130) else 1


if __name__ == "__main__":
    raise SystemExit(main())
