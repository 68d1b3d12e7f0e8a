#!/usr/bin/env python3
"""Builds programs as somebody does who has the installed product and nothing else, and runs each.

Usage: stranger_test.py CMAKE SOURCE_FOLDER BUILD_FOLDER
BUILD_FOLDER is the windows preset's. The product is installed into an empty folder outside of the tree and
the folder is moved. Each program writes an image into a virtual camera's flash and reads it back; image,
copy and the camera's flash file must be equal.
"""
import json
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import unittest

import install_document

ADDRESS = 0x40000
HERE = pathlib.Path(__file__).resolve().parent / "stranger"
CAMERA = {"path": r"\\?\usb#vid_1234&pid_0001&mi_00#6&1a2b3c4d&0&0000", "name": "Stranger's camera",
          "flash": {"size": "1M", "file": "flash.bin"}}
CMAKE = SOURCE = BUILD = ""


def run(command, folder, **environment):
    """Runs a command in `folder`; its output when it ends with 0."""
    done = subprocess.run(list(map(str, command)), cwd=folder, env={**os.environ, **environment}, text=True,
                          check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


class StrangerTest(unittest.TestCase):
    """Programs on the installed product."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="stranger-")).resolve()
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        run([CMAKE, "--install", BUILD, "--prefix", cls.folder / "first"], cls.folder)
        # Whoever installs may move what was installed.
        cls.prefix = (cls.folder / "first").rename(cls.folder / "BorvanUSB")
        config = cls.folder / "cameras.json"
        config.write_text(json.dumps({"cameras": [CAMERA]}), encoding="utf-8")
        cls.camera = "Z:" + str(config).replace("/", "\\")
        run([f"{SOURCE}/scripts/with_cameras.sh", "--config", config, "true"], cls.folder,
            BORVAN_BIN=str(cls.prefix / "bin"))

    def project(self, *files):
        """A new folder with copies of these files of the folder `stranger`."""
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        for file in files:
            shutil.copy(HERE / file, folder)
        return folder

    def check_flash(self, program, *arguments):
        """The program writes an image; the flash's file and the copy must hold it."""
        image = random.Random(self.id()).randbytes(9001)
        (program.parent / "image.bin").write_bytes(image)
        run([f"{SOURCE}/scripts/run_with_wine.sh", program, *arguments, "image.bin", "copy.bin"],
            program.parent, BORVAN_VIRTUAL_CAMERA=self.camera)
        self.assertEqual((program.parent / "copy.bin").read_bytes(), image)
        flash = (self.folder / "flash.bin").read_bytes()
        self.assertEqual(flash[ADDRESS:ADDRESS + len(image)], image)

    def build_by_cmake(self, folder, *settings):
        """Configures and builds; the program."""
        run([CMAKE, "-S", ".", "-B", "build", "-G", "Ninja", "-DCMAKE_TOOLCHAIN_FILE=mingw.cmake",
             "-DCMAKE_BUILD_TYPE=Debug", *settings], folder)
        run([CMAKE, "--build", "build"], folder)
        return folder / "build" / "program.exe"

    def test_a_project_in_c_finds_the_library_by_cmake(self):
        folder = self.project("mingw.cmake", "c/CMakeLists.txt", "c/program.c")
        self.check_flash(self.build_by_cmake(folder, f"-DCMAKE_PREFIX_PATH={self.prefix}"))

    def test_a_project_in_cpp_finds_the_library_by_cmake(self):
        folder = self.project("mingw.cmake", "cpp/CMakeLists.txt", "cpp/program.cpp")
        self.check_flash(self.build_by_cmake(folder, f"-DCMAKE_PREFIX_PATH={self.prefix}"))

    def test_a_version_that_is_not_there_is_refused(self):
        folder = self.project("mingw.cmake", "c/CMakeLists.txt", "c/program.c")
        for version in ("0.99", "1.0"):
            lists = (HERE / "c/CMakeLists.txt").read_text(encoding="utf-8")
            (folder / "CMakeLists.txt").write_text(lists.replace("BorvanUSB 0.2", f"BorvanUSB {version}"),
                                                   encoding="utf-8")
            with self.assertRaisesRegex(AssertionError, f'requested\\s+version "{version}"'):
                self.build_by_cmake(folder, f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def test_a_program_for_another_system_is_told_why_not(self):
        folder = self.project("c/CMakeLists.txt", "c/program.c")
        with self.assertRaisesRegex(AssertionError, "BorvanUSB is for 64-bit\\s+Windows"):
            run([CMAKE, "-S", ".", "-B", "build", f"-DCMAKE_PREFIX_PATH={self.prefix}"], folder)

    def test_projects_in_c_and_cpp_find_the_library_by_pkg_config(self):
        folder = self.project("c/program.c", "cpp/program.cpp", "pkg_config/build.sh")
        run(["bash", "-euo", "pipefail", "build.sh"], folder,
            PKG_CONFIG_LIBDIR=str(self.prefix / "lib/pkgconfig"))
        self.check_flash(folder / "program_c.exe")
        self.check_flash(folder / "program_cpp.exe")

    def test_a_program_loads_the_library_by_hand(self):
        folder = self.project("load_library/program.cpp", "load_library/build.sh")
        run(["bash", "-euo", "pipefail", "build.sh"], folder, BORVANUSB=str(self.prefix))
        library = "Z:" + str(self.prefix / "bin/BorvanUSB_x64.dll").replace("/", "\\")
        self.check_flash(folder / "program.exe", library)

    def test_a_project_adds_the_sources_and_needs_no_packages(self):
        folder = self.project("mingw.cmake", "subdirectory/CMakeLists.txt", "c/program.c")
        program = self.build_by_cmake(folder, f"-DBORVANUSB_SOURCES={SOURCE}", "-DCMAKE_BUILD_TYPE=")
        cache = (folder / "build/CMakeCache.txt").read_text(encoding="utf-8")
        self.assertIn("BORVAN_BUILD_TOOLS:BOOL=OFF", cache)
        for package in ("NLOHMANN", "CLI11", "FMT", "GOOGLETEST"):
            self.assertNotIn(f"BORVAN_{package}", cache)
        built = {path.name for path in folder.rglob("*") if path.suffix in (".exe", ".dll")}
        self.assertEqual(built, {"program.exe", "BorvanUSB_x64.dll"} | {
            name for name in built if name.startswith("CMake") or name == "a.exe"})
        self.check_flash(program)

    def test_a_part_of_the_components_can_be_installed(self):
        for component, wanted in (("runtime", {"BorvanUSB_x64.dll"}), ("tools", {"borvanusb.exe"}),
                                  ("virtual-camera", {"BorvanVirtualCamera.dll", "virtual-camera.exe"}),
                                  ("development", set())):
            prefix = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
            run([CMAKE, "--install", BUILD, "--prefix", prefix, "--component", component], self.folder)
            self.assertEqual({path.name for path in prefix.glob("bin/*")}, wanted)
        self.assertTrue((prefix / "include/borvan_usb.h").is_file())
        self.assertEqual({path.name for path in prefix.glob("lib/*.*")},
                         {"libBorvanUSB_x64.dll.a", "BorvanUSB_x64.lib"})

    def test_the_document_shows_the_files_that_are_built_here(self):
        self.assertEqual(install_document.differences(pathlib.Path(SOURCE)), [])


def main():
    """Takes the three arguments and runs the tests."""
    global CMAKE, SOURCE, BUILD  # pylint: disable=global-statement
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    CMAKE, SOURCE, BUILD = sys.argv[1], sys.argv[2], sys.argv[3]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)


if __name__ == "__main__":
    main()
