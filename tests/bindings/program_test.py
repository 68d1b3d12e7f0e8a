"""Programs a virtual camera with the C++ binding, through Wine: the program of its document and
cpp_program_flash. Usage: program_test.py FOLDER, that of the programs."""
import json
import pathlib
import sys
import tempfile
import unittest

import cases_folder

FOLDER = pathlib.Path(sys.argv.pop(1)).resolve()
IMAGE = bytes(range(1, 252)) * 250


class ProgramFlash(unittest.TestCase):
    """Two cameras; the flash of the second one is slow."""

    def setUp(self):
        # pylint: disable=consider-using-with
        temporary = tempfile.TemporaryDirectory(prefix="borvan-program-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        cameras = []
        for number, (name, flash) in enumerate([
                ("Good camera", {"size": "512K"}),
                ("Slow flash", {"size": "512K", "erase_ms": 60})]):
            cameras.append({"path": f"\\\\?\\usb#vid_1234&pid_{number:04x}&mi_00#{number}",
                            "name": name, "flash": flash, "registers": {"0x1a3": "0x20"}})
        (self.folder / "cameras.json").write_text(json.dumps({"cameras": cameras}), encoding="utf-8")
        (self.folder / "image.bin").write_bytes(IMAGE)

    def run_program(self, program, *arguments):
        """Runs a program in the folder of the test."""
        return cases_folder.run(FOLDER / program, *arguments, config=self.folder / "cameras.json",
                                cwd=self.folder)

    def holds_image(self, number, address):
        """Whether the flash of a camera holds the image there."""
        flash = (self.folder / f"cameras.camera{number}.flash").read_bytes()
        return flash[address:address + len(IMAGE)] == IMAGE

    def check(self, case):
        """Runs a case of cpp_program_flash."""
        done = self.run_program("cpp_program_flash.exe", case, "image.bin")
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)

    def test_done(self):
        self.check("done")
        self.assertTrue(self.holds_image(0, 0x2000))

    def test_cancel_stops_the_tool(self):
        self.check("cancelled")
        self.assertFalse(self.holds_image(1, 0x2000))

    def test_exception_of_a_callback_stops_the_tool(self):
        self.check("callback")
        self.assertFalse(self.holds_image(1, 0x2000))

    def test_failures(self):
        self.check("missing")
        self.check("no-tool")
        self.check("no-result")

    def test_program_of_the_document(self):
        (self.folder / "cameras.json").write_text(json.dumps({"cameras": [{
            "path": r"\\?\usb#vid_1234&pid_0001#1", "name": "One", "flash": {"size": "512K"}}]}),
            encoding="utf-8")
        done = self.run_program("cpp_page_program.exe", "image.bin", "0x1000")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.startswith("done, old bytes in "), done.stdout)
        self.assertIn("verify 100 %", done.stderr)
        self.assertTrue(self.holds_image(0, 0x1000))
        done = self.run_program("cpp_page_program.exe", "missing.bin", "0x1000")
        self.assertEqual(done.returncode, 5, done.stderr)
        self.assertIn("missing.bin", done.stderr)


class SelectLibrary(unittest.TestCase):
    """borvanusb_select.dll."""

    def test_it_returns_where_the_library_throws(self):
        with tempfile.TemporaryDirectory(prefix="borvan-select-") as name:
            folder = pathlib.Path(name)
            cameras = [{"path": f"\\\\?\\usb#vid_1234&pid_{number:04x}#{number}", "name": str(number)}
                       for number in range(2)]
            (folder / "cameras.json").write_text(json.dumps({"cameras": cameras}), encoding="utf-8")
            cameras[0]["path"] += "another"
            (folder / "changed.json").write_text(json.dumps({"cameras": cameras}), encoding="utf-8")
            done = cases_folder.run(FOLDER / "select_dll.exe", "changed.json", "cameras.json",
                                    config=folder / "cameras.json", cwd=folder)
            self.assertEqual(done.returncode, 0, done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
