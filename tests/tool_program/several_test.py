#!/usr/bin/python3
"""Several cameras, several processes, and being interrupted."""
import json
import random
import signal
import time

import station
from station import camera

FLASH = 64 << 10


def seeded(size, seed=1):
    """Bytes that are the same each time."""
    return random.Random(seed).randbytes(size)


class AllTest(station.ToolTest):
    """borvanusb flash program --all."""

    COUNT = 8

    def setUp(self):
        super().setUp()
        self.cameras = [camera(number) for number in range(self.COUNT)]
        self.plug_in(*self.cameras)
        for number in range(self.COUNT):
            self.put_flash(seeded(FLASH, number), number)
        self.image = seeded(6000, 99)
        self.image_name = self.file("image.bin", self.image)

    def assert_programmed(self, number):
        """A camera's flash holds the image at 0x1010 and its old bytes elsewhere."""
        expected = bytearray(seeded(FLASH, number))
        expected[0x1010:0x1010 + len(self.image)] = self.image
        self.assertEqual(self.flash(number), bytes(expected), number)

    def test_eight_cameras_are_programmed_side_by_side(self):
        outcome = self.succeed("flash", "program", self.image_name, "--address", "0x1010", "--all",
                               "--json", "--report", self.name("report.json"))
        self.assertEqual(len(outcome.lines), self.COUNT)
        for line in outcome.lines:
            self.assert_schema("flash-program", line)
        for number in range(self.COUNT):
            self.assert_programmed(number)
        self.assertEqual(len(list(self.folder.glob("report*.json"))), self.COUNT)

    def test_worst_exit_code_counts_and_the_others_are_done(self):
        self.cameras[2]["faults"] = [{"selector": 4, "direction": "set", "lie": True}]
        self.cameras[5]["faults"] = [{"selector": 4, "direction": "set", "result": "0x80070017"}]
        self.configure(*self.cameras)
        outcome = self.run_tool("flash", "program", self.image_name, "--address", "0x1010", "--all")
        self.assertEqual(outcome.code, 7, outcome.err)
        for number in set(range(self.COUNT)) - {2, 5}:
            self.assert_programmed(number)

    def test_several_named_cameras_are_programmed_and_no_other(self):
        self.succeed("flash", "program", self.image_name, "--address", "0x1010", "--camera", "1",
                     "--camera", "1234:0003", "--no-backup")
        self.assert_programmed(1)
        self.assert_programmed(3)
        self.assertEqual(self.flash(0), seeded(FLASH, 0))


class OneProgrammerTest(station.ToolTest):
    """Two processes and one camera; Ctrl-C; a kill."""

    def setUp(self):
        super().setUp()
        # Slow enough that a second process comes in the middle.
        self.slow = camera(0, flash={"size": "64K", "erase_ms": 120})
        self.old = seeded(FLASH)
        self.plug_in(self.slow)
        self.put_flash(self.old)
        self.image = seeded(40000, 5)
        self.image_name = self.file("image.bin", self.image)
        self.expected = bytearray(self.old)
        self.expected[0x810:0x810 + len(self.image)] = self.image

    def start_programming(self, *arguments):
        """Starts programming and waits until the flash is being changed."""
        process = self.start("flash", "program", self.image_name, "--address", "0x810",
                             "--progress", "none", *arguments)
        deadline = time.monotonic() + 30
        while self.flash() == self.old:
            self.assertIsNone(process.poll(), "programming ended before it began")
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        return process

    def complete(self):
        """A further run completes what is there."""
        self.succeed("flash", "program", self.image_name, "--address", "0x810")
        self.assertEqual(self.flash(), bytes(self.expected))

    def test_second_programmer_of_a_camera_is_refused(self):
        process = self.start_programming()
        self.refuse(4, "another borvanusb", "flash", "program", self.image_name, "--address", "0x810")
        self.refuse(4, "another borvanusb", "flash", "erase", "0+4K", "--yes")
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(self.flash(), bytes(self.expected))

    def test_ctrl_c_stops_at_a_safe_place_and_says_how_to_go_on(self):
        # Large enough for more than one block.
        self.slow["flash"] = {"size": "1M", "erase_ms": 20}
        (self.folder / "cameras.camera0.state").unlink(missing_ok=True)
        self.plug_in(self.slow)
        self.old = seeded(1 << 20)
        self.put_flash(self.old)
        self.image = seeded(600000, 6)
        self.image_name = self.file("image.bin", self.image)
        self.expected = bytearray(self.old)
        self.expected[0x810:0x810 + len(self.image)] = self.image
        process = self.start_programming("--report", self.name("report.json"))
        process.send_signal(signal.SIGINT)
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 9, outcome.err)
        self.assertRegex(outcome.err, "(?m)^borvanusb: .*stopped by the user")
        self.assertIn("borvanusb flash program", outcome.err)
        report = json.loads((self.folder / "report.json").read_text(encoding="utf-8"))
        self.assertNotEqual(report["result"], "done")
        # Sectors are the old or the new ones, none is half done.
        flash = self.flash()
        for sector in range(0, 1 << 20, station.SECTOR):
            part = slice(sector, sector + station.SECTOR)
            self.assertIn(flash[part], (self.old[part], bytes(self.expected[part])), hex(sector))
        self.complete()

    def test_second_ctrl_c_ends_at_once_and_a_further_run_completes(self):
        process = self.start_programming()
        process.send_signal(signal.SIGINT)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        started = time.monotonic()
        outcome = self.finish(process)
        self.assertLess(time.monotonic() - started, 1.5)
        self.assertEqual(outcome.code, 9, outcome.err)
        self.assertIn("borvanusb flash program", outcome.err)
        self.complete()

    def test_killed_programmer_keeps_nobody_out_and_a_further_run_completes(self):
        for _ in range(3):
            process = self.start_programming()
            process.kill()
            self.finish(process)
            self.complete()
            self.put_flash(self.old)

    def test_interrupted_read_ends_with_nine(self):
        self.configure(camera(0, faults=[{"selector": 5, "direction": "get", "delay_ms": 20}]))
        process = self.start("flash", "read", "0+64K", self.name("part.bin"))
        time.sleep(1.5)
        process.send_signal(signal.SIGINT)
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 9, outcome.err)
        self.assertRegex(outcome.err, "(?m)^borvanusb: .*stopped by the user")
        self.assertFalse((self.folder / "part.bin").exists())


if __name__ == "__main__":
    station.main()
