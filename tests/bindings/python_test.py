"""program_flash of the Python package with a stand-in for borvanusb. With --tool FOLDER instead: with the
borvanusb.exe of that folder, through Wine, on a virtual camera."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import unittest

import cases_folder
import page_program

sys.path.insert(0, str(cases_folder.BINDINGS / "python"))
# pylint: disable=wrong-import-position
from borvanusb import BorvanError, ProcessError, ProgramError, program_flash, program_flash_iter

TOOL_FOLDER = None
STAND_IN = [sys.executable, "-B", str(pathlib.Path(__file__).with_name("stand_in.py"))]
PAGE = cases_folder.ROOT / "docs/bindings/python.md"
IMAGE = bytes(range(1, 252)) * 500


class FolderTest(unittest.TestCase):
    """In a folder of its own."""

    def setUp(self):
        # pylint: disable=consider-using-with
        temporary = tempfile.TemporaryDirectory(prefix="borvan-python-")
        self.addCleanup(temporary.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        self.folder = pathlib.Path(temporary.name)
        os.chdir(self.folder)
        for name in ("STAND_IN", "STAND_IN_ARGUMENTS", "BORVANUSB_TOOL"):
            os.environ.pop(name, None)
        os.environ["PYTHONIOENCODING"] = "utf-8"

    def run_page(self, *arguments):
        """Runs the program of the document."""
        pathlib.Path("program.py").write_text(
            page_program.program(PAGE.read_text(encoding="utf-8"), "python"), encoding="utf-8")
        environment = dict(os.environ, PYTHONPATH=str(cases_folder.BINDINGS / "python"))
        return subprocess.run([sys.executable, "-B", "program.py", *arguments], env=environment, timeout=60,
                              check=False, capture_output=True, text=True)


class WithStandIn(FolderTest):
    """How it ends, whatever the camera does."""

    def test_done(self):
        os.environ.update(STAND_IN="done", STAND_IN_ARGUMENTS="arguments.json")
        seen, remarks = [], []
        result = program_flash("image.bin", tool=STAND_IN, address=0x1000, camera="front", verify=False,
                               timeout=2.5, more_options={"--report": "r.json"}, progress=seen.append,
                               remark=remarks.append)
        self.assertEqual([(step.stage, step.percent, step.rate, step.seconds_left) for step in seen],
                         [("read", 50, None, 2), ("verify", 100, None, 2)])
        self.assertEqual(remarks, ["a remark: \u00e4"])
        self.assertEqual((result.state, result.verified, result.backup, result.changed_bytes, result.seconds),
                         ("done", True, "old.bin", 4096, 0.95))
        self.assertEqual((result.changed[0].first, result.changed[0].last), (4096, 8191))
        self.assertEqual(result.json["image"]["size"], 3)
        self.assertEqual(json.loads(pathlib.Path("arguments.json").read_text(encoding="utf-8")), [
            "flash", "program", "--json", "--progress", "json", "--address=4096", "--camera=front",
            "--no-verify", "--timeout=2.5", "--report=r.json", "--", "image.bin"])

    def test_failed(self):
        os.environ["STAND_IN"] = "failed"
        with self.assertRaises(ProgramError) as caught:
            program_flash("image.bin", tool=STAND_IN)
        error = caught.exception
        self.assertEqual((error.exit_code, error.name, str(error), error.hint, error.kind),
                         (7, "verify", "what failed", "do this", "program"))

    def test_without_a_result(self):
        os.environ["STAND_IN"] = "garbage"
        with self.assertRaisesRegex(ProcessError, "(?s)code 3 and without a result.*a remark"):
            program_flash("image.bin", tool=STAND_IN)
        with self.assertRaisesRegex(ProcessError, "can't be started"):
            program_flash("image.bin", tool="/no/such/tool")

    def test_cancel(self):
        os.environ["STAND_IN"] = "slow"
        cancel = threading.Event()
        with self.assertRaises(ProgramError) as caught:
            program_flash("image.bin", tool=STAND_IN, progress=lambda _: cancel.set(), cancel=cancel)
        self.assertEqual((caught.exception.exit_code, caught.exception.name), (9, "stopped"))

    def test_exception_of_progress_stops_the_tool(self):
        os.environ["STAND_IN"] = "slow"

        def raise_error(_):
            raise KeyError("enough")
        with self.assertRaisesRegex(KeyError, "enough"):
            program_flash("image.bin", tool=STAND_IN, progress=raise_error)

    def test_generator(self):
        os.environ["STAND_IN"] = "done"
        steps = program_flash_iter("image.bin", tool=STAND_IN)
        self.assertEqual(next(steps).percent, 50)
        self.assertEqual(next(steps).percent, 100)
        with self.assertRaises(StopIteration) as end:
            next(steps)
        self.assertEqual(end.exception.value.state, "done")
        os.environ["STAND_IN"] = "slow"
        steps = program_flash_iter("image.bin", tool=STAND_IN)
        next(steps)
        steps.close()  # hangs for a minute if the stand-in is not stopped

    def test_program_of_the_document_without_a_tool(self):
        os.environ["BORVANUSB_TOOL"] = "/no/such/tool"
        done = self.run_page("image.bin", "0")
        self.assertEqual(done.returncode, 10, done.stderr)
        self.assertIn("can't be started", done.stderr)


class WithTool(FolderTest):
    """On a virtual camera, through Wine."""

    def setUp(self):
        super().setUp()
        if TOOL_FOLDER is None:
            self.skipTest("without --tool")
        config = self.folder / "cameras.json"
        config.write_text(json.dumps({"cameras": [{
            "path": r"\\?\usb#vid_1234&pid_0001#1", "name": "One",
            "flash": {"size": "512K", "erase_ms": 60}}]}), encoding="utf-8")
        done = cases_folder.run("true", config=config, cwd=self.folder, cameras=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        os.environ["BORVAN_VIRTUAL_CAMERA"] = "Z:" + str(config).replace("/", "\\")
        tool = self.folder / "borvanusb"
        tool.write_text(f"#!/bin/sh\nexec '{cases_folder.ROOT}/scripts/run_with_wine.sh' "
                        f"'{TOOL_FOLDER}/borvanusb.exe' \"$@\"\n", encoding="utf-8")
        tool.chmod(0o755)
        os.environ["BORVANUSB_TOOL"] = str(tool)
        pathlib.Path("image.bin").write_bytes(IMAGE)

    def flash(self):
        """What the flash holds where the image goes."""
        return pathlib.Path("cameras.camera0.flash").read_bytes()[0x1000:0x1000 + len(IMAGE)]

    def test_program_of_the_document(self):
        done = self.run_page("image.bin", "0x1000")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.startswith("done, old bytes in "), done.stdout)
        self.assertIn("verify 100 %", done.stderr)
        self.assertTrue(self.flash() == IMAGE)
        done = self.run_page("missing.bin", "0x1000")
        self.assertEqual(done.returncode, 5, done.stderr)
        self.assertIn("missing.bin", done.stderr)

    def test_cancel(self):
        cancel = threading.Event()

        def stop(step):
            if step.stage in ("erase", "program"):
                cancel.set()
        with self.assertRaises(BorvanError) as caught:
            program_flash("image.bin", address=0x1000, progress=stop, cancel=cancel)
        self.assertEqual((caught.exception.exit_code, caught.exception.name), (9, "stopped"))
        self.assertFalse(self.flash() == IMAGE)


if __name__ == "__main__":
    if "--tool" in sys.argv:
        place = sys.argv.index("--tool")
        TOOL_FOLDER = pathlib.Path(sys.argv.pop(place + 1)).resolve()
        sys.argv[place:] = ["WithTool"]
    unittest.main(verbosity=2)
