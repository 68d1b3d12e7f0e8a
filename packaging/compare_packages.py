"""Compares the packages of two builds; see scripts/package.sh --twice.

Usage: compare_packages.py FOLDER OTHER_FOLDER
Exit code 0 if all files have the same bytes; else each difference is printed, inside of archives too.
"""
import filecmp
import pathlib
import sys
import zipfile


def members(path):
    """The entries of an archive: name to what must be equal."""
    with zipfile.ZipFile(path) as archive:
        return {entry.filename: (archive.read(entry), entry.date_time, entry.external_attr)
                for entry in archive.infolist()}


def differences(one, other):
    """A line for each difference between two folders of packages."""
    names = {path.name for folder in (one, other) for path in folder.iterdir()}
    for name in sorted(names):
        if not (one / name).exists() or not (other / name).exists():
            yield f"{name}: only one build made it"
        elif filecmp.cmp(one / name, other / name, shallow=False):
            continue
        else:
            yield f"{name}: differs"
            if name.endswith(".zip"):
                first, second = members(one / name), members(other / name)
                for member in sorted(first.keys() | second.keys()):
                    if first.get(member) != second.get(member):
                        yield f"{name}: {member} differs"


def main():
    """Prints the differences."""
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    found = list(differences(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
    print("\n".join(found) or "both builds gave the same bytes")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
