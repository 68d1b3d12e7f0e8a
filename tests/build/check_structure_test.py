#!/usr/bin/env python3
"""Checks that scripts/check_structure.py finds what it is there to find, and nothing else."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
sys.dont_write_bytecode = True
import check_structure  # pylint: disable=wrong-import-position


def complaints(files):
    """What the check says of a tree with these files (path: content)."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for path, content in files.items():
            (root / path).parent.mkdir(parents=True, exist_ok=True)
            (root / path).write_text(content, encoding="utf-8")
        return check_structure.check(root)


class CheckStructureTest(unittest.TestCase):
    """Small trees, each with one thing to find."""

    def assert_one(self, found, *words):
        self.assertEqual(len(found), 1, found)
        for word in words:
            self.assertIn(word, found[0])

    def test_order_from_exports_down_to_the_device_passes(self):
        self.assertEqual(complaints({
            "include/borvan_usb.h": "",
            "src/base/entry.h": "#include <vector>\n",
            "src/base/entry.cpp": '#include "base/entry.h"\n',
            "src/device/base.h": '#include <borvan_usb.h>\n#include "base/entry.h"\n',
            "src/files/list.h": '#include "base/entry.h"\n',
            "src/protocol/chip.h": '#include "device/base.h"\n',
            "src/jobs/job.h": '#include "files/list.h"\n#include "device/base.h"\n',
            "src/api/exports.cpp": '#include "jobs/job.h"\n#include "protocol/chip.h"\n',
            "tools/tool.cpp": '#include "files/list.h"\n#include "gtest/gtest.h"\n',
        }), [])

    def test_finds_a_leaf_that_includes_anything_of_ours(self):
        for name in ("base/other.h", "device/base.h", "borvan_usb.h"):
            self.assert_one(complaints({
                "include/borvan_usb.h": "",
                "src/base/other.h": "",
                "src/device/base.h": "",
                "src/base/entry.h": f'#include "{name}"\n',
            }), "src/base/entry.h", name)

    def test_finds_a_leafs_source_including_another_leaf(self):
        self.assert_one(complaints({
            "src/base/entry.h": "",
            "src/base/other.h": "",
            "src/base/entry.cpp": '#include "base/entry.h"\n#include "base/other.h"\n',
        }), "src/base/entry.cpp", "src/base/other.h")

    def test_finds_files_including_the_device(self):
        self.assert_one(complaints({
            "src/device/base.h": "",
            "src/files/list.cpp": '#include "device/base.h"\n',
        }), "src/files/list.cpp", "src/device/base.h")

    def test_finds_device_including_protocol(self):
        self.assert_one(complaints({
            "src/protocol/chip.h": "",
            "src/device/base.cpp": '#include "protocol/chip.h"\n',
        }), "src/device/base.cpp", "src/protocol/chip.h")

    def test_finds_protocol_including_files(self):
        self.assert_one(complaints({
            "src/files/list.h": "",
            "src/protocol/chip.cpp": '#include "../files/list.h"\n',
        }), "src/protocol/chip.cpp", "src/files/list.h")

    def test_finds_jobs_including_exports(self):
        self.assert_one(complaints({
            "src/api/exports.h": "",
            "src/jobs/job.cpp": '#include "api/exports.h"\n',
        }), "src/jobs/job.cpp", "src/api/exports.h")

    def test_finds_library_including_the_virtual_camera(self):
        for name in ("core/camera.h", "virtual_camera/core/camera.h",
                     "../../virtual_camera/core/camera.h"):
            self.assert_one(complaints({
                "virtual_camera/core/camera.h": "",
                "src/device/base.cpp": f'#include "{name}"\n',
            }), "virtual_camera/core/camera.h", "not its own")

    def test_finds_an_unknown_folder_of_the_library(self):
        self.assert_one(complaints({"src/misc/all.cpp": ""}), "src/misc/all.cpp")

    def test_finds_an_include_that_leads_nowhere(self):
        self.assert_one(complaints({"src/device/base.cpp": '#include "device/gone.h"\n'}), "gone.h")

    def test_finds_a_circle_anywhere(self):
        self.assert_one(complaints({
            "tools/one.h": '#include "two.h"\n',
            "tools/two.h": '#include "three.h"\n',
            "tools/three.h": '#include "one.h"\n',
        }), "circle", "tools/one.h", "tools/two.h", "tools/three.h")

    def test_finds_a_file_of_501_lines_and_lets_500_pass(self):
        self.assertEqual(complaints({"tests/a.cpp": "\n" * 500}), [])
        self.assert_one(complaints({"tests/a.cpp": "\n" * 501}), "tests/a.cpp", "501")

    def test_an_empty_tree_is_no_success(self):
        self.assert_one(complaints({}), "no sources")


if __name__ == "__main__":
    unittest.main(verbosity=2)
