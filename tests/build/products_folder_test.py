#!/usr/bin/env python3
"""Checks that the products' folder holds what is handed out and nothing else.

Usage: products_folder_test.py FOLDER
"""
import pathlib
import sys

PRODUCTS = {"BorvanUSB_x64.dll", "BorvanVirtualCamera.dll", "borvanusb-stop.exe", "borvanusb.exe",
            "borvanusb_select.dll", "virtual-camera.exe"}


def main():
    """Prints what is missing and what does not belong there."""
    folder = pathlib.Path(sys.argv[1])
    wanted = PRODUCTS | {name + ".debug" for name in PRODUCTS}
    found = {path.name for path in folder.iterdir()}
    for name in sorted(wanted - found):
        print(f"{folder / name} is missing")
    for name in sorted(found - wanted):
        print(f"{folder / name} is no product: remove it, or build it into another folder")
    return 0 if found == wanted else 1


if __name__ == "__main__":
    sys.exit(main())
