#!/usr/bin/python3
"""What the program's work with the library leaves: handles, temporary files, wrong bytes."""
import os
import pathlib
import random
import statistics
import time

import station
from station import camera


def seeded(size, seed=1):
    """Bytes that are the same each time."""
    return random.Random(seed).randbytes(size)


def wait_until(holds, what, longest=60):
    """Waits until `holds` gives something true, and returns it."""
    end = time.monotonic() + longest
    while time.monotonic() < end:
        result = holds()
        if result:
            return result
        time.sleep(0.01)
    raise AssertionError(what)


class ReadTest(station.ToolTest):
    """One transfer goes wrong."""

    def test_no_single_fault_of_a_bulk_read_reaches_a_file(self):
        old = seeded(64 << 10)
        for fault in ({"direction": "set", "at": 20, "result": "0x80070017"},
                      {"direction": "set", "at": 20, "lie": True},
                      {"direction": "get", "at": 20, "short": 9},
                      {"direction": "get", "at": 20, "wrong_tag": True}):
            with self.subTest(fault):
                (self.folder / "cameras.camera0.state").unlink(missing_ok=True)
                self.plug_in(camera(0, faults=[{"selector": 5, **fault}]))
                self.put_flash(old)
                self.succeed("flash", "read", "0+16K", self.name("part.bin"))
                self.assertEqual((self.folder / "part.bin").read_bytes(), old[:16 << 10])

    def test_no_single_fault_of_a_register_run_reaches_a_list(self):
        registers = {hex(0x100 + i): hex(1 + i % 255) for i in range(256)}
        for fault in ({"direction": "set", "at": 3, "result": "0x80070017"},
                      {"direction": "get", "at": 3, "result": "0x80070017"},
                      {"direction": "get", "at": 3, "short": 20}):
            with self.subTest(fault):
                (self.folder / "cameras.camera0.state").unlink(missing_ok=True)
                self.plug_in(camera(0, registers=registers, faults=[{"selector": 7, **fault}]))
                self.succeed("reg", "dump", "0x100-0x1ff", self.name("list.txt"))
                lines = (self.folder / "list.txt").read_text(encoding="utf-8").splitlines()
                values = [int(line.split(",")[1], 16) for line in lines if line.startswith("0x01")]
                self.assertEqual(values, [1 + i % 255 for i in range(256)])


class GrowthTest(station.ToolTest):
    """Descriptors that a process under Wine has open."""

    # Threads come and go: the library has one for each job, and one for three seconds after it.
    OF_A_THREAD = 4

    def open_at_the_end(self, size):
        """Descriptors, but for those of threads, that programming an image of this size has open."""
        name = self.file(f"image{size}.bin", seeded(size, size))
        process = self.start("flash", "program", name, "--address", "0", "--no-backup", "--quiet")
        samples = []
        while process.poll() is None:
            try:
                threads = len(os.listdir(f"/proc/{process.pid}/task"))
                samples.append(len(os.listdir(f"/proc/{process.pid}/fd")) - self.OF_A_THREAD * threads)
            except FileNotFoundError:
                break
            time.sleep(0.01)
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        return statistics.median_low(samples[-30:-5])

    def test_large_image_has_no_more_open_than_a_small_one(self):
        self.plug_in(camera(0, flash={"size": "2M"}))
        small = self.open_at_the_end(240 << 10)
        large = self.open_at_the_end(1440 << 10)
        # Twelve blocks of 120 KiB against two: an instance for each had two descriptors more.
        self.assertLess(large, small + 8)


class LeftFilesTest(station.ToolTest):
    """Temporary files."""

    SLOW = [{"selector": 5, "direction": "get", "delay_ms": 5}]

    @staticmethod
    def temporary_files():
        """The files of all processes of borvanusb in the user's temporary folder."""
        users = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c" / "users"
        return {path for path in users.rglob("borvanusb-*") if path.suffix != ".try"}

    def start_reading(self, number):
        """Starts a long read; returns the process and its temporary file."""
        before = self.temporary_files()
        process = self.start("flash", "read", "0+64K", self.name(f"slow{number}.bin"), "--camera",
                             number)
        new = wait_until(lambda: self.temporary_files() - before, "the read has no temporary file")
        return process, new.pop()

    def test_next_run_removes_what_a_killed_one_left(self):
        self.plug_in(camera(0, faults=self.SLOW))
        process, left = self.start_reading(0)
        process.kill()
        process.communicate()
        self.assertTrue(left.exists())
        others = [left.with_name("borvanusb-1-2-3.json"), left.with_name("borvanusb-note.bin")]
        for other in others:
            other.write_bytes(b"mine")
            self.addCleanup(other.unlink)
        self.configure(camera(0))
        self.succeed("flash", "read", "0+1K", self.name("part.bin"))
        self.assertFalse(left.exists())
        for other in others:
            self.assertTrue(other.exists(), other)

    def test_file_of_a_process_that_lives_stays(self):
        content = seeded(64 << 10)
        self.plug_in(camera(0, faults=self.SLOW), camera(1))
        self.put_flash(content)
        process, used = self.start_reading(0)
        self.succeed("flash", "read", "0+1K", self.name("part.bin"), "--camera", 1)
        self.assertTrue(used.exists())
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual((self.folder / "slow0.bin").read_bytes(), content)
        self.assertFalse(used.exists())


if __name__ == "__main__":
    station.main()
