#!/usr/bin/env python3
"""Checks how the sources hang together: which folder may include which, no circles, no long files.

Usage: check_structure.py [ROOT]
Prints each broken rule with its file and fails; ROOT is the tree, by default the one this script
lies in.
"""
import pathlib
import re
import sys

# What a folder of the library may include beside the public header. Nobody includes the exported
# layer. LEAVES lies below everything: its headers include nothing of ours, its sources their own
# header alone.
LEAVES = "base"
LIBRARY_ORDER = {
    LEAVES: set(),
    "device": {"device", LEAVES},
    "protocol": {"protocol", "device", LEAVES},
    "files": {"files", LEAVES},
    "jobs": {"jobs", "files", "device", LEAVES},
    "api": {"api", "jobs", "protocol", "device", LEAVES},
}
LONGEST_FILE = 500
OUR_FOLDERS = ("include", "src", "virtual_camera", "tools", "examples", "tests", "bench", "cmake",
               "scripts")
CODE = (".c", ".cpp", ".h", ".hpp")
SOURCES = CODE + (".py", ".sh", ".cmake", ".rc", ".in", ".def")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)
# Folders that a file's includes may start from, after its own.
INCLUDE_ROOTS = ("include", "src", "virtual_camera", "tools/borvanusb", "tools", "tests", "bench", "")


def our_files(root):
    """Every source file of ours, as paths relative to `root`."""
    found = []
    for folder in OUR_FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.is_file() and (path.suffix in SOURCES or path.name == "CMakeLists.txt"):
                found.append(path.relative_to(root))
    return found


def resolve(root, includer, name, quoted):
    """The file of ours that an include means; None when it is somebody else's."""
    starts = [includer.parent] if quoted else []
    starts += [pathlib.Path(start) for start in INCLUDE_ROOTS]
    # Include roots lie at any height of the includer's own subsystem, too.
    starts += [parent for parent in includer.parents if quoted]
    for start in starts:
        candidate = (root / start / name).resolve()
        if candidate.is_file() and candidate.is_relative_to(root):
            return candidate.relative_to(root)
    return None


def include_graph(root, files):
    """({file: [included files of ours]}, [complaints about includes that lead nowhere])."""
    graph = {}
    complaints = []
    for path in files:
        if path.suffix not in CODE:
            continue
        graph[path] = []
        text = (root / path).read_text(encoding="utf-8")
        for opening, name in INCLUDE.findall(text):
            target = resolve(root, path, name, opening == '"')
            if target is not None:
                graph[path].append(target)
            elif opening == '"' and name.split("/")[0] in OUR_FOLDERS + tuple(LIBRARY_ORDER):
                complaints.append(f'{path}: includes "{name}", which is nowhere in the tree')
    return graph, complaints


def check_order(graph):
    """Complaints about includes of the library that run against its order."""
    complaints = []
    for path, targets in graph.items():
        if path.parts[0] != "src":
            continue
        folder = path.parts[1] if len(path.parts) > 2 else ""
        if folder not in LIBRARY_ORDER:
            complaints.append(f"{path}: only {', '.join(LIBRARY_ORDER)} are folders of src")
            continue
        for target in targets:
            if folder == LEAVES:
                if target != path.with_suffix(".h"):
                    complaints.append(f"{path}: src/{LEAVES} includes nothing of ours, "
                                      f"so not {target}")
                continue
            if target.parts[0] == "include":
                continue
            if target.parts[0] != "src":
                complaints.append(f"{path}: the library includes {target}, which is not its own")
            elif len(target.parts) < 3 or target.parts[1] not in LIBRARY_ORDER[folder]:
                complaints.append(f"{path}: src/{folder} must not include {target}; it may include "
                                  f"{', '.join(sorted(LIBRARY_ORDER[folder]))}")
    return complaints


def check_circles(graph):
    """A complaint for each circle of includes that a walk meets."""
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


def check_lengths(root, files):
    """Complaints about files that are too long to keep in one's head."""
    complaints = []
    for path in files:
        lines = (root / path).read_bytes().count(b"\n")
        if lines > LONGEST_FILE:
            complaints.append(f"{path}: {lines} lines, more than {LONGEST_FILE}: split it")
    return complaints


def check(root):
    """All complaints about the tree at `root`."""
    root = root.resolve()
    files = our_files(root)
    if not files:
        return [f"{root}: no sources found"]
    graph, complaints = include_graph(root, files)
    return complaints + check_order(graph) + check_circles(graph) + check_lengths(root, files)


def main():
    """Prints the complaints; exit code 1 when there are any."""
    if len(sys.argv) > 2:
        sys.exit(__doc__)
    here = pathlib.Path(__file__).resolve().parent.parent
    complaints = check(pathlib.Path(sys.argv[1]) if len(sys.argv) == 2 else here)
    for complaint in complaints:
        print(complaint)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
