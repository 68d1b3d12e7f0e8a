#!/usr/bin/env python3
"""Writes one CTest list with the tests of several builds and the checks of the whole tree.

Usage: collect_tests.py FOLDER PRESET…
Test `name` of a preset becomes `preset/name`, with the preset as its label. Format, lint, the short forms of the
long tests and the demo are added; the demo runs last. Then run `ctest --test-dir FOLDER`.
"""
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# CTest's slots that a test takes. Tests under Wine mostly wait, so they take one; tests that use a processor all
# the time take two. scripts/test.sh has two slots for each processor, and two more. Lint takes what others leave.
WORKS = "2"
# Name, command, time limit in seconds, slots.
CHECKS = [
    ("format", ["scripts/format.sh", "--check"], 120, WORKS),
    # Low priority, so that tests that measure time are not disturbed. Only the library, because linting
    # everything takes as long as all other tests together.
    ("lint", ["nice", "-n", "19", "scripts/lint.sh", "--library"], 1800, "1"),
    # One edit of ten rooms each, on the programs of the sanitized build.
    ("mutants", ["scripts/mutate.sh", "--brief", "--preset", "native-sanitized"], 1800, WORKS),
]
# The shortest form of the long tests, to check that they still run. They share a Wine prefix.
PYTHON = "/usr/bin/python3"  # Debian's own Python; others may be installed, too
BRIEF = [
    ("endure", ["scripts/endure.sh", "30"], 600),
    ("power_cuts", [PYTHON, "-B", "tests/reliability/power_cuts.py", "--count", "2"], 600),
    ("wine_starts", [PYTHON, "-B", "tests/reliability/wine_starts.py", "--count", "4", "--how", "fixed"],
     300),
]
DEMO = ("demo", ["scripts/demo.sh"], 600)
# Checks of the tree and the scripts themselves. Every suite contains them.
GUARDS = {"source_structure", "check_structure_test", "pe_file_test", "mutations_test", "scripts_test",
          "jobs_tests"}
# Properties that refer to other tests or fixtures. Here these names start with the preset's name.
NAMING = {"DEPENDS", "FIXTURES_SETUP", "FIXTURES_CLEANUP", "FIXTURES_REQUIRED"}


def quoted(text):
    """`text` as a bracket argument for CMake, which needs no escaping."""
    marks = "=" * next(n for n in range(1, 100) if "]" + "=" * n + "]" not in text + "]")
    return f"[{marks}[{text}]{marks}]"


def entry(name, command, properties):
    """The lines of the CTest list for one test."""
    lines = [f"add_test({quoted(name)} {' '.join(map(quoted, command))})"]
    settings = " ".join(f"{key} {quoted(value)}" for key, value in properties.items())
    lines.append(f"set_tests_properties({quoted(name)} PROPERTIES {settings})")
    return lines


def value_text(value):
    """A property's value from CTest's JSON, in CMake's syntax."""
    if isinstance(value, bool):
        return "ON" if value else "OFF"
    if isinstance(value, list):
        return ";".join(map(str, value))
    return str(value)


def tests_of(preset):
    """(name, command, properties) of each test of a build."""
    listing = subprocess.run(
        ["ctest", "--test-dir", str(ROOT / "build" / preset), "--show-only=json-v1"],
        check=True, text=True, stdout=subprocess.PIPE).stdout
    for test in json.loads(listing)["tests"]:
        if "command" not in test:
            sys.exit(f"collect_tests.py: {preset}/{test['name']} has no program: build {preset}")
        properties = {}
        for item in test.get("properties", []):
            value = item["value"]
            if item["name"] in NAMING:
                value = [f"{preset}/{name}" for name in value]
            properties[item["name"]] = value_text(value)
        labels = [preset] + [label for label in properties.get("LABELS", "").split(";") if label]
        properties["LABELS"] = ";".join(labels)
        if any("run_with_wine" in part for part in test["command"]):
            # All Windows programs share one prefix, so only one runs at a time.
            locks = set(filter(None, properties.get("RESOURCE_LOCK", "").split(";")))
            properties["RESOURCE_LOCK"] = ";".join(sorted(locks | {"wine"}))
        if preset.startswith("native"):
            properties["PROCESSORS"] = WORKS
        yield f"{preset}/{test['name']}", test["command"], properties


def main():
    """Writes FOLDER/CTestTestfile.cmake."""
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    lines = []
    names = []
    for name, command, limit, slots in CHECKS:
        names.append(name)
        # A high cost makes them start first, so that the suite does not end with the longest ones.
        lines += entry(name, command, {"WORKING_DIRECTORY": str(ROOT), "TIMEOUT": str(limit),
                                       "LABELS": "checks", "COST": "1000", "PROCESSORS": slots})
    for name, command, limit in BRIEF if "windows" in sys.argv[2:] else []:
        names.append(name)
        lines += entry(name, command, {"WORKING_DIRECTORY": str(ROOT), "TIMEOUT": str(limit),
                                       "LABELS": "checks", "RESOURCE_LOCK": "wine"})
    for preset in sys.argv[2:]:
        for name, command, properties in tests_of(preset):
            names.append(name)
            lines += entry(name, command, properties)
    missing = GUARDS - {name.rpartition("/")[2] for name in names}
    if missing:
        sys.exit(f"collect_tests.py: no build has these tests: {', '.join(sorted(missing))}")
    name, command, limit = DEMO
    lines += entry(name, command, {"WORKING_DIRECTORY": str(ROOT), "TIMEOUT": str(limit),
                                   "LABELS": "demo", "RUN_SERIAL": "ON",
                                   "DEPENDS": ";".join(names)})
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "CTestTestfile.cmake").write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
