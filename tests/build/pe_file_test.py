#!/usr/bin/env python3
"""Checks that the reader of Windows files refuses what is none, with the reason."""
import pathlib
import struct
import tempfile
import unittest

import pe_file


def read(content):
    """Reads `content` as a Windows file."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "file.dll"
        path.write_bytes(content)
        return pe_file.PeFile(path)


def headers(machine=0x8664, magic=0x20B):
    """DOS header, PE header and an optional header without directories and sections."""
    return (b"MZ" + bytes(0x3A) + struct.pack("<I", 0x40)
            # machine, sections, time stamp, symbol table, symbols, optional header's size, flags
            + b"PE\0\0" + struct.pack("<HHIIIHH", machine, 0, 7, 0, 0, 112, 0)
            + struct.pack("<H", magic) + bytes(110))


class PeFileTest(unittest.TestCase):
    """Input that is not what it should be."""

    def test_reads_headers_without_tables(self):
        file = read(headers())
        self.assertEqual(file.time_stamp, 7)
        self.assertEqual(file.imported_libraries(), [])
        self.assertEqual(file.exports(), [])

    def test_refuses_a_text_file(self):
        with self.assertRaisesRegex(pe_file.PeError, "no MZ"):
            read(b"hello")

    def test_refuses_a_file_that_ends_in_its_headers(self):
        with self.assertRaisesRegex(pe_file.PeError, "outside the file"):
            read(headers()[:0x60])

    def test_refuses_another_machine(self):
        with self.assertRaisesRegex(pe_file.PeError, "machine 0x14c"):
            read(headers(machine=0x14C))

    def test_refuses_the_32_bit_layout(self):
        with self.assertRaisesRegex(pe_file.PeError, "PE32"):
            read(headers(magic=0x10B))


if __name__ == "__main__":
    unittest.main(verbosity=2)
