#!/usr/bin/env python3
"""The binding for .NET: its NuGet package, whose files test programs use under Wine.

BORVAN_CSHARP_FOLDER names the folder; the .NET SDK is fetched into it once.
"""
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time
import zipfile
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent.parent
BINDING = ROOT / "bindings" / "csharp"
sys.path[:0] = [str(HERE.parent), str(HERE.parent / "node"), str(ROOT / "tests" / "tool_program"), str(BINDING)]
import cases_folder  # pylint: disable=wrong-import-position
import node_test  # pylint: disable=wrong-import-position
import pack  # pylint: disable=wrong-import-position
import sdk  # pylint: disable=wrong-import-position
import station  # pylint: disable=wrong-import-position

FOLDER = pathlib.Path(os.environ.get("BORVAN_CSHARP_FOLDER", ROOT / "build" / "windows" / "bindings-csharp"))
PAGE = ROOT / "docs" / "bindings" / "csharp.md"
PROGRAMS = FOLDER / "programs"
NATIVE = "runtimes/win-x64/native/"
SDK = sdk.Sdk(FOLDER)


def page_programs():
    """The programs that the page shows."""
    return re.findall(r"^```csharp\n(.*?)^```$", PAGE.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)


def setUpModule():  # pylint: disable=invalid-name
    """Makes the package, takes its files out and compiles the programs that use them."""
    shutil.rmtree(PROGRAMS, ignore_errors=True)
    PROGRAMS.mkdir(parents=True)
    package = pack.pack(pack.compiled(SDK.folder), station.BIN, FOLDER / "packages")
    with zipfile.ZipFile(package) as archive:
        for name in archive.namelist():
            if name.startswith((NATIVE, "lib/netstandard2.0/")):
                (PROGRAMS / pathlib.PurePosixPath(name).name).write_bytes(archive.read(name))
    assembly = PROGRAMS / "BorvanUsb.dll"
    SDK.compile_program(PROGRAMS / "CSharpTest.dll", sorted(HERE.glob("*.cs")), assembly)
    for name, text in zip(("Program", "Registers"), page_programs()):
        source = FOLDER / f"{name}.cs"
        source.write_text(text, encoding="utf-8")
        SDK.compile_program(PROGRAMS / f"{name}.dll", [source], assembly)


class CSharpTest(station.ToolTest):
    """A test that runs .NET programs in its own folder."""

    def start_program(self, name, *arguments):
        """Starts a program under Wine; its output goes to files."""
        command = [*self.command()[:-1], str(SDK.dotnet), station.windows_name(PROGRAMS / f"{name}.dll"), *arguments]
        with open(self.folder / "out.txt", "wb") as out, open(self.folder / "err.txt", "wb") as err:
            return subprocess.Popen(command, env=self.environment, cwd=self.folder, stdin=subprocess.DEVNULL,
                                    stdout=out, stderr=err)

    def finish_program(self, process):
        """Waits for a started program."""
        code = process.wait(station.LONGEST)
        texts = [(self.folder / name).read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")
                 for name in ("out.txt", "err.txt")]
        return station.Outcome(code, *texts)

    def run_program(self, name, *arguments):
        """Runs a program to its end."""
        return self.finish_program(self.start_program(name, *arguments))

    def pass_checks(self, *arguments):
        """Runs checks, which must all pass."""
        outcome = self.run_program("CSharpTest", *arguments)
        self.assertEqual(outcome.code, 0, f"{outcome.out}\n{outcome.err}")
        self.assertRegex(outcome.out, r"(?m)^\d+ checks, 0 failed$")

    def put_image(self, size, name="firmware.bin"):
        """Makes an image with bytes of no meaning; returns them."""
        content = random.Random(size).randbytes(size)
        (self.folder / name).write_bytes(content)
        return content

    def test_package(self):
        packed = FOLDER / "packages" / f"BorvanUsb.{pack.version()}.nupkg"
        again = pack.pack(pack.compiled(SDK.folder), station.BIN, FOLDER / "packages-again")
        self.assertEqual(again.read_bytes(), packed.read_bytes())
        with zipfile.ZipFile(packed) as archive:
            for name in pack.PRODUCTS:
                self.assertEqual(archive.read(NATIVE + name), (station.BIN / name).read_bytes())
            names = set(archive.namelist())
            for name in ("lib/netstandard2.0/BorvanUsb.dll", "lib/netstandard2.0/BorvanUsb.xml", "README.md",
                         "build/net461/BorvanUsb.targets", "[Content_Types].xml", "_rels/.rels"):
                self.assertIn(name, names)
            for name in names:
                if name.endswith((".nuspec", ".targets", ".xml", ".rels")):
                    xml.etree.ElementTree.fromstring(archive.read(name))
            nuspec = archive.read("BorvanUsb.nuspec").decode("utf-8")
            self.assertIn(f"<version>{pack.version()}</version>", nuspec)
            assembly = archive.read("lib/netstandard2.0/BorvanUsb.dll")
        # It refers to .NET Standard alone, and holds no path of the machine that built it.
        self.assertIn(b"netstandard", assembly)
        self.assertNotIn(b"System.Private.CoreLib", assembly)
        self.assertNotIn(str(ROOT).encode("ascii"), assembly)

    def test_cases(self):
        cases_folder.fill(self.folder)
        (self.folder / "cases.json").write_bytes(cases_folder.CASES.read_bytes())
        self.virtual_camera("register")
        self.pass_checks("cases", "cases.json")

    def test_behaviours(self):
        slow = {"selector": 5, "direction": "get", "delay_ms": 400}
        self.plug_in(station.camera(0, name="Kamera für Prüfung"),
                     station.camera(1, name="n" * 130, faults=[slow]))
        texts = "".join(f"{code}\t{text}\n" for code, text in node_test.header_texts().items())
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

    def test_program_of_the_page_programs_shows_progress_and_reports_errors(self):
        self.assertLessEqual(len(page_programs()[0].splitlines()), 30)
        self.plug_in(station.camera(0, flash={"size": "1M"}), station.camera(1))
        image = self.put_image(9000)
        outcome = self.run_program("Program", "firmware.bin", "20800", "1234:0000")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(self.flash()[0x20800:0x20800 + len(image)], image)
        self.assertRegex(outcome.out, "(?m)^program: 100 %$")
        self.assertRegex(outcome.out, "(?m)^done: 1 ranges changed, verified: True$")
        backup = re.search("the old bytes are in (.*)", outcome.out).group(1)
        self.assertTrue((self.folder / pathlib.PureWindowsPath(backup).name).is_file(), backup)

        outcome = self.run_program("Program", "firmware.bin", "20800", "1234:7777")
        self.assertEqual(outcome.code, 2, outcome.err)
        self.assertIn("ProgramFlash: ", outcome.err)
        self.assertIn("borvanusb list", outcome.err)

    def test_ctrl_c_stops_the_program_of_the_page_at_a_safe_place(self):
        self.plug_in(station.camera(0, flash={"size": "1M", "erase_ms": 40}))
        self.put_image(600000)
        process = self.start_program("Program", "firmware.bin", "810", "0")
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
        outcome = self.run_program("Registers")
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertIn("Good camera", outcome.out)
        self.assertRegex(outcome.out, "(?m)^5a\n56$")
        self.assertRegex(outcome.out, "(?m)^100 %$")
        self.assertEqual((self.folder / "dump.bin").stat().st_size, 0x10000)


if __name__ == "__main__":
    station.main()
