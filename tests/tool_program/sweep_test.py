#!/usr/bin/python3
"""One transfer goes wrong: the built program ends with the truth, and the next run ends well. The
truth is what the virtual camera's own files hold."""
import collections
import json
import os
import random
import re
import subprocess

import station
from station import SECTOR, camera

FLASH = 64 << 10
DATA_ERROR = "0x80070017"
KINDS = {
    "set": [{"result": DATA_ERROR}, {"lie": True}],
    "get": [{"result": DATA_ERROR}, {"short": 0}, {"short": 8}, {"wrong_tag": True}],
    "length": [{"result": DATA_ERROR}],
}
# Runs with a fault of each command in the short form.
SELECTION = 11


def seeded(size, seed=1):
    """Bytes that are the same each time."""
    return random.Random(seed).randbytes(size)


class SweepTest(station.ToolTest):
    """Each test is one command."""

    REGISTERS = {hex(0x200 + i): hex(value) for i, value in enumerate(seeded(120, seed=5))}
    # A run fails where its job never ends.
    LIMIT = ("--timeout", "2")

    def setUp(self):
        super().setUp()
        self.old = seeded(FLASH)
        self.plug_in(camera(0, registers=self.REGISTERS))
        self.runs = 0

    def start_anew(self, *faults):
        """The camera as it was at first, with these faults."""
        for name in ("cameras.camera0.state", "out.bin", "list.txt"):
            (self.folder / name).unlink(missing_ok=True)
        for leftover in [*self.folder.glob("*.journal"), *self.folder.glob("*-backup-*")]:
            leftover.unlink()
        self.configure(camera(0, registers=self.REGISTERS, faults=list(faults)))
        self.put_flash(self.old)

    def transfers(self):
        """How many transfers the last run made, by selector and direction."""
        lines = (self.folder / "trace.jsonl").read_text(encoding="utf-8").splitlines()
        return collections.Counter(
            (line["selector"], line["direction"]) for line in map(json.loads, lines))

    def faults(self, counts):
        """All bad transfers there can be, or a selection."""
        faults = [{"selector": selector, "direction": direction, "at": at, **kind}
                  for (selector, direction), count in sorted(counts.items())
                  for at in range(1, count + 1) for kind in KINDS[direction]]
        if os.environ.get("BORVAN_LONG"):
            return faults
        return random.Random(7).sample(faults, SELECTION)

    def sweep(self, arguments, expected, wrong):
        """Runs a command with one fault after the other. `wrong` gets the exit code and tells what is
        untrue, or None; a run that does not end with `expected` is made again without the fault."""
        self.start_anew()
        outcome = self.run_tool(*arguments, "--trace", self.name("trace.jsonl"))
        self.assertEqual((outcome.code, wrong(outcome.code)), (expected, None), outcome.err)
        for fault in self.faults(self.transfers()):
            with self.subTest(fault):
                self.runs += 1
                self.start_anew(fault)
                outcome = self.run_tool(*arguments, *self.LIMIT)
                self.assertIsNone(wrong(outcome.code), outcome.out + outcome.err)
                if outcome.code == expected:
                    continue
                self.assertRegex(outcome.err, r"(?m)^borvanusb: .+")
                self.configure(camera(0, registers=self.REGISTERS))
                outcome = self.run_tool(*arguments)
                self.assertEqual((outcome.code, wrong(outcome.code)), (expected, None), outcome.err)
        print(f"{self.runs} runs with a fault")

    def test_program(self):
        address = 0x2F80
        image = seeded(300, seed=2)
        name = self.file("image.bin", image)
        wanted = bytearray(self.old)
        wanted[address:address + len(image)] = image
        sectors = self.old[0x2000:0x2000 + 2 * SECTOR]

        def wrong(code):
            flash = self.flash()
            if code == 0 and flash != wanted:
                return "the flash is wrong"
            if code == 7 and flash[address:address + len(image)] == image:
                return "the flash holds the image"
            if any(backup.read_bytes() != sectors for backup in self.folder.glob("*-backup-*.bin")):
                return "the backup is wrong"
            return None

        self.sweep(["flash", "program", name, "--address", hex(address)], 0, wrong)

    def test_read(self):
        wanted = self.old[0x1234:0x1234 + 1500]

        def wrong(code):
            is_wrong = code == 0 and (self.folder / "out.bin").read_bytes() != wanted
            return "the file is wrong" if is_wrong else None

        self.sweep(["flash", "read", "0x1234+1500", self.name("out.bin")], 0, wrong)

    def test_verify_of_an_equal_flash(self):
        name = self.file("image.bin", self.old[0x1234:0x1234 + 1500])
        self.sweep(["flash", "verify", name, "--address", "0x1234"], 0,
                   lambda code: "an equal flash is called different" if code == 7 else None)

    def test_verify_of_a_different_flash(self):
        image = bytearray(self.old[0x1234:0x1234 + 1500])
        image[700] ^= 0x5A
        name = self.file("image.bin", bytes(image))
        self.sweep(["flash", "verify", name, "--address", "0x1234"], 7,
                   lambda code: "a different flash is called equal" if code == 0 else None)

    def test_reg_dump(self):
        values = {"0xfffd": "0x00", "0xfffe": "0x00"}
        values.update({f"0x{int(address, 16):04x}": f"0x{int(value, 16):02x}"
                       for address, value in self.REGISTERS.items()})
        wanted = [f"{address}, {value}," for address, value in values.items()]

        def wrong(code):
            if code != 0:
                return None
            lines = (self.folder / "list.txt").read_text(encoding="utf-8").splitlines()
            return None if lines == wanted else "the list is wrong"

        self.sweep(["reg", "dump", "0x200+120", self.name("list.txt")], 0, wrong)

    def written_registers(self):
        """The chip's registers that were written since power-on, from the camera's state."""
        output = subprocess.run([station.RUN, station.BIN / "virtual-camera.exe", "state", "0"],
                                check=True, timeout=station.LONGEST, env=self.environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout.decode()
        return {int(address, 16): int(value, 16) for address, value in
                re.findall(r"^ {4}(0x[0-9a-f]+) = (0x[0-9a-f]+)", output, re.MULTILINE)}

    def test_reg_load_verify(self):
        wanted = {0x400 + i: i * 7 % 256 for i in range(1, 40)}
        lines = [f"0x{address:04x}, 0x{value:02x}," for address, value in wanted.items()]
        name = self.file("settings.txt", "0xfffd, 0x00,\n" + "\n".join(lines) + "\n")

        def wrong(code):
            if code not in (0, 7):
                return None
            holds = self.written_registers() == wanted
            return None if holds == (code == 0) else f"the registers hold the list: {holds}"

        self.sweep(["reg", "load", name, "--verify"], 0, wrong)


if __name__ == "__main__":
    station.main()
