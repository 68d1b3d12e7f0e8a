#!/usr/bin/env python3
"""The pages for engineers name files that exist, and each room has a README.

Usage: document_paths_test.py
"""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# Products whose rooms have a README each.
PRODUCTS = ("src", "tools/borvanusb", "virtual_camera", "tests")
# Rooms without sources of their own.
NO_ROOMS = {"virtual_camera/configurations"}
PAGES = ("README.md", "CONTRIBUTING.md", "docs/architecture.md")
LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")
# A file or folder between backticks; patterns, commands and names of products are none.
NAMED = re.compile(r"`([\w./-]*(?:/[\w.-]*|\.(?:h|cpp|c|py|sh|txt|json|md|cmake|in|def)))`")
CODE_BLOCK = re.compile(r"^```.*?^```", re.MULTILINE | re.DOTALL)
# Made by CMake or by builds, or stands for any name.
NOT_IN_THE_TREE = re.compile(r"version\.h|windows\.h|build/.*|fuzz/NAME\.cpp|fuzz/corpus/NAME")


def rooms():
    """Every folder of a product in which something lies."""
    folders = [folder for product in PRODUCTS for folder in sorted((ROOT / product).iterdir())
               if folder.is_dir() and str(folder.relative_to(ROOT)) not in NO_ROOMS]
    return folders + [ROOT / "tools/borvanusb/flash/engine"]


class DocumentPathsTest(unittest.TestCase):
    """README.md, CONTRIBUTING.md, docs/architecture.md and the READMEs of the rooms."""

    def test_each_room_has_a_readme(self):
        missing = [str(room.relative_to(ROOT)) for room in rooms() if not (room / "README.md").is_file()]
        self.assertEqual(missing, [])

    def test_each_named_file_exists(self):
        pages = [ROOT / page for page in PAGES] + [room / "README.md" for room in rooms()]
        missing = []
        named = 0
        for page in pages:
            text = CODE_BLOCK.sub("", page.read_text(encoding="utf-8"))
            # A page names files from its own folder, from the root, or as includes do.
            starts = [page.parent, ROOT, ROOT / "include"] + [ROOT / product for product in PRODUCTS]
            for name in LINK.findall(text):
                if not (page.parent / name).exists():
                    missing.append(f"{page.relative_to(ROOT)}: link to {name}")
            for name in NAMED.findall(text):
                named += 1
                if not NOT_IN_THE_TREE.fullmatch(name) and not any((start / name).exists()
                                                                   for start in starts):
                    missing.append(f"{page.relative_to(ROOT)}: {name}")
        self.assertEqual(missing, [])
        self.assertGreater(named, 200)


if __name__ == "__main__":
    unittest.main()
