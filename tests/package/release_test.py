#!/usr/bin/env python3
"""Tests the checks of scripts/release.sh: each kind of disagreement is found.

Usage: release_test.py CMAKE SOURCE_FOLDER BUILD_FOLDER
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import check_release
import make_packages

SOURCE = BUILD = pathlib.Path()


class ReleaseTest(unittest.TestCase):
    """A copy of the few files that name the version, and what is made wrong in it."""

    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="release-"))
        self.addCleanup(shutil.rmtree, self.root)
        self.version = make_packages.project_version(SOURCE)
        for name in ("CMakeLists.txt", "CHANGELOG.md", *check_release.NAMED):
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / name, self.root / name)

    def replace(self, name, old, new):
        """Changes the first `old` in a file of the copy."""
        text = (self.root / name).read_text(encoding="utf-8")
        self.assertIn(old, text)
        (self.root / name).write_text(text.replace(old, new, 1), encoding="utf-8")

    def test_the_tree_agrees(self):
        self.assertEqual(check_release.of_tree(SOURCE), [])

    def test_another_version_anywhere_is_found(self):
        for name in ("CHANGELOG.md", *check_release.NAMED):
            with self.subTest(file=name):
                self.replace(name, self.version, "9.8.7")
                complaints = check_release.of_tree(self.root)
                self.assertEqual(len(complaints), 1, complaints)
                self.assertIn(name, complaints[0])
                self.assertIn("9.8.7", complaints[0])
                shutil.copy(SOURCE / name, self.root / name)

    def test_a_release_needs_a_date_a_tag_and_nothing_uncommitted(self):
        git = ["git", "-c", "user.name=test", "-c", "user.email=test@localhost", "-C", self.root]
        for command in (["init", "-q"], ["add", "-A"], ["commit", "-q", "-m", "all"]):
            subprocess.run([*git, *command], check=True)
        text = (self.root / "CHANGELOG.md").read_text(encoding="utf-8")
        first = check_release.HEADING.search(text)[0]
        self.replace("CHANGELOG.md", first, f"## {self.version} (unreleased)")
        subprocess.run([*git, "commit", "-q", "--allow-empty", "-am", "open"], check=True)
        self.assertEqual(len(check_release.of_release(self.root)), 2)  # date, tag
        self.replace("CHANGELOG.md", f"## {self.version} (unreleased)", f"## {self.version} - 2030-01-31")
        self.assertIn("files differ from the current commit", check_release.of_release(self.root))
        subprocess.run([*git, "commit", "-q", "-am", "dated"], check=True)
        subprocess.run([*git, "tag", f"v{self.version}"], check=True)
        self.assertEqual(check_release.of_release(self.root), [])
        self.assertEqual(check_release.of_tree(self.root), [])

    def test_products_and_packages_of_another_version_are_found(self):
        self.assertEqual(check_release.of_products(BUILD / "bin", self.version), [])
        self.assertEqual(len(check_release.of_products(BUILD / "bin", "9.8.7")), len(check_release.PRODUCTS))
        self.assertIn("nothing", check_release.of_packages(self.root / "none", self.version)[0])


def main():
    """Takes the three arguments and runs the tests."""
    global SOURCE, BUILD  # pylint: disable=global-statement
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    SOURCE, BUILD = pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)


if __name__ == "__main__":
    main()
