"""Runs the table of cases with the Python package on the native library, and what the table can't say.
BORVANUSB_LIBRARY names the library."""
import os
import pathlib
import re
import sys
import tempfile
import threading
import unittest

import cases_folder

sys.path.insert(0, str(cases_folder.BINDINGS / "python"))
import borvanusb  # pylint: disable=wrong-import-position
from borvanusb import status  # pylint: disable=wrong-import-position


def number(value):
    """A number of the table."""
    return int(value, 16) if isinstance(value, str) else value


def arguments_of(step):
    """The arguments of a step as the package takes them."""
    arguments = {}
    for name, value in step.get("arguments", {}).items():
        if name == "time_limit_ms":
            arguments["time_limit"] = value / 1000
        elif name in ("file", "wide"):
            arguments[name] = value
        else:
            arguments[name] = number(value)
    return arguments


def plain(value):
    """A returned value as the table has it."""
    if isinstance(value, list):
        return [{"index": camera.index, "name": camera.name, "vid": camera.vendor_id,
                 "pid": camera.product_id, "path": camera.path} for camera in value]
    return value


def expected_value(returns):
    """A value of the table as `plain` gives it."""
    if isinstance(returns, dict):
        return cases_folder.content(returns)
    return returns if isinstance(returns, list) else number(returns)


class FolderTest(unittest.TestCase):
    """In a folder with the cameras of the table."""

    def setUp(self):
        # pylint: disable=consider-using-with
        temporary = tempfile.TemporaryDirectory(prefix="borvan-python-")
        self.addCleanup(temporary.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(temporary.name)
        self.table = cases_folder.fill(pathlib.Path(temporary.name))
        os.environ["BORVAN_VIRTUAL_CAMERA"] = os.path.join(temporary.name, "cameras.json")


class Cases(FolderTest):
    """The table."""

    def check_step(self, camera, step):
        """Makes the call of a step and compares."""
        call = getattr(camera, step["call"])
        if "error" in step:
            expected = step["error"]
            with self.assertRaises(borvanusb.BorvanError) as caught:
                call(**arguments_of(step))
            error = caught.exception
            self.assertEqual(error.kind, expected["kind"], str(error))
            self.assertIn(expected["text"], str(error))
            if error.kind != "nothing-written":
                self.assertEqual(error.status, number(expected.get("status", 0)))
            return
        value = plain(call(**arguments_of(step)))
        if "returns" in step:
            self.assertEqual(value, expected_value(step["returns"]))
        if "file_holds" in step:
            content = pathlib.Path(step["arguments"]["file"]).read_bytes()
            self.assertEqual(content, cases_folder.content(step["file_holds"]))

    def test_cases(self):
        self.assertGreaterEqual(len(self.table["cases"]), 40)
        for case in self.table["cases"]:
            for file in case.get("makes", []):
                pathlib.Path(file["file"]).write_bytes(cases_folder.content(file))
            with self.subTest(case["name"]), borvanusb.Camera() as camera:
                for step in case["steps"]:
                    self.check_step(camera, step)


class BesideTheTable(FolderTest):
    """What is special for Python."""

    def test_progress_by_function_and_by_generator(self):
        with borvanusb.Camera() as camera:
            camera.select(0)
            seen = []
            camera.read_flash_file("one.bin", 0, 0xFFF, progress=seen.append)
            self.assertEqual(seen, sorted(set(seen)))
            self.assertEqual(seen[-1], 100)
            self.assertEqual(list(camera.read_flash_file_iter("two.bin", 0, 0xFFF))[-1], 100)
            self.assertEqual(pathlib.Path("two.bin").read_bytes(), pathlib.Path("one.bin").read_bytes())

    def test_one_camera_object_and_one_thread(self):
        with borvanusb.Camera() as camera:
            with self.assertRaises(borvanusb.BusyError):
                borvanusb.Camera()
            caught = []

            def read():
                try:
                    camera.read_register(0x100)
                except borvanusb.BorvanError as error:
                    caught.append(error.kind)
            thread = threading.Thread(target=read)
            thread.start()
            thread.join()
            self.assertEqual(caught, ["thread"])

    def test_a_job_that_is_left_alone_is_waited_for_by_the_next_object(self):
        with borvanusb.Camera() as camera:
            camera.select(2)
            with self.assertRaises(TimeoutError):
                camera.read_flash_file("slow.bin", 0, 49, time_limit=0.05)
        with borvanusb.Camera() as camera:
            with self.assertRaises(borvanusb.BusyError):
                camera.select(0)
            camera.wait(20)
            self.assertEqual(camera.selected().name, "Slow camera")
            camera.select(0)
        self.assertEqual(pathlib.Path("slow.bin").read_bytes(), b"\xff" * 50)

    def test_a_camera_that_is_gone_can_not_be_opened(self):
        with borvanusb.Camera() as camera:
            config = pathlib.Path("cameras.json")
            config.write_text(config.read_text(encoding="utf-8").replace(
                '"name": "Good camera"', '"name": "Good camera", "plugged": false, "state": "other"'),
                encoding="utf-8")
            camera.list()
            with self.assertRaises(borvanusb.BorvanError) as caught:
                camera.select(0)
            self.assertEqual(caught.exception.kind, "cannot-open")
            self.assertIn("BindToObject failed", str(caught.exception))


class Texts(unittest.TestCase):
    """The texts are those of the header."""

    def test_texts_of_the_status_codes(self):
        header = (cases_folder.ROOT / "include/borvan_usb_status.h").read_text(encoding="utf-8")
        codes = {name: int(code, 16) for name, code in
                 re.findall(r"(kBorvan\w+) = (0x[0-9A-F]+)u", header)}
        messages = re.findall(r'^      "(.*)",', header, re.MULTILINE)
        self.assertEqual(len(messages), 11)
        for place, message in enumerate(messages):
            self.assertEqual(status.status_text(0xE0000001 + place), message)
        pairs = re.findall(r"((?:    case \w+:\n)+)      return \"(.*)\";", header)
        self.assertGreater(len(pairs), 15)
        for cases, text in pairs:
            for label in re.findall(r"case (\w+):", cases):
                code = codes[label] if label in codes else int(label.rstrip("u"), 0)
                self.assertEqual(status.status_text(code), text)
        for name in ("TimeLimit", "EndMissed"):
            text = re.search(rf"kBorvanWait{name}\) {{\n    return \"(.*)\";", header).group(1)
            self.assertEqual(status.status_text(codes[f"kBorvanWait{name}"]), text)
        self.assertEqual(status.status_text(0x80041234), "error code of the system or of the camera's driver")
        self.assertEqual(status.status_text(7), "no failure: a positive status")


if __name__ == "__main__":
    unittest.main(verbosity=2)
