#!/usr/bin/python3
"""Kills the built tool while it programs a virtual camera, takes the camera's power away and programs
again: the flash must hold the image, and every byte beside it its old value.

The same is done to a process that loads registers, for the camera's own state file: the next process
must find the registers of whole transfers, in the order in which they were written.

Usage: power_cuts.py [--count N] [--state-count N] [--seed N] [--seconds N]
Prints the figures; exit code 1 when a cut was not repaired. The moments come from the seed, and each is
a transfer and a time behind it, so that a busy machine cuts at the same places.
"""
import argparse
import collections
import dataclasses
import json
import pathlib
import random
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tool_program"))
import station  # pylint: disable=wrong-import-position
from station import SECTOR, camera  # pylint: disable=wrong-import-position

FLASH = 64 << 10
# Seconds: no run takes longer, however busy the machine is.
LONGEST = 900
ERASE_MS = 40
PROGRAM_US = 500
REGISTERS = 6000
FIRST_REGISTER = 0x200


@dataclasses.dataclass
class Plan:
    """An image at an address, and what an uncut run of programming it does."""
    address: int
    image: bytes
    backup: bool
    transfers: int = 0
    first_change: int = 0
    last_change: int = 0
    seconds: float = 0.0


@dataclasses.dataclass
class Moment:
    """Behind which transfer, and how long behind it, the process dies."""
    transfer: int
    seconds: float

    def __str__(self):
        return f"{self.seconds * 1000:.1f} ms behind transfer {self.transfer}"


class Station(station.ToolTest):
    """A slow camera whose host is killed."""

    def __init__(self):
        super().__init__()
        self.setUp()
        self.trace = self.folder / "camera.trace"
        (self.folder / "cameras.json").write_text(
            json.dumps({"cameras": [self.slow_camera()]}), encoding="utf-8")
        self.camera_program("register")
        # Tests that share the prefix would find a camera whose files are gone.
        self.addCleanup(self.camera_program, "unregister")

    @staticmethod
    def slow_camera():
        """The camera of all runs."""
        return camera(0, trace="camera.trace", flash={
            "size": "64K", "erase_ms": ERASE_MS, "program_us": PROGRAM_US})

    def reset(self, flash):
        """A camera fresh from the factory with this flash, and no file of an earlier run."""
        for pattern in ("*.state", "*.journal*", "*.part*", "*.trace", "old.bin"):
            for path in self.folder.glob(pattern):
                path.unlink()
        self.put_flash(flash)

    def run_program(self, name, *arguments):
        """Runs one of the programs to its end. What it says goes through files: a service of Wine
        that a program starts may hold its pipes open for longer than it lives."""
        with self.start_program(name, *arguments) as process:
            code = process.wait(timeout=LONGEST)
        return station.Outcome(code, self.said("out"), self.said("err"))

    def start_program(self, name, *arguments):
        """Starts one of the programs."""
        with (self.folder / "out").open("wb") as out, (self.folder / "err").open("wb") as err:
            return subprocess.Popen(  # pylint: disable=consider-using-with
                [*self.command()[:-1], str(station.BIN / name), *arguments], env=self.environment,
                stdin=subprocess.DEVNULL, stdout=out, stderr=err)

    def said(self, name):
        """What the program that ran last wrote."""
        return (self.folder / name).read_text(encoding="utf-8", errors="replace")

    def tool(self, *arguments):
        """Runs the tool to its end."""
        # A busy machine is no defect of the tool.
        return self.run_program("borvanusb.exe", *arguments, "--timeout", "60")

    def camera_program(self, *arguments):
        """Runs the virtual cameras' control program and returns what it prints; it must succeed."""
        outcome = self.run_program("virtual-camera.exe", *arguments)
        if outcome.code != 0:
            sys.exit(f"power_cuts.py: virtual-camera {arguments}: {outcome.err}")
        return outcome.out

    def kill_at(self, moment, *arguments):
        """Starts the tool and kills it at a moment. Returns whether it was still alive."""
        seen = 0
        size = self.trace.stat().st_size if self.trace.exists() else 0
        with self.start_program("borvanusb.exe", *arguments) as process:
            limit = time.monotonic() + LONGEST
            while seen < moment.transfer and process.poll() is None and time.monotonic() < limit:
                time.sleep(0.002)
                if self.trace.exists():
                    with self.trace.open("rb") as file:
                        file.seek(size)
                        fresh = file.read()
                    size += len(fresh)
                    seen += fresh.count(b"\n")
            time.sleep(moment.seconds)
            alive = process.poll() is None
            process.kill()
        return alive

    def changes(self):
        """The numbers of the transfers that changed the flash, and how many transfers there were."""
        lines = [json.loads(line) for line in self.trace.read_text(encoding="utf-8").splitlines()]
        return [number for number, line in enumerate(lines, 1)
                if line["direction"] == "set" and (line["selector"] == 4 or (
                    line["selector"] == 3 and line["bytes"][:2] in ("32", "38")))], len(lines)


class Cuts:
    """Cuts of programming, and their figures."""

    def __init__(self, place, chance):
        self.place = place
        self.chance = chance
        self.old = chance.randbytes(FLASH)
        self.figures = collections.Counter()
        self.harmed = True  # whether each cut took bytes beside the image
        self.plans = [
            # Parts of two sectors, all of one and parts of both its neighbours, a part of one.
            Plan(0x1234, chance.randbytes(5000), True),
            Plan(0x4F00, chance.randbytes(SECTOR + 0x300), False),
            Plan(0x8100, chance.randbytes(700), True),
        ]
        for plan in self.plans:
            self.learn(plan)

    def program(self, plan):
        """The tool's arguments for a plan."""
        backup = ["--backup", self.place.name("old.bin")] if plan.backup else ["--no-backup"]
        return ["flash", "program", self.place.name("image.bin"), "--address", hex(plan.address),
                *backup]

    def prepare(self, plan):
        """A camera with the old bytes, and the image."""
        self.harmed = True
        self.place.reset(self.old)
        self.place.file("image.bin", plan.image)

    def wanted(self, plan):
        """The flash as it must become."""
        flash = bytearray(self.old)
        flash[plan.address:plan.address + len(plan.image)] = plan.image
        return bytes(flash)

    def learn(self, plan):
        """Runs a plan uncut."""
        self.prepare(plan)
        started = time.monotonic()
        outcome = self.place.tool(*self.program(plan))
        plan.seconds = time.monotonic() - started
        if problem := self.problem(plan, outcome):
            sys.exit(f"power_cuts.py: programming without a cut already goes wrong: {problem}")
        changes, plan.transfers = self.place.changes()
        plan.first_change, plan.last_change = changes[0], changes[-1]

    def moment(self, plan):
        """Most cuts while the flash changes, some at any other time, the very beginning included."""
        first, last = plan.first_change, plan.last_change
        if self.chance.random() < 0.2:
            first, last = 0, plan.transfers
        return Moment(self.chance.randint(first, last), self.chance.uniform(0, ERASE_MS / 1000))

    def cut(self, plan, number):
        """One or two cuts and the run that must mend them. Returns what was wrong, or nothing."""
        self.prepare(plan)
        where = []
        for _ in range(2 if self.chance.random() < 0.2 else 1):
            moment = self.moment(plan)
            alive = self.place.kill_at(moment, *self.program(plan))
            self.figures["cuts" if alive else "runs that ended before their cut"] += 1
            where.append(str(moment))
            self.note_flash(plan)
            self.place.camera_program("power-cycle")
        outcome = self.place.tool(*self.program(plan))
        problem = self.problem(plan, outcome)
        if problem:
            return f"cut {number}, {hex(plan.address)}, {' and '.join(where)}: {problem}"
        return ""

    def note_flash(self, plan):
        """Counts what the cut left."""
        flash = self.place.flash()
        begin = plan.address
        end = begin + len(plan.image)
        beside = flash[:begin] != self.old[:begin] or flash[end:] != self.old[end:]
        self.harmed = self.harmed and beside
        if flash == self.old:
            self.figures["left the flash as it was"] += 1
        elif flash == self.wanted(plan):
            self.figures["left the flash as wanted"] += 1
        else:
            self.figures["left bytes beside the image lost" if beside else
                         "left the image in part"] += 1

    def problem(self, plan, outcome):
        """Why a run did not mend what was cut; empty when it did."""
        if outcome.code != 0:
            return f"the next run ended with {outcome.code}: {outcome.err}"
        flash = self.place.flash()
        wanted = self.wanted(plan)
        if flash != wanted:
            at = next(i for i in range(FLASH) if flash[i] != wanted[i])
            return f"the flash differs from {at:#x} on: {flash[at]:#x}, wanted {wanted[at]:#x}"
        # A killed process can't remove the file it was writing, and the next one knows nothing of it.
        self.figures["half-written files left behind"] += len(list(self.place.folder.glob("*.part*")))
        left = [path.name for path in self.place.folder.glob("*.journal")]
        # Bytes that nobody missed may be another camera's: their journal stays.
        if left and self.harmed:
            return f"left behind: {left}"
        if plan.backup:
            begin = plan.address // SECTOR * SECTOR
            end = -(-(plan.address + len(plan.image)) // SECTOR) * SECTOR
            if (self.place.folder / "old.bin").read_bytes() != self.old[begin:end]:
                return "the backup does not hold the old bytes"
        return ""


class StateCuts:
    """Cuts while the camera's state file is made and written."""

    def __init__(self, place, chance):
        self.place = place
        self.chance = chance
        self.figures = collections.Counter()
        self.addresses = [FIRST_REGISTER + 3 * number for number in range(REGISTERS)]
        place.reset(b"\xff" * FLASH)
        self.values = [0] * REGISTERS
        self.load(1)
        place.tool("reg", "load", place.name("list.txt"))
        self.transfers = place.trace.read_bytes().count(b"\n")
        self.values = self.read()
        if self.values != [1] * REGISTERS:
            sys.exit("power_cuts.py: loading without a cut already goes wrong")

    def load(self, value):
        """Makes the list that gives every register this value."""
        lines = "".join(f"{address:#06x}, {value:#04x},\n" for address in self.addresses)
        self.place.file("list.txt", "0xfffd, 0x00,\n0xfffe, 0x00,\n" + lines)

    def read(self):
        """The registers as the next process finds them."""
        found = {}
        for line in self.place.camera_program("state").splitlines():
            words = line.replace("=", " ").split()
            if len(words) == 2 and words[0].startswith("0x"):
                found[int(words[0], 16)] = int(words[1], 16)
        return [found.get(address, 0) for address in self.addresses]

    def cut(self, number):
        """One cut; returns what was wrong, or nothing. Every third state file is a new one."""
        if number % 3 == 0:
            for path in self.place.folder.glob("*.state"):
                path.unlink()
            self.values = [0] * REGISTERS
        value = number % 255 + 1
        self.load(value)
        moment = Moment(self.chance.randint(0, self.transfers), self.chance.uniform(0, 0.003))
        alive = self.place.kill_at(moment, "reg", "load", self.place.name("list.txt"))
        self.figures["state cuts" if alive else "loads that ended before their cut"] += 1
        found = self.read()
        loaded = next((i for i in range(REGISTERS) if found[i] != value), REGISTERS)
        if found[loaded:] != self.values[loaded:]:
            return f"state cut {number}, {moment}: registers behind the {loaded} loaded ones changed"
        if 0 < loaded < REGISTERS:
            self.figures["left the list in part"] += 1
        self.values = found
        return ""


def run_cuts(options, place, chance):
    """All cuts; returns the figures and what went wrong."""
    problems = []
    started = time.monotonic()

    def over():
        return options.seconds and time.monotonic() - started > options.seconds

    figures = collections.Counter()
    if options.count:
        cuts = Cuts(place, chance)
        for plan in cuts.plans:
            print(f"uncut: {len(plan.image)} bytes at {plan.address:#x}: {plan.transfers} transfers, "
                  f"changes from {plan.first_change} to {plan.last_change}, {plan.seconds:.1f} s",
                  flush=True)
        number = 0
        while cuts.figures["cuts"] < options.count and not over():
            problem = cuts.cut(cuts.plans[number % len(cuts.plans)], number)
            if problem:
                problems.append(problem)
                print(problem, flush=True)
            else:
                figures["series of cuts repaired by the next run"] += 1
            number += 1
            if number % 10 == 0:
                print(f"{cuts.figures['cuts']} of {options.count} cuts, {len(problems)} not repaired",
                      flush=True)
        figures += cuts.figures
    if options.state_count and not over():
        states = StateCuts(place, chance)
        for number in range(options.state_count):
            problem = states.cut(number)
            if problem:
                problems.append(problem)
                print(problem, flush=True)
            if over():
                break
        figures += states.figures
    figures["seconds"] = round(time.monotonic() - started)
    return figures, problems


def main():
    """Reads the options, keeps Wine alive between the runs, and prints the figures."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--count", type=int, default=200, help="cuts of programming")
    parser.add_argument("--state-count", type=int, default=60, help="cuts of the camera's state file")
    parser.add_argument("--seed", type=int, default=1, help="chooses the moments")
    parser.add_argument("--seconds", type=int, default=0, help="start no cut after this time")
    options = parser.parse_args()
    if min(options.count, options.state_count, options.seconds) < 0:
        parser.error("a number of cuts or seconds is 0 or more")
    with station.wine_services():
        place = Station()
        try:
            figures, problems = run_cuts(options, place, random.Random(options.seed))
        finally:
            place.doCleanups()
    for name, figure in figures.items():
        print(f"{figure:6}  {name}")
    print(f"{len(problems):6}  not repaired")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
