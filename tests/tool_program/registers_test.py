#!/usr/bin/python3
"""Registers of the chip and of the sensor, and the commands that look: watch, bench, selftest, run."""
import csv
import json
import os
import signal
import subprocess
import time

import station
from station import camera


class RegistersTest(station.ToolTest):
    """borvanusb reg."""

    def setUp(self):
        super().setUp()
        self.plug_in(camera(0))

    def read(self, address, *options):
        """A register's value."""
        return self.succeed("reg", "read", address, "--json", *options).json["registers"][0]["value"]

    def test_read_gives_single_registers_runs_and_wide_ones(self):
        result = self.succeed("reg", "read", "0x100-0x101", "--json").json
        self.assert_schema("reg-read", result)
        self.assertEqual([register["value"] for register in result["registers"]], [0x11, 0x22])
        self.assertIn("0x11", self.succeed("reg", "read", "0x100").out)
        # 200 registers go in blocks.
        result = self.succeed("reg", "read", "0x80+200", "--json").json
        self.assertEqual(len(result["registers"]), 200)
        self.assertEqual(result["registers"][0x81]["value"], 0x22)
        self.assertEqual(self.read("0x100", "--wide"), 0x11)

    def test_write_in_both_widths_masked_and_verified(self):
        result = self.succeed("reg", "write", "0x200", "0x5a", "--verify", "--json").json
        self.assert_schema("reg-write", result)
        self.assertEqual(self.read("0x200"), 0x5A)
        self.succeed("reg", "write", "0x200", "0x05", "--mask", "0x0f")
        self.assertEqual(self.read("0x200"), 0x55)
        self.succeed("reg", "write", "0x300", "0x11223344", "--wide", "--verify")
        self.assertEqual(self.read("0x300", "--wide"), 0x11223344)
        self.refuse(1, "VALUE", "reg", "write", "0x200", "0x100")
        self.refuse(1, "--mask", "reg", "write", "0x200", "0xf0", "--mask", "0x0f")

    def test_write_that_does_not_take_is_found(self):
        self.configure(camera(0, faults=[{"selector": 1, "direction": "set", "lie": True}]))
        self.virtual_camera("reset-faults")
        outcome = self.run_tool("reg", "write", "0x200", "0x5a", "--verify")
        # The camera lies to reads as well: they go unanswered, or answer something else.
        self.assertIn(outcome.code, (4, 6, 7), outcome.err)
        self.assertRegex(outcome.err, "(?m)^borvanusb: .+")

    def test_unanswered_read_is_a_failure_and_no_value(self):
        # Opening the camera and the register's read both are answered with another tag.
        self.configure(camera(0, faults=[{"selector": 1, "direction": "get", "wrong_tag": True}]))
        self.virtual_camera("reset-faults")
        outcome = self.run_tool("reg", "read", "0x100")
        self.assertIn(outcome.code, (4, 6), outcome.err)
        self.assertIn("did not answer", outcome.err)
        self.assertNotIn("0x11", outcome.out)

    def test_dump_loads_back(self):
        self.succeed("reg", "dump", "0x0f0-0x13f", self.name("dump.txt"))
        self.assert_schema("reg-dump", self.succeed("reg", "dump", "0x100+4", "--json").json)
        self.assertIn("0x0100", self.succeed("reg", "dump", "0x100+4").out)
        self.virtual_camera("power-cycle", "0")
        self.succeed("reg", "write", "0x100", "0x77")
        result = self.succeed("reg", "load", self.name("dump.txt"), "--json").json
        self.assert_schema("reg-load", result)
        self.assertEqual(self.read("0x100"), 0x11)

    def test_load_checks_the_list_first_and_names_lines(self):
        name = self.file("bad.txt", "0xfffd, 0x00,\n0x0100, 0x12,\n0x0101,\n0x0102, zz,\n")
        outcome = self.refuse(5, "bad.txt", "reg", "load", name)
        self.assertIn("3", outcome.err)
        self.assertIn("4", outcome.err)
        self.assertEqual(self.read("0x100"), 0x11)
        self.refuse(5, "nowhere.txt", "reg", "load", self.name("nowhere.txt"))

    def test_diff_of_lists_and_camera(self):
        left = self.file("left.txt", "0xfffd, 0x00,\n0x0100, 0x11,\n0x0101, 0x22,\n")
        right = self.file("right.txt", "0xfffd, 0x00,\n0x0100, 0x11,\n0x0101, 0x23,\n")
        outcome = self.refuse(7, "differ", "reg", "diff", left, right, "--json")
        self.assert_schema("reg-diff", outcome.lines[0])
        self.succeed("reg", "diff", left, "camera")
        self.refuse(7, "differ", "reg", "diff", right, "camera")


class SensorTest(station.ToolTest):
    """borvanusb i2c."""

    def setUp(self):
        super().setUp()
        sensors = [{"slave": "0x6c", "mode": 1, "registers": {"0x300a": "0x56"}},
                   {"slave": "0x20", "mode": 2, "registers": {"0x1234": "0xabcd"}}]
        sensors += [{"slave": 0x40 + mode, "mode": mode, "registers": {"0x12": mode + 1}}
                    for mode in range(6)]
        self.plug_in(camera(0, sensors=sensors))

    def test_all_width_modes_by_name_and_number(self):
        for mode, name in enumerate(["8/8", "16/8", "16/16", "32/8", "32/16", "32/32"]):
            for way in (name, str(mode)):
                result = self.succeed("i2c", "read", "0x12", "--slave", hex(0x40 + mode), "--mode",
                                      way, "--json").json
                self.assert_schema("i2c-read", result)
                self.assertEqual(result["registers"][0]["value"], mode + 1, name)
        self.refuse(1, "--mode", "i2c", "read", "0x12", "--slave", "0x40", "--mode", "8/32")
        self.refuse(1, "--slave", "i2c", "read", "0x12")

    def test_write_reads_back(self):
        result = self.succeed("i2c", "write", "0x1234", "0x5a5a", "--slave", "0x20", "--mode",
                              "16/16", "--verify", "--json").json
        self.assert_schema("i2c-write", result)
        self.succeed("i2c", "write", "0x1234", "0x0f00", "--mask", "0xff00", "--slave", "0x20",
                     "--mode", "16/16", "--option", "1")
        read = self.succeed("i2c", "read", "0x1234", "--slave", "0x20", "--mode", "2", "--json").json
        self.assertEqual(read["registers"][0]["value"], 0x0F5A)

    def test_dump_loads_back(self):
        name = self.name("sensor.txt")
        self.succeed("i2c", "dump", "0x3000-0x3010", name, "--slave", "0x6c")
        self.assert_schema("i2c-dump", self.succeed("i2c", "dump", "0x3000+4", "--slave", "0x6c",
                                                    "--json").json)
        self.succeed("i2c", "write", "0x300a", "0", "--slave", "0x6c")
        self.assert_schema("i2c-load", self.succeed("i2c", "load", name, "--json").json)
        read = self.succeed("i2c", "read", "0x300a", "--slave", "0x6c", "--json").json
        self.assertEqual(read["registers"][0]["value"], 0x56)

    def test_scan_asks_and_finds_the_slaves(self):
        self.refuse(9, "", "i2c", "scan")
        result = self.succeed("i2c", "scan", "--slaves", "0x60-0x70", "--yes", "--json").json
        self.assert_schema("i2c-scan", result)
        self.assertEqual([answer["slave"] for answer in result["answers"]], [0x6C])

    def test_silent_slave_is_a_failure(self):
        self.refuse(6, "0x300a of slave 0x55", "i2c", "read", "0x300a", "--slave", "0x55")


class WatchTest(station.ToolTest):
    """borvanusb watch."""

    def test_changes_are_shown_and_written(self):
        self.plug_in(camera(0))
        process = self.start("watch", "--reg", "0x100-0x101", "--i2c", "0x300a", "--slave", "0x6c",
                             "--rate", "10", "--csv", self.name("watch.csv"), "--json")
        time.sleep(1.5)
        self.succeed("reg", "write", "0x101", "0x99")
        time.sleep(1.0)
        process.send_signal(signal.SIGINT)
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        for line in outcome.lines:
            self.assert_schema("watch", line)
        last = outcome.lines[-1]
        self.assertEqual((last["address"], last["old"], last["new"]), (0x101, 0x22, 0x99))
        rows = list(csv.reader((self.folder / "watch.csv").read_text(encoding="utf-8").splitlines()))
        self.assertEqual(len(rows), 1 + len(outcome.lines))

    def test_count_ends_it(self):
        self.plug_in(camera(0))
        outcome = self.succeed("watch", "--reg", "0x100", "--wide", "--rate", "50", "--count", "5")
        self.assertIn("0x", outcome.out)
        self.refuse(1, "--reg", "watch")


class LookingTest(station.ToolTest):
    """borvanusb bench, selftest, run, completion, manual."""

    def test_bench_measures_without_changing_anything(self):
        self.plug_in(camera(0))
        result = self.succeed("bench", "--rounds", "10", "--json").json
        self.assert_schema("bench", result)
        measured = [selector for selector in result["selectors"] if selector["measured"]]
        self.assertGreaterEqual(len(measured), 3)
        for selector in measured:
            self.assertGreater(selector["median_us"], 0)

    def selftest(self, faults, *arguments, **changes):
        """The verdicts of a self test by its tests' names, and the exit code."""
        (self.folder / "cameras.camera0.state").unlink(missing_ok=True)
        self.plug_in(camera(0, faults=faults, **changes))
        self.flash_file().write_bytes(os.urandom(65536))
        outcome = self.run_tool("selftest", "--json", "--timeout", "1", *arguments)
        result = outcome.lines[0]
        self.assert_schema("selftest", result)
        return {test["name"]: test["result"] for test in result["tests"]}, outcome

    def test_healthy_camera_passes_all(self):
        verdicts, outcome = self.selftest([], "--slave", "0x6c")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(set(verdicts.values()), {"pass"})

    def test_sensor_is_skipped_without_a_slave(self):
        verdicts, outcome = self.selftest([])
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(verdicts["sensor answers"], "skip")

    def test_each_fail_is_shown_by_a_fault(self):
        # Opening the camera reads register 0x1a3 twice; the tests' own reads come after it.
        data_error = "0x80070017"
        cases = [
            ("sensor answers", [{"selector": 2, "direction": "set", "result": data_error}]),
            ("run of registers agrees with single reads",
             [{"selector": 7, "direction": "get", "short": 9}]),
            ("flash reads the same twice",
             [{"selector": 5, "direction": "get", "at": 70, "short": 8}]),
            ("flash words agree with the bulk read",
             [{"selector": 3, "direction": "get", "result": data_error}]),
            ("flash read from an odd address agrees",
             [{"selector": 5, "direction": "get", "every": 3, "short": 20}]),
        ]
        for name, faults in cases:
            with self.subTest(name):
                verdicts, outcome = self.selftest(faults, "--slave", "0x6c",
                                                  registers={"0x1a3": "0x20", "0x190": "0x44"})
                self.assertEqual(verdicts[name], "fail", verdicts)
                self.assertNotEqual(outcome.code, 0)
                self.assertRegex(outcome.err, "(?m)^borvanusb: .+")

    def test_run_stops_at_the_first_failure_or_goes_on(self):
        self.plug_in(camera(0))
        name = self.file("script.txt", "# settings\nreg write 0x200 0x5a\nreg read 0x200\n"
                                       f"flash verify \"{self.name('no such.bin')}\"\nreg read 0x100\n")
        outcome = self.refuse(5, "no such.bin", "run", name)
        self.assertIn("0x5a", outcome.out)
        self.assertNotIn("0x11", outcome.out)
        outcome = self.run_tool("run", name, "--keep-going", "--json")
        self.assertEqual(outcome.code, 5)
        self.assert_schema("run", outcome.json)
        self.assertEqual([command["exit"] for command in outcome.json["commands"]], [0, 0, 5, 0])
        wrong = self.file("wrong.txt", "reg write 0x200 0\nreg raed 0x200\n")
        self.refuse(1, "2", "run", wrong)
        self.assertIn("0x5a", self.succeed("reg", "read", "0x200").out)

    def test_manual_and_completions_are_printed(self):
        manual = self.succeed("manual").out
        self.assertTrue(manual.startswith('.'), manual[:80])
        self.assertIn("flash program", manual.replace("\\-", "-"))
        bash = self.succeed("completion", "bash").out
        subprocess.run(["bash", "-n"], input=bash.encode(), check=True)
        self.assertIn("Register-ArgumentCompleter", self.succeed("completion", "powershell").out)

    def test_help_of_each_command_fits_a_screen(self):
        overview = self.succeed("--help").out
        self.assertIn("flash program", overview)
        for words in (["list"], ["info"], ["reg", "read"], ["reg", "write"], ["reg", "dump"],
                      ["reg", "load"], ["reg", "diff"], ["i2c", "read"], ["i2c", "write"],
                      ["i2c", "dump"], ["i2c", "load"], ["i2c", "scan"], ["flash", "read"],
                      ["flash", "word"], ["flash", "erase"], ["flash", "map"], ["flash", "program"],
                      ["flash", "verify"], ["watch"], ["bench"], ["selftest"], ["doctor"], ["run"]):
            text = self.succeed(*words, "--help").out
            self.assertIn("xample", text, words)
            self.assertIn("borvanusb " + " ".join(words), text)
            self.assertLessEqual(len(text.splitlines()), 30, words)
            self.assertLessEqual(max(map(len, text.splitlines())), 80, words)
        self.assertRegex(self.succeed("--version").out, r"borvanusb \d+\.\d+\.\d+")

    def test_wrong_words_are_refused_with_what_is_allowed(self):
        self.plug_in(camera(0))
        cases = [
            ("reg", [["reg", "raed", "1"], ["rg"]]),
            ("help|command", [[]]),
            ("--timeout", [["list", "--timeout", "0"], ["list", "--timeout", "soon"]]),
            ("--quiet", [["list", "--quiet", "--verbose"]]),
            ("--progress", [["bench", "--progress", "loud"]]),
            ("--camera", [["reg", "read", "1", "--camera", "0", "--camera", "0"]]),
        ]
        for message, lines in cases:
            for line in lines:
                outcome = self.run_tool(*line)
                self.assertEqual(outcome.code, 1, line)
                self.assertRegex(outcome.err, "(?m)^borvanusb: .*(" + message + ")")
                error = self.run_tool(*line, "--json")
                if error.out:
                    self.assert_schema("error", json.loads(error.out))

    def test_quiet_keeps_standard_error_empty(self):
        self.plug_in(camera(0))
        outcome = self.succeed("flash", "read", "0+8K", self.name("part.bin"), "--quiet")
        self.assertEqual(outcome.err, "")


if __name__ == "__main__":
    station.main()
