"""Builds and runs the test programs with one source file changed."""
import collections
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import subprocess
import time

from structure_rules import INCLUDE_ROOTS

ROOT = pathlib.Path(__file__).resolve().parent.parent
# The folders to edit, and the static library that the build makes of each.
ARCHIVES = {
    ROOT / "src": "lib/libborvan_core.a",
    ROOT / "tools" / "borvanusb": "lib/libborvanusb_core.a",
    ROOT / "virtual_camera" / "core": "lib/libvirtual_camera_core.a",
}
FAILED_TEST = re.compile(r"^\[  FAILED  \] (\S+\.\S+?),? ", re.MULTILINE)
TEST_TIME = re.compile(r"^\[       OK \] (\S+?) \((\d+) ms\)", re.MULTILINE)
STARTED_TEST = re.compile(r"^\[ RUN      \] (\S+)", re.MULTILINE)
LARGEST_FILE = 5 << 30  # a test has a sparse image of more than 4 GiB
LARGEST_MEMORY = 6 << 30
THREAD_STACK = 1 << 20

# The result of a program. `state` is "passed", "failed" or "time"; `test` is the one that failed; `times`
# contains (test, milliseconds) of the tests that passed.
Outcome = collections.namedtuple("Outcome", "state test seconds processor times")


class DoesNotCompile(Exception):
    """The edit does not compile or link."""


def run(command, folder, **options):
    """Runs a command and returns its result with its output."""
    return subprocess.run(command, cwd=folder, text=True, errors="replace", check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)


def limited(command, processor_seconds, sanitized):
    """Adds limits to a command, because an edited program may use up all memory.

    The limit is for writable memory, because tests reserve gigabytes of address space for their guard pages. A
    sanitizer reserves writable memory, so it has its own option for the limit. The stack of a thread counts
    whole, and the library's clear tasks are many threads: they get small stacks.
    """
    memory = [] if sanitized else [f"--data={LARGEST_MEMORY}", f"--stack={THREAD_STACK}:"]
    return ["prlimit", f"--cpu={processor_seconds}:{processor_seconds + 1}",
            f"--fsize={LARGEST_FILE}", *memory, "--core=0", *command]


def archive_of(path):
    """The static library that contains a source file; None for files that are not edited."""
    return next((archive for folder, archive in ARCHIVES.items() if path.is_relative_to(folder)), None)


class TestBuild:
    """A build of the test programs, which can link them with one file replaced.

    An object that is linked before a static library replaces the library's own object. So an edit only requires
    compiling one file and linking each program that is run.
    """

    def __init__(self, folder, programs):
        self.folder = (ROOT / folder).resolve()
        self.commands = {}  # source: (command, object)
        for entry in json.loads((self.folder / "compile_commands.json").read_text("utf-8")):
            command = shlex.split(entry["command"])
            self.commands[pathlib.Path(entry["file"])] = (command,
                                                          command[command.index("-o") + 1])
        self.core = {source for source in self.commands if archive_of(source)}
        self.links = {program: self._link_command(program) for program in programs}
        self.users = self._users()
        self.sanitized = any(part.startswith("-fsanitize") for link in self.links.values()
                             for part in link)

    def _ninja(self, *arguments):
        return subprocess.run(["ninja", "-C", str(self.folder), *arguments], check=True, text=True,
                              stdout=subprocess.PIPE).stdout

    def _link_command(self, program):
        last = self._ninja("-t", "commands", program).strip().splitlines()[-1]
        return shlex.split(last.removeprefix(": && ").removesuffix(" && :"))

    def _users(self):
        """{header of ours: the sources that include it}."""
        users = collections.defaultdict(set)
        by_object = {object_file: source for source, (_, object_file) in self.commands.items()}
        source = None
        for line in self._ninja("-t", "deps").splitlines():
            if line and not line.startswith(" "):
                source = by_object.get(line.split(":")[0])
            elif source and line.strip().endswith(".h"):
                header = (self.folder / line.strip()).resolve()
                if archive_of(header):
                    users[header].add(source)
        return users

    def programs_of(self, path):
        """The programs that contain the library of a source file."""
        return [program for program, link in self.links.items() if archive_of(path) in link]

    def _compile(self, source, text_file, extra, object_file):
        command, built = self.commands[source]
        command = [str(object_file) if part == built else part for part in command]
        command = [str(text_file) if part == str(source) else part for part in command]
        # Warnings, such as about unused variables, must not prevent a trial.
        result = run([command[0], *extra, "-iquote", str(source.parent), *command[1:], "-w"],
                     self.folder)
        if result.returncode != 0:
            raise DoesNotCompile(result.stdout)

    def build(self, path, text, work):
        """Compiles `text` for the source or header `path` in the folder `work`.

        Returns the objects that replace others, {source: object}, for program_of().
        """
        shutil.rmtree(work, ignore_errors=True)
        changed = work / "changed" / path.relative_to(ROOT)
        changed.parent.mkdir(parents=True)
        changed.write_text(text, "utf-8")
        replaced = {}
        if path in self.core:
            replaced[path] = work / "changed.o"
            self._compile(path, changed, [], replaced[path])
            return replaced
        folders = [f"-I{work / 'changed' / start}" for start in INCLUDE_ROOTS]
        for number, source in enumerate(sorted(self.users[path])):
            replaced[source] = work / f"changed{number}.o"
            self._compile(source, source, folders, replaced[source])
        return replaced

    def program_of(self, program, work, replaced):
        """The program in the folder `work`, linked with the replaced objects."""
        own = {self.commands[source][1]: str(made) for source, made in replaced.items()}
        first = [str(made) for source, made in replaced.items() if source in self.core]
        command = []
        for part in self.links[program]:
            if part == f"bin/{program}":
                part = str(work / program)
            if part in ARCHIVES.values() and first:
                command += first
                first = []
            command.append(own.get(part, part))
        result = run(command, self.folder)
        if result.returncode != 0:
            raise DoesNotCompile(result.stdout)
        return work / program

    def run_program(self, executable, work, limit, only=None):
        """Runs a test program. `limit` is in seconds of processor and wall time."""
        temporary = work / "tmp"
        shutil.rmtree(temporary, ignore_errors=True)
        temporary.mkdir(parents=True)
        command = [str(executable), "--gtest_fail_fast", "--gtest_color=no"]
        if only:
            command.append(f"--gtest_filter={only}")
        environment = {**os.environ, "TMPDIR": str(temporary), "BORVAN_SEQUENCES": "100",
                       "ASAN_OPTIONS": f"hard_rss_limit_mb={LARGEST_MEMORY >> 20}"}
        started = time.monotonic()
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        try:
            result = run(limited(command, limit[0], self.sanitized), work, env=environment,
                         timeout=limit[1])
        except subprocess.TimeoutExpired as error:
            shown = error.stdout or b""
            text = shown if isinstance(shown, str) else shown.decode("utf-8", "replace")
            return Outcome("time", self._last_started(text), time.monotonic() - started, 0, [])
        finally:
            shutil.rmtree(temporary, ignore_errors=True)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        processor = after.ru_utime + after.ru_stime - used.ru_utime - used.ru_stime
        seconds = time.monotonic() - started
        if result.returncode == 0:
            times = [(test, int(duration)) for test, duration in TEST_TIME.findall(result.stdout)]
            return Outcome("passed", None, seconds, processor, times)
        failed = FAILED_TEST.search(result.stdout)
        test = failed.group(1) if failed else self._last_started(result.stdout)
        out_of_time = result.returncode in (-24, -9)  # SIGXCPU, then SIGKILL
        return Outcome("time" if out_of_time else "failed", test, seconds, processor, [])

    @staticmethod
    def _last_started(text):
        started = STARTED_TEST.findall(text)
        return started[-1] if started else None
