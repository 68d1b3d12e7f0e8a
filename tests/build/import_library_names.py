#!/usr/bin/env python3
"""Checks which names an import library offers.

Usage: import_library_names.py NM LIBRARY
"""
import subprocess
import sys

from product_test import LIBRARY_EXPORTS


def main():
    """Compares the library's import symbols with the documented names."""
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    listing = subprocess.run([sys.argv[1], sys.argv[2]], text=True, check=True,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    symbols = {line.split()[-1] for line in listing.splitlines() if " I " in line or " T " in line}
    prefix = "__imp_"
    offered = {name[len(prefix):] for name in symbols if name.startswith(prefix)}
    wanted = set(LIBRARY_EXPORTS.values())
    for name in sorted(wanted - offered):
        print(f"missing: {name}")
    for name in sorted(offered - wanted):
        print(f"not documented: {name}")
    sys.exit(0 if offered == wanted else 1)


if __name__ == "__main__":
    main()
