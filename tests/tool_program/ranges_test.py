#!/usr/bin/python3
"""The end of the flash, ranges and images through the built program."""
import json
import random

import station
from station import SECTOR, camera

MEBI = 1 << 20


def seeded(size, seed=1):
    """Bytes that are the same each time."""
    return random.Random(seed).randbytes(size)


class RangesTest(station.ToolTest):
    """A camera with a flash of 1 MiB that holds firmware in its first 200 KiB."""

    def setUp(self):
        super().setUp()
        self.old = seeded(200 << 10) + b"\xff" * (MEBI - (200 << 10))

    def plug_in_flash(self, beyond_end="wrap", **changes):
        """The camera, whose addresses beyond the end wrap or fail."""
        self.plug_in(camera(0, flash={"size": "1M", "beyond_end": beyond_end}, **changes))
        self.put_flash(self.old)

    def test_nothing_beyond_the_end_is_touched(self):
        image = self.file("image.bin", self.old[:5000])
        for beyond_end, why in (("wrap", "wraps at 1 MiB"),
                                ("fail", "does not answer beyond 1 MiB")):
            self.plug_in_flash(beyond_end)
            self.refuse(1, f"RANGE: 0xff000-0x100fff ends beyond .*{why}", "flash", "erase",
                        "0xff000+8K", "--yes")
            self.refuse(1, f"ADDR: 0x200000-0x200003 is beyond .*{why}", "flash", "word", "0x200000",
                        "1", "--yes")
            self.refuse(5, f"--address: 0x100000 is beyond .*{why}", "flash", "verify", image,
                        "--address", "1M")
            self.refuse(1, f"RANGE: 0x0-0x1fffff ends beyond .*{why}", "flash", "read", "0+2M",
                        self.name("dump.bin"))
            self.refuse(1, f"RANGE: 0xff000-0x100fff ends beyond .*{why}", "flash", "map", "0xff000+8K")
            self.assertFalse((self.folder / "dump.bin").exists())
            self.assertEqual(self.flash(), self.old)

    def test_what_ends_with_the_flash_is_done(self):
        for beyond_end in ("wrap", "fail"):
            self.plug_in_flash(beyond_end)
            self.succeed("flash", "read", "0-0xfffff", self.name("dump.bin"))
            self.assertEqual((self.folder / "dump.bin").read_bytes(), self.old)
            self.succeed("flash", "read", "all", self.name("all.bin"))
            self.assertEqual((self.folder / "all.bin").read_bytes(), self.old)
            self.succeed("flash", "erase", "0xff000+4K", "--yes")
            self.succeed("flash", "word", "0xffffc", "0x12345678", "--yes")
            self.assertEqual(self.flash(), self.old[:-4] + bytes.fromhex("12345678"))
            self.succeed("flash", "verify", self.file("end.bin", bytes.fromhex("12345678")), "--address",
                         "0xffffc")

    def test_one_bad_transfer_neither_refuses_nor_lets_pass(self):
        # Words are read on selector 3: a set and a get for each, the get of a refused set shows the word
        # before.
        for at in (1, 2, 5, 13, 14, 15, 20):
            for direction in ("set", "get"):
                fault = {"selector": 3, "direction": direction, "at": at, "result": "0x80070017"}
                self.plug_in_flash(faults=[fault])
                self.refuse(1, "RANGE", "flash", "erase", "0x100000+4K", "--yes")
                self.virtual_camera("reset-faults")
                self.succeed("flash", "read", "0xff000+4K", self.name("part.bin"))
                self.assertEqual((self.folder / "part.bin").read_bytes(), self.old[-SECTOR:])
                self.assertEqual(self.flash(), self.old)

    def test_told_size_counts(self):
        self.plug_in_flash()
        self.refuse(1, "64 KiB.*from --flash-size", "flash", "word", "0x10000", "--flash-size", "64K")
        self.refuse(5, "64 KiB.*from --flash-size", "flash", "verify", self.file("a.bin", self.old),
                    "--flash-size", "64K")

    def test_single_addresses_and_ends_that_mislead(self):
        self.plug_in_flash()
        outcome = self.refuse(1, '"512K" is a single address', "flash", "read", "512K", self.name("a.bin"))
        self.assertIn("512K+4K", outcome.err)
        outcome = self.succeed("flash", "map", "0-64K", "--json")
        self.assertIn("0-64K includes the byte at 64K; 0+64K means 65536 bytes (64 KiB)", outcome.err)
        self.assertEqual(outcome.json["last"], 0x10FFF)
        self.refuse(1, "includes the byte at 0x2000", "flash", "erase", "0x1000-0x2000", "--yes")
        self.assertEqual(self.flash(), self.old)

    def test_backup_is_programmed_only_at_a_given_address(self):
        self.plug_in_flash()
        image = self.file("image.bin", seeded(5000, seed=2))
        self.succeed("flash", "program", image, "--address", "0x20800")
        backup = next(self.folder.glob("image-backup-*.bin"))
        changed = self.flash()
        name = self.name(backup.name)
        for command in ("program", "verify"):
            outcome = self.refuse(1, "contains 0x20000", "flash", command, name)
            self.assertIn("--address 0x20000", outcome.err)
        self.assertEqual(self.flash(), changed)
        self.succeed("flash", "program", name, "--address", "0x20000", "--no-backup")
        self.assertEqual(self.flash(), self.old)

    def test_formats_are_read_and_text_dumps_refused_unless_forced(self):
        self.plug_in_flash()
        self.succeed("flash", "read", "0x1000+64", self.name("dump.txt"))
        broken = self.file("a.elf", b"\x7fELF\1\1\1" + bytes(100))
        for command in ("program", "verify"):
            self.refuse(5, "is a text dump", "flash", command, self.name("dump.txt"))
            self.refuse(5, "a.elf", "flash", command, broken)
        self.assertEqual(self.flash(), self.old)
        self.refuse(7, "differ", "flash", "verify", broken, "--format", "raw")
        hex_file = self.file("a.hex", ":0400100001020304E2\r\n:00000001FF\r\n")
        self.succeed("flash", "program", hex_file, "--no-backup")
        changed = self.old[:0x10] + bytes([1, 2, 3, 4]) + self.old[0x14:]
        self.assertEqual(self.flash(), changed)
        self.succeed("flash", "verify", hex_file)
        self.succeed("flash", "program", hex_file, "--format", "raw", "--no-backup")
        self.assertEqual(self.flash()[:11], b":0400100001")

    def test_many_differences_are_written(self):
        self.plug_in_flash()
        image = self.file("image.bin", bytes(byte ^ 1 for byte in self.old[:SECTOR * 16]))
        self.refuse(7, "65536 bytes", "flash", "verify", image, "--diff", self.name("diff.json"))
        differences = json.loads((self.folder / "diff.json").read_text())["differences"]
        self.assertEqual(len(differences), SECTOR * 16)
        self.assertEqual(differences[5], {"address": 5, "expected": self.old[5] ^ 1,
                                          "found": self.old[5]})
        self.assertEqual([path.name for path in self.folder.glob("diff.json.*")], [])
        self.refuse(1, "is the image itself", "flash", "verify", image, "--diff",
                    image.replace("image.bin", ".\\IMAGE.bin"))


if __name__ == "__main__":
    station.main()
