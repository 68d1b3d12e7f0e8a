#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets to corpus/TARGET/NAME. The name says what the seed tests.

The format of a seed is defined by the source of its target. The contents are in the modules of the folder seeds.
Usage: make_corpus.py
"""
# pylint: disable=missing-function-docstring
import pathlib
import sys

sys.dont_write_bytecode = True
# pylint: disable=wrong-import-position
from seeds import device, hosts, images, lists, maps, profiles, texts, virtual_camera, workbench
from seeds.parts import HEADER

CORPUS = pathlib.Path(__file__).resolve().parent / "corpus"

SEEDS = {
    "list_file": lists.LIST_FILES,
    "register_plan": {name: HEADER + content for name, content in lists.REGISTER_LISTS.items()
                      if name != "no-header"} | {"no-header": lists.REGISTER_LISTS["no-header"]},
    "i2c_plan": lists.with_option(lists.I2C_LISTS),
    "blocks": device.blocks(),
    "replies": device.replies(),
    "flash_image": device.flash_images(),
    "dump_lines": device.dumps(),
    "number_text": texts.NUMBERS,
    "enumeration": hosts.enumerations(),
    "host": hosts.hosts(),
    "camera_configuration": virtual_camera.configurations(),
    "camera_transfers": virtual_camera.transfers(),
    "tool_numbers": texts.TOOL_NUMBERS,
    "command_line": texts.COMMAND_LINES,
    "script_line": texts.SCRIPT_LINES,
    "image_format": texts.IMAGE_FILES,
    "intel_hex": images.HEX_FILES,
    "srecord": images.SRECORD_FILES,
    "elf_image": images.elf_files(),
    "tool_lists": lists.TOOL_LISTS,
    "register_map": maps.MAPS,
    "workbench_request": workbench.REQUESTS,
    "camera_profile": profiles.PROFILES,
}


def main():
    for target, seeds in SEEDS.items():
        folder = CORPUS / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, content in seeds.items():
            (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
