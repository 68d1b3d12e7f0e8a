#!/usr/bin/env python3
"""Compares image files with other programs: the reader and srec_cat, objcopy, intelhex and linkers get the same
bytes from a file, no matter which of them wrote it.

Usage: compare.py PROGRAM, the program exchange_images; more words are for unittest.
"""
import io
import pathlib
import random
import subprocess
import sys
import tempfile
import unittest

import intelhex

PROGRAM = sys.argv.pop(1)

# Addresses and sizes: one byte, over 64 KiB, gaps of gigabytes, the last addresses, many records.
IMAGES = {
    "one": [(0, 1)],
    "low": [(0x10, 5), (0x30, 300), (0xFF00, 0x100)],
    "bank": [(0xFFF3, 0x40), (0x1FFFF, 2)],
    "medium": [(0x1000, 0x234), (0xFFFFF0, 0x10)],
    "high": [(0x08000000, 0x2345), (0x0801FFF9, 0x30)],
    "far": [(0x3, 0x21), (0x80000000, 0x11), (0xFFFFFFE0, 0x20)],
}
SCRIPT = """
PHDRS { text PT_LOAD; data PT_LOAD; bss PT_LOAD; }
ENTRY(begin)
SECTIONS {
  .text 0x10000 : AT(0x20000) { *(.text) } :text
  .data 0x30000 : AT(0x20800) { *(.data) } :data
  .bss 0x40000 : AT(0x50000) { *(.bss) } :bss

}
"""
SOURCE = """
  .globl begin
  .text
begin:
  .rept 100
  .long 0x12345678
  .endr
  .data
  .long 0xaabbccdd
  .short 0x1122, 0x3344
  .bss
  .space 64
"""


def run(*words, data=None):
    """A program's output, as bytes."""
    return subprocess.run([str(word) for word in words], input=data, check=True,
                          stdout=subprocess.PIPE).stdout


def bytes_of(name):
    """The image: address to byte."""
    numbers = random.Random(name)
    return {first + i: numbers.randrange(256)
            for first, size in IMAGES[name] for i in range(size)}


def read(file):
    """The content that the reader under test finds in a file."""
    image = {}
    for line in run(PROGRAM, "read", file).decode().splitlines():
        address, digits = line.split()
        for i, byte in enumerate(bytes.fromhex(digits)):
            image[int(address, 16) + i] = byte
    return image


def write(name, form):
    """The file that the writer under test makes of an image."""
    image = bytes_of(name)
    lines = "".join(f"{address:x} {byte:02x}\n" for address, byte in image.items())
    return run(PROGRAM, "write", form, data=lines.encode())


def intelhex_image(file):
    """The content that intelhex reads from an Intel HEX file."""
    image = intelhex.IntelHex(str(file)).todict()
    image.pop("start_addr", None)
    return image


class Strangers(unittest.TestCase):
    """Each test has its own folder."""

    def setUp(self):
        # pylint: disable=consider-using-with
        self.kept = tempfile.TemporaryDirectory()
        self.addCleanup(self.kept.cleanup)
        self.folder = pathlib.Path(self.kept.name)

    def parts(self, name):
        """The image as raw files, with their addresses."""
        image = bytes_of(name)
        for first, size in IMAGES[name]:
            file = self.folder / f"{name}-{first:x}.bin"
            file.write_bytes(bytes(image[first + i] for i in range(size)))
            yield file, first

    def srec_cat(self, name, out, *options):
        """A file that srec_cat writes."""
        words = []
        for file, first in self.parts(name):
            words += [file, "-binary", "-offset", hex(first)]
        run("srec_cat", *words, "-o", out, *options)
        return out

    def segments_of(self, file, *kind):
        """The content that srec_cat reads from a file."""
        out = self.folder / "read-by-srec-cat.hex"
        run("srec_cat", file, *kind, "-o", out, "-intel", "-address-length=4")
        return intelhex_image(out)

    def test_what_srec_cat_writes(self):
        """Both formats, with short and long lines and addresses."""
        for name in IMAGES:
            for options in (["-intel"], ["-motorola"], ["-intel", "-line-length=80"],
                            ["-motorola", "-line-length=100"], ["-motorola", "-address-length=4"],
                            ["-motorola", "-disable=header"], ["-intel", "-obs=3"]):
                with self.subTest(name=name, options=options):
                    out = self.srec_cat(name, self.folder / "out.txt", *options)
                    self.assertEqual(read(out), bytes_of(name))

    def test_segments_that_srec_cat_writes(self):
        """Extended segment addresses."""
        for name in ("low", "bank"):
            out = self.srec_cat(name, self.folder / "out.hex", "-intel", "-address-length=3")
            self.assertEqual(read(out), bytes_of(name))
        self.assertIn(b"\n:02000002", out.read_bytes().replace(b"\r", b""))

    def test_what_objcopy_writes(self):
        """Both formats, each from one piece."""
        for name in IMAGES:
            for file, first in self.parts(name):
                image = {first + i: byte for i, byte in enumerate(file.read_bytes())}
                for options in (["ihex"], ["srec"], ["srec", "--srec-forceS3"],
                                ["srec", "--srec-len=7"]):
                    with self.subTest(name=name, first=hex(first), options=options):
                        out = self.folder / "out.txt"
                        run("objcopy", "-I", "binary", "-O", *options, "--change-addresses",
                            hex(first), file, out)
                        self.assertEqual(read(out), image)

    def test_what_intelhex_writes(self):
        """With a start address, and records of several lengths."""
        for name in IMAGES:
            for length in (1, 16, 255):
                with self.subTest(name=name, length=length):
                    hex_file = intelhex.IntelHex(bytes_of(name))
                    hex_file.start_addr = {"EIP": 0x12345678}
                    text = io.StringIO()
                    hex_file.write_hex_file(text, byte_count=length)
                    out = self.folder / "out.hex"
                    out.write_text(text.getvalue(), encoding="ascii")
                    self.assertEqual(read(out), bytes_of(name))

    def test_hex_is_read_by_others(self):
        """intelhex and srec_cat find the same bytes."""
        for name in IMAGES:
            with self.subTest(name=name):
                out = self.folder / "own.hex"
                out.write_bytes(write(name, "hex"))
                self.assertEqual(intelhex_image(out), bytes_of(name))
                self.assertEqual(self.segments_of(out, "-intel"), bytes_of(name))
                self.assertEqual(read(out), bytes_of(name))

    def test_s_records_are_read_by_others(self):
        """srec_cat and objcopy find the same bytes, in each form that can hold them."""
        for name in IMAGES:
            last = max(bytes_of(name))
            for form, limit in (("s19", 1 << 16), ("s28", 1 << 24), ("s37", 1 << 32)):
                if last >= limit:
                    continue
                with self.subTest(name=name, form=form):
                    out = self.folder / "own.srec"
                    out.write_bytes(write(name, form))
                    self.assertEqual(self.segments_of(out, "-motorola"), bytes_of(name))
                    again = self.folder / "again.hex"
                    run("objcopy", "-I", "srec", "-O", "ihex", out, again)
                    self.assertEqual(intelhex_image(again), bytes_of(name))
                    self.assertEqual(read(out), bytes_of(name))

    def check_linked(self, linked, objcopy):
        """The bytes at the load addresses, as objcopy finds them."""
        out = self.folder / "linked.hex"
        run(objcopy, "-O", "ihex", linked, out)
        image = intelhex_image(out)
        self.assertEqual(read(linked), image)
        self.assertEqual((min(image), max(image), len(image)), (0x20000, 0x20807, 408))

    def test_what_ld_links(self):
        """ELF of 64 and 32 bits with load addresses that differ from the program's addresses."""
        source = self.folder / "source.s"
        source.write_text(SOURCE, encoding="ascii")
        script = self.folder / "script.ld"
        script.write_text(SCRIPT, encoding="ascii")
        for bits, emulation in (("--64", "elf_x86_64"), ("--32", "elf_i386")):
            with self.subTest(emulation=emulation):
                part = self.folder / "part.o"
                linked = self.folder / "linked.elf"
                run("as", bits, source, "-o", part)
                run("ld", "-m", emulation, "-T", script, part, "-o", linked)
                self.check_linked(linked, "objcopy")

    def test_what_lld_links(self):
        """ELF for processors of both byte orders."""
        source = self.folder / "source.s"
        source.write_text(SOURCE, encoding="ascii")
        script = self.folder / "script.ld"
        script.write_text(SCRIPT, encoding="ascii")
        for target in ("powerpc-none-elf", "powerpc64-none-elf", "armv7-none-eabi",
                       "aarch64-none-elf"):
            with self.subTest(target=target):
                part = self.folder / "part.o"
                linked = self.folder / "linked.elf"
                run("clang", "-target", target, "-c", source, "-o", part)
                run("ld.lld", "-T", script, part, "-o", linked)
                self.check_linked(linked, "llvm-objcopy")


if __name__ == "__main__":
    unittest.main()
