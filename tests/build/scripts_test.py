#!/usr/bin/env python3
"""Starts every script that the documents name: it must be there and say how it is used."""
import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [ROOT / "README.md", ROOT / "SECURITY.md", *sorted((ROOT / "docs").glob("*.md"))]
NAME = re.compile(r"\b((?:scripts|tests/[a-z_]+)/[a-z_]+\.(?:sh|py))\b")
# The suite runs these as they are: its tests through the first two, its checks by the others.
RUN_BY_THE_SUITE = {"scripts/run_with_wine.sh", "scripts/with_cameras.sh", "scripts/format.sh",
                    "scripts/lint.sh"}


class ScriptsTest(unittest.TestCase):
    """The scripts that documents name."""

    def test_every_script_that_a_document_names_starts(self):
        named = {name for document in DOCUMENTS
                 for name in NAME.findall(document.read_text(encoding="utf-8"))}
        self.assertIn("scripts/mutate.sh", named)
        for name in sorted(named):
            with self.subTest(script=name):
                python = name.endswith(".py")
                first_line = (ROOT / name).read_text(encoding="utf-8").partition("\n")[0]
                self.assertTrue(os.access(ROOT / name, os.X_OK if first_line.startswith("#!") else os.R_OK),
                                "no run bit")
                if name in RUN_BY_THE_SUITE or name.endswith("_test.py"):
                    continue
                # Debian's own Python, whatever other one a machine has.
                starter = ["/usr/bin/python3", "-B"] if python else []
                run = subprocess.run([*starter, ROOT / name, "--help"], check=False, text=True, timeout=60,
                                     stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                     stderr=subprocess.STDOUT)
                self.assertEqual(run.returncode, 0, run.stdout)
                self.assertIn(pathlib.Path(name).name, run.stdout)


if __name__ == "__main__":
    unittest.main()
