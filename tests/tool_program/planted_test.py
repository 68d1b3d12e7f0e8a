#!/usr/bin/python3
"""DLLs that somebody put into the current folder are not loaded, whatever their names are."""
import os
import pathlib
import shutil
import subprocess
import sys

import station
from station import camera

sys.path.insert(0, str(station.ROOT / "tests" / "build"))
import pe_file  # pylint: disable=wrong-import-position

PLANTED = pathlib.Path(os.environ.get("BORVAN_PLANTED_LIBRARY", station.TEST_PROGRAMS / "planted_library.dll"))
PRODUCTS = ("borvanusb.exe", "virtual-camera.exe", "BorvanUSB_x64.dll", "BorvanVirtualCamera.dll")


class PlantedTest(station.ToolTest):
    """A current folder full of DLLs that are not what their names say."""

    def setUp(self):
        super().setUp()
        self.plug_in(camera())
        self.downloads = self.folder / "downloads"
        self.downloads.mkdir()
        names = {"BorvanUSB_x64.dll", "BorvanVirtualCamera.dll", "version.dll"}
        for product in PRODUCTS:
            names.update(pe_file.PeFile(station.BIN / product).imported_libraries())
        for name in names:
            shutil.copy(PLANTED, self.downloads / name)
            # The name is of any letters to Windows, not to this system.
            shutil.copy(PLANTED, self.downloads / name.lower())
        self.environment["BORVAN_PLANTED"] = station.windows_name(self.folder / "loaded")

    def run_in_downloads(self, program, *arguments):
        """Runs a program with the current folder full of planted DLLs; its exit code."""
        return subprocess.run([*self.command()[:-1], str(program), *arguments], check=False,
                              timeout=station.LONGEST, env=self.environment, cwd=self.downloads,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode

    def test_the_tool_loads_none(self):
        self.assertEqual(self.run_in_downloads(station.BIN / "borvanusb.exe", "reg", "read", "0x100"), 0)
        self.assertFalse((self.folder / "loaded").exists())

    def test_the_cameras_program_loads_none(self):
        self.assertEqual(self.run_in_downloads(station.BIN / "virtual-camera.exe", "state"), 0)
        self.assertFalse((self.folder / "loaded").exists())

    def test_a_program_that_asks_by_the_bare_name_would_load_one(self):
        # Without its library beside it; this shows that the planted ones can be loaded at all.
        program = self.folder / "host.exe"
        shutil.copy(station.TEST_PROGRAMS / "windows_unload_host.exe", program)
        self.run_in_downloads(program, "none")
        self.assertTrue((self.folder / "loaded").exists())


if __name__ == "__main__":
    station.main()
