#!/usr/bin/env python3
"""Makes the wheel of the package with the DLLs and the tool inside. It needs no network, and the same
files give the same wheel.

Usage: build_wheel.py --bin FOLDER [--out FOLDER]
--bin is the folder with BorvanUSB_x64.dll, borvanusb_select.dll and borvanusb.exe.
Prints the name of the wheel.
"""
import argparse
import base64
import hashlib
import pathlib
import re
import sys
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
PRODUCTS = ("BorvanUSB_x64.dll", "borvanusb.exe", "borvanusb_select.dll")
EARLIEST = (1980, 1, 1, 0, 0, 0)  # that a ZIP file can hold


def version():
    """The version of the headers, and so of the project."""
    header = (ROOT / "include/borvan_usb_version.h").read_text(encoding="utf-8")
    return re.search(r'VERSION_TEXT "([^"]+)"', header).group(1)


def record_line(name, content):
    """The line of RECORD for a file."""
    digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode("ascii")
    return f"{name},sha256={digest},{len(content)}\n"


def contents(products):
    """{name in the wheel: bytes} of all files but RECORD, and the name of the folder of metadata."""
    info = f"borvanusb-{version()}.dist-info"
    files = {}
    for path in sorted((HERE / "borvanusb").iterdir()):
        if path.suffix == ".py" or path.name == "py.typed":
            files[f"borvanusb/{path.name}"] = path.read_bytes()
    for name in PRODUCTS:
        if not (products / name).is_file():
            sys.exit(f"build_wheel.py: --bin: {products / name} is missing: build the Windows preset first")
        files[f"borvanusb/{name}"] = (products / name).read_bytes()
    files[f"{info}/METADATA"] = (
        f"Metadata-Version: 2.1\nName: borvanusb\nVersion: {version()}\n"
        "Summary: Registers, sensors and flash of a USB camera\nRequires-Python: >=3.8\n").encode("ascii")
    files[f"{info}/WHEEL"] = (b"Wheel-Version: 1.0\nGenerator: build_wheel.py\nRoot-Is-Purelib: false\n"
                              b"Tag: py3-none-win_amd64\n")
    return files, info


def build(products, out):
    """Writes the wheel and returns its path."""
    files, info = contents(products)
    record = "".join(record_line(name, content) for name, content in sorted(files.items()))
    files[f"{info}/RECORD"] = f"{record}{info}/RECORD,,\n".encode("ascii")
    wheel = out / f"borvanusb-{version()}-py3-none-win_amd64.whl"
    with zipfile.ZipFile(wheel, "w") as archive:
        for name, content in sorted(files.items()):
            entry = zipfile.ZipInfo(name, EARLIEST)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o644 << 16
            archive.writestr(entry, content)
    return wheel


def main():
    """Reads the arguments and prints the name of the wheel."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, required=True)
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path("."))
    arguments = parser.parse_args()
    arguments.out.mkdir(parents=True, exist_ok=True)
    print(build(arguments.bin, arguments.out))


if __name__ == "__main__":
    main()
