#!/usr/bin/env python3
"""Checks a built product (DLL or program) as the file that users get.

Usage: product_test.py PRODUCT KIND VERSION SOURCE_FOLDER
KIND is library, virtual_camera, select, tool or program; VERSION the project's; no path below
SOURCE_FOLDER may have reached the product. Exit code 0 when all holds, else each broken rule is
printed.
"""
import pathlib
import re
import sys
import unittest
import zlib

import pe_file

# DLLs that every supported Windows has and takes from its own folder alone ("known DLLs"). Of any
# other, version.dll for one, it would load a file of that name that lies beside the program.
WINDOWS_LIBRARIES = {
    "advapi32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll",
    "shell32.dll", "shlwapi.dll", "user32.dll", "ws2_32.dll",
}
# Parts of Windows' own C runtime: api-ms-win-crt-stdio-l1-1-0.dll and its like.
WINDOWS_RUNTIME = re.compile(r"api-ms-win-crt-[a-z0-9-]+\.dll")
# The library runs inside other people's programs and takes less.
LIBRARY_IMPORTS = {
    "advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "shlwapi.dll",
    "user32.dll",
}

# Programs bind these by name and by number; 7 and 8 stay empty.
LIBRARY_EXPORTS = {
    1: "UsbIniDevice",
    2: "UsbUpdateDevice",
    3: "UsbFlashRead",
    4: "UsbFlashWrite",
    5: "UsbRegisterRead",
    6: "UsbRegisterWrite",
    9: "UsbI2cRead",
    10: "UsbI2cWrite",
    11: "UsbFlashErase",
    12: "UsbFlashWriteFile",
    13: "UsbDestroyUSB",
    14: "UsbFlashQuickReadFile",
    15: "UsbRegisterReadFile",
    16: "UsbRegisterWriteFile",
    17: "UsbI2CReadFile",
    18: "UsbI2CWriteFile",
    19: "UsbSelectDevice",
    20: "UsbGetDeviceNum",
    21: "GetProgressInfo",
    22: "UsbGetAllDeviceInfo",
    23: "UsbGetSelectDeviceInfo",
}
# What COM and regsvr32 look for.
COM_EXPORTS = ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"]

LIBRARY_SIZE_LIMIT = 400 * 1024

PRODUCT = pathlib.Path()
VERSION = ""
SOURCE_FOLDER = ""


class ProductTest(unittest.TestCase):
    """What holds for every product."""

    allowed_libraries = WINDOWS_LIBRARIES

    @classmethod
    def setUpClass(cls):
        cls.file = pe_file.PeFile(PRODUCT)

    def test_imports_only_libraries_of_windows(self):
        foreign = [name for name in self.file.imported_libraries()
                   if name.lower() not in self.allowed_libraries
                   and not WINDOWS_RUNTIME.fullmatch(name.lower())]
        self.assertEqual(foreign, [])
        self.assertIn("kernel32.dll", [name.lower() for name in self.file.imported_libraries()])

    def test_version_resource_has_the_version_of_the_project(self):
        numbers, texts = self.file.version()
        wanted = tuple(int(part) for part in VERSION.split("."))
        self.assertEqual(numbers, (wanted + (0, 0, 0, 0))[:4])
        self.assertEqual(texts.get("FileVersion"), VERSION)
        self.assertEqual(texts.get("ProductVersion"), VERSION)
        self.assertEqual(texts.get("OriginalFilename"), PRODUCT.name)
        self.assertTrue(texts.get("FileDescription"))

    def test_data_never_executes_and_addresses_are_random(self):
        flags = self.file.dll_characteristics
        self.assertTrue(flags & pe_file.CHARACTERISTIC_NX_COMPATIBLE, "no DEP")
        self.assertTrue(flags & pe_file.CHARACTERISTIC_DYNAMIC_BASE, "no ASLR")
        self.assertTrue(flags & pe_file.CHARACTERISTIC_HIGH_ENTROPY, "no high-entropy ASLR")
        # Without relocations the loader can't move the file, whatever its flags say.
        self.assertNotEqual(self.file.directory(pe_file.DIRECTORY_RELOCATIONS)[1], 0)

    def test_no_section_is_both_writable_and_executable(self):
        for section in self.file.sections:
            flags = section.characteristics
            executable = flags & (pe_file.SECTION_EXECUTABLE | pe_file.SECTION_CODE)
            writable = flags & pe_file.SECTION_WRITABLE
            self.assertFalse(executable and writable, section.name)

    def test_carries_no_time_stamp(self):
        self.assertEqual(self.file.time_stamp, 0)
        self.assertIn(self.file.export_time_stamp(), (0, None))

    def test_carries_no_path_of_the_build_machine(self):
        self.assertNotIn(SOURCE_FOLDER.encode(), self.file.data)
        self.assertNotIn(SOURCE_FOLDER.encode("utf-16-le"), self.file.data)

    def test_debug_information_lies_in_the_file_that_it_names(self):
        self.assertEqual([section.name for section in self.file.sections
                          if section.name.startswith(".debug_")], [])
        link = self.file.debug_link()
        self.assertIsNotNone(link, "the product names no file with its debug information")
        name, checksum = link
        self.assertEqual(name, PRODUCT.name + ".debug")
        debug_file = PRODUCT.with_name(name)
        self.assertEqual(zlib.crc32(debug_file.read_bytes()), checksum)
        self.assertIn(".debug_info", [section.name
                                      for section in pe_file.PeFile(debug_file).sections])
        self.assertNotIn(SOURCE_FOLDER.encode(), debug_file.read_bytes())


class LibraryTest(ProductTest):
    """BorvanUSB_x64.dll."""

    allowed_libraries = LIBRARY_IMPORTS

    def test_exports_exactly_the_documented_names_at_their_ordinals(self):
        exports = self.file.exports()
        self.assertEqual(sorted((ordinal, name) for name, ordinal in exports if name),
                         sorted(LIBRARY_EXPORTS.items()))
        self.assertEqual([ordinal for name, ordinal in exports if name is None], [])

    def test_no_export_has_a_handler_in_an_exceptions_way(self):
        # A host of another compiler that takes an exception could not unwind such a frame.
        addresses = self.file.export_addresses()
        self.assertEqual(sorted(addresses), sorted(LIBRARY_EXPORTS.values()))
        self.assertEqual([name for name, address in sorted(addresses.items())
                          if self.file.has_handler(address)], [])

    def test_stays_below_400_kib(self):
        self.assertLess(len(self.file.data), LIBRARY_SIZE_LIMIT)


class VirtualCameraTest(ProductTest):
    """BorvanVirtualCamera.dll."""

    def test_exports_only_what_com_looks_for(self):
        self.assertEqual(sorted(str(name) for name, _ in self.file.exports()), COM_EXPORTS)


class SelectTest(ProductTest):
    """borvanusb_select.dll."""

    allowed_libraries = LIBRARY_IMPORTS | {"borvanusb_x64.dll"}

    def test_exports_one_function(self):
        self.assertEqual([name for name, _ in self.file.exports()], ["borvan_select_device"])


class ProgramTest(ProductTest):
    """A program that is handed out."""


class ToolTest(ProductTest):
    """borvanusb.exe. Production lines start it for each step. shell32.dll and ole32.dll double the
    time of a start, so what few commands need is loaded when they need it."""

    allowed_libraries = {"kernel32.dll", "msvcrt.dll", "ws2_32.dll"}


KINDS = {"library": LibraryTest, "virtual_camera": VirtualCameraTest, "program": ProgramTest,
         "select": SelectTest, "tool": ToolTest}


def main():
    """Runs the checks that belong to the kind of product."""
    # unittest builds its cases without arguments.
    global PRODUCT, VERSION, SOURCE_FOLDER  # pylint: disable=global-statement
    if len(sys.argv) != 5 or sys.argv[2] not in KINDS:
        sys.exit(__doc__)
    PRODUCT, VERSION, SOURCE_FOLDER = pathlib.Path(sys.argv[1]), sys.argv[3], sys.argv[4]
    suite = unittest.defaultTestLoader.loadTestsFromTestCase(KINDS[sys.argv[2]])
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    sys.exit(0 if result.wasSuccessful() and result.testsRun > 0 else 1)


if __name__ == "__main__":
    main()
