#!/usr/bin/env python3
"""Draws docs/floors.svg: which folder uses which, from the #include lines of their sources.

Every floor stands on those below it; an arrow that other arrows imply is left out. What a folder
holds is said by the table in CONTRIBUTING.md."""
import re

import svg
from pages import LIBRARY_FOLDERS, ROOT

FOLDERS = (*LIBRARY_FOLDERS, "tools", "examples")
BOX, HEIGHT, GAP, BEND = 178, 78, 12, 44
COLOURS = {"base": "#e4ecf7", "tools": "#fbf1dd", "examples": "#fbf1dd"}
INCLUDE = re.compile(r'^#include "(\w+)/', re.M)


def uses():
    """The folders that each folder includes from."""
    found = {}
    for folder in FOLDERS:
        files = [*ROOT.glob(f"{folder}/**/*.h"), *ROOT.glob(f"{folder}/**/*.cpp")]
        named = {name for file in files for name in INCLUDE.findall(file.read_text())}
        found[folder] = {name for name in named if name in FOLDERS and name != folder}
    return found


def reach(graph, folder):
    """All that a folder stands on, directly or not."""
    return graph[folder] | {deep for below in graph[folder] for deep in reach(graph, below)}


def reduced(graph):
    """The graph without what follows from the rest."""
    return {folder: {below for below in targets
                     if not any(below in reach(graph, other) for other in targets)}
            for folder, targets in graph.items()}


def floor_of(graph, folder):
    return 1 + max((floor_of(graph, below) for below in graph[folder]), default=-1)


def laid_out(graph):
    """Floors from the ground up, each a list of nodes, and the chains of nodes that the arrows
    follow: through a gap of its own on each floor that an arrow passes."""
    level = {folder: floor_of(graph, folder) for folder in graph}
    floors = [[f for f in graph if level[f] == n] for n in range(max(level.values()) + 1)]
    chains = []
    for folder in graph:
        for below in sorted(graph[folder]):
            passed = [(folder, below, n) for n in range(level[folder] - 1, level[below], -1)]
            for node in passed:
                floors[node[2]].append(node)
            chains.append([folder, *passed, below])
    return floors, chains


def width_of(node):
    return BOX if isinstance(node, str) else 2 * GAP


def floor_width(floor):
    return sum(map(width_of, floor)) + GAP * (len(floor) + 1)


def placed(floors, chains, middle):
    """The middle of each node, ordered so that arrows are short."""
    near = {}
    for chain in chains:
        for one, other in zip(chain, chain[1:]):
            near.setdefault(one, []).append(other)
            near.setdefault(other, []).append(one)
    place = {}
    for sweep in range(8):
        for floor in floors if sweep % 2 == 0 else reversed(floors):
            def mean(node):
                known = [place[other] for other in near.get(node, ()) if other in place]
                return sum(known) / len(known) if known else middle
            floor.sort(key=mean)
            x = middle - floor_width(floor) / 2 + GAP
            for node in floor:
                place[node] = x + width_of(node) / 2
                x += width_of(node) + GAP
    return place


def arrow(chain, place, top):
    """A line from the bottom of the first node to the top of the last one."""
    parts = []
    for one, other in zip(chain, chain[1:]):
        x1, y1, x2, y2 = place[one], top[one] + HEIGHT, place[other], top[other]
        start = f"M{x1:g},{y1:g}" if not parts else f"L{x1:g},{y1:g}"
        parts.append(f"{start} C{x1:g},{y1 + BEND / 2:g} {x2:g},{y2 - BEND / 2:g} {x2:g},{y2:g}")
    return f'<path d="{" ".join(parts)}" marker-end="url(#tip)"/>'


def contents():
    """What each folder holds, from the table of the folders."""
    table = (ROOT / "CONTRIBUTING.md").read_text()
    return {name: re.sub("[`*]", "", holds).split(":")[0].strip()
            for name, holds in re.findall(r"^\| `(\w+)/` +\| ([^|]+)\|", table, re.M)}


def brick(folder, x, y, holds):
    left = x - BOX / 2
    lines = svg.wrapped(holds, 26)[:3]
    return "\n".join([svg.box(left, y, BOX, HEIGHT, COLOURS.get(folder, "#eaf4ec")),
                      svg.text(left + 10, y + 20, folder + "/", "name"),
                      *(svg.text(left + 10, y + 38 + 15 * n, line, "small")
                        for n, line in enumerate(lines))])


def pictures():
    graph = reduced(uses())
    floors, chains = laid_out(graph)
    width = max(map(floor_width, floors))
    place = placed(floors, chains, width / 2)
    top = {node: 12 + (len(floors) - 1 - n) * (HEIGHT + BEND)
           for n, floor in enumerate(floors) for node in floor}
    holds = contents()
    parts = [arrow(chain, place, top) for chain in chains]
    parts += [brick(folder, place[folder], top[folder], holds.get(folder, "")) for folder in graph]
    height = len(floors) * (HEIGHT + BEND) - BEND + 24
    return [(ROOT / "docs/floors.svg",
             svg.picture(width, height, "The folders and what each stands on", parts))]


if __name__ == "__main__":
    for file, drawn in pictures():
        file.write_text(drawn)
