#!/usr/bin/env python3
"""Leaves on a disk what a drive with a volatile cache may hold after its power failed.

usage: lose-power.py DISK LOG SEED

LOG is what the emulator's blklogwrites driver kept of the writes and flushes since DISK was in the
state it is in. All writes up to the last flush are applied. Of each later sector chance decides;
at one failure out of three all are lost, at another none.
"""

import random
import struct
import sys

SECTOR, FLUSH, DISCARD = 512, 1, 4


def read_log(log):
    """The entries: a first sector and bytes, or None for a flush. What stands in front of them is
    written at a flush only, so that there may be nothing."""
    log.seek(SECTOR)
    while len(header := log.read(SECTOR)) == SECTOR:
        first, sectors, flags, _ = struct.unpack("<QQQQ", header[:32])
        if flags & FLUSH:
            yield None
        if sectors:
            data = b"" if flags & DISCARD else log.read(sectors * SECTOR)
            yield first * SECTOR, data
        elif not flags:
            return


def main():
    disk_name, log_name, seed = sys.argv[1:]
    chance = random.Random(seed)
    with open(log_name, "rb") as log:
        entries = list(read_log(log))
    flushes = [number for number, entry in enumerate(entries) if entry is None]
    safe = flushes[-1] if flushes else -1
    keep = chance.choice((0, 0.5, 1))
    kept = lost = 0
    with open(disk_name, "r+b") as disk:
        for number, (place, data) in ((n, e) for n, e in enumerate(entries) if e):
            for offset in range(0, len(data), SECTOR):
                if number > safe and chance.random() >= keep:
                    lost += 1
                    continue
                kept += 1
                disk.seek(place + offset)
                disk.write(data[offset : offset + SECTOR])
    print(f"{len(flushes)} flushes, {kept} sectors written, {lost} lost")


main()
