#!/usr/bin/python3
"""Programs the same image over the same flash with borvanusb, on a virtual camera, and with flashrom, on its
own dummy chip in memory, and prints what each erases, writes and reads of the flash.

Usage: beside_flashrom.py
Needs the Windows build (scripts/build.sh windows) and flashrom. Neither flash has delays: what is counted
does not depend on them.
"""
import collections
import json
import pathlib
import random
import re
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "tool_program"))
# pylint: disable=wrong-import-position
import station
from station import camera

KIB = 1024
SECTOR = 4096
# The dummy's chip, and of the entries in flashrom's list that fit it, one.
FLASH = 8192 * KIB
EMULATED = "MX25L6436"
CHIP = "MX25L6436E/MX25L6445E/MX25L6465E/MX25L6473E/MX25L6473F"
REGION = 256 * KIB
SECTORS = REGION // SECTOR

ERASED = "sectors erased"
WRITTEN = "bytes written"
READ = "bytes read"
FIGURES = [ERASED, WRITTEN, READ]

# Opcodes of serial flash (JEDEC), with the sectors that they erase.
ERASES = {0x20: 1, 0x52: 8, 0xD8: 16}
PAGE_PROGRAM = 0x02
READ_DATA = 0x03
ADDRESSED = 4  # bytes of an opcode with its address
COMMAND = re.compile(r"dummy_spi_send_command: writing (\d+) bytes: (0x[0-9a-f]+).*reading (\d+) bytes")

# The camera's: of its flash words' control, and of its bulk transfers.
WORD_CONTROL, WRITE_CONTROL, READ_CONTROL = 3, 4, 5
WORD_ERASE, WORD_WRITE, WORD_READ = "32", "38", "34"
WORD, WRITE_PACKET, READ_PACKET = 4, 60, 64


class Comparison(station.ToolTest):
    """The two programs, one after the other, on the same bytes."""

    def __init__(self):
        super().__init__()
        self.setUp()

    def flashrom(self, flash, image):
        """What flashrom does to its chip."""
        chip = self.folder / "chip.bin"
        chip.write_bytes(flash)
        whole = self.folder / "whole.bin"
        whole.write_bytes(image + flash[REGION:])
        layout = self.folder / "layout"
        layout.write_text(f"00000000:{REGION - 1:08x} image\n{REGION:08x}:{FLASH - 1:08x} rest\n",
                          encoding="ascii")
        said = subprocess.run(
            ["flashrom", "-p", f"dummy:bus=spi,emulate={EMULATED},image={chip}", "-c", CHIP, "-l", layout,
             "-i", "image", "--noverify-all", "-w", whole, "-VVV"],
            check=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout
        self.assertEqual(chip.read_bytes(), whole.read_bytes())
        figures = collections.Counter()
        for sent, opcode, answered in COMMAND.findall(said):
            figures[ERASED] += ERASES.get(int(opcode, 16), 0)
            if int(opcode, 16) == PAGE_PROGRAM:
                figures[WRITTEN] += int(sent) - ADDRESSED
            elif int(opcode, 16) == READ_DATA:
                figures[READ] += int(answered)
        return figures

    def borvanusb(self, flash, image):
        """What borvanusb does to the camera's flash."""
        for file in self.folder.glob("cameras.*"):
            file.unlink()
        self.put_flash(flash)
        self.plug_in(camera(0, trace="cameras.trace", flash={"size": FLASH}))
        self.file("image.bin", image)
        self.succeed("flash", "program", "image.bin", "--progress", "none")
        self.assertEqual(self.flash(), image + flash[REGION:])
        figures = collections.Counter()
        for line in (self.folder / "cameras.trace").read_text(encoding="ascii").splitlines():
            transfer = json.loads(line)
            control, opcode = transfer["selector"], transfer["bytes"][:2]
            if transfer["direction"] == "set" and control == WORD_CONTROL:
                figures[ERASED] += opcode == WORD_ERASE
                figures[WRITTEN] += WORD * (opcode == WORD_WRITE)
                figures[READ] += WORD * (opcode == WORD_READ)
            elif transfer["direction"] == "set" and control == WRITE_CONTROL:
                figures[WRITTEN] += WRITE_PACKET
            elif transfer["direction"] == "get" and control == READ_CONTROL:
                figures[READ] += READ_PACKET
        return figures


def cases(chance):
    """(name, flash, image) of each comparison."""
    image = chance.randbytes(REGION)
    rest = chance.randbytes(FLASH - REGION)
    one = bytearray(image)
    one[5 * SECTOR:6 * SECTOR] = chance.randbytes(SECTOR)
    byte = bytearray(image)
    byte[1000] = 0xFF
    return [("blank", b"\xff" * FLASH, image), ("equal", image + rest, image),
            (f"1 sector of {SECTORS} differs", bytes(one) + rest, image),
            ("1 byte differs, bits cleared", bytes(byte) + rest, image),
            ("all differs", chance.randbytes(REGION) + rest, image)]


def main():
    """Runs all comparisons."""
    comparison = Comparison()
    try:
        print(f"{'256 KiB over a flash that is':<30} {'':<10} " + " ".join(f"{name:>14}" for name in FIGURES))
        for name, flash, image in cases(random.Random(1)):
            for program in ("flashrom", "borvanusb"):
                figures = getattr(comparison, program)(flash, image)
                print(f"{name:<30} {program:<10} " +
                      " ".join(f"{figures[figure]:>14,}" for figure in FIGURES), flush=True)
        comparison.virtual_camera("unregister")
    finally:
        comparison.doCleanups()


if __name__ == "__main__":
    main()
