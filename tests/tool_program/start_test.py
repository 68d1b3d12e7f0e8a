#!/usr/bin/python3
"""What goes wrong with the program itself, before or beside its command, is told and ends with 10.

The faults are made in a copy of borvanusb.exe: a function that it imports is replaced by another one of
the same DLL, which fails in the wanted way.
"""
import pathlib
import shutil
import subprocess
import time
import unittest

import station

# The thread that runs the command is started by this function; 0 is its failure, which isalpha
# answers for the null pointer that comes first.
START_OF_THREAD = ("_beginthreadex", "isalpha")
# Called first of all on the main thread.
CRASH = ("GetConsoleMode", "DebugBreak")
ABORT = ("_beginthreadex", "abort")


class StartTest(station.ToolTest):
    """Copies of the program that can't start as they should."""

    def setUp(self):
        super().setUp()
        shutil.copy(station.BIN / "BorvanUSB_x64.dll", self.folder)

    def command(self):
        return [*super().command()[:-1], str(self.folder / "borvanusb.exe")]

    def replace_import(self, name, other):
        """Makes the copy, which calls `other` where borvanusb.exe calls `name`."""
        program = (station.BIN / "borvanusb.exe").read_bytes()
        old = name.encode("ascii") + b"\0"
        self.assertEqual(program.count(old), 1, name)
        new = other.encode("ascii") + b"\0"
        (self.folder / "borvanusb.exe").write_bytes(program.replace(old, new.ljust(len(old), b"\0")))

    def test_the_copy_works_as_it_is(self):
        shutil.copy(station.BIN / "borvanusb.exe", self.folder)
        self.assertRegex(self.succeed("--version").out, "^borvanusb ")

    def test_no_thread_for_the_command(self):
        self.replace_import(*START_OF_THREAD)
        outcome = self.refuse(10, "the thread that runs the command can't be created", "list")
        self.assertIn("Close other programs", outcome.err)
        self.assertEqual(outcome.out, "")

    def test_no_thread_for_the_command_as_json(self):
        self.replace_import(*START_OF_THREAD)
        outcome = self.refuse(10, "the thread that runs the command can't be created", "list", "--json")
        self.assertEqual(outcome.json["error"]["code"], 10)
        self.assert_schema("error", outcome.json)

    def test_a_crash(self):
        self.replace_import(*CRASH)
        outcome = self.refuse(10, "the program crashed: exception 0x80000003 at 0x[0-9a-f]+", "list")
        self.assertIn("Please report it", outcome.err)

    def test_an_abort(self):
        self.replace_import(*ABORT)
        outcome = self.refuse(10, "the program was aborted", "list")
        self.assertIn("Please report it", outcome.err)


# A process's personality in which Linux does not randomize addresses.
ADDR_NO_RANDOMIZE = 0x0040000


@unittest.skipUnless(station.FIXED_ADDRESSES, "setarch -R is not allowed here")
class WineTest(station.ToolTest):
    """Wine starts with fixed addresses: with random ones it fails now and then, before the program
    begins, with 1 and without a word (tests/reliability/wine_starts.py)."""

    def assert_fixed_addresses(self, process):
        """A started process soon has fixed addresses."""
        end = time.monotonic() + station.LONGEST
        personality = 0
        while time.monotonic() < end and not personality & ADDR_NO_RANDOMIZE:
            personality = int(pathlib.Path(f"/proc/{process.pid}/personality").read_text("ascii"), 16)
            time.sleep(0.01)
        self.assertTrue(personality & ADDR_NO_RANDOMIZE)

    def test_under_the_tool(self):
        self.plug_in(station.camera())
        with self.start("list", "--watch") as process:
            try:
                self.assert_fixed_addresses(process)
            finally:
                process.kill()

    def test_under_the_script_for_all_programs(self):
        with subprocess.Popen([station.RUN, "cmd.exe"], env=self.environment, stdin=subprocess.PIPE,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            try:
                self.assert_fixed_addresses(process)
            finally:
                process.stdin.close()


if __name__ == "__main__":
    station.main()
