#!/usr/bin/python3
"""Counts the transfers of whole borvanusb commands on a virtual camera, from its trace, and prints them beside
the least that the library's exports allow for the same promises.

Usage: command_transfers.py
Needs the Windows build (scripts/build.sh windows). Exit code 1 when a command makes more than 1.02 times the
least, or when a command fails.
"""
import pathlib
import random
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "tool_program"))
# pylint: disable=wrong-import-position
import station
from station import camera

KIB = 1024
MIB = 1024 * KIB
SECTOR = 4096
FLASH = MIB
PACKETS_OF_A_BLOCK = 30 * SECTOR // 60  # the tool programs 30 sectors by one job
REGISTERS = 4096
BLOCK = 56
SLAVE = 0x6C
TARGET = 1.02
OPENING = "reg read 0x100"
REGISTER_READ = 4  # the transfers of one reading of a register


def read(size):
    """One reading of flash by a job, with two length queries and two transfers a packet; the last byte by a
    word of three, since the job would ask for a packet behind the range."""
    return 2 + 2 * (size // 64) + 3


def program(sectors):
    """Erasing and programming sectors that lie in a row, by jobs of 30 sectors: two length queries, an erase
    a sector, a transfer a packet of 60; the bytes behind the last whole packet by words of two."""
    transfers = 0
    while sectors > 0:
        block = min(sectors, 30)
        size = block * SECTOR
        transfers += 2 + block + size // 60 + 2 * (size % 60 // 4)
        sectors -= block
    return transfers


def blocks(registers):
    """One reading of registers in a row by one job."""
    return 1 + 2 * -(-registers // BLOCK)


class Measurement(station.ToolTest):
    """A camera whose transfers are counted."""

    def __init__(self):
        super().__init__()
        self.setUp()
        self.chance = random.Random(1)
        self.opening = 0
        self.missed = False

    def bytes_of(self, size):
        """Random bytes, as of firmware that is packed."""
        return self.chance.randbytes(size)

    def count(self, command, flash):
        """The transfers of a command on a camera with this flash, the opening of the camera left out."""
        for file in self.folder.glob("cameras.*"):
            if file.suffix != ".json":
                file.unlink()
        self.put_flash(flash)
        self.plug_in(camera(
            0, trace="cameras.trace", registers={"0x01a3": "0x20"},
            flash={"size": FLASH},
            sensors=[{"slave": f"{SLAVE:#x}", "mode": 1, "registers": {
                f"{0x3000 + i:#x}": f"{self.chance.randrange(256):#x}" for i in range(REGISTERS)}}]))
        self.succeed(*command.split())
        trace = self.folder / "cameras.trace"
        lines = trace.read_bytes().count(b"\n") if trace.exists() else 0
        return lines - self.opening

    def row(self, name, command, flash, once, least):
        """Prints a line of the table."""
        made = self.count(command, flash)
        ratio = made / least if least else None
        met = "" if ratio is None else "met" if ratio <= TARGET else "MISSED"
        self.missed = self.missed or met == "MISSED"
        print(f"{name:<61} {made:>7} {once or '-':>12} {least or '-':>13} "
              f"{f'{ratio:.3f}' if ratio else '-':>7} {met}", flush=True)

    def programming(self):
        """flash program of 256 KiB onto flashes that hold what, of 256 KiB, differs so."""
        size = 256 * KIB
        image = self.bytes_of(size)
        rest = self.bytes_of(FLASH - size)
        self.file("image.bin", image)
        command = "flash program image.bin --progress none"
        cleared = bytearray(image)
        cleared[1000] = 0xFF
        raised = bytearray(image)
        raised[1000] = 0x00
        sector = bytearray(image)
        sector[5 * SECTOR:6 * SECTOR] = self.bytes_of(SECTOR)
        cases = [
            ("onto blank flash", b"\xff" * FLASH, program(64), size),
            ("that is already there", image + rest, 0, 0),
            ("of which all differs", self.bytes_of(size) + rest, program(64), size),
            ("of which 1 byte differs, bits cleared", bytes(cleared) + rest, 2, SECTOR),
            ("of which 1 byte differs, bits set", bytes(raised) + rest, program(1), SECTOR),
            ("of which 1 sector of 64 differs", bytes(sector) + rest, program(1), SECTOR)]
        for name, flash, writing, back in cases:
            once = read(size) + writing + (read(back) if back else 0)
            least = 2 * read(size) + writing + (2 * read(back) if back else 0)
            self.row(f"flash program, 256 KiB {name}", command, flash, once, least)

    def others(self):
        """Commands that only read."""
        flash = self.bytes_of(FLASH)
        self.row("flash read, 1 MiB", "flash read 0+1M a.bin --progress none", flash, read(MIB), 2 * read(MIB))
        self.row("reg dump, 4,096 registers", "reg dump 0x1000-0x1fff a.txt --progress none", flash,
                 blocks(REGISTERS), 2 * blocks(REGISTERS))
        vouched = REGISTERS // BLOCK
        by_words = 3 * (REGISTERS % BLOCK)
        self.row("i2c dump, 4,096 registers", f"i2c dump 0x3000-0x3fff a.txt --slave {SLAVE:#x} --progress none",
                 flash, blocks(REGISTERS), blocks(vouched * BLOCK) + 3 * vouched + 2 * by_words)
        self.row("info", "info", flash, None, None)
        self.opening, opening = 0, self.opening
        self.row("list", "list", flash, None, None)
        self.opening = opening


def main():
    """Runs all measurements."""
    measurement = Measurement()
    try:
        flash = measurement.bytes_of(FLASH)
        measurement.opening = measurement.count(OPENING, flash) - 2 * REGISTER_READ
        print(f"Opening the camera takes {measurement.opening} transfers, which are left out.")
        print(f"{'command':<61} {'made':>7} {'least, once':>12} {'least, twice':>13} {'ratio':>7} "
              f"target <= {TARGET}")
        measurement.programming()
        measurement.others()
        measurement.virtual_camera("unregister")
    finally:
        measurement.doCleanups()
    return 1 if measurement.missed else 0


if __name__ == "__main__":
    sys.exit(main())
