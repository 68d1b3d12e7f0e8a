"""Mutation tests: applies small edits to the products and runs the native tests; see mutate.sh.

Usage: mutate.py BUILD_FOLDER PROGRAM… -- [options of mutate.sh]
"""
import argparse
import collections
import concurrent.futures
import hashlib
import itertools
import json
import math
import os
import sys
import threading

import check_structure
import mutations
from equivalent_mutants import Equivalents
from mutation_build import ARCHIVES, ROOT, DoesNotCompile, TestBuild
from mutation_results import BRIEF_RESULTS, RESULTS, Record, report

MEASURED = ROOT / "build" / "mutation" / "measured.json"
WORK = ROOT / "build" / "mutation" / "work"
SLOW = 500  # milliseconds; slower tests run only if no other test fails
# For each room, the programs that test it best; they run first, the others follow. Only these rooms are
# edited.
LIKELY = {
    "src/api": ["api_tests", "jobs_tests"],
    "src/base": ["files_tests", "protocol_tests"],
    "src/device": ["device_tests", "protocol_tests"],
    "src/files": ["files_tests", "list_document_test"],
    "src/jobs": ["jobs_tests", "files_tests", "api_tests"],
    "src/protocol": ["protocol_tests"],
    "borvanusb/base": ["tool_arguments_test", "tool_flash_parts_test", "tool_run_test"],
    "borvanusb/camera": ["tool_registers_test", "tool_flash_commands_test"],
    "borvanusb/command": ["tool_arguments_test", "tool_run_test", "tool_scripts_test"],
    "borvanusb/dll": ["tool_library_test"],
    "borvanusb/flash": ["tool_flash_commands_test", "tool_flash_program_test"],
    "borvanusb/flash/engine": ["tool_flash_parts_test", "tool_flash_journal_test",
                               "tool_flash_program_test"],
    "borvanusb/i2c": ["tool_lists_test", "tool_registers_test"],
    "borvanusb/images": ["tool_images_test", "tool_flash_parts_test"],
    "borvanusb/maps": ["tool_maps_test", "tool_names_test"],
    "borvanusb/names": ["tool_names_test"],
    "borvanusb/output": ["tool_progress_test", "tool_run_test"],
    "borvanusb/profile": ["tool_names_test"],
    "borvanusb/profile_commands": ["tool_names_test"],
    "borvanusb/registers": ["tool_lists_test", "tool_registers_test"],
    "borvanusb/station": ["tool_registers_test", "tool_names_test", "tool_lists_test"],
    "borvanusb/workbench": ["tool_workbench_rules_test", "tool_workbench_work_test",
                            "tool_workbench_server_test"],
    "virtual_camera/core": ["virtual_camera_core_test"],
}
# One edit of each of these is the brief form: their programs run in seconds.
BRIEF = {"src/device", "src/jobs", "src/protocol", "borvanusb/i2c", "borvanusb/maps",
         "borvanusb/names", "borvanusb/output", "borvanusb/profile", "borvanusb/registers",
         "borvanusb/workbench"}

Candidate = collections.namedtuple("Candidate", "room path line mutant was now below above id")


def digest_of(text):
    """A short hash of a text."""
    return hashlib.sha256(text.encode()).hexdigest()[:16]


def parsed(arguments):
    """The options of mutate.sh."""
    parser = argparse.ArgumentParser(prog="mutate.sh", allow_abbrev=False)
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--room", action="append", metavar="ROOM")
    parser.add_argument("--brief", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--headers", action="store_true")
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("files", nargs="*", metavar="FILE")
    options = parser.parse_args(arguments)
    if options.count < 0 or options.jobs < 1:
        parser.error("--count takes a number from 0, --jobs one from 1")
    for room in options.room or []:
        if not any(check_structure.matches(known, [room]) for known in LIKELY):
            parser.error(f"--room {room}: rooms are {', '.join(LIKELY)}")
    return options


def sources(options, build):
    """The files to edit, and the files that only Windows builds compile."""
    wanted = [(ROOT / name).resolve() for name in options.files]
    known = sorted(path for folder in ARCHIVES for path in folder.rglob("*")
                   if path.suffix in (".cpp", ".h"))
    for path in wanted:
        if path not in known:
            sys.exit(f"mutate.sh: {path} is no source file that is edited")
    native = build.core | set(build.users)
    chosen = [path for path in known if path in native
              and (path in wanted if wanted else options.headers or path.suffix == ".cpp")
              and (not options.room or check_structure.matches(room_of(path), options.room))]
    return chosen, [path for path in known if path not in native and path.suffix == ".cpp"]


def room_of(path):
    """The room of a source file."""
    return check_structure.room_of(path.relative_to(ROOT))


def candidates_of(path):
    """All edits of a file."""
    text = path.read_text("utf-8")
    digest = digest_of(text)
    for mutant in mutations.mutants_of(text):
        was, now = mutations.shown(text, mutant)
        name = f"{path.relative_to(ROOT)} {digest} {mutant.start} {mutant.end} {mutant.text}"
        yield Candidate(room_of(path), path, mutations.line_number(text, mutant.start), mutant,
                        was, now, mutations.line_before(text, mutant.start),
                        mutations.line_after(text, mutant.end), digest_of(name))


def drawn(paths, seed):
    """The edits in the order of the trials, alternating between the rooms."""
    rooms = []
    for room in LIKELY:
        edits = [edit for path in paths if room_of(path) == room for edit in candidates_of(path)]
        # Sorted by hash instead of shuffled, so that the order is stable when edits are added or removed.
        rooms.append(sorted(edits, key=lambda edit: digest_of(f"{seed} {edit.id}")))
    return [edit for turn in itertools.zip_longest(*rooms) for edit in turn if edit]


def state_of(*folders):
    """A hash of the content of folders."""
    digest = hashlib.sha256()
    for path in sorted(path for folder in folders for path in (ROOT / folder).rglob("*")):
        if path.suffix in (".cpp", ".h"):
            digest.update(path.read_bytes())
    return digest.hexdigest()[:16]


class Trial:
    """Tries edits. All threads share one object."""

    def __init__(self, build, programs, state, brief):
        self.build = build
        self.programs = programs
        self.brief = brief  # use only the programs that test a room best
        self.state = state
        self.turns = {}  # for each program: test filters with their time limits; slow tests have their own
        self.measuring = threading.Lock()
        if MEASURED.exists():
            former = json.loads(MEASURED.read_text("utf-8"))
            if former["state"] == state:
                self.turns = former["turns"]

    def turns_of(self, program):
        """Runs a program's tests without an edit, which must pass. Done once for each state of the
        sources."""
        with self.measuring:
            if program in self.turns:
                return self.turns[program]
            outcome = self.build.run_program(self.build.folder / "bin" / program,
                                             WORK / f"unchanged-{program}", (600, 1200))
            if outcome.state != "passed":
                print(f"mutate.sh: {program} fails without any edit, in {outcome.test}", flush=True)
                os._exit(1)  # pylint: disable=protected-access
            print(f"{program}: {outcome.seconds:.1f} s", file=sys.stderr, flush=True)
            # Other work on the machine affects wall time more than processor time.
            slow = [(test, time) for test, time in outcome.times if time > SLOW]
            rest = sum(time for _, time in outcome.times) - sum(time for _, time in slow)
            names = ":".join(test for test, _ in slow)
            self.turns[program] = [(f"-{names}", self._limit(rest))]
            if slow:
                self.turns[program].append((names, self._limit(sum(time for _, time in slow))))
            MEASURED.write_text(json.dumps({"state": self.state, "turns": self.turns}), "utf-8")
            return self.turns[program]

    @staticmethod
    def _limit(milliseconds):
        """Limits in seconds: processor and wall time. Other work on the machine affects the latter more."""
        return math.ceil(3 + milliseconds / 250), 60 + milliseconds / 50

    def judge(self, edit, slow):
        """(state, test that failed). The state is killed, survived or invalid. Uses the fast or the slow
        tests."""
        work = WORK / str(threading.get_ident())
        text = edit.path.read_text("utf-8")
        try:
            replaced = self.build.build(edit.path, mutations.applied(text, edit.mutant), work)
        except DoesNotCompile:
            return "invalid", None
        likely = LIKELY[edit.room]
        order = [program for program in likely if program in self.programs]
        if not self.brief:
            order += [program for program in self.build.programs_of(edit.path)
                      if program not in likely]
        executables = {}
        for program in order:
            turns = self.turns_of(program)
            for tests, limit in turns[1:] if slow else turns[:1]:
                try:
                    if program not in executables:
                        executables[program] = self.build.program_of(program, work, replaced)
                except DoesNotCompile:
                    return "killed", f"{program} does not compile"
                outcome = self._run(executables[program], work, limit, tests)
                if outcome.state == "time":
                    return "killed", f"{program}, out of time in {outcome.test}"
                if outcome.state == "failed":
                    return "killed", f"{program}, {outcome.test}"
        return "survived", None

    def _run(self, executable, work, limit, tests):
        """Runs the tests. A failure only counts if it occurs twice, so a flaky test kills nothing."""
        outcome = self.build.run_program(executable, work, limit, tests)
        if outcome.state != "failed":
            return outcome
        again = self.build.run_program(executable, work, limit, outcome.test)
        if again.state == "passed":
            again = self.build.run_program(executable, work, limit, tests)
        return outcome if again.state != "passed" else again


def tried(edits, count, trial, record, jobs):
    """The first `count` edits that compile (0: all), tried with the fast tests."""
    queue = iter(edits)
    taken = []
    running = {}
    valid = 0
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        while True:
            while len(running) < jobs and (not count or valid + len(running) < count):
                edit = next(queue, None)
                if edit is None:
                    break
                taken.append(edit)
                if edit.id in record.found:
                    valid += record.found[edit.id]["state"] != "invalid"
                else:
                    running[pool.submit(trial.judge, edit, False)] = edit
            if not running:
                return taken
            done, _ = concurrent.futures.wait(
                running, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                edit = running.pop(future)
                record.put(edit, *future.result(), False)
                valid += record.found[edit.id]["state"] != "invalid"


def tried_slowly(edits, trial, record, equivalents, jobs):
    """Tries the slow tests on edits that survived the fast ones and are not in the list of equivalent
    mutants."""
    left = [edit for edit in edits if record.found[edit.id]["state"] == "survived"
            and not record.found[edit.id].get("slow") and not equivalents.reason(edit)]
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        running = {pool.submit(trial.judge, edit, True): edit for edit in left}
        for future in concurrent.futures.as_completed(running):
            record.put(running[future], *future.result(), True)


def main():
    """Tries the edits and prints the result."""
    separator = sys.argv.index("--")
    folder, *programs = sys.argv[1:separator]
    options = parsed(sys.argv[separator + 1:])
    build = TestBuild(folder, programs)
    paths, windows_only = sources(options, build)
    if options.brief:
        paths = [path for path in paths if room_of(path) in BRIEF]
    edits = drawn(paths, options.seed)
    # When tests change, they may detect edits that survived, so these are tried again.
    digest = state_of("tests")
    results = BRIEF_RESULTS if options.brief else RESULTS
    if options.fresh:
        results.unlink(missing_ok=True)
    record = Record(results, digest)
    equivalents = Equivalents()
    trial = Trial(build, programs, folder + state_of("src", "tools", "virtual_camera", "tests"),
                  options.brief)
    if options.brief:
        # One edit of each room is in front of the list.
        options.count = len({edit.room for edit in edits})
    edits = tried(edits, options.count, trial, record, options.jobs)
    if not options.brief:
        tried_slowly(edits, trial, record, equivalents, options.jobs)
    let_pass = report(edits, record, equivalents, windows_only)
    # The brief form tries only a few edits, and others after each change of the sources. A single surviving
    # edit means little, so it only fails if many survive.
    return 1 if let_pass > (len(edits) // 4 if options.brief else 0) else 0


if __name__ == "__main__":
    sys.exit(main())
