"""What check_structure.py holds the tree to: who may include whom, how long files and functions
may be, where a type's name must be unique.

The rules stand here alone. What breaks one today is in structure_exceptions.txt.
"""

# The folders of our sources, and those among them that hold code of the products' own.
OUR_FOLDERS = ("include", "src", "virtual_camera", "tools", "examples", "bindings", "tests",
               "bench", "fuzz", "cmake", "packaging", "scripts")

# Where an include with quotation marks may start, after its own folder: the folder of the product
# that the file belongs to comes before the others.
INCLUDE_ROOTS = ("include", "src", "tools/borvanusb", "virtual_camera", "examples", "bindings/cpp",
                 "tests", "bench", "fuzz", "")

# A room is a folder with sources; its name is its path, without "tools/" for the tool. It may include
# its own files and those of the rooms named here; "x/*" stands for every room below x. A room that is
# in no line here may not exist. Tests may include everything and have no line.
ALLOWED = {
    "include": [],

    # The library: `base` lies below everything, nobody includes the exported layer `api`.
    "src/base": [],
    "src/device": ["include", "src/base"],
    "src/protocol": ["include", "src/base", "src/device"],
    "src/files": ["include", "src/base"],
    "src/jobs": ["include", "src/base", "src/device", "src/files"],
    "src/api": ["include", "src/base", "src/device", "src/jobs", "src/protocol"],

    # The tool shares nothing with the library but the public header, and loads it as any host.
    "borvanusb/base": [],
    "borvanusb/camera": ["borvanusb/base"],
    "borvanusb/output": ["borvanusb/base"],
    "borvanusb/command": ["include", "borvanusb/base", "borvanusb/camera", "borvanusb/output"],
    "borvanusb/registers": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                            "borvanusb/output", "borvanusb/profile", "borvanusb/names"],
    # The reader is text in, values out; command, camera and output are for the command check.cpp.
    "borvanusb/maps": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                       "borvanusb/output"],
    # What is known of a kind of camera module; which profile a camera has.
    "borvanusb/profile": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                          "borvanusb/output", "borvanusb/maps"],
    # Registers and fields by the names of a profile: finding, reading, writing.
    "borvanusb/names": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                        "borvanusb/output", "borvanusb/maps", "borvanusb/profile"],
    "borvanusb/i2c": ["include", "borvanusb/base", "borvanusb/camera", "borvanusb/command",
                      "borvanusb/output", "borvanusb/registers", "borvanusb/profile",
                      "borvanusb/names"],
    # Image files as values.
    "borvanusb/images": ["borvanusb/base"],
    # What is done to a flash, without a command line; its remarks and bars go through the interfaces
    # of output.
    "borvanusb/flash/engine": ["borvanusb/base", "borvanusb/camera", "borvanusb/output",
                               "borvanusb/images"],
    "borvanusb/flash": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                        "borvanusb/output", "borvanusb/flash/engine", "borvanusb/profile",
                        "borvanusb/images"],
    "borvanusb/station": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                          "borvanusb/output", "borvanusb/registers", "borvanusb/i2c",
                          "borvanusb/flash/engine", "borvanusb/profile", "borvanusb/names"],
    # The page in the browser: it runs command lines and knows no camera.
    "borvanusb/workbench": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                            "borvanusb/output", "borvanusb/profile"],
    # The commands on profiles themselves; one of them asks a camera as `info` and `i2c scan` do.
    "borvanusb/profile_commands": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                                   "borvanusb/output", "borvanusb/maps", "borvanusb/profile",
                                   "borvanusb/names", "borvanusb/registers", "borvanusb/i2c",
                                   "borvanusb/station"],
    "borvanusb/dll": ["include", "borvanusb/base", "borvanusb/camera"],
    "borvanusb/windows": ["borvanusb/base", "borvanusb/camera", "borvanusb/command",
                          "borvanusb/output", "borvanusb/dll", "borvanusb/workbench"],
    # main.cpp
    "borvanusb": ["borvanusb/base", "borvanusb/command", "borvanusb/dll", "borvanusb/windows"],

    # The simulated chip knows neither the library nor Windows.
    "virtual_camera/core": [],
    "virtual_camera/com": ["virtual_camera/core"],
    "virtual_camera/control": ["virtual_camera/core", "virtual_camera/com"],

    # Examples see what a host sees.
    "examples/*": ["include"],

    # So do the bindings to other languages.
    "bindings/*": ["include"],

    "bench": ["include", "src/*", "tests/support", "virtual_camera/core", "borvanusb/base", "borvanusb/maps"],
    "fuzz": ["include", "src/*", "borvanusb/*", "virtual_camera/core", "tests/meaning",
             "tests/support", "fuzz/support"],
    "fuzz/support": ["include", "src/*", "borvanusb/*", "virtual_camera/core", "tests/meaning",
                     "tests/support"],
}
# Rooms without a line of their own: they hold no part of a product.
FREE = ("tests", "tests/*", "cmake", "packaging", "packaging/*", "scripts")

# The folders of what is linked into one program: there no two types have the same name.
PRODUCTS = ("src", "tools/borvanusb", "virtual_camera")

LONGEST_FILE = 400
# The public header is one file on purpose.
LONGEST_FILES = {"include/borvan_usb.h": 500}
LONGEST_FUNCTION = 60
