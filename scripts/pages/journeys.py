#!/usr/bin/env python3
"""Draws the three journeys of docs/architecture.md: a setting, a byte, an instant."""
import svg
from pages import ROOT

WIDTH, STEP, HEIGHT = 480, 70, 48

# Each step: where it happens, what happens there.
JOURNEYS = {
    "journey-setting": ("A setting, from the file into a variable and back", [
        ("/etc/gateway.ini", "Interval = 1.5s   # a person wrote this"),
        ("fs/ KorReadFile()", "one look at a whole file, which never waits for a writer"),
        ("config/ reader, grammar", "lines, with their numbers; a comment is a line too"),
        ("config/ IOX_Range()", "KorReadText() takes the whole text or nothing, then the limits"),
        ("the program's variable", "1500 ms; or the default, and a finding with the line's number"),
        ("config/ UpdateOptions(true)", "only what differs from the file is set"),
        ("config/ edit", "the value's bytes change, every other byte stays"),
        ("fs/ a whole new file", "lock of the directory, new file, fsync, rename, fsync"),
        ("/etc/gateway.ini", "a whole old file or a whole new one, whenever the power goes"),
    ]),
    "journey-byte": ("A byte, from the wire to the program", [
        ("serial/ Open()", "locked, raw, no controlling terminal: nobody else reads it"),
        ("the driver", "no byte is changed, taken out or answered"),
        ("event/ CKorEventLoop", "epoll tells that the line is readable; the thread slept"),
        ("serial/ Read(), ReadUntil()", "one read for all that is there, up to 4 KiB at a time"),
        ("serial/ held bytes", "what stands behind the delimiter stays for the next read"),
        ("the program's handler", "a line, a frame, or a number of bytes; a trace sees them all"),
        ("a hang-up", "first the bytes that came, then EIO, until the next Open()"),
    ]),
    "journey-instant": ("An instant, from the clock to a text and back", [
        ("the system's clock", "seconds and microseconds since 1970"),
        ("time/ CKorUTCTime", "ticks of 10 ns since the year 0, 64 bits on every board"),
        ("time/ CKorTimeZone", "the offset at this instant, with the zone's history and rules"),
        ("time/ CKorZoneTime", "what the clock on the wall shows, with its offset"),
        ("time/ KorToIsoString()", "2024-03-05T14:07:09.250+01:00, in a file or a log"),
        ("time/ KorFromIsoString()", "all of the text or nothing; the same instant again"),
        ("time/ CKorTimeout", "none of this: waits run on the clock that nobody sets"),
    ]),
}


def step(number, where, what):
    y = 12 + number * STEP
    return "\n".join([svg.box(12, y, WIDTH - 24, HEIGHT, "#eaf4ec" if "/ " in where else "#fbf1dd"),
                      svg.text(24, y + 20, where, "name"), svg.text(24, y + 38, what, "small")])


def down(number):
    y = 12 + number * STEP + HEIGHT
    return f'<path d="M{WIDTH / 2:g},{y} V{y + STEP - HEIGHT}" marker-end="url(#tip)"/>'


def pictures():
    for name, (title, steps) in JOURNEYS.items():
        parts = [step(number, *words) for number, words in enumerate(steps)]
        parts += [down(number) for number in range(len(steps) - 1)]
        yield (ROOT / f"docs/{name}.svg",
               svg.picture(WIDTH, len(steps) * STEP + 2, title, parts))


if __name__ == "__main__":
    for file, drawn in pictures():
        file.write_text(drawn)
