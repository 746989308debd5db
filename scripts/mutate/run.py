"""Mutates the library: makes single edits of a folder's sources, and sees whether its tests notice.

usage: run.py BUILD FOLDER COUNT SEED    in the root of a tree of its own, built in BUILD
"""
import concurrent.futures
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import threading
import time

import edits

HERE = os.path.dirname(os.path.abspath(__file__))
LIBRARIES = {"base": "base/libTarvoRelease.so"}
LIBRARY = "libTarvoExtRelease.so"
MAX_RECOMPILED = 14  # objects; an edit of a header that more include is not tried
NEEDED = 95  # per cent that are to be caught


class Mutant:
    """An edit of a file, and what became of it."""

    def __init__(self, path, text, edit):
        self.path, self.edit = path, edit
        self.text = edits.apply(text, edit)
        self.line, self.old, self.new = edits.changed_lines(text, edit)
        self.verdict = self.detail = ""

    def order(self, seed):
        key = "|".join((str(seed), self.path, self.edit.kind, self.old, self.new))
        return hashlib.sha256(key.encode()).digest()

    def __str__(self):
        return f"{self.path}:{self.line}: {self.edit.kind}\n    - {self.old}\n    + {self.new}"


class Build:
    """The commands of a build folder, which can be repeated with another source and elsewhere."""

    def __init__(self, folder):
        self.folder = os.path.abspath(folder)
        with open(f"{folder}/compile_commands.json", encoding="utf-8") as file:
            entries = json.load(file)
        for entry in entries:
            entry["output"] = re.search(r" -o (\S+) -c ", entry["command"]).group(1)
        self.compile = {os.path.join(entry["directory"], entry["output"]): entry
                        for entry in entries}
        self.included = self._read_included()
        self.links = {}

    def _run(self, *words):
        return subprocess.run(("ninja", "-C", self.folder, *words), check=True, text=True,
                              capture_output=True).stdout

    def _read_included(self):
        """The files that each object is made of."""
        included, item = {}, None
        for line in self._run("-t", "deps").splitlines():
            if line.startswith(" "):
                included[item].add(os.path.relpath(os.path.join(self.folder, line.strip())))
            elif ":" in line:
                item = os.path.join(self.folder, line.split(":")[0])
                included[item] = set()
        return included

    def objects_of(self, path, programs):
        """What has to be compiled again, of the libraries and of the test programs."""
        wanted = ("TarvoExt.dir", "TarvoBase.dir", *(f"{program}.dir" for program in programs))
        return [item for item, files in self.included.items()
                if path in files and item.split("CMakeFiles/")[1].split("/")[0] in wanted]

    def compile_command(self, item, output, overlay):
        entry = self.compile[item]
        path = os.path.relpath(entry["file"])
        source = os.path.join(overlay, path)
        command = entry["command"].replace(f"-o {entry['output']}", f"-o {output}", 1)
        if os.path.exists(source):
            command = command.replace(f"-c {entry['file']}", f"-c {source}", 1)
        # What is merely odd is what tests are to notice.
        return command.replace(" -Werror", "").replace(" -I", f" -I{overlay} -I", 1)

    def link_command(self, target, output, objects):
        if target not in self.links:
            last = self._run("-t", "commands", "-s", target).strip().splitlines()[-1]
            self.links[target] = last
        command = self.links[target].replace(f"-o {target}", f"-o {output}", 1)
        for item, made in objects.items():
            command = re.sub(rf"(?<=\s){re.escape(os.path.relpath(item, self.folder))}(?=\s)", made,
                             command)
        return command

    def is_part_of(self, item, target):
        self.link_command(target, target, {})
        return f" {os.path.relpath(item, self.folder)} " in self.links[target]


class Judge:
    """Builds a mutant beside the unchanged programs and runs the tests of its folder."""

    def __init__(self, build, folder, scratch):
        self.build, self.scratch = build, scratch
        self.programs = sorted(name for name in os.listdir(f"{build.folder}/tests/{folder}")
                               if name.startswith("test-") and name.endswith(".bin"))
        self.targets = [LIBRARY, LIBRARIES["base"]] + \
            [f"tests/{folder}/{name}" for name in self.programs]
        self.limit = 120  # seconds, until it is known how long the tests take

    def slot(self):
        place = os.path.join(self.scratch, threading.current_thread().name)
        shutil.rmtree(place, ignore_errors=True)
        os.makedirs(f"{place}/tree")
        os.makedirs(f"{place}/run")
        return place

    def test(self, place):
        for target in self.targets:
            name = f"{place}/run/{os.path.basename(target)}"
            if not os.path.exists(name):
                os.link(f"{self.build.folder}/{target}", name)
        return subprocess.run(("unshare", "-mpf", "--kill-child", "--mount-proc",
                               f"{HERE}/confined.sh", f"{place}/run", str(self.limit)),
                              capture_output=True, text=True, errors="replace", check=False)

    def judge(self, mutant):
        place = self.slot()
        name = f"{place}/tree/{mutant.path}"
        os.makedirs(os.path.dirname(name))
        with open(name, "w", encoding="utf-8") as file:
            file.write(mutant.text)
        mutant.verdict = self._make(mutant, place)
        if not mutant.verdict:
            result = self.test(place)
            mutant.verdict = "caught" if result.returncode else "survived"
            mutant.detail = result.stdout.strip().split("\n")[-1] if result.returncode else ""
        return mutant

    def _make(self, mutant, place):
        """@return why there is nothing to run, otherwise an empty text"""
        names = [program[:-4] for program in self.programs]
        items = self.build.objects_of(mutant.path, names)
        if len(items) > MAX_RECOMPILED:
            return "included by too many"
        made = {}
        for item in items:
            output = f"{place}/{len(made)}.o"
            if self._fails(self.build.compile_command(item, output, f"{place}/tree")):
                return "does not compile"
            if not same(output, item):
                made[item] = output
        if not made:
            return "compiles to the same"
        for target in self.targets:
            if any(self.build.is_part_of(item, target) for item in made):
                output = f"{place}/run/{os.path.basename(target)}"
                if self._fails(self.build.link_command(target, output, made)):
                    return "does not compile"
        return ""

    def _fails(self, command):
        return subprocess.run(command, shell=True, cwd=self.build.folder, check=False,
                              capture_output=True).returncode != 0


def same(left, right):
    with open(left, "rb") as one, open(right, "rb") as other:
        return one.read() == other.read()


def read_equivalent():
    """The edits that change nothing that can be seen: file, line before and after."""
    with open(f"{HERE}/equivalent.txt", encoding="utf-8") as file:
        blocks = re.split(r"\n\s*\n", re.sub(r"(?m)^#.*\n", "", file.read()).strip())
    lines = [[line.strip() for line in block.splitlines()] for block in blocks if block]
    return {(block[0], block[1][2:], block[2][2:]) for block in lines}


def mutants_of(folder, seed):
    """All mutants of a folder, in the order of the seed."""
    mutants, seen = [], set()
    for name in sorted(os.listdir(folder)):
        if not name.endswith((".cpp", ".h")):
            continue
        path = f"{folder}/{name}"
        with open(path, encoding="utf-8") as file:
            text = file.read()
        for edit in edits.edits_of(text):
            mutant = Mutant(path, text, edit)
            if mutant.text not in seen:
                seen.add(mutant.text)
                mutants.append(mutant)
    return sorted(mutants, key=lambda mutant: mutant.order(seed))


def judged(judge, mutants, count):
    """Mutants with their verdicts, until so many counted."""
    jobs = os.cpu_count() + 1  # tests wait more than they work
    counted, waiting = 0, iter(mutants)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        running = set()
        while True:
            while len(running) < min(jobs, count - counted):
                mutant = next(waiting, None)
                if mutant is None:
                    break
                running.add(pool.submit(judge.judge, mutant))
            if not running:
                return
            done, running = concurrent.futures.wait(
                running, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                mutant = future.result()
                counted += mutant.verdict in ("caught", "survived")
                yield mutant


def main():
    build, folder, count, seed = sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4]
    judge = Judge(Build(build), folder, os.path.abspath(f"{build}/mutants"))
    begun = time.monotonic()
    result = judge.test(judge.slot())
    judge.limit = 15 + 4 * int(time.monotonic() - begun)
    if result.returncode:
        print(result.stdout, result.stderr)
        sys.exit(f"{folder}: the tests fail without an edit")
    equivalent = read_equivalent()
    known = [0]

    def unknown(mutant):
        if (mutant.path, mutant.old, mutant.new) not in equivalent:
            return True
        known[0] += 1
        return False

    verdicts = {"caught": [], "survived": []}
    for mutant in judged(judge, filter(unknown, mutants_of(folder, seed)), count):
        verdicts.setdefault(mutant.verdict, []).append(mutant)
        print(f"{mutant.verdict}: {mutant}" + (f"\n    {mutant.detail}" if mutant.detail else ""),
              flush=True)
    report(folder, seed, verdicts, known[0])


def report(folder, seed, verdicts, known):
    caught, survived = len(verdicts["caught"]), len(verdicts["survived"])
    rate = 100 * caught / max(caught + survived, 1)
    others = ", ".join(f"{len(mutants)} {verdict}" for verdict, mutants in verdicts.items()
                       if verdict not in ("caught", "survived"))
    print(f"\n{folder}, seed {seed}: {caught + survived} mutants, {caught} caught, {survived} "
          f"survived: {rate:.1f} %. Not counted: {known} known as equivalent, {others or '0 others'}")
    for mutant in verdicts["survived"]:
        print(f"survived: {mutant}")
    sys.exit(rate < NEEDED)


if __name__ == "__main__":
    main()
