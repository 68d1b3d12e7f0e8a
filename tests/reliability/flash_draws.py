"""What is drawn by chance for flash_sequences.py: modules and images, commands and what disturbs them."""
import dataclasses
import json
import pathlib
import re

import station
from flash_model import FLASH, Module
from station import SECTOR

FOLDERS = ("a", "b")
IMAGE_NAME = re.compile(r"image\d\.bin")
# A call that hangs: longer than the tool waits; and until the process that made it is killed.
TIMEOUT_SECONDS = 1.5
STALL_MS = 4000
KILL_MS = 60000
REFUSED = "0x8007001f"
FOREVER = 60  # transfers that are refused where a camera refuses all from one on
# Of what goes wrong, in percent. "kill" ends the process right behind a transfer, "kill between" and
# "stop" (Ctrl-C) some time later.
KINDS = {"kill": 40, "kill between": 10, "unplug": 14, "refuse": 8, "refuse on": 12, "stall": 5,
         "stop": 7, "lie": 4}


@dataclasses.dataclass
class Command:
    """A command line, where it is started and what it names."""
    arguments: list
    folder: pathlib.Path
    address: int
    content: bytes
    verify: bool = True

    @property
    def may_be_asked(self):
        """Whether it has the option --journal."""
        return self.arguments[1] == "program"


@dataclasses.dataclass
class Cut:
    """What goes wrong at a transfer of a kind, counted from 1."""
    kind: str
    transfer: dict
    number: int
    seconds: float

    def __str__(self):
        return f"{self.kind} at {self.number} {self.transfer or ''}".rstrip()

    def faults(self):
        """As the virtual camera's configuration has it."""
        at = {**self.transfer, "at": self.number}
        if self.kind == "kill":
            return [{**at, "delay_ms": KILL_MS}]
        if self.kind == "stall":
            return [{**at, "delay_ms": STALL_MS}]
        if self.kind == "unplug":
            return [{**at, "unplug": {}}]
        if self.kind == "lie":
            return [{**at, "lie": True}]
        if self.kind == "refuse":
            return [{**at, "result": REFUSED}]
        if self.kind == "refuse on":
            return [{**at, "at": self.number + i, "result": REFUSED} for i in range(FOREVER)]
        return []

    @property
    def waits(self):
        """Whether somebody waits for the transfer, to end the process."""
        return self.kind.startswith(("kill", "stop"))

    def matches(self, line):
        """Whether a line of the trace is of such a transfer."""
        return all(f'"{key}":{json.dumps(value)}'.encode() in line
                   for key, value in self.transfer.items())


class Draws:
    """What comes of a seed, with its files in a folder."""

    def __init__(self, chance, folder, patches):
        self.chance = chance
        self.folder = folder
        self.patches = patches  # whether images clear bits alone
        self.modules = self.draw_modules()
        self.images = self.draw_images()

    def flash_of(self, module):
        """The file with a module's flash."""
        return self.folder / f"{module.name}.flash"

    def percent(self, chance):
        """Whether something of this likelihood happens."""
        return self.chance.random() * 100 < chance

    def draw_modules(self):
        """The modules, with their flash files."""
        firmware = bytearray(self.chance.randbytes(FLASH))
        if self.percent(30):
            blank = SECTOR * (2 + self.chance.randrange(12))
            firmware[blank:] = b"\xff" * (FLASH - blank)
        sibling = bytearray(firmware)
        for _ in range(3):
            place = self.chance.randrange(FLASH - 0x40)
            sibling[place:place + 0x40] = self.chance.randbytes(0x40)
        modules = [Module("A", firmware), Module("sibling", sibling),
                   Module("blank", b"\xff" * FLASH),
                   Module("foreign", self.chance.randbytes(FLASH))]
        for module in modules:
            self.flash_of(module).write_bytes(module.truth)
        return modules

    def draw_images(self):
        """Images that overlap: (file, address, bytes)."""
        for folder in FOLDERS:
            (self.folder / folder).mkdir()
        base = SECTOR * (1 + self.chance.randrange(8))
        images = []
        for number in range(self.chance.randint(2, 4)):
            size = self.chance.randint(1, 0x400 if self.percent(50) else 0x3800)
            content = bytearray(self.chance.randbytes(size))
            if self.percent(20):
                content = bytearray(b"\xff" * size)
            elif self.percent(30):
                blank = self.chance.randrange(size)
                content[blank:] = b"\xff" * (size - blank)
            address = base + self.chance.randrange(0x2800)
            if self.patches:
                address, content = self.draw_patch(address, content, images)
            images.append((f"image{number}.bin", address, bytes(content)))
            for folder in FOLDERS:
                (self.folder / folder / images[-1][0]).write_bytes(content)
        return images

    def draw_patch(self, address, content, images):
        """An image that clears bits in a few bytes alone, of the firmware or of the image before."""
        if images and self.percent(50):
            _, address, content = images[-1]
            content = bytearray(content)
        else:
            content = bytearray(self.modules[0].truth[address:address + len(content)])
        for _ in range(self.chance.randint(1, 20)):
            content[self.chance.randrange(len(content))] &= self.chance.randrange(256)
        return address, content

    def spelled(self, name, current):
        """A name of a file in folder a or b, for a program whose current folder this is."""
        folder = FOLDERS[0] if self.percent(60) else FOLDERS[1]
        path = self.chance.choice(
            [f"{folder}/{name}", f"{folder}/./{name}", f"b/../{folder}/{name}"])
        if self.percent(40):
            return station.windows_name(f"{self.folder}/{path}")
        path = path if current == self.folder else f"../{path}"
        return path.replace("/", "\\") if self.percent(50) else path

    def draw_command(self, module, backups, places):
        """A command for a module; `backups` may be written back at their `places`."""
        current = self.chance.choice([self.folder, self.folder, self.folder / "a", self.folder / "b"])
        kind = self.chance.randrange(100)
        if kind < 8:
            address = SECTOR * self.chance.randrange(14)
            size = SECTOR * self.chance.randint(1, 2)
            return Command(["flash", "erase", f"{address:#x}+{size}", "--yes",
                            *self.draw_backup("erased", current)], current, address, b"\xff" * size)
        if kind < 13:
            address = 0x1000 + self.chance.randrange(0x4000)
            before = self.flash_of(module).read_bytes()[address:address + 4]
            content = bytes(byte & self.chance.randrange(256) for byte in before)
            return Command(["flash", "word", hex(address), "0x" + content.hex(), "--yes",
                            *self.draw_backup("word", current)], current, address, content)
        if kind < 22 and backups:
            path = self.chance.choice(list(backups))
            address = places.get(path, 0x1000)
            return Command(["flash", "program", station.windows_name(path), "--address",
                            hex(address), "--force"], current, address, backups[path])
        name, address, content = self.chance.choice(self.images)
        backup = self.draw_backup("old", current)
        if "--no-backup" not in backup and self.percent(30):
            backup.append("--restore-on-failure")
        verify = self.percent(85)
        return Command(["flash", "program", self.spelled(name, current), "--address", hex(address),
                        "--force", *backup, *([] if verify else ["--no-verify"])], current, address,
                       content, verify)

    def draw_backup(self, name, current):
        """The options for the backup."""
        if not self.percent(60):
            return ["--no-backup"]
        if self.percent(60):
            return []
        return ["--backup", self.spelled(f"{name}{self.chance.randrange(3)}.bin", current)]

    def draw_cut(self, command):
        """What goes wrong, and where."""
        kind = self.chance.choices(list(KINDS), list(KINDS.values()))[0]
        sectors = (command.address + len(command.content) - 1) // SECTOR \
            - command.address // SECTOR + 1
        packet = {"direction": "set", "selector": 4}
        where = self.chance.random()
        if kind == "lie":
            # A packet that is answered and not programmed is noticed by those who compare.
            if not (command.verify and command.may_be_asked):
                kind = "kill"
            where = 0
        # Few commands write all sectors that they name: small numbers are more likely.
        part = self.chance.random() ** 2
        if command.may_be_asked and where < 0.5:
            return Cut(kind, packet, 1 + int(part * 70 * sectors), self.chance.random() / 50)
        if where < 0.75:
            # Among them the erases and the last words.
            return Cut(kind, {"direction": "set", "selector": 3}, self.chance.randint(1, 8 + sectors),
                       self.chance.random() / 50)
        return Cut(kind, {}, 1 + int(part * 700 * sectors), self.chance.random() / 50)
