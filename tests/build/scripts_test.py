#!/usr/bin/env python3
"""Starts every script that the documents name: it must be there and say how it is used."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [ROOT / "README.md", ROOT / "SECURITY.md", *sorted((ROOT / "docs").glob("*.md"))]
NAME = re.compile(r"\b((?:scripts|tests/[a-z_]+)/[a-z_]+\.(?:sh|py))\b")
# It passes every word to Wine, --help too; the tests run programs through it.
RUN_BY_THE_SUITE = {"scripts/run_with_wine.sh"}


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

    def test_programs_for_mutants_and_coverage_are_complete(self):
        """A test program that nobody lists would leave its room without mutants and coverage."""
        known = set()
        for file in sorted([*ROOT.glob("tests/**/CMakeLists.txt"), *ROOT.glob("tests/**/*.cmake")]):
            if file.parent.name not in ("windows", "virtual_camera_com", "hosts"):
                known |= set(re.findall(r"borvan_add_gtest\(\s*(\w+)", file.read_text(encoding="utf-8")))
        listed = set((ROOT / "scripts" / "native_programs.txt").read_text(encoding="utf-8").split())
        # These test headers, documents and cameras that fail, or take minutes.
        self.assertEqual(known - listed, {"header_in_cpp", "job_wait_in_cpp", "reliability_test",
                                          "tool_document_test", "tool_fault_sweep_test"})
        self.assertEqual(listed - known, set())

    def test_longest_tests_of_a_long_list(self):
        with tempfile.TemporaryDirectory() as folder:
            costs = pathlib.Path(folder, "Testing", "Temporary", "CTestCostData.txt")
            costs.parent.mkdir(parents=True)
            costs.write_text("".join(f"native/test_of_part_{number} 1 {number}.5\n"
                                     for number in range(5000)) + "---\nnative/failed\n", encoding="utf-8")
            run = subprocess.run([ROOT / "scripts" / "longest_tests.sh", folder], check=False, text=True,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
        self.assertEqual(run.returncode, 0, run.stdout)
        lines = run.stdout.splitlines()[2:]
        self.assertEqual([line.split() for line in (lines[0], lines[-1])],
                         [["native/test_of_part_4999", "4999.5"], ["native/test_of_part_4988", "4988.5"]])


if __name__ == "__main__":
    unittest.main()
