"""The tests' programs on a library with one file changed: building them and running them."""
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

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARY = "libborvan_core_under_test.so"
ARCHIVE = "lib/libborvan_core.a"
FAILED_TEST = re.compile(r"^\[  FAILED  \] (\S+\.\S+?),? ", re.MULTILINE)
TEST_TIME = re.compile(r"^\[       OK \] (\S+?) \((\d+) ms\)", re.MULTILINE)
STANDARD_HEADER = re.compile(r"^#include (<\w+>)$", re.MULTILINE)
STARTED_TEST = re.compile(r"^\[ RUN      \] (\S+)", re.MULTILINE)
LARGEST_FILE = 5 << 30  # a test has an image of more than 4 GiB, most of it never written
LARGEST_MEMORY = 6 << 30

# What a program did: state is "passed", "failed" or "time"; test names the one that failed; times
# are (test, milliseconds) of those that passed.
Outcome = collections.namedtuple("Outcome", "state test seconds processor times")


class DoesNotCompile(Exception):
    """The compiler or the linker refuses the edit."""


def run(command, folder, **options):
    """Runs a command and gives its result, with what it printed."""
    return subprocess.run(command, cwd=folder, text=True, errors="replace", check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)


def limited(command, processor_seconds):
    """A command kept from taking the machine, should an edit have gone wild."""
    return ["prlimit", f"--cpu={processor_seconds}:{processor_seconds + 1}",
            f"--fsize={LARGEST_FILE}", f"--as={LARGEST_MEMORY}", "--core=0", *command]


def newer(made, origin):
    """Whether a file is there and was made after another."""
    return made.exists() and made.stat().st_mtime >= origin.stat().st_mtime


class TestBuild:
    """A build whose test programs take the library from a shared object.

    So an edit costs compiling one file and linking one library; no program is linked anew.
    """

    def __init__(self, folder, programs):
        self.folder = (ROOT / folder).resolve()
        self.commands = {}  # source: (command, object)
        for entry in json.loads((self.folder / "compile_commands.json").read_text("utf-8")):
            command = shlex.split(entry["command"])
            self.commands[pathlib.Path(entry["file"])] = (command,
                                                          command[command.index("-o") + 1])
        self.core = {source: object_file for source, (_, object_file) in self.commands.items()
                     if source.is_relative_to(ROOT / "src")}
        self.links = {program: self._link_command(program) for program in programs}
        self.users = self._users()
        self.prefix = self._precompile()
        if not newer(self.folder / "lib" / LIBRARY, self.folder / ARCHIVE):
            self._link_library(self.folder / "lib", {})
        for program in programs:
            if not newer(self.folder / "lib" / program, self.folder / "bin" / program):
                self._link_program(program, self.folder / "lib", {})

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
                if header.is_relative_to(ROOT / "src"):
                    users[header].add(source)
        return users

    def _precompile(self):
        """A header with all of the standard library that src/ uses, read once for all edits."""
        names = {name for path in (*self.core, *self.users)
                 for name in STANDARD_HEADER.findall(path.read_text("utf-8"))}
        prefix = self.folder / "standard_headers.h"
        text = "".join(f"#include {name}\n" for name in sorted(names))
        if not prefix.exists() or prefix.read_text("utf-8") != text:
            prefix.write_text(text, "utf-8")
        if newer(self.folder / "standard_headers.h.gch", prefix) \
                and newer(self.folder / "standard_headers.h.gch", self.folder / "build.ninja"):
            return prefix
        command, built = next(self.commands[source] for source in self.core)
        command = command[:command.index("-c")]
        command[command.index(built)] = f"{prefix}.gch"
        result = run([*command, "-x", "c++-header", str(prefix)], self.folder)
        if result.returncode != 0:
            raise SystemExit(result.stdout)
        return prefix

    def _link_library(self, target_folder, replaced):
        objects = [str(replaced.get(source, object_file)) for source, object_file in
                   self.core.items()]
        result = run(["g++", "-shared", f"-Wl,-soname,{LIBRARY}", "-o",
                      str(target_folder / LIBRARY), *objects, "-pthread"], self.folder)
        if result.returncode != 0:
            raise DoesNotCompile(result.stdout)

    def _link_program(self, program, target_folder, replaced):
        objects = {self.commands[source][1]: str(path) for source, path in replaced.items()}
        command = []
        for part in self.links[program]:
            if part == ARCHIVE:
                part = str(target_folder / LIBRARY)
            elif part == f"bin/{program}":
                part = str(target_folder / program)
            command.append(objects.get(part, part))
        # What only other programs bring, the system's side, may be missing: it is never called.
        result = run([*command, "-pthread", "-Wl,--allow-shlib-undefined,-z,lazy"], self.folder)
        if result.returncode != 0:
            raise DoesNotCompile(result.stdout)

    def _compile(self, source, text_file, extra, object_file):
        command, built = self.commands[source]
        command = [str(object_file) if part == built else part for part in command]
        command = [str(text_file) if part == str(source) else part for part in command]
        # Warnings about what an edit leaves unused must not keep it from being tried.
        prefix = ["-include", str(self.prefix)] if source in self.core else []
        result = run([command[0], *prefix, *extra, *command[1:], "-w"], self.folder)
        if result.returncode != 0:
            raise DoesNotCompile(result.stdout)

    def build(self, path, text, work):
        """Builds the library with `text` for the source or header `path`, in the folder `work`.

        Returns which of the programs' sources are to be compiled anew, for program_of().
        """
        shutil.rmtree(work, ignore_errors=True)
        changed = work / "changed" / path.relative_to(ROOT / "src")
        changed.parent.mkdir(parents=True)
        changed.write_text(text, "utf-8")
        replaced = {}
        if path in self.core:
            replaced[path] = work / "changed.o"
            self._compile(path, changed, [], replaced[path])
        else:
            for number, source in enumerate(sorted(self.users[path] & set(self.core))):
                replaced[source] = work / f"core{number}.o"
                self._compile(source, source, ["-I", str(work / "changed")], replaced[source])
        self._link_library(work, replaced)
        return set() if path in self.core else self.users[path] - set(self.core)

    def program_of(self, program, work, users):
        """The program to run in the folder `work`: one of its own if it has sources of `users`."""
        mine = [source for source in users if self.commands[source][1] in self.links[program]]
        if not mine:
            return self.folder / "lib" / program
        replaced = {}
        for number, source in enumerate(sorted(mine)):
            replaced[source] = work / f"{program}{number}.o"
            self._compile(source, source, ["-I", str(work / "changed")], replaced[source])
        self._link_program(program, work, replaced)
        return work / program

    def run_program(self, executable, library_folder, work, limit, only=None):
        """Runs a test program with the library of a folder. `limit`: processor and wall seconds."""
        temporary = work / "tmp"
        shutil.rmtree(temporary, ignore_errors=True)
        temporary.mkdir(parents=True)
        command = [str(executable), "--gtest_fail_fast", "--gtest_color=no"]
        if only:
            command.append(f"--gtest_filter={only}")
        environment = {**os.environ, "TMPDIR": str(temporary),
                       "LD_LIBRARY_PATH": str(library_folder)}
        started = time.monotonic()
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        try:
            result = run(limited(command, limit[0]), work, env=environment, timeout=limit[1])
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
        out_of_time = result.returncode in (-24, -9)  # SIGXCPU, SIGKILL behind it
        return Outcome("time" if out_of_time else "failed", test, seconds, processor, [])

    @staticmethod
    def _last_started(text):
        started = STARTED_TEST.findall(text)
        return started[-1] if started else None
