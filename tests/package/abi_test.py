#!/usr/bin/env python3
"""The library's interface is the promised one, and each way to break it is noticed.

Usage: abi_test.py SOURCE_FOLDER [DLL]
Without a DLL the exports are those of the .def file. --baseline in place of all makes the baseline of the
signatures anew.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import abi_check
import pe_file

SOURCE = pathlib.Path(__file__).resolve().parents[2]
DLL = None


def exports():
    """(name, ordinal) of every export."""
    if DLL is not None:
        return pe_file.PeFile(DLL).exports()
    text = (SOURCE / "src/api/borvan_usb.def").read_text(encoding="utf-8")
    return [(name, int(ordinal)) for name, ordinal in re.findall(r"^\s+(\w+)\s+@(\d+)", text, re.MULTILINE)]


class AbiTest(unittest.TestCase):
    """Header, exports and what becomes of them when they change."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="abi-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.include = self.folder / "include"
        shutil.copytree(SOURCE / "include", self.include)

    def changes(self, *edits, without=()):
        """What abidiff reports about the headers after these replacements."""
        for old, new in edits:
            holders = [header for header in self.include.glob("*.h")
                       if old in header.read_text(encoding="utf-8")]
            self.assertEqual(len(holders), 1, old)
            holders[0].write_text(holders[0].read_text(encoding="utf-8").replace(old, new), encoding="utf-8")
        names = [name for name in abi_check.promised().values() if name not in without]
        return abi_check.signature_changes(abi_check.stub(self.include, self.folder, names))

    def test_signatures_and_record_are_the_promised_ones(self):
        self.assertEqual(self.changes(), "")

    def test_names_and_ordinals_are_the_promised_ones(self):
        self.assertEqual(len(abi_check.promised()), 21)
        self.assertEqual(abi_check.export_changes(exports()), [])

    def test_a_changed_parameter_is_noticed(self):
        report = self.changes(("bool UsbFlashErase(uint32_t address);", "bool UsbFlashErase(uint64_t address);"))
        self.assertIn("abi_UsbFlashErase", report)

    def test_a_changed_result_is_noticed(self):
        report = self.changes(("int32_t UsbGetDeviceNum(void);", "int64_t UsbGetDeviceNum(void);"))
        self.assertIn("abi_UsbGetDeviceNum", report)

    def test_another_record_is_noticed(self):
        report = self.changes(("kBorvanTextFieldSize = 120,", "kBorvanTextFieldSize = 128,"),
                              ("sizeof(UsbDeviceInfo) == 248", "sizeof(UsbDeviceInfo) == 264"),
                              ("name) == 120", "name) == 128"), ("vendor_id) == 240", "vendor_id) == 256"),
                              ("product_id) == 244", "product_id) == 260"))
        self.assertIn("UsbDeviceInfo", report)

    def test_a_missing_function_is_noticed(self):
        self.assertIn("abi_UsbI2cWrite", self.changes(without=("UsbI2cWrite",)))
        without = [(name, ordinal) for name, ordinal in exports() if name != "UsbI2cWrite"]
        self.assertEqual(abi_check.export_changes(without), ["ordinal 10: None in place of UsbI2cWrite"])
        # Nor does the header do without it.
        with self.assertRaises(subprocess.CalledProcessError):
            self.changes(("bool UsbFlashErase(uint32_t address);", ""))

    def test_another_ordinal_and_a_new_name_are_noticed(self):
        moved = [(name, 7 if name == "UsbI2cRead" else ordinal) for name, ordinal in exports()]
        self.assertEqual(abi_check.export_changes(moved), ["ordinal 7: UsbI2cRead in place of None",
                                                           "ordinal 9: None in place of UsbI2cRead"])
        self.assertEqual(abi_check.export_changes([*exports(), ("UsbNew", 24)]),
                         ["ordinal 24: UsbNew in place of None"])


def main():
    """Runs the tests, or makes the baseline."""
    global SOURCE, DLL  # pylint: disable=global-statement
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    if sys.argv[1] == "--baseline":
        with tempfile.TemporaryDirectory() as folder:
            abi_check.write_baseline(abi_check.stub(SOURCE / "include", pathlib.Path(folder),
                                                    abi_check.promised().values()))
        return
    SOURCE = pathlib.Path(sys.argv[1])
    DLL = sys.argv[2] if len(sys.argv) > 2 else None
    unittest.main(argv=sys.argv[:1], verbosity=2)


if __name__ == "__main__":
    main()
