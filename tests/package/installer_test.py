#!/usr/bin/env python3
"""Installs, repairs, upgrades and removes the MSI under Wine, and compares lists of files and registry.

Usage: installer_test.py CMAKE SOURCE_FOLDER BUILD_FOLDER
BUILD_FOLDER is the windows preset's. The Wine prefix is a new one each time, build folder/wine-installer.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import make_packages

SOURCE = BUILD = ""
EPOCH = 1700000000
FOLDER = "drive_c/Station/BorvanUSB"
CLASSES = r"HKEY_LOCAL_MACHINE\Software\Classes\CLSID"
ENVIRONMENT = r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Session Manager\Environment"
PRODUCTS = r"HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Uninstall"
CAMERA = {"path": r"\\?\usb#vid_1234&pid_0001&mi_00#6&1a2b3c4d&0&0000", "name": "Installed camera"}
# Files of Wine's own that come and go.
NOT_OURS = re.compile(r"drive_c/(windows/(temp|Installer)(/|$)|users/(?!.*Start Menu/)).*")


class InstallerTest(unittest.TestCase):
    """One life of the product on a machine, in steps that build on each other."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="installer-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        version = make_packages.project_version(pathlib.Path(SOURCE))
        major, minor, patch = version.split(".")
        cls.version, cls.higher = version, f"{major}.{minor}.{int(patch) + 1}"
        for name in (cls.version, cls.higher):
            make_packages.make(pathlib.Path(BUILD), cls.folder, name, EPOCH, with_symbols=False)
        cls.prefix = pathlib.Path(BUILD) / "wine-installer"
        shutil.rmtree(cls.prefix, ignore_errors=True)

    def wine(self, *command, code=0, **environment):
        """Runs a Windows program to its end."""
        run = subprocess.run([f"{SOURCE}/scripts/run_with_wine.sh", *map(str, command)], check=False, text=True,
                             cwd=self.folder, timeout=250, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT,
                             env={**os.environ, "WINEPREFIX": str(self.prefix), **environment})
        self.assertEqual(run.returncode, code, f"{command}: {run.stdout}")
        return run.stdout

    def msiexec(self, *arguments, code=0):
        """Runs the installer without a window."""
        self.wine("msiexec", *arguments, "/qn", code=code)

    def msi(self, version):
        """The package of a version, as msiexec finds it in the current folder."""
        return f"borvanusb-{version}-x64.msi"

    def files(self):
        """Every file and folder of the prefix but those that Wine makes by itself."""
        return {path.relative_to(self.prefix).as_posix() for path in self.prefix.glob("drive_c/**/*")
                if not NOT_OURS.match(path.relative_to(self.prefix).as_posix())}

    def registry(self):
        """The lines of the machine's registry below each key."""
        self.wine("regedit", "/E", "all.reg", "HKEY_LOCAL_MACHINE")
        text = (self.folder / "all.reg").read_text(encoding="utf-16").replace("\\\n", "")
        sections = (section.partition("]\n") for section in text.split("\n[")[1:])
        return {key: content.strip() for key, _, content in sections}

    def path_entry(self, registry):
        """The folders in PATH of all users. Wine leaves the separator when it removes one; Windows does not."""
        line = re.search(r'^"PATH"=(.*)', registry[ENVIRONMENT], re.MULTILINE)[1]
        if line.startswith("hex(2):"):
            digits = re.sub(r"[^0-9a-f]", "", line.removeprefix("hex(2):"))
            line = bytes.fromhex(digits).decode("utf-16-le").rstrip("\0")
        return [folder for folder in line.strip('"').replace("\\\\", "\\").split(";") if folder]

    def products(self, registry):
        """The versions of the installed products of this name."""
        return [re.search(r'^"DisplayVersion"="(.*)"', content, re.MULTILINE)[1]
                for key, content in registry.items()
                if key.startswith(PRODUCTS) and '"DisplayName"="BorvanUSB"' in content]

    def installed(self):
        """{place: bytes} of the installation folder."""
        root = self.prefix / FOLDER
        return {path.relative_to(root).as_posix(): path.read_bytes() for path in root.rglob("*") if path.is_file()}

    def register_camera(self):
        """Registers a camera with the installed program."""
        config = self.folder / "cameras.json"
        config.write_text(json.dumps({"cameras": [CAMERA]}), encoding="utf-8")
        file = "Z:" + str(config).replace("/", "\\")
        self.wine(self.prefix / FOLDER / "bin/virtual-camera.exe", "register", BORVAN_VIRTUAL_CAMERA=file)

    def cameras(self, registry):
        """The keys that name the virtual camera's DLL."""
        return [key for key, content in registry.items()
                if key.startswith(CLASSES) and "BorvanVirtualCamera.dll" in content]

    def check_installed(self, version, registry, before):
        """All of it is there, once."""
        self.assertEqual(self.products(registry), [version])
        self.assertEqual(self.path_entry(registry),
                         self.path_entry(before) + ["C:\\Station\\BorvanUSB\\bin\\"])
        menu = {path.name for path in self.prefix.glob("drive_c/**/Start Menu/**/BorvanUSB*.lnk")}
        self.assertEqual(menu, {"BorvanUSB console.lnk", "BorvanUSB documentation.lnk", "BorvanUSB first steps.lnk"})
        with make_packages.zipfile.ZipFile(self.folder / f"borvanusb-{version}-windows-x64.zip") as archive:
            wanted = {name.partition("/")[2]: archive.read(name) for name in archive.namelist()}
        del wanted["SHA256SUMS"]
        self.assertEqual(self.installed(), wanted)

    def test_a_life_from_installation_to_removal(self):
        self.wine("hostname")
        files, before = self.files(), self.registry()

        self.msiexec("/i", self.msi(self.version), "INSTALLDIR=C:\\Station\\BorvanUSB")
        after = self.registry()
        self.check_installed(self.version, after, before)
        found = self.wine("cmd", "/c", "borvanusb", "--version")  # by PATH
        self.assertEqual(found.strip(), f"borvanusb {self.version}")

        # Repair: a file is lost, another is damaged.
        (self.prefix / FOLDER / "include/borvan_usb.h").unlink()
        (self.prefix / FOLDER / "share/samples/sensor-16-8.txt").write_text("damaged", encoding="utf-8")
        self.msiexec("/i", self.msi(self.version), "REINSTALL=ALL", "REINSTALLMODE=amus")
        self.check_installed(self.version, self.registry(), before)

        # Upgrade: one product, in the folder of the former one, without its cameras.
        self.register_camera()
        self.assertEqual(len(self.cameras(self.registry())), 1)
        self.msiexec("/i", self.msi(self.higher))
        after = self.registry()
        self.check_installed(self.higher, after, before)
        self.assertEqual(self.cameras(after), [])

        # Downgrade: refused, and nothing changes.
        self.msiexec("/i", self.msi(self.version), code=1603 & 0xFF)
        self.check_installed(self.higher, self.registry(), before)

        # Removal leaves what the user made, and nothing else.
        self.register_camera()
        own = self.prefix / FOLDER / "share/samples/my-own-list.txt"
        own.write_text("mine", encoding="utf-8")
        self.msiexec("/x", self.msi(self.higher))
        after = self.registry()
        self.assertEqual(self.cameras(after), [])
        self.assertEqual(self.installed(), {"share/samples/my-own-list.txt": b"mine"})
        shutil.rmtree(self.prefix / "drive_c/Station")
        self.assertEqual(self.files() - files, set())
        self.assertEqual({key for key in set(after) - set(before) if "orvan" in key + after[key]}, set())
        self.assertEqual({key for key in before if after.get(key) != before[key] and "orvan" in after[key]}, set())
        self.assertEqual(self.path_entry(after), self.path_entry(before))

    def test_b_a_single_feature_can_be_installed(self):
        self.msiexec("/i", self.msi(self.version), "INSTALLDIR=C:\\Station\\BorvanUSB", "ADDLOCAL=Tool")
        self.assertEqual({name for name in self.installed() if name.startswith(("bin/", "include/", "lib/"))},
                         {"bin/borvanusb.exe", "bin/BorvanUSB_x64.dll"})
        self.msiexec("/x", self.msi(self.version))
        self.assertEqual(self.installed(), {})


def main():
    """Takes the three arguments and runs the tests."""
    global SOURCE, BUILD  # pylint: disable=global-statement
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    SOURCE, BUILD = sys.argv[2], sys.argv[3]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)


if __name__ == "__main__":
    main()
