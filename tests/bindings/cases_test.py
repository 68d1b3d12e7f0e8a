"""Runs a program that runs the table of cases. Usage: cases_test.py PROGRAM"""
import pathlib
import sys
import tempfile

import cases_folder


def main():
    """Exits as the program does, with its output."""
    with tempfile.TemporaryDirectory(prefix="borvan-cases-") as name:
        folder = pathlib.Path(name)
        cases_folder.fill(folder)
        (folder / "cases.json").write_bytes(cases_folder.CASES.read_bytes())
        done = cases_folder.run(pathlib.Path(sys.argv[1]).resolve(), "cases.json",
                                config=folder / "cameras.json", cwd=folder)
    print(done.stdout, done.stderr)
    sys.exit(done.returncode)


if __name__ == "__main__":
    main()
