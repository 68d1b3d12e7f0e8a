"""What bindings promise alike whose programs run under Wine: the table of cases, the behaviours that no case
covers, and the programs of the binding's page.
"""
import pathlib
import random
import re
import signal
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "tool_program")]
import cases_folder  # pylint: disable=wrong-import-position
import station  # pylint: disable=wrong-import-position


def header_texts():
    """The text of each status code in the public header."""
    text = (station.ROOT / "include" / "borvan_usb_status.h").read_text(encoding="utf-8")
    codes = {name: int(value, 16) for name, value in re.findall(r"(kBorvan\w+) = (0x\w+?)u", text)}
    messages = re.search(r"kMessages\[\] = \{(.*?)\n  \};", text, re.DOTALL).group(1)
    texts = dict(enumerate(re.findall(r'"(.*?)"', messages), codes["kBorvanFlashEraseFailed"]))
    for name, message in re.findall(r'status == (\w+)\) \{\s+return "(.*?)";', text):
        texts[codes[name]] = message
    for cases, message in re.findall(r'((?:case \w+:\s+)+)return "(.*?)";', text):
        for case in re.findall(r"case (\w+):", cases):
            texts[codes[case] if case in codes else int(case.rstrip("u"), 0)] = message
    return texts


class PromisesTest(station.ToolTest):
    """The tests of all such bindings. A binding adds how its programs start; those of its page are "program"
    and "registers"."""
    # What the output of checks has when all passed.
    PASSED = "(?m)^ok "
    # How the program of the page takes an address.
    ADDRESS = "{:#x}"

    def program_command(self, name):
        """The Windows program, and its first arguments, that run a program of the tests."""
        raise NotImplementedError

    def checks_command(self, checks):
        """The same for checks."""
        return self.program_command(checks)

    def start_program(self, command):
        """Starts a program under Wine. Its output goes to files: Node.js can't write to pipes there."""
        with open(self.folder / "out.txt", "wb") as out, open(self.folder / "err.txt", "wb") as err:
            return subprocess.Popen([*self.command()[:-1], *map(str, command)], env=self.environment,
                                    cwd=self.folder, stdin=subprocess.DEVNULL, stdout=out, stderr=err)

    def finish_program(self, process):
        """Waits for a started program."""
        code = process.wait(station.LONGEST)
        texts = [(self.folder / name).read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")
                 for name in ("out.txt", "err.txt")]
        return station.Outcome(code, *texts)

    def run_program(self, name, *arguments):
        """Runs a program to its end."""
        return self.finish_program(self.start_program([*self.program_command(name), *arguments]))

    def pass_checks(self, checks, *arguments):
        """Runs checks, which must all pass."""
        outcome = self.finish_program(self.start_program([*self.checks_command(checks), *arguments]))
        self.assertEqual(outcome.code, 0, f"{outcome.out}\n{outcome.err}")
        self.assertRegex(outcome.out, self.PASSED)
        self.assertNotIn("FAILED", outcome.out)

    def put_image(self, size, name="firmware.bin"):
        """Makes an image with bytes of no meaning; returns them."""
        content = random.Random(size).randbytes(size)
        (self.folder / name).write_bytes(content)
        return content

    def test_cases(self):
        cases_folder.fill(self.folder)
        (self.folder / "cases.json").write_bytes(cases_folder.CASES.read_bytes())
        self.virtual_camera("register")
        self.pass_checks("cases", "cases.json")

    def test_behaviours(self):
        slow = {"selector": 5, "direction": "get", "delay_ms": 400}
        self.plug_in(station.camera(0, name="Kamera für Prüfung"),
                     station.camera(1, name="n" * 130, faults=[slow]))
        texts = "".join(f"{code}\t{text}\n" for code, text in header_texts().items())
        (self.folder / "texts.txt").write_text(texts, encoding="utf-8")
        self.pass_checks("behaviours", "texts.txt")

    def test_camera_that_cannot_be_opened(self):
        self.plug_in(station.camera(0))
        self.configure(station.camera(1))  # the list still has the one that is no longer there
        self.pass_checks("unopened")

    def test_programming(self):
        self.plug_in(station.camera(0, flash={"size": "1M", "erase_ms": 40}))
        # No name that the ANSI code page could express.
        self.put_image(500000, "ファームウェア.bin")
        self.pass_checks("programming", "ファームウェア.bin")

    def test_program_of_the_page_shows_progress_and_reports_errors(self):
        self.plug_in(station.camera(0, flash={"size": "1M"}), station.camera(1))
        image = self.put_image(9000)
        address = self.ADDRESS.format(0x20800)
        outcome = self.run_program("program", "firmware.bin", address, "1234:0000")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(self.flash()[0x20800:0x20800 + len(image)], image)
        self.assertRegex(outcome.out, "(?m)^program: 100 %$")
        self.assertRegex(outcome.out, "(?m)^done: 1 ranges changed, verified: [Tt]rue$")
        backup = re.search("the old bytes are in (.*)", outcome.out).group(1)
        self.assertTrue((self.folder / pathlib.PureWindowsPath(backup).name).is_file(), backup)

        outcome = self.run_program("program", "firmware.bin", address, "1234:7777")
        self.assertEqual(outcome.code, 2, outcome.err)
        self.assertRegex(outcome.err, "[Pp]rogramFlash: ")
        self.assertIn("borvanusb list", outcome.err)

    def test_ctrl_c_stops_the_program_of_the_page_at_a_safe_place(self):
        self.plug_in(station.camera(0, flash={"size": "1M", "erase_ms": 40}))
        self.put_image(600000)
        process = self.start_program(
            [*self.program_command("program"), "firmware.bin", self.ADDRESS.format(0x810), "0"])
        deadline = time.monotonic() + station.LONGEST
        while "program: " not in (self.folder / "out.txt").read_text(encoding="utf-8"):
            self.assertIsNone(process.poll(), "it ended before it began")
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        process.send_signal(signal.SIGINT)
        outcome = self.finish_program(process)
        self.assertEqual(outcome.code, 9, outcome.err)
        self.assertIn("stopped by the user", outcome.err)
        self.assertIn("To continue: borvanusb flash program", outcome.err)

    def test_registers_sensor_and_flash(self):
        cases_folder.fill(self.folder)
        self.virtual_camera("register")
        outcome = self.run_program("registers")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertIn("Good camera", outcome.out)
        self.assertRegex(outcome.out, "(?m)^5a\n56$")
        self.assertRegex(outcome.out, "(?m)^100 %$")
        self.assertEqual((self.folder / "dump.bin").stat().st_size, 0x10000)
