"""Prints what gcov counted in src/; see coverage.sh.

Usage: coverage.py BUILD_FOLDER [--all-branches]
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

import reasons

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIST = ROOT / "scripts" / "unreached_lines.txt"
TARGET = 95.0
# Elsewhere the branches are the compiler's own.
CONDITION = re.compile(r"\b(if|for|while|switch|catch)\b|&&|\|\||\?|<=? |>=? |[!=]= ")
# The sources that no native build has, and the tests under Wine that run them.
WINDOWS = {
    "src/api/device_platform_windows.cpp": ["windows_library_test"],
    "src/device/directshow_enumeration.cpp": ["windows_library_test"],
    "src/device/ks_extension_unit.cpp": ["windows_com_test", "windows_library_test"],
    "src/device/windows_platform.cpp": ["windows_com_test", "windows_library_test"],
    "src/files/file_windows.cpp": ["windows_com_test", "windows_library_test"],
    "src/jobs/detached_thread_windows.cpp": ["windows_com_test", "windows_library_test"],
    "src/jobs/library_pin_windows.cpp": ["windows_library_test"],
}


def counted(build):
    """gcov's records of all objects that ran, one a file and object."""
    for data in sorted(build.rglob("*.gcda")):
        text = subprocess.run(
            ["gcov", "--json-format", "--stdout", "--branch-probabilities", str(data.resolve())],
            cwd=build, check=True, text=True, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL).stdout
        for line in text.splitlines():
            yield from json.loads(line)["files"]


def real_branches(branches):
    """The branches that the source has: none for the exceptions that a call might throw."""
    dropped = set()
    for index, branch in enumerate(branches):
        if branch["throw"]:
            dropped.add(index)
            for beside in (index - 1, index + 1):
                if 0 <= beside < len(branches) and branches[beside]["fallthrough"] \
                        and beside not in dropped:
                    dropped.add(beside)
                    break
    return [branch["count"] for index, branch in enumerate(branches) if index not in dropped]


class Counts:
    """Lines and branches of all files, counts of several objects summed."""

    def __init__(self):
        self.lines = collections.defaultdict(collections.Counter)
        self.branches = collections.defaultdict(dict)

    def add(self, record):
        """Takes what gcov says of one file in one object."""
        path = (ROOT / record["file"]).resolve()
        if not path.is_relative_to(ROOT / "src"):
            return
        name = str(path.relative_to(ROOT))
        once = {}
        source = path.read_text("utf-8").splitlines()
        for line in record["lines"]:
            # Where a block closes, the compiler counts what it cleans up behind an exception.
            if source[line["line_number"] - 1].strip() in ("}", "};"):
                continue
            # A line is given once for each instance of a template.
            number = line["line_number"]
            self.lines[name][number] += line["count"]
            taken = real_branches(line["branches"])
            if taken and CONDITION.search(source[number - 1]):
                once[number] = [sum(pair) for pair in zip(once[number], taken)] \
                    if len(once.get(number, [])) == len(taken) else taken
        for number, taken in once.items():
            former = self.branches[name].get(number)
            self.branches[name][number] = [sum(pair) for pair in zip(former, taken)] \
                if former and len(former) == len(taken) else former or taken


def share(reached, total):
    """A percentage, right-aligned; a dash for nothing."""
    return f"{100 * reached / total:6.1f} %" if total else "       -"


def table(counts):
    """Prints the figures by room and file; gives the share of lines reached, in percent."""
    rooms = collections.defaultdict(list)
    for name in sorted(counts.lines):
        lines = counts.lines[name].values()
        branches = [count for taken in counts.branches[name].values() for count in taken]
        rooms[name.split("/")[1]].append(
            (name, sum(map(bool, lines)), len(lines), sum(map(bool, branches)), len(branches)))
    print(f"{'':<44}{'lines':>8}{'reached':>9}{'':>9}{'branches':>10}{'taken':>8}")
    everything = [row for rows in rooms.values() for row in rows]
    for title, rows in [*((f"src/{room}", rows) for room, rows in rooms.items()),
                        ("all", everything)]:
        sums = [sum(row[column] for row in rows) for column in range(1, 5)]
        shown = [(title, *sums)] + (rows if title != "all" else [])
        for name, reached, total, taken, branches in shown:
            name = name if name == title else "  " + name.split("/")[2]
            print(f"{name:<44}{total:>8}{reached:>9}{share(reached, total):>9}{branches:>10}"
                  f"{taken:>8}{share(taken, branches):>9}")
    return 100 * sum(row[1] for row in everything) / sum(row[2] for row in everything)


def unreached(counts):
    """Prints the lines that no test reached; gives how many of them have no reason in the list."""
    known = {(entry["file"], entry["line"]): entry["why"]
             for entry in reasons.entries_of(LIST, ("file", "line", "why"))}
    without = 0
    for name, lines in sorted(counts.lines.items()):
        source = (ROOT / name).read_text("utf-8").splitlines()
        for number in sorted(number for number, count in lines.items() if count == 0):
            text = " ".join(source[number - 1].split())
            why = known.pop((name, text), None)
            without += why is None
            print(f"not reached: {name}:{number}: {text}\n"
                  f"  {why or f'NO REASON in {LIST.name}'}")
    for name, text in known:
        print(f"note: {LIST.name} lists a line that is reached or gone: {name}: {text}")
    return without


def branches_not_taken(counts):
    """Prints the lines with branches that were never taken."""
    for name, lines in sorted(counts.branches.items()):
        source = (ROOT / name).read_text("utf-8").splitlines()
        for number, taken in sorted(lines.items()):
            if 0 in taken:
                print(f"branch not taken: {name}:{number}: {source[number - 1].strip()} {taken}")


def windows_sources(counts):
    """Prints the sources of Windows builds alone; ends the program if one has no test named."""
    alone = {str(path.relative_to(ROOT)) for path in (ROOT / "src").rglob("*.cpp")}
    compiled = {str(path.relative_to(ROOT)) for path in native_sources()}
    alone -= compiled
    if alone != set(WINDOWS):
        sys.exit("coverage.py: name the Wine tests of these, and of no others: "
                 + ", ".join(sorted(alone ^ set(WINDOWS))))
    print("\nNot in a native build; run by these tests under Wine, not counted:")
    for name, tests in WINDOWS.items():
        print(f"  {name:<42}{', '.join(tests)}")
    for name in sorted(compiled - set(counts.lines)):
        print(f"  {name:<42}has no line that runs")


def native_sources():
    """The sources of src/ that the coverage build compiles."""
    database = pathlib.Path(sys.argv[1]) / "compile_commands.json"
    paths = [pathlib.Path(entry["file"]) for entry in json.loads(database.read_text("utf-8"))]
    return [path for path in paths if path.is_relative_to(ROOT / "src")]


def main():
    """Prints everything; fails for lines without a reason and for too few lines."""
    counts = Counts()
    for record in counted(pathlib.Path(sys.argv[1]).resolve()):
        counts.add(record)
    percent = table(counts)
    print()
    without = unreached(counts)
    if "--all-branches" in sys.argv:
        print()
        branches_not_taken(counts)
    windows_sources(counts)
    return 1 if without or percent < TARGET else 0


if __name__ == "__main__":
    sys.exit(main())
