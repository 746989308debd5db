"""What Python's zoneinfo says about zones around each of their changes from 1900 to 2100.

usage: ZonePeer.py DIRECTORY PART PARTS   one of so many parts of the directory's zones, of which
                                          those below right/ are left out
Prints for each zone, in fields with blanks between them:
  Z name...                                  all names of the zone
  U seconds offset summer abbreviation        at a change and one second beside it
  L year month day hour minute second kind earlier later
                                              readings beside a change; kind as CKorTimeZone::EKind
"""
import datetime
import os
import struct
import sys
import zoneinfo

EPOCH = datetime.datetime(1970, 1, 1)
SECOND = datetime.timedelta(seconds=1)
BEGIN = (datetime.datetime(1900, 1, 1) - EPOCH) // SECOND
END = (datetime.datetime(2101, 1, 1) - EPOCH) // SECOND
MONTH = 28 * 86400


def at(zone, seconds):
    utc = (EPOCH + seconds * SECOND).replace(tzinfo=datetime.timezone.utc)
    return utc.astimezone(zone)


def shown(zone, seconds):
    time = at(zone, seconds)
    return time.utcoffset() // SECOND, int(bool(time.dst())), time.tzname()


def changes_in_file(content):
    counts = struct.unpack('>6I', content[20:44])
    utc, standard, leaps, changes, types, chars = counts
    second = 44 + changes * 5 + types * 6 + chars + leaps * 8 + standard + utc
    changes = struct.unpack('>I', content[second + 32:second + 36])[0]
    return struct.unpack('>%dq' % changes, content[second + 44:second + 44 + changes * 8])


def changes_by_rule(content, zone, begin):
    """The changes that no file lists, each more than a month from the next."""
    if b',' not in content[-80:]:
        return
    before = shown(zone, begin)
    for low in range(begin, END, MONTH):
        high = low + MONTH
        after = shown(zone, high)
        while before != after and high - low > 1:
            middle = (low + high) // 2
            low, high = (middle, high) if shown(zone, middle) == before else (low, middle)
        if before != after:
            yield high
        before = after


def instants(zone, reading):
    """All instants that a clock may mean, and whether it shows the reading then."""
    for fold in (0, 1):
        time = reading.replace(tzinfo=zone, fold=fold)
        seconds = (reading - time.utcoffset() - EPOCH) // SECOND
        yield seconds, at(zone, seconds).replace(tzinfo=None) == reading


def tell(zone, change):
    for seconds in (change - 1, change, change + 1):
        print('U', seconds, *shown(zone, seconds))
    for offset in (shown(zone, change - 1)[0], shown(zone, change)[0]):
        for seconds in (change + offset - 1, change + offset):
            reading = EPOCH + seconds * SECOND
            (a, a_shown), (b, b_shown) = instants(zone, reading)
            kind = 0 if a == b else 1 if a_shown and b_shown else 2
            print('L', *reading.timetuple()[:6], kind, min(a, b), max(a, b))


def contents(directory):
    """The names of the zones by the content of their files, of which many are the same."""
    paths = [os.path.join(folder, name)
             for folder, _, files in os.walk(directory, followlinks=True) for name in files]
    found = {}
    for name in sorted(os.path.relpath(path, directory) for path in paths):
        with open(os.path.join(directory, name), 'rb') as file:
            content = file.read()
        if content[:4] == b'TZif' and not name.startswith('right/'):
            found.setdefault(content, []).append(name)
    return found


def main(directory, part, parts):
    zoneinfo.reset_tzpath([directory])
    for content, names in list(contents(directory).items())[int(part)::int(parts)]:
        zone = zoneinfo.ZoneInfo(names[0])
        listed = changes_in_file(content)
        begin = max(listed[-1] + 1 if listed else BEGIN, BEGIN)
        print('Z', *names)
        for change in [c for c in listed if BEGIN <= c < END]:
            tell(zone, change)
        for change in changes_by_rule(content, zone, begin):
            tell(zone, change)


main(*sys.argv[1:])
