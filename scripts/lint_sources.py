#!/usr/bin/env python3
"""Runs clang-tidy in parallel over the sources that the builds compile; see lint.sh.

Usage: lint_sources.py [--library | --tests | FILE…]
Without arguments, checks the sources of the products; with --library, only the library and its examples; with
--tests, also tests, benchmarks and fuzz targets. These take as long as all others together, and are checked by
compiler warnings and sanitizers in any case. A source that no build compiles is an error.
Sources of the native build are checked as compiled there, fuzz targets as in native-fuzz, all others (COM,
Win32) as compiled by the windows build, with the headers of the cross toolchain. A clean source is checked again
only if it, one of our headers that it includes, its compile command, the rules or the tool change.
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import threading

import check_structure

ROOT = pathlib.Path(__file__).resolve().parent.parent
COMMANDS = ROOT / "build" / "lint-commands"
TIDY = "clang-tidy-14"
# Options that only GCC has, or that are for precompiled headers.
NOT_FOR_CLANG = re.compile(r" -Winvalid-pch(?: -Xclang)?(?: -include(?:-pch)?| -Xclang| \S+cmake_pch\.\S+)*"
                           r"| -Xclang -fno-pch-timestamp| -fpch-preprocess| --param=\S+")
SOURCE_FOLDERS = ("include", "src", "virtual_camera", "tools", "examples", "bindings", "tests", "bench", "fuzz")
# The full path-sensitive analysis takes twice the time for every source.
UNSHIPPED = ("tests", "bench", "fuzz")
# Sources that are missing in CMake's compile commands, because a custom rule compiles them.
BY_HAND = {
    "tests/hosts/microsoft/microsoft_host.c":
        "clang-14 --target=x86_64-pc-windows-msvc -std=c11 -nostdlibinc"
        " -isystem tests/hosts/microsoft/include -I include -I tests/hosts"
        " -Wno-language-extension-token -c tests/hosts/microsoft/microsoft_host.c",
}
QUICK_ANALYSIS = ["-Xclang", "-analyzer-config", "-Xclang", "mode=shallow"]
CROSS_COMPILER = "x86_64-w64-mingw32-g++-posix"


def clean_folder():
    """The folder with a mark for each clean source. It is outside of the build, so that a new build does not check
    everything again; ccache does the same for compilers. Some machines have no home folder to write to."""
    folder = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "borvanusb-lint"
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError:
        folder = ROOT / "build" / "lint-clean"
        folder.mkdir(parents=True, exist_ok=True)
    return folder


def output_of(*command):
    """The output of a command, without the last line break."""
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout.strip()


def cross_arguments():
    """Makes clang use the headers of the cross toolchain instead of those of the build machine."""
    library = pathlib.Path(output_of(CROSS_COMPILER, "-print-libgcc-file-name")).parent
    standard = library / "include" / "c++"
    folders = [standard, standard / "x86_64-w64-mingw32", standard / "backward",
               pathlib.Path(output_of("clang-14", "-print-resource-dir")) / "include",
               pathlib.Path("/usr/x86_64-w64-mingw32/include")]
    arguments = ["--target=x86_64-w64-mingw32", "-nostdinc"]
    for folder in folders:
        arguments += ["-isystem", str(folder)]
    return arguments


def compiled_sources(preset):
    """{source of ours: its compile command} of a configured build."""
    database = ROOT / "build" / preset / "compile_commands.json"
    if not database.is_file():
        sys.exit(f"lint_sources.py: {database.relative_to(ROOT)} is missing: "
                 f"run scripts/build.sh {preset} first")
    entries = json.loads(NOT_FOR_CLANG.sub("", database.read_text(encoding="utf-8")))
    return listed(preset, entries)


def listed(preset, entries):
    """Writes the compile commands for clang-tidy. Returns {source of ours: its command}."""
    cleaned = COMMANDS / preset / "compile_commands.json"
    cleaned.parent.mkdir(parents=True, exist_ok=True)
    cleaned.write_text(json.dumps(entries), encoding="utf-8")
    found = {}
    for entry in entries:
        path = pathlib.Path(entry["file"])
        if path.is_relative_to(ROOT) and path.suffix in check_structure.CODE:
            relative = path.relative_to(ROOT)
            if relative.parts[0] in SOURCE_FOLDERS:
                found.setdefault(relative, entry["command"])
    return found


def jobs_of_all_builds():
    """(source, build, command, additional first arguments) for everything that is compiled."""
    jobs = {}
    for preset, extra in (("native", []), ("native-fuzz", []), ("windows-by-source", cross_arguments())):
        for source, command in compiled_sources(preset).items():
            jobs.setdefault(source, (source, preset, command, extra))
    by_hand = [{"directory": str(ROOT), "file": str(ROOT / file), "command": command}
               for file, command in BY_HAND.items()]
    for source, command in listed("by-hand", by_hand).items():
        jobs.setdefault(source, (source, "by-hand", command, []))
    for path in check_structure.our_files(ROOT):
        # Compiled only by their own test, or only by builds without the workbench.
        is_elsewhere = path.is_relative_to("tests/package/stranger") or path.name == "no_workbench.cpp"
        if path.suffix in (".c", ".cpp") and path not in jobs and not is_elsewhere:
            sys.exit(f"lint_sources.py: {path}: no build compiles it")
    return list(jobs.values())


class Linter:
    """Checks single sources, and remembers which ones were clean."""

    def __init__(self):
        files = check_structure.our_files(ROOT)
        self.graph, _ = check_structure.include_graph(ROOT, files)
        rules = [(ROOT / folder / ".clang-tidy").read_text(encoding="utf-8")
                 for folder in ("", "tests")]
        self.tool = "\n".join([output_of(TIDY, "--version"), *rules])
        self.clean = clean_folder()
        self.print_lock = threading.Lock()

    def reached(self, source):
        """`source` and all our files that it includes, directly or indirectly."""
        found = {source}
        waiting = [source]
        while waiting:
            for target in self.graph.get(waiting.pop(), []):
                if target not in found:
                    found.add(target)
                    waiting.append(target)
        return sorted(found)

    def key(self, source, command, extra):
        """A key that depends on everything that affects the result."""
        digest = hashlib.sha256()
        for part in [self.tool, command, *extra, *QUICK_ANALYSIS]:
            digest.update(part.encode() + b"\0")
        for path in self.reached(source):
            digest.update(str(path).encode() + b"\0" + (ROOT / path).read_bytes() + b"\0")
        return digest.hexdigest()

    def look_at(self, job):
        """Returns True if the source is clean; otherwise prints the findings."""
        source, preset, command, extra = job
        clean = self.clean / self.key(source, command, extra)
        if clean.exists():
            return True
        arguments = [f"--extra-arg-before={argument}" for argument in extra]
        run = subprocess.run(
            [TIDY, "--quiet", "-p", str(COMMANDS / preset), *arguments,
             "--extra-arg=-Wno-unknown-warning-option",
             # Headers of Windows declare methods with an empty exception specification; only Clang warns
             # about overrides without it.
             "--extra-arg=-Wno-microsoft-exception-spec",
             *(f"--extra-arg={argument}" for argument in QUICK_ANALYSIS), str(ROOT / source)],
            check=False, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if run.returncode == 0:
            clean.touch()
            return True
        with self.print_lock:
            print(f"== {source} ({preset})\n{run.stdout}", flush=True)
        return False


def main():
    """Collects and checks the sources, and prints how many are not clean."""
    jobs = jobs_of_all_builds()
    if len(sys.argv) == 1:
        jobs = [job for job in jobs if job[0].parts[0] not in UNSHIPPED]
    elif sys.argv[1] == "--library":
        jobs = [job for job in jobs if job[0].parts[0] in ("include", "src", "examples")]
    elif sys.argv[1] != "--tests":
        wanted = {pathlib.Path(name).resolve() for name in sys.argv[1:]}
        jobs = [job for job in jobs if ROOT / job[0] in wanted]
    if not jobs:
        sys.exit("lint_sources.py: no build compiles such a source")
    linter = Linter()
    # clang-tidy runs in separate processes, so threads are enough to use all cores. The longest ones, which
    # read Windows' headers, come first.
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(linter.look_at, reversed(jobs)))
    dirty = results.count(False)
    print(f"clang-tidy: {len(results)} sources, {dirty} with findings")
    sys.exit(1 if dirty else 0)


if __name__ == "__main__":
    main()
