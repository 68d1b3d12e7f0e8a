#!/usr/bin/python3
"""The documentation's site: builds, has every function and page, leads nowhere wrong.

Usage: docs_site_test.py
"""
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "docs/site/build_site.py"
COPIED = ["docs", "include", "examples", "README.md", "SECURITY.md", "CHANGELOG.md", "CONTRIBUTING.md"]


def build(source, output):
    """Builds the site of a source tree."""
    return subprocess.run([sys.executable, "-B", BUILD, source, output, "1.2.3"], capture_output=True, text=True,
                          check=False)


class DocsSiteTest(unittest.TestCase):
    """build_site.py."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.run_of_all = build(ROOT, cls.folder / "site")

    def test_builds_without_a_complaint(self):
        self.assertEqual((self.run_of_all.returncode, self.run_of_all.stderr), (0, ""))

    def test_each_function_is_in_the_reference_and_found(self):
        names = set(re.findall(r"^\s+(\w+)\s+@\d+$",
                               (ROOT / "src/api/borvan_usb.def").read_text(encoding="utf-8"), re.MULTILINE))
        self.assertEqual(len(names), 21)
        page = (self.folder / "site/reference-borvan_usb.html").read_text(encoding="utf-8")
        index = (self.folder / "site/search-index.js").read_text(encoding="utf-8")
        entries = json.loads(index.removeprefix("const searchEntries = ").rstrip(";\n"))
        titles = {entry["title"] for entry in entries}
        for name in names:
            self.assertIn(f"<h3 id='{name}'>", page)
            self.assertIn(name, titles)
        self.assertTrue(any("--flash-size" in entry["text"] for entry in entries))

    def test_nothing_is_asked_of_the_network(self):
        for page in (self.folder / "site").glob("*.html"):
            text = page.read_text(encoding="utf-8")
            self.assertEqual(re.findall(r"(?:src|href)=\"(?:https?:)?//[^\"]*\.(?:js|css)", text), [], page.name)
            for target in re.findall(r"(?:src|href)=\"(?!https?:|mailto:)([^\"#]+)", text):
                self.assertTrue((self.folder / "site" / target).exists(), f"{page.name}: {target}")

    def test_link_that_leads_nowhere_is_refused(self):
        copy = self.folder / "copy"
        copy.mkdir()
        for name in COPIED:
            if (ROOT / name).is_dir():
                shutil.copytree(ROOT / name, copy / name)
            else:
                shutil.copy(ROOT / name, copy / name)
        with (copy / "docs/tool.md").open("a", encoding="utf-8") as page:
            page.write("\n[a section](#no-such-section) and [a page](no-such-page.md)\n")
        run = build(copy, self.folder / "broken")
        self.assertEqual(run.returncode, 1)
        self.assertIn("tool.html: #no-such-section leads nowhere", run.stderr)
        self.assertIn("no-such-page.md does not exist", run.stderr)


if __name__ == "__main__":
    unittest.main()
