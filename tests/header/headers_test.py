#!/usr/bin/env python3
"""The public headers compile alone, without a warning, in each version of C and C++ and for each
ABI; Doxygen finds a description of every name in them.

Usage: headers_test.py
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(ROOT / "docs/site"))
import reference  # pylint: disable=wrong-import-position
INCLUDE = ROOT / "include"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wsign-conversion", "-Wshadow",
            "-Wredundant-decls", "-Werror"]
# The few declarations of the Windows SDK that the headers need, for the ABI of Microsoft's compiler.
SDK = str(ROOT / "tests/hosts/microsoft/include")
MICROSOFT = ["clang-14", "--target=x86_64-pc-windows-msvc", "-nostdlibinc", "-isystem", SDK]
MINGW = ["x86_64-w64-mingw32-gcc"]
COMPILERS = (["gcc"], ["clang-14"], MINGW, MICROSOFT)
# As Microsoft's own compiler is called.
CL = ["clang-14", "--driver-mode=cl", "--target=x86_64-pc-windows-msvc", "/W4", "/WX", "-imsvc", SDK,
      "/Zs", f"/I{INCLUDE}"]


def complaints(command):
    """What a compiler says about a source; empty when it is content."""
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    return "" if run.returncode == 0 else f"{' '.join(command)}\n{run.stdout}{run.stderr}"


class HeadersTest(unittest.TestCase):
    """include/*.h."""
    maxDiff = None

    def compile(self, compiler, language, standard, source, *more):
        """Checks one source without writing anything."""
        self.assertEqual("", complaints([*compiler, "-x", language, *WARNINGS, f"-std={standard}", *more,
                                         "-fsyntax-only", f"-I{INCLUDE}", str(HERE / source)]))

    def test_each_version_of_c(self):
        for compiler in COMPILERS:
            for standard in ("c89", "c99", "c11", "c17"):
                with self.subTest(compiler=compiler, standard=standard):
                    self.compile(compiler, "c", standard, "alone_in_c.c")

    def test_each_version_of_cpp(self):
        for compiler in COMPILERS:
            for standard in ("c++11", "c++14", "c++17", "c++20"):
                with self.subTest(compiler=compiler, standard=standard):
                    self.compile(compiler, "c++", standard, "alone_in_cpp.cpp", "-Wold-style-cast")

    def test_as_microsofts_compiler_is_called(self):
        self.assertEqual("", complaints([*CL, "/TC", "--", str(HERE / "alone_in_c.c")]))
        self.assertEqual("", complaints([*CL, "/TP", "/std:c++20", "--", str(HERE / "alone_in_cpp.cpp")]))

    def test_library_version(self):
        for compiler in (MINGW, MICROSOFT):
            for language, standard in (("c", "c89"), ("c", "c11"), ("c++", "c++11"), ("c++", "c++20")):
                with self.subTest(compiler=compiler, standard=standard):
                    self.compile(compiler, language, standard, "version_alone.c",
                                 *(["-Wold-style-cast"] if language == "c++" else []))

    def test_each_header_includes_what_it_needs(self):
        for header in sorted(INCLUDE.glob("borvan_usb*.h")):
            with self.subTest(header=header.name):
                run = subprocess.run(["gcc", "-x", "c", "-std=c11", *WARNINGS, "-fsyntax-only", f"-I{INCLUDE}",
                                      "-"], input=f'#include "{header.name}"\ntypedef int Something;\n',
                                     capture_output=True, text=True, check=False)
                self.assertEqual("", run.stderr)

    def test_each_name_is_described(self):
        with tempfile.TemporaryDirectory() as folder:
            run = subprocess.run(["doxygen", "-"], input=reference.SETTINGS.format(include=INCLUDE, output=folder),
                                 capture_output=True, text=True, check=False)
            self.assertEqual("", run.stderr)
            self.assertEqual(0, run.returncode)
            pages = [xml.etree.ElementTree.parse(page) for page in pathlib.Path(folder, "xml").glob("*.xml")]
        functions = {name: member for page in pages for member in page.iter("memberdef")
                     if member.get("kind") == "function" and (name := member.findtext("name"))}
        source = (ROOT / "src/api/borvan_usb.def").read_text(encoding="utf-8")
        exports = set(re.findall(r"^\s+(\w+)\s+@\d+$", source, re.MULTILINE))
        self.assertEqual(21, len(exports))
        self.assertEqual(set(), exports - set(functions))
        self.assertLess(30, len(functions))
        for name, member in functions.items():
            with self.subTest(function=name):
                wanted = {"".join(param.itertext()) for param in member.findall("param/declname")}
                described = {"".join(param.itertext()) for param in member.iter("parametername")}
                self.assertEqual(wanted, described)
                returned = "".join(member.find("type").itertext()).replace("static", "").strip()
                self.assertEqual(returned not in ("", "void", "inline void"),
                                 any(section.get("kind") == "return"
                                     for section in member.iter("simplesect")), returned)


if __name__ == "__main__":
    unittest.main()
