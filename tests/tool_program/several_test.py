#!/usr/bin/python3
"""Several cameras, several processes, the prompt, and being interrupted."""
import json
import os
import pty
import random
import select
import signal
import subprocess
import time

import station
from station import camera

FLASH = 64 << 10
# Many processes at once on few cores: no camera answers within the usual ten seconds then.
PATIENT = ("--timeout", "60")


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
                               "--json", "--report", self.name("report.json"), *PATIENT)
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
        outcome = self.run_tool("flash", "program", self.image_name, "--address", "0x1010", "--all",
                                *PATIENT)
        self.assertEqual(outcome.code, 7, outcome.err)
        for number in set(range(self.COUNT)) - {2, 5}:
            self.assert_programmed(number)

    def test_several_named_cameras_are_programmed_and_no_other(self):
        self.succeed("flash", "program", self.image_name, "--address", "0x1010", "--camera", "1",
                     "--camera", "1234:0003", "--no-backup", *PATIENT)
        self.assert_programmed(1)
        self.assert_programmed(3)
        self.assertEqual(self.flash(0), seeded(FLASH, 0))


class StationTest(station.ToolTest):
    """Whole stations of cameras: --all of other commands, cameras that are no such camera, waiting."""

    def test_camera_without_a_vendor_unit_is_left_aside(self):
        self.plug_in(camera(0), camera(1, nodes=["camera-terminal", "processing"]), camera(2))
        outcome = self.succeed("info", "--all", "--json")
        self.assertEqual([line["camera"]["index"] for line in outcome.lines], [0, 2])
        for line in outcome.lines:
            self.assert_schema("several", line)
            self.assertEqual(line["result"]["feature_register"], 0x20)
        self.assertIn("has no vendor unit and is skipped", outcome.err)
        self.plug_in(camera(0, nodes=["camera-terminal", "processing"]))
        self.refuse(2, "no camera with a vendor unit", "info", "--all")

    def test_each_flash_is_read_into_its_own_file(self):
        self.plug_in(camera(0), camera(1))
        for number in range(2):
            self.put_flash(seeded(FLASH, number), number)
        self.succeed("flash", "read", "0+64K", "flash-{index}.bin", "--all")
        for number in range(2):
            self.assertEqual((self.folder / f"flash-{number}.bin").read_bytes(),
                             seeded(FLASH, number))

    def test_bytes_on_standard_output_are_those_of_the_flash(self):
        self.plug_in(camera(0))
        content = b"\r\n\x1a\x00" + seeded(FLASH - 4)
        self.put_flash(content)
        with open(self.folder / "out.bin", "wb") as file:
            process = self.start("flash", "read", "0+64K", "-", "--quiet", stdout=file)
            self.assertEqual(self.finish_quietly(process), 0)
        self.assertEqual((self.folder / "out.bin").read_bytes(), content)

    def test_script_and_list_come_from_standard_input(self):
        self.plug_in(camera(0))
        script = b"reg write 0x100 0x5a\r\nexpect 0x100 == 0x5a\r\nsleep 10ms\r\n"
        with open(self.folder / "script.txt", "wb+") as file:
            file.write(script)
            file.seek(0)
            outcome = self.run_tool("run", "-", stdin=file)
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertIn("register 0x0100 holds 0x5a\n", outcome.out)
        process = self.start("reg", "load", "-", stdin=subprocess.PIPE)
        process.stdin.write(b"0xfffd,0\n0x8000,1,\n")
        process.stdin.flush()
        time.sleep(0.3)
        process.stdin.write(b"0x8001,2,\n")
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(outcome.out, "2 registers written from standard input\n")

    def test_waiting_for_a_camera_ends_when_it_comes(self):
        self.plug_in()
        process = self.start("reg", "read", "0x100", "--wait", "60", "--log", "day.log")
        time.sleep(2)
        self.plug_in(camera(0))
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertIn("waiting for it, 60 s at most", outcome.err)
        log = (self.folder / "day.log").read_text(encoding="utf-8")
        self.assertRegex(log, r"(?m)^[-0-9]+T[0-9:]+Z out  0x0100  0x11$")

    @staticmethod
    def finish_quietly(process):
        """Waits for a process whose standard output is a file."""
        process.communicate(timeout=station.LONGEST)
        return process.returncode


class PromptTest(station.ToolTest):
    """borvanusb run on a terminal."""

    def setUp(self):
        super().setUp()
        self.plug_in(camera(0))
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.environ.update(self.environment, TERM="xterm")
            os.chdir(self.folder)
            command = self.command()
            os.execvp(command[0], [*command, "run"])
        self.said = ""

    def type(self, keys, answer):
        """Types keys and waits until `answer` is shown."""
        os.write(self.terminal, keys)
        self.wait_for(answer)

    def wait_for(self, answer):
        """Waits until the terminal shows a text, and forgets what it showed before."""
        deadline = time.monotonic() + station.LONGEST
        while answer not in self.said:
            self.assertLess(time.monotonic(), deadline, self.said)
            if select.select([self.terminal], [], [], 0.2)[0]:
                self.said += os.read(self.terminal, 4096).decode("utf-8", "replace")
        self.said = self.said.split(answer, 1)[1]

    def test_lines_are_edited_completed_run_and_stopped(self):
        self.wait_for("borvanusb>")
        self.type(b"reg rea\t0x100\r", "0x0100  0x11")
        self.wait_for("borvanusb>")
        self.type(b"\x1b[A\r", "0x0100  0x11")
        self.wait_for("borvanusb>")
        self.type(b"sleep 60s\r", "\r\n")
        time.sleep(1)
        self.type(b"\x03", "stopped by the user")
        self.wait_for("borvanusb>")
        os.write(self.terminal, b"exit\r")
        # The rest must be read, or the program waits for it.
        while select.select([self.terminal], [], [], 5)[0]:
            try:
                os.read(self.terminal, 4096)
            except OSError:
                break
        self.assertEqual(os.waitpid(self.process, 0)[1], 0)
        os.close(self.terminal)


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
