#!/usr/bin/env python3
"""Compiles the binding and makes its NuGet package. Equal sources and products give equal bytes.

Usage: pack.py PRODUCTS FOLDER: the folder of the Windows build's products, and where the package goes.
The SDK is kept in build/csharp. Prints the name of the package.
"""
import fcntl
import hashlib
import pathlib
import re
import sys
import zipfile

import sdk

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
PRODUCTS = ("BorvanUSB_x64.dll", "borvanusb_select.dll", "borvanusb.exe", "borvanusb-stop.exe")
EARLIEST = (1980, 1, 1, 0, 0, 0)  # that a ZIP file can hold

NUSPEC = """<?xml version="1.0" encoding="utf-8"?>
<package xmlns="http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd">
  <metadata>
    <id>BorvanUsb</id>
    <version>{version}</version>
    <authors>BorvanUSB</authors>
    <description>Access to the inside of a USB camera: chip registers, I2C devices and SPI flash</description>
    <readme>README.md</readme>
    <dependencies>
      <group targetFramework=".NETStandard2.0" />
      <group targetFramework=".NETFramework4.6.1" />
    </dependencies>
  </metadata>
</package>
"""
CONTENT_TYPES = """<?xml version="1.0" encoding="utf-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
  <Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml" />
  <Default Extension="nuspec" ContentType="application/octet" />
  <Default Extension="dll" ContentType="application/octet" />
  <Default Extension="exe" ContentType="application/octet" />
  <Default Extension="xml" ContentType="application/octet" />
  <Default Extension="targets" ContentType="application/octet" />
  <Default Extension="md" ContentType="application/octet" />
</Types>
"""
RELATIONSHIPS = """<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" Target="/BorvanUsb.nuspec" Id="R1" />
</Relationships>
"""


def version():
    """The version of the headers, and so of the project."""
    header = (ROOT / "include/borvan_usb_version.h").read_text(encoding="utf-8")
    return re.search(r'VERSION_TEXT "([^"]+)"', header).group(1)


def contents(assembly, products):
    """{name in the package: bytes}"""
    # The guide, without its links to other files of the source tree.
    guide = (ROOT / "docs/bindings/csharp.md").read_text(encoding="utf-8")
    guide = re.sub(r"\[([^\]]*)\]\(\.\.[^)]*\)", r"\1", guide)
    targets = (HERE / "BorvanUsb.targets").read_bytes()
    files = {
        "BorvanUsb.nuspec": NUSPEC.format(version=version()).encode("utf-8"),
        "[Content_Types].xml": CONTENT_TYPES.encode("utf-8"),
        "_rels/.rels": RELATIONSHIPS.encode("utf-8"),
        "README.md": guide.encode("utf-8"),
        "build/net461/BorvanUsb.targets": targets,
    }
    for path in (assembly, assembly.with_suffix(".xml")):
        files[f"lib/netstandard2.0/{path.name}"] = path.read_bytes()
    for name in PRODUCTS:
        if not (products / name).is_file():
            sys.exit(f"pack.py: {products / name} is missing\n"
                     "Build the Windows preset first: scripts/build.sh windows")
        files[f"runtimes/win-x64/native/{name}"] = (products / name).read_bytes()
    return files


def compiled(folder):
    """The assembly, compiled unless the one in `folder` is of the same sources; then no SDK is needed."""
    sources = sorted((HERE / "source").glob("*.cs"))
    digest = hashlib.sha256(b"\0".join(path.read_bytes() for path in [*sources, HERE / "sdk.py"])).hexdigest()
    assembly = folder / "assembly" / "BorvanUsb.dll"
    stamp = folder / "assembly" / "sources.sha256"
    folder.mkdir(parents=True, exist_ok=True)
    with open(folder / "assembly.lock", "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not (stamp.is_file() and assembly.is_file() and stamp.read_text(encoding="utf-8") == digest):
            sdk.Sdk(folder).compile_binding(assembly.parent)
            stamp.write_text(digest, encoding="utf-8")
    return assembly


def pack(assembly, products, folder):
    """Packs; returns the package's path."""
    folder.mkdir(parents=True, exist_ok=True)
    package = folder / f"BorvanUsb.{version()}.nupkg"
    with zipfile.ZipFile(package, "w") as archive:
        for name, content in sorted(contents(assembly, products).items()):
            entry = zipfile.ZipInfo(name, EARLIEST)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0
            archive.writestr(entry, content)
    return package


def main():
    """Reads the arguments and prints the name of the package."""
    if len(sys.argv) != 3 or sys.argv[1] in ("-h", "--help"):
        sys.exit(__doc__)
    print(pack(compiled(ROOT / "build" / "csharp"), pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))


if __name__ == "__main__":
    main()
