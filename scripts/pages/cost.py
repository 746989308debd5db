#!/usr/bin/env python3
"""Makes the tables of docs/speed-and-size.md and docs/stack.md that tell what a board pays.

usage: cost.py BUILD   (a static build for armhf with -fcallgraph-info=su; scripts/cost.sh makes it)"""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

from pages import ROOT

TOOLS = "arm-linux-gnueabihf-"
# What a program uses, the headers for it, and a statement that does.
PROBES = [
    ("`CKorStopwatch`", "time/KorTimeout.h", "CKorStopwatch o; return o.GetElapsed().GetTotalSeconds() > 9;"),
    ("`CKorMutex`", "base/KorMutex.h", "CKorMutex o; return o.Lock(1);"),
    ("`CKorThread`", "base/KorThread.h",
     "struct T : CKorThread { T() : CKorThread(0) {} void Run() override {} } o; return o.Start();"),
    ("`KorStrTrim()`", "text/KorStringFunc.h", 'return KorStrTrim(v[0]).size();'),
    ("`KorToHexText()`, `KorFromHexText()`", "text/KorHexText.h",
     'std::string s; return KorFromHexText(v[0], s) + KorToHexText(v[0], 3).size();'),
    ("`KorToHexDump()`", "text/KorHexText.h", "return KorToHexDump(v[0], 3).size();"),
    ("`KorMemDump()`", "text/KorMemDump.h", "return KorMemDump(v[0], 3, 1, 1).size();"),
    ("`CKorUTCTime::Time2Str()`", "time/KorUTCTime.h",
     "return CKorUTCTime::CurrentTime().Time2Str(CKorUTCTime::eDateTime).size();"),
    ("`KorToIsoString()`", "time/KorIsoTime.h", "return KorToIsoString(CKorUTCTime(n)).size();"),
    ("`KorFromIsoString()`", "time/KorIsoTime.h", "CKorUTCTime o; return KorFromIsoString(v[0], o);"),
    ("`KorFromMailDate()`", "time/KorMailDate.h", "CKorUTCTime o; return KorFromMailDate(v[0], o);"),
    ("`CKorTimeZone`", "time/KorTimeZone.h", "CKorTimeZone o; return o.Load(v[0]);"),
    ("`CKorZoneTime::CurrentTime()`", "time/KorZoneTime.h",
     "return CKorZoneTime::CurrentTime().GetHour();"),
    ("`CKorLocalTime::CurrentLocalTime()`", "time/KorLocalTime.h",
     "return CKorLocalTime::CurrentLocalTime().GetHour();"),
    ("`SplitPath()`", "fs/KorPathFunc.h", "return GetFileName(v[0]).size();"),
    ("`CKorFile`", "fs/KorFile.h", "CKorFile o(v[0], 0); return o.Read(v[0], 1);"),
    ("`KorReadFile()`", "fs/KorWholeFile.h", "std::string s; return KorReadFile(v[0], s);"),
    ("`KorReplaceFile()`", "fs/KorWholeFile.h", "return KorReplaceFile(v[0], v[1]);"),
    ("`CKorChild`", "fs/KorChild.h", "CKorChild o; return o.Start({v[0]}) && o.Wait(9);"),
    ("`KorRunProgram()`", "fs/KorChild.h", "std::string s; int i; return KorRunProgram({v[0]}, s, i, 9);"),
    ("`KorReadText()` of a number", "config/KorTextValue.h", "int i = 0; return KorReadText(v[0], i) + i;"),
    ("`CKorIniFile`", "config/KorIniFile.h",
     'CKorIniFile o(v[0], CKorIniFile::PATH_UNCHANGED); return o.ReadOption("a", "b", "").size();'),
    ("`CKorSafeIniFile`, reading and writing", "config/KorSafeIniFile.h",
     'CKorSafeIniFile o(v[0], CKorIniFile::PATH_UNCHANGED); return o.WriteOption("a", "b", v[0]);'),
    ("the same with `IOX_Range()`", "config/KorTypedOptions.h config/KorSafeIniFile.h",
     "struct S : CKorSafeIniFile { S(char* p) : CKorSafeIniFile(p, PATH_UNCHANGED) {} "
     "using CKorSafeIniFile::DoOptionExchange; void DoOptionExchange(CKorIniOptionExchange* p) override "
     '{ IOX_Range(p, "a", "b", m_n, 1, 0, 9); } int m_n; } o(v[0]); return o.UpdateOptions(n > 1);'),
    ("`KorCheckIniFile()`", "config/KorIniFinding.h",
     "std::vector<SKorIniFinding> vec; return KorCheckIniFile(v[0], false, vec);"),
    ("`CKorSerial`", "serial/KorSerial.h",
     "CKorSerial o; return o.open(v[0], CKorSerial::BAUD_9600, CKorSerial::PARITY_NONE, "
     "CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr);"),
    ("`CKorSerialLine`", "serial/KorSerialLine.h",
     'CKorSerialLine o; std::string s; return o.Open(v[0]) + o.ReadUntil("x", s, 9) + o.WriteText(s, 9);'),
    ("`KorListSerialPorts()`", "serial/KorSerialPorts.h",
     "std::vector<SKorSerialPort> vec; KorListSerialPorts(vec); return vec.size();"),
    ("`CKorEventLoop`", "event/KorEventLoop.h",
     "CKorEventLoop o; o.CallEvery(9, [&o] { o.Stop(); }); return o.Run();"),
    ("`CKorLog`", "app/KorLog.h", 'KorGetLog().Write(CKorLog::LEVEL_INFO, "%d", n); return 0;'),
    ("`CKorOptionParser`", "app/KorOptionParser.h",
     'CKorOptionParser o({"a", "1", "", "", "", nullptr}); o.AddOption("n", "N", n, ""); '
     "return o.Parse(n, v);"),
    ("`CKorPidFile`", "app/KorPidFile.h", "CKorPidFile o; return o.Acquire(v[0]);"),
    ("`KorNotifyReady()`", "app/KorServiceNotify.h", "return KorNotifyReady();"),
    ("`CKorConApplication`", "app/KorConApplication.h",
     'struct A : CKorConApplication { A() : CKorConApplication(0, "a", 0) {} void Run() override {} } o; '
     "return o.Start(n, v);"),
    ("`CKorDaemonApplication` with log, loop and options", "app/KorDaemonApplication.h app/KorLog.h",
     'struct A : CKorDaemonApplication { A() : CKorDaemonApplication(0, "a", 0) {} bool Initialize() '
     'override { KorGetLog().Write(CKorLog::LEVEL_INFO, "%d", 1); return true; } } o; '
     "return o.Start(n, v);"),
]
NODE = re.compile(r'^node: { title: "([^"]+)" label: "([^"]*?)\\n[^"]*?\\n(\d+) bytes \(([^)]*)\)', re.M)
EDGE = re.compile(r'^edge: { sourcename: "([^"]+)" targetname: "([^"]+)"', re.M)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Linker:
    """Links programs with what a build made, and measures them."""

    def __init__(self, build, folder):
        self.libraries = [f"{build}/libTarvoExtRelease.a", f"{build}/base/libTarvoRelease.a"]
        self.folder = Path(folder)

    def bytes_of(self, headers, statement, *flags):
        """Text and data of a stripped program."""
        source, program = self.folder / "probe.cpp", self.folder / "probe"
        includes = "".join(f'#include "{header}"\n' for header in headers.split())
        source.write_text(f"{includes}int main(int n, char** v)\n{{\n(void)n, (void)v; {statement}\n}}\n")
        run(f"{TOOLS}g++", "-std=c++17", "-Os", "-ffunction-sections", "-fdata-sections", f"-I{ROOT}",
            str(source), "-o", str(program), "-s", "-Wl,--gc-sections", *flags, *self.libraries, "-pthread")
        text, data = run(f"{TOOLS}size", str(program)).splitlines()[1].split()[:2]
        return int(text) + int(data)


def programs(build):
    with tempfile.TemporaryDirectory() as folder:
        linker = Linker(build, folder)
        empty, empty_static = (linker.bytes_of("", "return 0;", *flags) for flags in ((), ("-static",)))
        yield "| A program that uses | Pays | Wholly static |"
        yield "|---|---:|---:|"
        for what, headers, statement in PROBES:
            shared = linker.bytes_of(headers, statement) - empty
            static = linker.bytes_of(headers, statement, "-static") - empty_static
            yield f"| {what} | {shared} | {static} |"


def call_graph(build):
    """Own stack of each function, and whom it calls, by linker names."""
    own, calls, odd = {}, {}, set()
    for file in Path(build).rglob("*.ci"):
        text = file.read_text()
        for title, _, size, kind in NODE.findall(text):
            own[title] = max(own.get(title, 0), int(size))
            if "dynamic" in kind:
                odd.add(title)
        for source, target in EDGE.findall(text):
            calls.setdefault(source, set()).add(target)
    return own, calls, odd


def deepest(function, own, calls, known, path=()):
    """Stack of a function and of what it calls in the library; a recursion counts once."""
    if function in path or function not in own:
        return 0
    if function not in known:
        below = max((deepest(other, own, calls, known, (*path, function))
                     for other in calls.get(function, ())), default=0)
        known[function] = own[function] + below
    return known[function]


def exported():
    """Names of the exported functions, without their arguments."""
    lines = (ROOT / "tests/exports.txt").read_text().splitlines()
    return {line.strip().split("(")[0] for line in lines if "(" in line}


def operations(build):
    """Own stack and deepest path of each exported function."""
    own, calls, odd = call_graph(build)
    titles = [title for title in own if ":" not in title]
    spoken = run(f"{TOOLS}c++filt", *titles).splitlines()
    public, known = exported(), {}
    for title, name in sorted(zip(titles, spoken), key=lambda pair: pair[1]):
        if name.split("(")[0].replace("[abi:cxx11]", "") in public:
            name = re.sub(r"std::__cxx11::basic_string<char, .*?> ?(?=[,)&> ])", "std::string", name)
            yield name.replace("[abi:cxx11]", ""), own[title], deepest(title, own, calls, known), title in odd


def subject(name):
    head = name.split("(")[0]
    return head.rsplit("::", 1)[0] if "::" in head else "functions"


def stack_tables(build):
    """A row a class with its deepest operation, and a row an operation."""
    rows = {}
    for name, own, deep, is_odd in operations(build):
        if not re.match(r"vtable|typeinfo", name):
            found = rows.setdefault(subject(name), {})  # a constructor is there more than once
            found[name] = max(found.get(name, (0, 0, False)), (own, deep, is_odd))
    brief = ["| Class | Operations | Deepest | Bytes |", "|---|---:|---|---:|"]
    full = ["| Operation | Own bytes | With what it calls here |", "|---|---:|---:|"]
    for owner, found in sorted(rows.items()):
        deepest_one = max(found, key=lambda name: found[name][1])
        short = deepest_one.split("(")[0].rsplit("::", 1)[-1]
        brief.append(f"| {owner if owner == 'functions' else f'`{owner}`'} | {len(found)} | "
                     f"`{short}()` | {found[deepest_one][1]} |")
        for name, (own, deep, is_odd) in found.items():
            full.append(f"| `{name}` | {own}{' and more' if is_odd else ''} | {deep} |")
    return brief, full


def write(page, mark, lines):
    text = page.read_text()
    block = f"<!-- {mark} -->\n" + "\n".join(lines) + "\n<!-- end -->"
    page.write_text(re.sub(f"<!-- {mark} -->\n.*?<!-- end -->", lambda _: block, text, flags=re.S))


if __name__ == "__main__":
    by_class, by_operation = stack_tables(sys.argv[1])
    write(ROOT / "docs/speed-and-size.md", "programs", list(programs(sys.argv[1])))
    write(ROOT / "docs/speed-and-size.md", "stack", by_class)
    write(ROOT / "docs/stack.md", "operations", by_operation)
