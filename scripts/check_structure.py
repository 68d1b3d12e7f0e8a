#!/usr/bin/env python3
"""Checks the structure of the sources: allowed includes between folders, no circular includes, no long files or
functions, no duplicate type names in a product. The rules are in structure_rules.py, current exceptions in
structure_exceptions.txt.

Usage: check_structure.py [ROOT]
Prints each violation with its file and fails. ROOT is the tree, by default the one that contains this script.
An exception that is no longer needed is also an error, so that the list only shrinks.
"""
import pathlib
import posixpath
import re
import sys

import function_lengths
import type_names
from structure_rules import (ALLOWED, FREE, INCLUDE_ROOTS, LONGEST_FILE, LONGEST_FILES,
                             LONGEST_FUNCTION, OUR_FOLDERS, PRODUCTS)

EXCEPTIONS = pathlib.PurePath("scripts/structure_exceptions.txt")
CODE = (".c", ".cpp", ".h", ".hpp")
SOURCES = CODE + (".py", ".sh", ".cmake", ".rc", ".in", ".def")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)
PAGE = pathlib.PurePath("tools/borvanusb/workbench/page/src")
PAGE_IMPORT = re.compile(r"""from ['"](\.[^'"]*)['"]""")
# The possible first parts of an include that refers to one of our files.
OUR_NAMES = set(OUR_FOLDERS) | {room.split("/")[1] for room in ALLOWED if room.count("/") == 1}


def our_files(root):
    """All our source files, as paths relative to `root`. Seeds of the fuzzer are excluded."""
    found = []
    for folder in OUR_FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.is_file() and (path.suffix in SOURCES or path.name == "CMakeLists.txt"):
                found.append(path.relative_to(root))
    corpus = pathlib.PurePath("fuzz/corpus")
    return [path for path in found if corpus not in path.parents]


def resolve(known, includer, name, quoted):
    """Our files that an include may refer to; none if it is not ours.

    `known` contains the names of all files. There are several results only for a test, because only CMake knows
    its include folders: the library and the tool may have files of the same name.
    """
    def ours(start):
        candidate = posixpath.normpath(posixpath.join(start, name))
        # CMake generates a file from the one that ends in .in.
        return [file for file in (candidate, candidate + ".in") if file in known][:1]

    if quoted:
        for start in includer.parents:
            if str(start) != "." and ours(str(start)):
                return ours(str(start))
    found = []
    for start in INCLUDE_ROOTS:
        found += [file for file in ours(start) if file not in found]
    return found


def include_graph(root, files):
    """({file: [included files of ours]}, [complaints about includes without a target])."""
    known = {path.as_posix(): path for path in files}
    graph = {}
    complaints = []
    for path in files:
        if path.suffix not in CODE:
            continue
        graph[path] = []
        text = (root / path).read_text(encoding="utf-8")
        for opening, name in INCLUDE.findall(text):
            targets = [known[file] for file in resolve(known, path, name, opening == '"')]
            graph[path] += targets
            if not targets and opening == '"' and name.split("/")[0] in OUR_NAMES:
                complaints.append(f'{path}: includes "{name}", which is nowhere in the tree')
    return graph, complaints


def room_of(path):
    """The name of the room that contains a file."""
    return path.parent.as_posix().removeprefix("tools/")


def matches(room, patterns):
    """Whether a room is in `patterns`; "x/*" stands for every room below x."""
    return any(room == pattern or (pattern.endswith("/*") and room.startswith(pattern[:-1]))
               for pattern in patterns)


def rule_of(room):
    """The rooms that a room may include; None if the room is not allowed."""
    if room in ALLOWED:
        return ALLOWED[room]
    for pattern, allowed in ALLOWED.items():
        if pattern.endswith("/*") and matches(room, [pattern]):
            return allowed
    return None


def check_rooms(graph, exceptions):
    """Complaints about includes that the table of rooms does not allow."""
    complaints = []
    for path, targets in graph.items():
        room = room_of(path)
        if matches(room, FREE):
            continue
        allowed = rule_of(room)
        if allowed is None:
            complaints.append(f"{path}: {room} is no room of structure_rules.py")
            continue
        for target in targets:
            other = room_of(target)
            if other == room or matches(other, allowed) or exceptions.allows(
                    "include", str(path), other, 1):
                continue
            complaints.append(f"{path}: {room} must not include {target}; it may include "
                              f"{', '.join(allowed) or 'nothing of ours'}")
    return complaints


def page_graph(root):
    """{file: [files that it imports]} of the workbench's page, whose imports are relative to each file."""
    folder = root / PAGE
    graph = {}
    for path in sorted(folder.rglob("*.ts*")):
        graph[path.relative_to(root)] = [
            target.relative_to(root)
            for name in PAGE_IMPORT.findall(path.read_text(encoding="utf-8"))
            for ending in (".ts", ".tsx")
            if (target := (path.parent / (name + ending)).resolve()).is_file()]
    return graph


def check_circles(graph):
    """A complaint for each circular include that is found."""
    complaints = []
    finished = set()

    def walk(path, trail):
        if path in trail:
            circle = trail[trail.index(path):] + [path]
            complaints.append("circle of includes: " + " -> ".join(map(str, circle)))
            return
        if path in finished:
            return
        for target in graph.get(path, []):
            walk(target, trail + [path])
        finished.add(path)

    for path in graph:
        walk(path, [])
    return complaints


def check_lengths(root, files, exceptions):
    """Complaints about files and functions that are too long."""
    complaints = []
    for path in files:
        content = (root / path).read_bytes()
        lines = content.count(b"\n")
        limit = LONGEST_FILES.get(path.as_posix(), LONGEST_FILE)
        if lines > limit and not exceptions.allows("file", str(path), "", lines):
            complaints.append(f"{path}: {lines} lines, more than {limit}: split it")
        if lines < LONGEST_FUNCTION:
            continue
        for function in function_lengths.functions_of(path, content.decode("utf-8")):
            if function.lines > LONGEST_FUNCTION and not exceptions.allows(
                    "function", str(path), function.name, function.lines):
                complaints.append(f"{path}:{function.line}: {function.name} has {function.lines} "
                                  f"lines, more than {LONGEST_FUNCTION}: split it")
    return complaints


def check_types(root, files):
    """Complaints about types with the same name in two files of a product: the linker merges them."""
    complaints = []
    for product in PRODUCTS:
        first = {}
        for path in files:
            if path.suffix not in CODE or pathlib.PurePath(product) not in path.parents:
                continue
            for name, line in type_names.defined_types((root / path).read_text(encoding="utf-8")):
                other, other_line = first.setdefault(name, (path, line))
                if other != path:
                    complaints.append(f"{path}:{line}: {name} is also a type in {other}:{other_line}: "
                                      "rename one or put it in an anonymous namespace")
    return complaints


class Exceptions:
    """The current exceptions: `include FILE ROOM`, `file FILE LINES`, `function FILE NAME LINES`."""

    def __init__(self, path):
        self.limits = {}
        text = path.read_text(encoding="utf-8") if path.is_file() else ""
        for line in text.splitlines():
            words = line.split()
            if not words or words[0].startswith("#"):
                continue
            kind, file, *rest = words
            limit = 1 if kind == "include" else int(rest.pop())
            self.limits[kind, file, " ".join(rest)] = limit
        self.used = set()

    def allows(self, kind, file, name, number):
        """Whether there is an exception for up to this number of lines."""
        key = (kind, file, name)
        self.used.add(key)
        return number <= self.limits.get(key, 0)

    def complaints(self):
        """A complaint for each exception that is not needed."""
        return [f"{EXCEPTIONS}: no longer needed, remove it: {' '.join(filter(None, key))}"
                for key in sorted(set(self.limits) - self.used)]


def check(root):
    """All complaints about the tree at `root`."""
    root = root.resolve()
    files = our_files(root)
    if not files:
        return [f"{root}: no sources found"]
    exceptions = Exceptions(root / EXCEPTIONS)
    graph, complaints = include_graph(root, files)
    complaints += check_rooms(graph, exceptions)
    complaints += check_circles(graph) + check_circles(page_graph(root))
    complaints += check_lengths(root, files, exceptions)
    complaints += check_types(root, files)
    return complaints + exceptions.complaints()


def main():
    """Prints the complaints; exit code 1 if there are any."""
    if sys.argv[1:] in (["-h"], ["--help"]):
        print(__doc__)
        return
    if len(sys.argv) > 2:
        sys.exit(__doc__)
    here = pathlib.Path(__file__).resolve().parent.parent
    complaints = check(pathlib.Path(sys.argv[1]) if len(sys.argv) == 2 else here)
    for complaint in complaints:
        print(complaint)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
