#!/usr/bin/python3
"""Starts a Windows program through Wine thousands of times and counts the starts that fail in Wine.

Wine needs the page at 0x7ffe0000. Its loader lies below (0x7d000000), and Linux puts the loader's heap
at a random place in the gigabyte above: about one time in 6,000 onto that page. Such a process ends
with 1 before the first instruction of the program, and prints nothing where WINEDEBUG silences Wine.
Without address randomization (setarch -R) the heap lies directly behind the loader. Nor does it happen
with Wine's preloader, which reserves the page; Debian has it in a package of its own.

The program is wine_start.exe, which has no C runtime and only calls ExitProcess(42). All runs are made
twice: with random addresses, and as scripts/run_with_wine.sh does it.

Usage: wine_starts.py [--count N] [--jobs N] [--seconds N] [--how random|fixed] [-- PROGRAM [ARGUMENT...] CODE]
  --count N    starts of each kind (20,000)
  --jobs N     how many at a time (2)
  --seconds N  longest time for each kind (1200)
  --how KIND   only this kind
  PROGRAM CODE another program of the Windows build, its arguments, and the exit code it ends with
Prints the figures; exit code 1 when a start with fixed addresses failed.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tool_program"))
import station  # pylint: disable=wrong-import-position

# What Wine says when the page is taken, if it is allowed to.
PAGE_TAKEN = "failed to map the shared user data"


class Starts:
    """Starts one program over and over, several at a time, and counts how it ends."""

    def __init__(self, command, code):
        self.command = command
        self.code = code
        self.ends = collections.Counter()
        self.lock = threading.Lock()
        self.environment = dict(os.environ, WINEDEBUG="-all,err+virtual",
                                WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe=")

    def once(self):
        """Starts it and waits for its end."""
        run = subprocess.run(self.command, env=self.environment, stdin=subprocess.DEVNULL,
                             capture_output=True, timeout=station.LONGEST, check=False)
        error = run.stderr.decode("utf-8", "replace").strip()
        if run.returncode == self.code:
            end = "as it should"
        elif PAGE_TAKEN in error:
            end = f"with {run.returncode}, Wine's page at 0x7ffe0000 was taken"
        else:
            end = f"with {run.returncode}: {error or 'no message'}"
        with self.lock:
            self.ends[end] += 1

    def repeat(self, count, jobs, seconds):
        """Starts it `count` times, unless the time is over before."""
        limit = time.monotonic() + seconds
        left = iter(range(count))

        def work():
            while time.monotonic() < limit:
                with self.lock:
                    if next(left, None) is None:
                        return
                self.once()

        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            for worker in [pool.submit(work) for _ in range(jobs)]:
                worker.result()

    def failed(self):
        """How many did not end as they should."""
        return sum(self.ends.values()) - self.ends["as it should"]


def main():
    """Measures and prints."""
    parser = argparse.ArgumentParser(usage=__doc__.split("Usage: ")[1])
    parser.add_argument("--count", type=int, default=20000)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--seconds", type=int, default=1200)
    parser.add_argument("--how", choices=("random", "fixed"))
    parser.add_argument("program", nargs="*", default=["wine_start.exe", "42"])
    options = parser.parse_args()
    *program, code = options.program
    folders = [folder for folder in (station.TEST_PROGRAMS, station.BIN)
               if (folder / program[0]).is_file()]
    if not folders:
        sys.exit(f"wine_starts.py: {program[0]} is missing: run scripts/build.sh windows-tests")
    program = [str(folders[0] / program[0]), *program[1:]]
    kinds = {"random": [station.WINE], "fixed": [*station.FIXED_ADDRESSES, station.WINE]}
    if options.how:
        kinds = {options.how: kinds[options.how]}
    bad = 0
    with station.wine_services():
        for how, wine in kinds.items():
            starts = Starts([*map(str, wine), *program], int(code))
            starts.repeat(options.count, options.jobs, options.seconds)
            print(f"{how} addresses: {sum(starts.ends.values())} starts of {' '.join(program)}",
                  flush=True)
            for end, times in starts.ends.most_common():
                print(f"  {times:7} ended {end}", flush=True)
            if how == "fixed":
                bad += starts.failed()
    sys.exit(1 if bad else 0)


if __name__ == "__main__":
    main()
