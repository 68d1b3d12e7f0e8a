"""The rules for check_structure.py: allowed includes, the length of files and functions, unique type names.

All rules are in this file. Current exceptions are in structure_exceptions.txt.
"""

# The folders of our sources.
OUR_FOLDERS = ("include", "src", "virtual_camera", "tools", "examples", "bindings", "tests",
               "bench", "fuzz", "cmake", "packaging", "scripts")

# The folders in which an include with quotation marks is searched, after the file's own folder. The folder of
# the file's product is searched first.
INCLUDE_ROOTS = ("include", "src", "tools/borvanusb", "virtual_camera", "examples", "bindings/cpp",
                 "tests", "bench", "fuzz", "")

# A room is a folder with sources. Its name is its path, without "tools/" for the tool. It may include its own
# files and those of the rooms listed here; "x/*" stands for every room below x. Rooms that are not listed are
# not allowed. Tests may include everything and are not listed.
ALLOWED = {
    "include": [],

    # The library: `base` is the lowest layer. No room may include `api`, the layer of the exports.
    "src/base": [],
    "src/device": ["include", "src/base"],
    "src/protocol": ["include", "src/base", "src/device"],
    "src/files": ["include", "src/base"],
    "src/jobs": ["include", "src/base", "src/device", "src/files"],
    "src/api": ["include", "src/base", "src/device", "src/jobs", "src/protocol"],

    # The tool only shares the public header with the library, and loads the library like any other host.
    "borvanusb/base": [],
    "borvanusb/camera": ["borvanusb/base"],
    "borvanusb/output": ["borvanusb/base"],
    "borvanusb/command": ["include", "borvanusb/base", "borvanusb/camera", "borvanusb/output"],
    "borvanusb/registers": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                            "borvanusb/output", "borvanusb/profile", "borvanusb/names"],
    # The reader is a pure function; only the command in check.cpp needs command, camera and output.
    "borvanusb/maps": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                       "borvanusb/output"],
    # Data about a kind of camera module, and the choice of a camera's profile.
    "borvanusb/profile": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                          "borvanusb/output", "borvanusb/maps"],
    # Finds, reads and writes registers and fields by the names of a profile.
    "borvanusb/names": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                        "borvanusb/output", "borvanusb/maps", "borvanusb/profile"],
    "borvanusb/i2c": ["include", "borvanusb/base", "borvanusb/camera", "borvanusb/command",
                      "borvanusb/output", "borvanusb/registers", "borvanusb/profile",
                      "borvanusb/names"],
    # Image files as values.
    "borvanusb/images": ["borvanusb/base"],
    # Changes of the flash, without a command line. Remarks and progress bars use the interfaces of output.
    "borvanusb/flash/engine": ["borvanusb/base", "borvanusb/camera", "borvanusb/output",
                               "borvanusb/images"],
    "borvanusb/flash": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                        "borvanusb/output", "borvanusb/flash/engine", "borvanusb/profile",
                        "borvanusb/images"],
    "borvanusb/station": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                          "borvanusb/output", "borvanusb/registers", "borvanusb/i2c",
                          "borvanusb/flash/engine", "borvanusb/profile", "borvanusb/names"],
    # The page in the browser. It runs command lines and does not access cameras.
    "borvanusb/workbench": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                            "borvanusb/output", "borvanusb/profile"],
    # The commands for profiles. One of them queries a camera like `info` and `i2c scan`.
    "borvanusb/profile_commands": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                                   "borvanusb/output", "borvanusb/maps", "borvanusb/profile",
                                   "borvanusb/names", "borvanusb/registers", "borvanusb/i2c",
                                   "borvanusb/station"],
    "borvanusb/dll": ["include", "borvanusb/base", "borvanusb/camera"],
    "borvanusb/windows": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                          "borvanusb/output", "borvanusb/dll", "borvanusb/workbench"],
    # main.cpp
    "borvanusb": ["borvanusb/base", "borvanusb/command", "borvanusb/dll", "borvanusb/windows"],

    # The simulated chip depends neither on the library nor on Windows.
    "virtual_camera/core": [],
    "virtual_camera/com": ["virtual_camera/core"],
    "virtual_camera/control": ["virtual_camera/core", "virtual_camera/com"],

    # Examples only use what a host can use.
    "examples/*": ["include"],

    # The same applies to the bindings.
    "bindings/*": ["include"],

    "bench": ["include", "src/*", "tests/support", "virtual_camera/core", "borvanusb/base", "borvanusb/maps"],
    "fuzz": ["include", "src/*", "borvanusb/*", "virtual_camera/core", "tests/meaning",
             "tests/support", "fuzz/support"],
    "fuzz/support": ["include", "src/*", "borvanusb/*", "virtual_camera/core", "tests/meaning",
                     "tests/support"],
}
# Rooms that need no line, because they contain no part of a product.
FREE = ("tests", "tests/*", "cmake", "packaging", "packaging/*", "scripts")

# The folders whose files are linked into one program. Type names must be unique in each.
PRODUCTS = ("src", "tools/borvanusb", "virtual_camera")

LONGEST_FILE = 400
# The public header is one file on purpose.
LONGEST_FILES = {"include/borvan_usb.h": 500}
LONGEST_FUNCTION = 60
