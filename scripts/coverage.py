"""Prints what gcov counted in the products; see coverage.sh.

Usage: coverage.py BUILD_FOLDER [--all-branches]
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

import check_structure
import reasons

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIST = ROOT / "scripts" / "unreached_lines.txt"
# How much of a product's lines must be reached, in percent, and whether each line that is not reached
# needs a reason in the list.
PRODUCTS = {
    "src": (95.0, True),
    "tools/borvanusb": (90.0, False),
    "virtual_camera/core": (90.0, False),
}
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


def product_of(path):
    """The product that a file belongs to; None for one of none."""
    return next((product for product in PRODUCTS if path.is_relative_to(ROOT / product)), None)


class Counts:
    """Lines and branches of all files, counts of several objects summed."""

    def __init__(self):
        self.lines = collections.defaultdict(collections.Counter)
        self.branches = collections.defaultdict(dict)

    def add(self, record):
        """Takes what gcov says of one file in one object."""
        path = (ROOT / record["file"]).resolve()
        if not path.is_file() or not product_of(path):
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
    """Prints the figures by room and file; gives each product's share of lines reached, in percent."""
    rooms = collections.defaultdict(list)
    for name in sorted(counts.lines):
        lines = counts.lines[name].values()
        branches = [count for taken in counts.branches[name].values() for count in taken]
        rooms[check_structure.room_of(pathlib.PurePath(name))].append(
            (name, sum(map(bool, lines)), len(lines), sum(map(bool, branches)), len(branches)))
    print(f"{'':<44}{'lines':>8}{'reached':>9}{'':>9}{'branches':>10}{'taken':>8}")
    products = {f"all of {product}": [row for rows in rooms.values() for row in rows
                                      if product_of(ROOT / row[0]) == product]
                for product in PRODUCTS}
    for title, rows in [*rooms.items(), *products.items()]:
        sums = [sum(row[column] for row in rows) for column in range(1, 5)]
        for name, reached, total, taken, branches in [(title, *sums),
                                                      *([] if title in products else rows)]:
            name = name if name == title else "  " + name.rpartition("/")[2]
            print(f"{name:<44}{total:>8}{reached:>9}{share(reached, total):>9}{branches:>10}"
                  f"{taken:>8}{share(taken, branches):>9}")
    return {product: 100 * sum(row[1] for row in products[f"all of {product}"]) /
                     max(1, sum(row[2] for row in products[f"all of {product}"]))
            for product in PRODUCTS}


def unreached(counts):
    """Prints the lines that no test reached; gives how many of them have no reason in the list."""
    known = {(entry["file"], entry["line"]): entry["why"]
             for entry in reasons.entries_of(LIST, ("file", "line", "why"))}
    without = 0
    for name, lines in sorted(counts.lines.items()):
        source = (ROOT / name).read_text("utf-8").splitlines()
        for number in sorted(number for number, count in lines.items() if count == 0):
            text = " ".join(source[number - 1].split())
            if not PRODUCTS[product_of(ROOT / name)][1]:
                print(f"not reached: {name}:{number}: {text}")
                continue
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
    ours = {str(path.relative_to(ROOT)) for product in PRODUCTS
            for path in (ROOT / product).rglob("*.cpp")}
    compiled = {str(path.relative_to(ROOT)) for path in native_sources()}
    alone = {name for name in ours - compiled if name.startswith("src/")}
    if alone != set(WINDOWS):
        sys.exit("coverage.py: name the Wine tests of these, and of no others: "
                 + ", ".join(sorted(alone ^ set(WINDOWS))))
    print("\nNot in a native build; run by these tests under Wine, not counted:")
    for name, tests in WINDOWS.items():
        print(f"  {name:<42}{', '.join(tests)}")
    for name in sorted(ours - compiled - alone):
        print(f"  {name:<42}tests/tool_program" if name.startswith("tools/")
              else f"  {name:<42}tests/virtual_camera_com")
    for name in sorted(compiled - set(counts.lines)):
        print(f"  {name:<42}has no line that runs")


def native_sources():
    """The products' sources that the coverage build compiles."""
    database = pathlib.Path(sys.argv[1]) / "compile_commands.json"
    paths = [pathlib.Path(entry["file"]) for entry in json.loads(database.read_text("utf-8"))]
    return [path for path in paths if product_of(path) and not path.name.startswith("cmake_pch")]


def main():
    """Prints everything; fails for lines without a reason and for too few lines."""
    counts = Counts()
    for record in counted(pathlib.Path(sys.argv[1]).resolve()):
        counts.add(record)
    shares = table(counts)
    print()
    without = unreached(counts)
    if "--all-branches" in sys.argv:
        print()
        branches_not_taken(counts)
    windows_sources(counts)
    low = [f"{product}: {shares[product]:.1f} %, less than {least:.0f} %"
           for product, (least, _) in PRODUCTS.items() if shares[product] < least]
    for line in low:
        print(line)
    return 1 if without or low else 0


if __name__ == "__main__":
    sys.exit(main())
