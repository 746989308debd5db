#!/usr/bin/env python3
"""Makes the table of speeds in docs/speed-and-size.md of what the benchmarks measured.

usage: speed.py FOLDER   (holds Google Benchmark's results, *.json; scripts/bench.sh --tables runs
                          the benchmarks and this)"""
import json
import re
import sys
from pathlib import Path

from pages import ROOT

PAGE = ROOT / "docs/speed-and-size.md"

# What is done, the benchmark of this library, and those of the peers.
ROWS = [
    ("a date of an instant, `CalcDate()`", "DateByCalcDate",
     {"date": "DateByHinnant", "`gmtime_r`": "DateByGmtime"}),
    ("an instant of a date, `SetDate()`", "SetByNineParts", {"date": "SetByHinnant"}),
    ("a time written, `Time2Str()`", "TextByTime2Str", {"`strftime`": "TextByStrftime"}),
    ("a time read, `KorFromString()`", "ReadByKorFromString", {"`strptime`": "ReadByStrptime"}),
    ("ISO 8601 written, `KorToIsoString()`", "IsoWritten/Seconds",
     {"`strftime`": "IsoWrittenByStrftime", "Abseil": "IsoWrittenByAbseil",
      "date": "IsoWrittenByDate"}),
    ("ISO 8601 read, `KorFromIsoString()`", "IsoRead",
     {"`strptime`": "IsoReadByStrptime", "Abseil": "IsoReadByAbseil", "date": "IsoReadByDate"}),
    ("a zone's offset, instants far apart", "OffsetByTimeZone/FarApart",
     {"`localtime_r`": "OffsetByLocaltime/FarApart", "Abseil": "OffsetByAbseil/FarApart",
      "date": "OffsetByDate/FarApart"}),
    ("the process's offset, `KorGetUtcOffset()`", "OffsetOfTheProcess/FarApart",
     {"`localtime_r`": "OffsetByLocaltime/FarApart"}),
    ("an INI file of 10,000 lines read", "Load/10000", {"GKeyFile": "LoadGKeyFile/10000"}),
    ("an option of 10,000 looked up", "LookUp/10000/1", {"GKeyFile": "LookUpGKeyFile/10000/1"}),
    ("one option of 100 lines changed for good", "ChangeOne_WriteOption/100",
     {"GKeyFile": "ChangeOne_GKeyFile/100"}),
    ("a call posted to the loop and made", "PostedCall_Tarvo", {"libuv": "PostedCall_Libuv"}),
    ("a timer set and fired", "TimerThatFires_Tarvo", {"libuv": "TimerThatFires_Libuv"}),
    ("a timer set and cancelled among 10,000", "TimerAmongMany_Tarvo/10000",
     {"libuv": "TimerAmongMany_Libuv/10000"}),
    ("an event of one handle among 1,000", "HandleAmongMany_Tarvo/1000",
     {"libuv": "HandleAmongMany_Libuv/1000"}),
    ("a request and its answer, `CKorSerialLine`", "Ask<ByKorSerialLine>",
     {"by hand": "Ask<HandWritten>", "libserialport": "Ask<ByLibserialport>",
      "Asio": "Ask<ByAsio>", "Qt": "Ask<ByQt>"}),
    ("lines received, processor time, `CKorSerialLine`", "Receive<ByKorSerialLine>",
     {"by hand": "Receive<HandWritten>", "libserialport": "Receive<ByLibserialport>",
      "Asio": "Receive<ByAsio>", "Qt": "Receive<ByQt>"}),
    ("bytes received, processor time, `CKorSerial`", "ReceiveByKorSerial",
     {"libserialport": "ReceiveByLibserialport"}),
    ("a large memory dump, `KorMemDump()`", "MemDump",
     {"stream operators": "StreamOperators"}),
    ("a path cut, `SplitPath()`", "PathBySplitPath/0", {"GLib": "PathByGLib/0"}),
]
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
SUFFIXES = re.compile(r"/(iterations|repeats):\d+|/(real|manual|process)_time")


def results(folder):
    """Nanoseconds of each benchmark: the median where a run was repeated."""
    found, context = {}, {}
    for file in sorted(Path(folder).glob("*.json")):
        content = json.loads(file.read_text())
        context = content["context"]
        for run in content["benchmarks"]:
            if run.get("aggregate_name", "median") != "median" or "error_occurred" in run:
                continue
            wall = re.search("/(real|manual)_time", run["run_name"])
            time = run["real_time" if wall else "cpu_time"] * UNITS[run["time_unit"]]
            found[SUFFIXES.sub("", run["run_name"])] = time
    return found, context


def shown(nanoseconds):
    for unit in ("s", "ms", "us"):
        if nanoseconds >= UNITS[unit]:
            return f"{nanoseconds / UNITS[unit]:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def table(times):
    yield "| What | Here | Beside it, and how many times ours |"
    yield "|---|---:|---|"
    for what, name, peers in ROWS:
        if name not in times:
            raise SystemExit(f"speed.py: no result of {name}")
        beside = ", ".join(f"{peer} {shown(times[other])} ({times[other] / times[name]:.2g})"
                           for peer, other in peers.items())
        yield f"| {what} | {shown(times[name])} | {beside} |"


def main():
    times, context = results(sys.argv[1])
    lines = list(table(times))
    lines += ["", f"Measured on {context['num_cpus']} cores of {context['mhz_per_cpu']} MHz, "
              f"{context['date'][:10]}."]
    text = re.sub(r"(<!-- speed -->\n).*?(<!-- end -->)",
                  lambda match: match[1] + "\n".join(lines) + "\n" + match[2], PAGE.read_text(),
                  flags=re.S)
    PAGE.write_text(text)


if __name__ == "__main__":
    main()
