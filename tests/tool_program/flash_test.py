#!/usr/bin/python3
"""Flash through the built program: reading, erasing, programming, cuts and faults."""
import hashlib
import json
import os
import random
import re

import station
from station import SECTOR, camera

FLASH = 64 << 10


def seeded(size, seed=1):
    """Bytes that are the same each time."""
    return random.Random(seed).randbytes(size)


class FlashTest(station.ToolTest):
    """A camera with a flash full of known bytes."""

    def setUp(self):
        super().setUp()
        self.old = seeded(FLASH)
        self.start_anew(self.old)

    def start_anew(self, content, **changes):
        """A camera fresh from the factory, with this flash."""
        (self.folder / "cameras.camera0.state").unlink(missing_ok=True)
        for journal in self.folder.glob("*.journal"):
            journal.unlink()  # it belongs to the camera before
        self.plug_in(camera(0, **changes))
        self.put_flash(content)

    def expected(self, image, address, before=None):
        """The flash with the image in it."""
        content = bytearray(self.old if before is None else before)
        content[address:address + len(image)] = image
        return bytes(content)


class AccessTest(FlashTest):
    """Everything but programming."""

    def test_read_gives_the_range_raw_and_as_text(self):
        self.succeed("flash", "read", "0x123+1000", self.name("part.bin"))
        self.assertEqual((self.folder / "part.bin").read_bytes(), self.old[0x123:0x123 + 1000])
        self.succeed("flash", "read", "0x1008-0x1017", self.name("part.txt"))
        lines = (self.folder / "part.txt").read_bytes().split(b"\r\n")
        self.assertEqual(lines[0].decode(), "00001008h: " + " ".join(
            f"{byte:02x}" for byte in self.old[0x1008:0x1010]) + ";")
        self.assertEqual(len(lines), 3)
        self.assertEqual(self.flash(), self.old)

    def test_read_into_names_of_any_letters(self):
        for name in ("größe.bin", "прошивка.bin", "固件.bin", "a b.bin"):
            result = self.succeed("flash", "read", "0+64", self.name(name), "--json").json
            self.assertEqual((self.folder / name).read_bytes(), self.old[:64], name)
        self.assert_schema("flash-read", result)

    def test_failed_read_leaves_no_file(self):
        self.configure(camera(0, faults=[
            {"selector": 5, "direction": "get", "result": "0x80070017"}]))
        self.refuse(8, "no progress", "flash", "read", "0+1K", self.name("part.bin"), "--timeout",
                  "0.5")
        self.assertFalse((self.folder / "part.bin").exists())
        self.refuse(5, "can't write", "flash", "read", "0+1K", self.name("no/folder.bin"))

    def test_word_is_read_written_and_read_back(self):
        result = self.succeed("flash", "word", "0x1000", "--json").json
        self.assert_schema("flash-word", result)
        self.assertEqual(result["value"], int.from_bytes(self.old[0x1000:0x1004], "big"))
        self.succeed("flash", "erase", "0x1000+4K", "--yes")
        self.succeed("flash", "word", "0x1000", "0x12345678", "--yes")
        self.assertEqual(self.flash()[0x1000:0x1008], bytes.fromhex("12345678ffffffff"))
        self.refuse(7, "0x1000", "flash", "word", "0x1000", "0xffffffff", "--yes")

    def test_erase_takes_whole_sectors_and_asks(self):
        outcome = self.refuse(1, "RANGE", "flash", "erase", "0x1004+100", "--yes")
        self.assertIn("0x1000-0x1fff", outcome.err)
        outcome = self.refuse(9, "nothing was erased", "flash", "erase", "0x1000+8K")
        self.assertIn("?", outcome.err)
        self.assertEqual(self.flash(), self.old)
        result = self.succeed("flash", "erase", "0x1000+8K", "--yes", "--json").json
        self.assert_schema("flash-erase", result)
        self.assertEqual(self.flash(), self.expected(b"\xff" * 2 * SECTOR, 0x1000))

    def test_map_shows_used_and_blank_sectors(self):
        self.succeed("flash", "erase", "0x2000+8K", "--yes")
        result = self.succeed("flash", "map", "--json").json
        self.assert_schema("flash-map", result)
        self.assertTrue(self.succeed("flash", "map").out)

    def test_verify_counts_and_lists_differences(self):
        image = bytearray(self.old[0x800:0x800 + 5000])
        name = self.file("image.bin", bytes(image))
        result = self.succeed("flash", "verify", name, "--address", "0x800", "--json").json
        self.assert_schema("flash-verify", result)
        image[100] ^= 1
        image[4999] ^= 0x80
        self.file("image.bin", bytes(image))
        outcome = self.refuse(7, "0x864", "flash", "verify", name, "--address", "0x800", "--diff",
                            self.name("diff.csv"))
        self.assertIn("2", outcome.err)
        rows = (self.folder / "diff.csv").read_text(encoding="utf-8").split()
        self.assertEqual(len(rows), 3)
        self.refuse(7, "0x864", "flash", "verify", name, "--address", "0x800", "--diff",
                  self.name("diff.json"))
        self.assertEqual(len(json.loads((self.folder / "diff.json").read_text())["differences"]), 2)


class ProgramTest(FlashTest):
    """borvanusb flash program."""

    ADDRESS = 0x1234

    def setUp(self):
        super().setUp()
        self.image = seeded(5000, seed=2)
        self.image_name = self.file("image.bin", self.image)

    def program(self, *arguments):
        """The arguments that program the image."""
        return ["flash", "program", self.image_name, "--address", hex(self.ADDRESS), *arguments]

    def test_exactly_the_images_range_changes(self):
        result = self.succeed(*self.program("--json", "--report", self.name("report.json"))).json
        self.assert_schema("flash-program", result)
        self.assertEqual(self.flash(), self.expected(self.image, self.ADDRESS))
        report = json.loads((self.folder / "report.json").read_text(encoding="utf-8"))
        self.assert_schema("flash-program", report)
        self.assertEqual(report["image"]["sha256"], hashlib.sha256(self.image).hexdigest())

    def test_every_start_and_length_leaves_the_neighbours(self):
        chance = random.Random(3)
        for _ in range(6):
            address = chance.randrange(FLASH - 1)
            image = chance.randbytes(chance.randrange(1, min(9000, FLASH - address) + 1))
            before = self.flash()
            name = self.file("any.bin", image)
            self.succeed("flash", "program", name, "--address", hex(address), "--no-backup",
                         "--force")
            self.assertEqual(self.flash(), self.expected(image, address, before), hex(address))

    def test_equal_image_is_left_alone(self):
        self.succeed(*self.program())
        self.succeed(*self.program("--trace", self.name("trace.jsonl")))
        writes = [line for line in self.transfers("trace.jsonl")
                  if line["selector"] == 4 or line["bytes"].startswith(("32", "38"))]
        self.assertEqual([line for line in writes if line["direction"] == "set"], [])

    def transfers(self, name):
        """The lines of a trace."""
        text = (self.folder / name).read_text(encoding="utf-8")
        return [json.loads(line) for line in text.splitlines()]

    def test_dry_run_tells_the_plan_and_touches_nothing(self):
        result = self.succeed(*self.program("--dry-run", "--json")).json
        self.assert_schema("flash-program", result)
        self.assertEqual(self.flash(), self.old)
        self.assertEqual(sorted(path.name for path in self.folder.glob("*.bin")), ["image.bin"])

    def test_backup_brings_the_old_bytes_back(self):
        self.succeed(*self.program("--backup", self.name("old.bin")))
        self.assertEqual((self.folder / "old.bin").read_bytes(), self.old[0x1000:0x3000])
        self.succeed("flash", "program", self.name("old.bin"), "--address", "0x1000", "--no-backup")
        self.assertEqual(self.flash(), self.old)

    def test_impossible_images_are_refused_before_anything_is_touched(self):
        cases = [
            (5, "empty", b"", "0", []),
            (5, "0xff", b"\xff" * 100, "0", []),
            (5, "0x00", bytes(100), "0", []),
            (5, "flash", seeded(FLASH), "0x1000", ["--flash-size", "64K"]),
            (5, "flash", seeded(100), "0x10000", ["--flash-size", "64K"]),
            (1, "--backup", seeded(10), "0", ["--backup", "x", "--no-backup"]),
            (1, "ADDRESS|--address", seeded(10), "12g", []),
        ]
        for code, message, image, address, options in cases:
            name = self.file("case.bin", image)
            self.refuse(code, f"({message})", "flash", "program", name, "--address", address,
                      *options)
        self.refuse(5, "nowhere.bin", "flash", "program", self.name("nowhere.bin"))
        self.assertEqual(self.flash(), self.old)

    def test_image_beyond_a_flash_that_tells_its_size_is_refused(self):
        name = self.file("large.bin", seeded(FLASH + 4))
        self.refuse(5, "flash", "flash", "program", name)
        self.assertEqual(self.flash(), self.old)

    def test_names_of_any_letters_serve_for_every_file(self):
        image = self.file("прошивка 固件.bin", self.image)
        self.succeed("flash", "program", image, "--address", hex(self.ADDRESS), "--backup",
                     self.name("старое.bin"), "--report", self.name("отчёт.json"))
        self.assertEqual(self.flash(), self.expected(self.image, self.ADDRESS))
        self.assertTrue((self.folder / "старое.bin").exists())
        self.assertTrue((self.folder / "отчёт.json").exists())

    def test_progress_as_json_rises_stage_by_stage(self):
        outcome = self.succeed(*self.program("--progress", "json"))
        lines = [json.loads(line) for line in outcome.err.splitlines() if line.startswith("{")]
        stages = []
        for line in lines:
            self.assert_schema("progress", line)
            progress = line["progress"]
            if not stages or stages[-1] != progress["stage"]:
                stages.append(progress["stage"])
            self.assertLessEqual(progress["done"], progress["total"])
        self.assertEqual(stages[0], "read")
        self.assertIn("program", stages)
        self.assertEqual(stages[-1], "verify")

    # Faults.

    def fail_with(self, faults, code, message, *arguments):
        """Programs a camera that misbehaves; returns the outcome."""
        self.configure(camera(0, faults=faults))
        self.virtual_camera("reset-faults")
        return self.refuse(code, message, *self.program(*arguments))

    def assert_neighbours(self, flash):
        """Bytes outside the sectors of the image are the old ones."""
        self.assertEqual(flash[:0x1000], self.old[:0x1000])
        self.assertEqual(flash[0x3000:], self.old[0x3000:])

    def test_failing_writes_are_told_and_the_next_run_completes(self):
        outcome = self.fail_with([{"selector": 4, "direction": "set", "result": "0x80070017"}], 6,
                                 "0xE0000003")
        self.assertRegex(outcome.err, r"borvanusb flash program")
        self.assert_neighbours(self.flash())
        self.configure(camera(0))
        self.succeed(*self.program())
        self.assertEqual(self.flash(), self.expected(self.image, self.ADDRESS))

    def test_lying_success_is_found_by_verification(self):
        self.fail_with([{"selector": 4, "direction": "set", "every": 7, "lie": True}], 7, "differ")
        self.assert_neighbours(self.flash())
        self.configure(camera(0))
        self.succeed(*self.program())
        self.assertEqual(self.flash(), self.expected(self.image, self.ADDRESS))

    def test_stuck_word_is_named(self):
        self.fail_with([{"selector": 4, "stuck_word": "0x1500"}], 7, "0x150[0-3]")
        self.assert_neighbours(self.flash())

    def test_restore_on_failure_brings_the_old_bytes_back(self):
        outcome = self.fail_with([{"selector": 4, "direction": "set", "at": 20, "lie": True},
                                  {"selector": 4, "direction": "set", "at": 90, "lie": True}],
                                 7, "differ", "--restore-on-failure")
        self.assertIn("restored", outcome.err)
        self.assertEqual(self.flash(), self.old)

    def test_wrong_lengths_end_in_a_report(self):
        for selector in ("3", "4", "5"):
            self.start_anew(self.old, lengths={selector: 8})
            outcome = self.run_tool(*self.program("--timeout", "1"))
            self.assertIn(outcome.code, (6, 7, 8), outcome.err)
            self.assertRegex(outcome.err, r"(?m)^borvanusb: .+")
            self.assert_neighbours(self.flash())

    def test_camera_that_falls_off_is_told_and_the_next_run_completes(self):
        outcome = self.fail_with([{"selector": 4, "direction": "set", "unplug": {"after": 30}}], 6,
                                 "gone")
        self.assertRegex(outcome.err, r"borvanusb flash program")
        self.configure(camera(0))
        self.virtual_camera("plug", "0")
        self.succeed(*self.program())
        self.assertEqual(self.flash(), self.expected(self.image, self.ADDRESS))


class CutTest(FlashTest):
    """The camera falls off at each transfer of programming a small image; a second run completes."""

    IMAGE = seeded(130, seed=4)
    ADDRESS = 0x1FC0  # the end of one sector and the beginning of the next

    def setUp(self):
        super().setUp()
        # Blank packets cost no transfer, so little but the image travels.
        old = bytearray(b"\xff" * FLASH)
        old[0x1000:0x1010] = seeded(16)
        old[0x1FA0:0x2060] = seeded(0xC0)
        old[0x2FF0:0x3010] = seeded(0x20)
        self.old = bytes(old)
        self.image_name = self.file("image.bin", self.IMAGE)
        self.wanted = self.expected(self.IMAGE, self.ADDRESS)

    def run_once(self, *arguments):
        """Programs the image."""
        return self.run_tool("flash", "program", self.image_name, "--address", hex(self.ADDRESS),
                             "--no-backup", *arguments)

    def first_and_last_change(self):
        """The numbers of all transfers that change the flash, and how many transfers there are."""
        self.start_anew(self.old)
        self.assertEqual(self.run_once("--trace", self.name("whole.jsonl")).code, 0)
        self.assertEqual(self.flash(), self.wanted)
        numbers = []
        count = 0
        for count, line in enumerate(
                (self.folder / "whole.jsonl").read_text(encoding="utf-8").splitlines(), 1):
            transfer = json.loads(line)
            if transfer["direction"] == "set" and (transfer["selector"] == 4 or (
                    transfer["selector"] == 3 and transfer["bytes"][:2] in ("32", "38"))):
                numbers.append(count)
        return numbers, count

    def test_second_run_completes_after_a_cut_at_each_transfer(self):
        changes, count = self.first_and_last_change()
        self.assertGreater(len(changes), 5)
        # Around the changes each transfer is cut; among the reads, where nothing differs from one to
        # the next, some, or all when the long form is asked for.
        step = 1 if os.environ.get("BORVAN_LONG") else 97
        cuts = sorted(set(range(1, count, step)) |
                      {cut for change in changes for cut in range(change - 1, change + 2)})
        for cut in cuts:
            with self.subTest(cut=cut, of=count):
                self.start_anew(self.old, faults=[{"unplug": {"after": cut}}])
                outcome = self.run_once("--timeout", "2")
                self.assertIn(outcome.code, (2, 4, 6), outcome.err)
                self.assertTrue(re.search(r"(?m)^borvanusb: .+", outcome.err), outcome.err)
                self.configure(camera(0))
                self.virtual_camera("plug", "0")
                outcome = self.run_once()
                self.assertEqual(outcome.code, 0, outcome.err)
                self.assertEqual(self.flash(), self.wanted)
        self.assertEqual(list(self.folder.glob("*.part*")), [])


if __name__ == "__main__":
    station.main()
