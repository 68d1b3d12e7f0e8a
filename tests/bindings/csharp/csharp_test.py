#!/usr/bin/env python3
"""The binding for .NET: its NuGet package, whose files test programs use under Wine.

BORVAN_CSHARP_FOLDER names the folder; the .NET SDK is fetched into it once.
"""
import os
import pathlib
import shutil
import sys
import zipfile
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent.parent
BINDING = ROOT / "bindings" / "csharp"
sys.path[:0] = [str(HERE.parent), str(ROOT / "tests" / "tool_program"), str(BINDING)]
import pack  # pylint: disable=wrong-import-position
import page_program  # pylint: disable=wrong-import-position
import promises  # pylint: disable=wrong-import-position
import sdk  # pylint: disable=wrong-import-position
import station  # pylint: disable=wrong-import-position

FOLDER = pathlib.Path(os.environ.get("BORVAN_CSHARP_FOLDER", ROOT / "build" / "windows" / "bindings-csharp"))
PAGE = ROOT / "docs" / "bindings" / "csharp.md"
PROGRAMS = FOLDER / "programs"
NATIVE = "runtimes/win-x64/native/"
SDK = sdk.Sdk(FOLDER)


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
    for name, text in zip(("program", "registers"), page_program.programs(PAGE.read_text(encoding="utf-8"), "csharp")):
        source = FOLDER / f"{name}.cs"
        source.write_text(text, encoding="utf-8")
        SDK.compile_program(PROGRAMS / f"{name}.dll", [source], assembly)


class CSharpTest(promises.PromisesTest):
    """The promises, kept by .NET programs; and the package itself."""
    PASSED = r"(?m)^\d+ checks, 0 failed$"
    ADDRESS = "{:x}"

    def program_command(self, name):
        return [SDK.dotnet, station.windows_name(PROGRAMS / f"{name}.dll")]

    def checks_command(self, checks):
        return [*self.program_command("CSharpTest"), checks]

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


if __name__ == "__main__":
    station.main()
