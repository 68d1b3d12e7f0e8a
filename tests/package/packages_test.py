#!/usr/bin/env python3
"""Looks into the packages: two runs in two folders give the same bytes, nothing is missing, all notices are there.

Usage: packages_test.py CMAKE SOURCE_FOLDER BUILD_FOLDER
BUILD_FOLDER is the windows preset's. scripts/package.sh --twice compares two whole builds, which takes longer.
"""
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

import make_packages
import notices

SOURCE = BUILD = ""
EPOCH = 1700000000
# The ways by which the text of a package's terms is known.
TERMS = {
    "libfmt-dev": "Victor Zverovich",
    "nlohmann-json3-dev": "Niels Lohmann",
    "libcli11-dev": "University of Cincinnati",
    "libboost1.81-dev": "Vinnie Falco",
    "librapidxml-dev": "Marcin Kalicinski",
    "libjs-lunr": "Oliver Nightingale",
    "gcc-mingw-w64-base": "GCC RUNTIME LIBRARY EXCEPTION",
    "mingw-w64-x86-64-dev": "the mingw-w64 project",
    "mingw-w64-common": "the mingw-w64 project",
}


def packages_of(files):
    """The Debian packages that these files of the system belong to."""
    listing = subprocess.run(["dpkg", "-S", *sorted(files)], check=False, text=True, stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL).stdout
    return {line.split(":")[0] for line in listing.splitlines()}


def copyright_of(package):
    """The file with a package's terms, links resolved: several packages share one."""
    return (notices.DOCUMENTS / package / "copyright").resolve()


class PackagesTest(unittest.TestCase):
    """The archive, the installer and what goes with them."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="packages-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.version = make_packages.project_version(pathlib.Path(SOURCE))
        make_packages.make(pathlib.Path(BUILD), cls.folder / "one", cls.version, EPOCH)
        # Another folder, another user's file modes, another time zone.
        mask, zone = os.umask(0o077), os.environ.get("TZ")
        os.environ["TZ"] = "Asia/Tokyo"
        try:
            make_packages.make(pathlib.Path(BUILD), cls.folder / "a longer name", cls.version, EPOCH,
                               with_symbols=False)
        finally:
            os.umask(mask)
            os.environ.pop("TZ")
            if zone is not None:
                os.environ["TZ"] = zone
        name = cls.folder / f"one/borvanusb-{cls.version}-windows-x64.zip"
        cls.archive = zipfile.ZipFile(name)  # pylint: disable=consider-using-with
        cls.addClassCleanup(cls.archive.close)

    def content(self, name):
        """A file's bytes in the archive."""
        return self.archive.read(f"borvanusb-{self.version}-windows-x64/{name}")

    def test_the_same_build_gives_the_same_bytes(self):
        for name in (f"borvanusb-{self.version}-windows-x64.zip", f"borvanusb-{self.version}-x64.msi"):
            self.assertEqual((self.folder / "one" / name).read_bytes(),
                             (self.folder / "a longer name" / name).read_bytes(), name)

    def test_the_archive_holds_every_kind_of_file(self):
        top = f"borvanusb-{self.version}-windows-x64/"
        names = self.archive.namelist()
        self.assertEqual(names, sorted(names))
        self.assertEqual([name for name in names if not name.startswith(top)], [])
        for name in ("README.txt", "THIRD-PARTY-NOTICES.txt", "SHA256SUMS", "bin/BorvanUSB_x64.dll",
                     "bin/borvanusb.exe", "bin/BorvanVirtualCamera.dll", "bin/virtual-camera.exe",
                     "lib/BorvanUSB_x64.lib", "lib/libBorvanUSB_x64.dll.a", "include/borvan_usb.h",
                     "lib/cmake/BorvanUSB/BorvanUSBConfig.cmake", "lib/pkgconfig/borvan_usb.pc",
                     "share/doc/borvanusb/install.md", "share/doc/borvanusb/CHANGELOG.md",
                     "share/examples/program_flash/program_flash.c", "share/samples/sensor-16-8.txt",
                     "share/schemas/list.schema.json", "share/virtual-camera/demo.json",
                     "share/doc/borvanusb/html/index.html", "share/doc/borvanusb/html/lunr.min.js",
                     "include/borvan_usb.hpp", "bin/borvanusb_select.dll",
                     f"share/bindings/borvanusb-{self.version}-py3-none-win_amd64.whl",
                     f"share/bindings/borvanusb-{self.version}.tgz",
                     f"share/bindings/BorvanUsb.{self.version}.nupkg"):
            self.assertIn(top + name, names)
        self.assertEqual([name for name in names if name.endswith(".debug")], [])
        with zipfile.ZipFile(self.folder / f"one/borvanusb-{self.version}-windows-x64-symbols.zip") as symbols:
            self.assertEqual([name.rpartition("/")[2] for name in symbols.namelist()],
                             ["BorvanUSB_x64.dll.debug", "BorvanVirtualCamera.dll.debug", "borvanusb-stop.exe.debug",
                              "borvanusb.exe.debug", "borvanusb_select.dll.debug", "virtual-camera.exe.debug"])

    def test_the_sums_are_those_of_the_files(self):
        rows = dict(reversed(line.split("  ")) for line in self.content("SHA256SUMS").decode().splitlines())
        for name, digest in rows.items():
            self.assertEqual(hashlib.sha256(self.content(name)).hexdigest(), digest, name)
        self.assertEqual(len(rows), len(self.archive.namelist()) - 1)
        for line in (self.folder / "one/SHA256SUMS").read_text(encoding="utf-8").splitlines():
            digest, name = line.split("  ")
            self.assertEqual(hashlib.sha256((self.folder / "one" / name).read_bytes()).hexdigest(), digest)

    def test_the_readme_names_what_is_there_and_nothing_else(self):
        text = self.content("README.txt").decode("ascii")
        self.assertIn(f"BorvanUSB {self.version} ", text)
        self.assertEqual(text.count("\n"), text.count("\r\n"))
        self.assertIn("No licence has been chosen", text)
        names = [name.partition("/")[2] for name in self.archive.namelist()]
        named = set(re.findall(r"[\w.-]+\.(?:exe|dll|md|json|txt)|[\w\\-]+\\(?=\s)", text))
        self.assertGreaterEqual(len(named), 20)
        for name in named:
            place = name.replace("\\", "/")
            self.assertTrue(any(place in other for other in names), name)

    def test_links_of_the_documents_lead_to_files_of_the_archive(self):
        names = {name.partition("/")[2] for name in self.archive.namelist()}
        for name in sorted(name for name in names if name.endswith(".md")):
            for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", self.content(name).decode("utf-8")):
                target = os.path.normpath(os.path.join(os.path.dirname(name), link))
                self.assertIn(target, names, f"{name}: link to {link}")

    def test_the_terms_of_everything_that_is_linked_in_are_there(self):
        text = self.content("THIRD-PARTY-NOTICES.txt").decode("utf-8")
        for package, words in TERMS.items():
            section = text.split(f"(Debian package {package})", 1)[1].split("=" * 100)[1]
            self.assertIn(words.upper(), section.upper(), package)
        # What the products were made from: every header that a compiler read, every library that the
        # linker took.
        headers = subprocess.run(["ninja", "-C", BUILD, "-t", "deps"], check=True, text=True,
                                 stdout=subprocess.PIPE).stdout
        products = re.findall(r"^(?:src|tools|virtual_camera)/\S+: #deps.*\n((?:    .*\n)+)", headers, re.MULTILINE)
        read = {os.path.realpath(os.path.join(BUILD, line.strip())) for block in products
                for line in block.splitlines()}
        trace = subprocess.run(
            ["x86_64-w64-mingw32-g++-posix", "-x", "c++", "-", "-static", "-Wl,--trace", "-o",
             self.folder / "trace.exe"], check=True, text=True, stdout=subprocess.PIPE, cwd=self.folder,
            input="#include <iostream>\n#include <thread>\nint main() { std::thread([] { std::cout << 1; }).join(); }\n"
        ).stdout
        linked = {os.path.realpath(line.strip().strip("()").split("(")[0]) for line in trace.splitlines()}
        taken = packages_of({file for file in read | linked if file.startswith("/usr/")})
        self.assertTrue({"libfmt-dev", "nlohmann-json3-dev", "libcli11-dev"} <= taken, taken)
        covered = {copyright_of(package) for package, _, _ in notices.LINKED}
        self.assertEqual({package for package in taken if copyright_of(package) not in covered}, set())

    def test_a_package_without_terms_stops_the_packing(self):
        with self.assertRaisesRegex(notices.NoticeMissing, "nothing/copyright is missing or empty"):
            notices.gather((("nothing", "Nothing", "nowhere"),), self.folder)


def main():
    """Takes the three arguments and runs the tests."""
    global SOURCE, BUILD  # pylint: disable=global-statement
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    SOURCE, BUILD = sys.argv[2], sys.argv[3]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)


if __name__ == "__main__":
    main()
