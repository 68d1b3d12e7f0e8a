#!/usr/bin/env python3
"""Builds the library once more from a copy of the sources in another folder and compares.

Usage: two_builds_are_identical.py CMAKE SOURCE_FOLDER BUILD_FOLDER
BUILD_FOLDER is the windows preset's, built from the sources as they are now. Whoever builds the same
sources elsewhere gets the bytes that were handed out.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

TARGETS = ["BorvanUSB_x64", "BorvanUSB_x64_msvc_import_library"]
PRODUCTS = ["bin/BorvanUSB_x64.dll", "bin/BorvanUSB_x64.dll.debug",
            "lib/libBorvanUSB_x64.dll.a", "lib/BorvanUSB_x64.lib"]
# Longer than a usual name, so that a path that slips in moves what follows it too.
FOLDER = "a folder with quite another and longer name"
NOT_COPIED = shutil.ignore_patterns("build", ".git", "tests", "bench")


def build(cmake, source, folder):
    """Copies the sources into `folder` and builds there; returns the product folder."""
    shutil.copytree(source, folder, ignore=NOT_COPIED, symlinks=True)
    for command in ([cmake, "--preset", "windows", "-DBORVAN_BUILD_TESTS=OFF"],
                    [cmake, "--build", "--preset", "windows", "--parallel", "2",
                     "--target", *TARGETS]):
        # What a compiler cache remembers of the first build would be equal in any case.
        run = subprocess.run(command, cwd=folder, text=True, check=False,
                             env={**os.environ, "CCACHE_DISABLE": "1"},
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if run.returncode != 0:
            sys.exit(f"{' '.join(command)} failed in {folder}:\n{run.stdout}")
    return folder / "build" / "windows"


def first_difference(left, right):
    """Text for the first byte that differs; empty when none does."""
    for offset, (one, other) in enumerate(zip(left, right)):
        if one != other:
            return f"byte {offset:#x}: {one:#04x} and {other:#04x}"
    return "" if len(left) == len(right) else f"lengths {len(left)} and {len(right)}"


def main():
    """Builds again, compares each product, names each difference."""
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    os.nice(19)  # tests that watch the clock may run beside this
    cmake, source, first = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    failed = False
    with tempfile.TemporaryDirectory() as scratch:
        second = build(cmake, source, pathlib.Path(scratch) / FOLDER)
        for product in PRODUCTS:
            difference = first_difference((first / product).read_bytes(),
                                          (second / product).read_bytes())
            print(f"{product}: {difference or 'identical'}")
            failed = failed or bool(difference)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
