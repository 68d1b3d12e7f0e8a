#!/usr/bin/python3
"""Runs sequences of flash commands, drawn by chance, through the built tool on virtual cameras: images
that overlap, cuts and failures at any transfer, other modules at the same port, the same module at another.

A byte that no command names never changes while a command ends with 0; after a failure it is in the flash
or in a journal. A backup never changes, and neither does the flash of a module that is not worked with.

Usage: flash_sequences.py [--count N] [--seed N] [--seconds N]
Prints the figures; exit code 1 when a byte was lost. The seed of a sequence decides what is drawn; where a
kill between two transfers hits depends on the machine too.
"""
import argparse
import collections
import dataclasses
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tool_program"))
# pylint: disable=wrong-import-position
import station
from flash_draws import FOLDERS, IMAGE_NAME, KINDS, TIMEOUT_SECONDS, Draws
from flash_model import FLASH, Journal, Run
from station import SECTOR, camera

PORTS = [r"\\?\usb#vid_1234&pid_0001#port1", r"\\?\usb#vid_1234&pid_0001#port2"]
# Seconds: no command takes longer, however busy the machine is.
LONGEST = 600

# The figures.
SEQUENCES = "sequences"
COMMANDS = "commands"
DONE = "ended with 0"
CUT = "were to be cut or disturbed"
CUT_SHORT = "of these ended otherwise than with 0"
ASKED = "asked for --journal"
ANSWERED = "of these were answered with the journal"
BACKUPS = "backups"
ALIKE = "bytes that a module which looks alike got"
ALIKE_LOST = "bytes that were lost to a module which looks alike"
SECONDS = "seconds"


class Lost(Exception):
    """The invariant does not hold."""


class Sequence(station.ToolTest):  # pylint: disable=too-many-instance-attributes
    """One sequence of commands."""

    def __init__(self, seed, figures):
        super().__init__()
        self.setUp()
        self.environment["BORVANUSB_JOURNALS"] = station.windows_name(self.folder / "journals")
        self.chance = random.Random(seed)
        self.figures = figures
        self.log = []
        self.draws = Draws(self.chance, self.folder, patches=seed % 3 == 0)
        self.modules = self.draws.modules
        self.plugged = [self.modules[0], None]
        self.registered = None  # which ports held a module when the cameras were registered
        self.backups = {}
        self.places = {}  # of the backups, where known
        self.owners = {}  # modules by journal
        self.looked_alike = False

    def play(self):
        """Runs the commands; raises Lost."""
        for _ in range(self.chance.randint(3, 8)):
            if self.draws.percent(25):
                self.replug()
            port = self.chance.choice([i for i, module in enumerate(self.plugged) if module])
            command = self.draws.draw_command(self.plugged[port], self.backups, self.places)
            self.log.append(f"{self.plugged[port].name}@{port + 1} " + " ".join(command.arguments)
                            + f" (in {command.folder.name}, names {command.address:#x}"
                            f"+{len(command.content):#x})")
            asked = self.attempt(port, command)
            for _ in range(2):
                if asked and command.may_be_asked:
                    asked = self.attempt(port, self.answer(self.plugged[port], command, asked))

    def replug(self):
        """Other modules in the ports, or in one of them."""
        first, second = self.chance.sample(self.modules, 2)
        self.plugged = self.chance.choice(
            [[first, None], [None, first], [first, second], self.plugged[::-1]])
        for module in self.modules:
            (self.folder / f"{module.name}.state").unlink(missing_ok=True)

    def answer(self, module, command, asked):
        """The command with the answer of somebody who knows the cameras."""
        answer = "none"
        for journal in self.journals():
            if journal.file == asked.replace("\\", "/").rsplit("/", 1)[-1] and \
                    self.owners[journal.file] is module and self.lacks(module, journal):
                answer = asked
        self.log.append(f"  answered {answer}")
        self.figures[ANSWERED] += answer != "none"
        options = command.arguments
        if "--journal" in options:
            options = options[:options.index("--journal")]
        return dataclasses.replace(command, arguments=[*options, "--journal", answer])

    def lacks(self, module, journal):
        """Whether the flash lacks bytes that the journal holds."""
        flash = self.draws.flash_of(module).read_bytes()
        return any(flash[place] != module.truth[place] and not module.unknown[place]
                   and journal.keeps(place, module.truth[place])
                   for place in range(journal.address, journal.address + SECTOR))

    # Running the tool.

    def configure_ports(self, port, faults):
        """The modules in their ports; one of them misbehaves."""
        cameras = []
        for number, (path, module) in enumerate(zip(PORTS, self.plugged)):
            name = module.name if module else f"empty{number}"
            cameras.append(camera(
                number, path=path, state=f"{name}.state", trace=f"{name}.trace",
                plugged=module is not None, faults=faults if number == port else [],
                flash={"size": FLASH, "file": f"{name}.flash", "erase_ms": 2, "program_us": 50}))
        self.configure(*cameras)
        occupied = [module is not None for module in self.plugged]
        if occupied != self.registered:
            self.virtual_camera("register")
            self.registered = occupied

    def attempt(self, port, command):
        """Runs a command and judges what it did. Returns the journal that it asks about, if any."""
        module = self.plugged[port]
        cut = self.draws.draw_cut(command) if self.draws.percent(50) else None
        state = self.folder / f"{module.name}.state"
        if cut:
            state.unlink(missing_ok=True)  # power off and on; its transfers count from 1
        (self.folder / f"{module.name}.trace").unlink(missing_ok=True)
        self.configure_ports(port, cut.faults() if cut else [])
        flashes = {other.name: self.draws.flash_of(other).read_bytes() for other in self.modules}
        journals = self.journals()
        held = [journal for journal in journals if self.owners[journal.file] is not module
                and journal.looks_like(flashes[module.name])]
        own = [journal for journal in journals if self.owners[journal.file] is module]
        code, said = self.run_command(module, port, command, cut)
        if cut and cut.kind == "unplug":
            state.unlink(missing_ok=True)
            self.registered = None
        self.note(command, cut, code, said)
        self.note_files(module, flashes[module.name], own)
        for other in self.modules:
            if other is not module and self.draws.flash_of(other).read_bytes() != flashes[other.name]:
                raise Lost(f"the flash of {other.name} changed")
        run = Run(module, command.address, command.content, code,
                  "is restored to its old bytes" in said, flashes[module.name],
                  self.draws.flash_of(module).read_bytes(), [journal.address for journal in held])
        self.judge(run, held)
        if cut is None and code not in (0, 5):
            raise Lost("a command that nothing disturbed ended so")
        asked = re.search(r"add --journal (.+?): the bytes", said)
        if code != 5 or not asked:
            return None
        self.figures[ASKED] += 1
        if run.after != run.before:
            raise Lost("it asked after it changed the flash")
        return asked[1]

    def run_command(self, module, port, command, cut):
        """Runs the tool. Returns its exit code, -1 if it was killed, and what it said."""
        timeout = str(TIMEOUT_SECONDS) if cut and cut.kind == "stall" else "60"
        said = self.folder / "said.txt"
        # Not through a pipe: a service of Wine that the tool starts may hold it open.
        with said.open("wb") as error:
            process = subprocess.Popen(  # pylint: disable=consider-using-with
                [*self.command(), *command.arguments, "--camera", PORTS[port], "--progress", "none",
                 "--timeout", timeout], env=self.environment, cwd=command.folder,
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=error)
        killed = False
        if cut and cut.waits and self.await_transfer(module, process, cut):
            if cut.kind != "kill":
                time.sleep(cut.seconds)
            if cut.kind == "stop":
                process.send_signal(signal.SIGINT)
            else:
                killed = process.poll() is None
                process.kill()
        try:
            code = process.wait(LONGEST)
        except subprocess.TimeoutExpired as error:
            process.kill()
            process.wait()
            raise Lost("the tool did not end") from error
        return -1 if killed else code, said.read_text(encoding="utf-8", errors="replace")

    def await_transfer(self, module, process, cut):
        """Waits until the trace shows the transfer; False when the process ends before."""
        trace = self.folder / f"{module.name}.trace"
        count = read = 0
        limit = time.monotonic() + LONGEST
        while process.poll() is None and time.monotonic() < limit:
            if trace.exists():
                with trace.open("rb") as file:
                    file.seek(read)
                    lines = file.read().splitlines(keepends=True)
                for line in lines:
                    if line.endswith(b"\n"):
                        read += len(line)
                        count += cut.matches(line)
                if count >= cut.number:
                    return True
            time.sleep(0.003)
        return False

    # Judging.

    def journals(self):
        """All journals that the tool keeps."""
        return [Journal.read(path) for path in sorted((self.folder / "journals").glob("*.journal"))]

    def note(self, command, cut, code, said):
        """Counts and logs how a command ended."""
        self.figures[COMMANDS] += 1
        self.figures[DONE] += code == 0
        if cut:
            self.figures[CUT] += 1
            self.figures[f"  {cut.kind}"] += 1
            self.figures[CUT_SHORT] += code != 0
        line = said.strip().splitlines()
        told = [part for part in line if part.startswith("borvanusb: ")] or line[:1] or [""]
        self.log.append(f"  {cut or 'undisturbed'}: {'killed' if code < 0 else code} {told[0]}")
        if "--backup" in command.arguments and (match := re.search(
                r"backup of (?:4 bytes at )?(0x[0-9a-f]+)(?:-0x[0-9a-f]+)?: (.+)", said)):
            self.places[self.resolve(match[2], command)] = int(match[1], 0)

    def resolve(self, name, command):
        """The path of a file that the tool named."""
        name = name.strip().replace("\\", "/")
        path = pathlib.Path(name[2:]) if name.startswith("Z:") else command.folder / name
        return path.resolve()

    def note_files(self, module, before, journals):
        """New journals belong to the module that was worked with; backups stay as they came."""
        for journal in self.journals():
            self.owners.setdefault(journal.file, module)
            if journal.backup:
                path = pathlib.Path(journal.backup["file"].replace("\\", "/")[2:]).resolve()
                self.places[path] = journal.backup["address"]
            self.log.append(f"    {journal.file[-25:]} of {self.owners[journal.file].name}, "
                            f"{journal.camera[-5:] or 'nowhere'}"
                            + (f", open {journal.address:#x}" if journal.original else ""))
        found = {path.resolve(): path.read_bytes() for folder in ("", *FOLDERS)
                 for path in (self.folder / folder).glob("*.bin")
                 if not IMAGE_NAME.fullmatch(path.name)}
        for path, content in self.backups.items():
            if found.get(path) != content:
                raise Lost(f"the backup {path.name} changed")
        for path, content in found.items():
            if path not in self.backups:
                self.note_backup(path, content, module, before, journals)

    def note_backup(self, path, content, module, before, journals):
        """A new backup holds bytes that were in the flash, belonged there, or were kept in the module's
        journals."""
        # A backup that is written back has a name of this form itself.
        if match := re.findall(r"-backup-1234-0001-[0-9a-f]{8}-(0x[0-9a-f]{8})-", path.name):
            self.places[path] = int(match[-1], 0)
        self.backups[path] = content
        self.figures[BACKUPS] += 1
        address = self.places.get(path)
        if address is None:
            return
        old = [(self.places[other], kept) for other, kept in self.backups.items()
               if other != path and other in self.places]
        for place, byte in enumerate(content, address):
            if byte not in (before[place], module.truth[place]) and not any(
                    0 <= place - start < len(kept) and kept[place - start] == byte
                    for start, kept in old) and not any(
                    journal.keeps(place, byte) for journal in journals):
                raise Lost(f"the backup {path.name} holds {byte:#04x} for {place:#x}, which was "
                           "never there")

    def judge(self, run, held):
        """Nothing is lost."""
        journals = self.journals()
        problem, alike = run.judge([journal for journal in journals
                                    if self.owners[journal.file] is run.module])
        self.figures[ALIKE] += alike
        if alike:
            self.looked_alike = True
            self.log.append(f"  {alike} bytes from the journal of a module that looks alike")
        if problem:
            raise Lost(problem)
        left = {journal.file for journal in journals}
        for journal in held:
            if journal.file not in left:
                self.excuse(self.owners[journal.file], journal)

    def excuse(self, owner, journal):
        """The journal went to a module that looks alike: its owner's bytes are gone."""
        flash = self.draws.flash_of(owner).read_bytes()
        for place in range(journal.address, journal.address + SECTOR):
            if flash[place] != owner.truth[place] and not owner.unknown[place]:
                owner.unknown[place] = 1
                self.figures[ALIKE_LOST] += 1


def run_sequences(options):
    """All sequences; returns the figures and how many of them lost something."""
    figures = collections.Counter()
    started = time.monotonic()
    violations = 0
    for seed in range(options.seed, options.seed + options.count):
        if options.seconds and time.monotonic() - started > options.seconds:
            break
        sequence = Sequence(seed, figures)
        figures[SEQUENCES] += 1
        try:
            sequence.play()
        except Lost as problem:
            violations += 1
            kept = sequence.folder.with_name(f"flash-sequence-{seed}")
            shutil.rmtree(kept, ignore_errors=True)
            shutil.copytree(sequence.folder, kept)
            print(f"seed {seed}: {problem}\n" + "\n".join(sequence.log) + f"\nits files: {kept}",
                  flush=True)
        finally:
            sequence.doCleanups()
        if sequence.looked_alike:
            print(f"seed {seed}: a module looked like another one\n" + "\n".join(sequence.log),
                  flush=True)
        if figures[SEQUENCES] % 20 == 0:
            print(f"{figures[SEQUENCES]} of {options.count} sequences, {violations} lost something",
                  flush=True)
    figures[SECONDS] = round(time.monotonic() - started)
    return figures, violations


def main():
    """Reads the options, keeps Wine alive between the runs, and prints the figures."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--count", type=int, default=200, help="sequences")
    parser.add_argument("--seed", type=int, default=1, help="of the first sequence; the others follow")
    parser.add_argument("--seconds", type=int, default=0, help="start no sequence after this time")
    options = parser.parse_args()
    if min(options.count, options.seconds, options.seed) < 0:
        parser.error("a number of sequences or seconds, and a seed, is 0 or more")
    with station.wine_services():
        figures, violations = run_sequences(options)
    kinds = [f"  {kind}" for kind in KINDS]
    for name in (SEQUENCES, COMMANDS, DONE, CUT, *kinds, CUT_SHORT, ASKED, ANSWERED, BACKUPS, ALIKE,
                 ALIKE_LOST, SECONDS):
        print(f"{figures[name]:6}  {name}")
    print(f"{violations:6}  sequences that lost something")
    sys.exit(1 if violations else 0)


if __name__ == "__main__":
    main()
