#!/usr/bin/env python3
"""Prints the table of scripts/bench.sh from the rounds that the measuring programs printed.

Usage: report.py ROUNDS.txt TRANSFERS.json
ROUNDS.txt holds lines "series value"; TRANSFERS.json is Google Benchmark's output.
"""

import collections
import json
import statistics
import sys

NANOSECONDS_PER_SECOND = 1e9
LARGEST_COST_NS = 50
LARGEST_WAIT_RATIO = 1.001
SMALLEST_FORMAT_RATIO = 10
LARGEST_WRITE_RATIO = 2
LARGEST_MEMORY_RATIO = 2.2
SMALLEST_READER_RATIO = 5
LARGEST_PLAN_NS = 20
LARGEST_PLAN_GROWTH = 2
LARGEST_TOOL_RATIO = 1.02
LARGEST_EQUAL_RATIO = 1.05
LARGEST_START_RATIO = 1.5
LARGEST_HELP_MS = 50
LARGEST_CAMERA_US = 3
LARGEST_TRACED_US = 10


def read_rounds(path):
    """The values of each series, in the order of the rounds."""
    series = collections.defaultdict(list)
    with open(path, encoding="ascii") as lines:
        for line in lines:
            name, value = line.split()
            series[name].append(float(value))
    return series


def read_transfers(path, series):
    """Adds Google Benchmark's repetitions as nanoseconds a transfer."""
    with open(path, encoding="utf-8") as file:
        results = json.load(file)["benchmarks"]
    for result in results:
        if result["run_type"] != "iteration":
            continue
        if result.get("error_occurred"):
            sys.exit(f"report.py: {result['name']}: {result['error_message']}")
        name = result["name"].split("/")[0]
        series[name].append(NANOSECONDS_PER_SECOND / result["items_per_second"])


def row(what, measured, yardstick, figure, target, met):
    """One line of the table."""
    verdict = "target met" if met else "target missed"
    print(f"{what:<44} {measured:>10} {yardstick:>10} {figure:>11} {target:>11}  {verdict}")


def cost_row(what, series, library, bare, pick):
    """The library's own cost of a transfer: the difference of the two series."""
    measured, yardstick = pick(series[library]), pick(series[bare])
    cost = measured - yardstick
    row(what, f"{measured:.1f} ns", f"{yardstick:.1f} ns", f"{cost:.1f} ns",
        f"<= {LARGEST_COST_NS} ns", cost <= LARGEST_COST_NS)


def pair_row(what, measured, yardstick, ratio, target, met):
    """Two times in milliseconds and their ratio."""
    row(what, f"{measured:.1f} ms", f"{yardstick:.1f} ms", f"{ratio:.2f}", target, met)


def print_lists(series):
    """The rows of register and I2C lists."""
    median = statistics.median
    print("e. register and I2C lists, native")
    measured = median(series["lists.native.reader_ms"])
    yardstick = median(series["lists.native.scanning_ms"])
    pair_row("   1,000,000 lines, beside fgets and sscanf", measured, yardstick,
             yardstick / measured, f">= {SMALLEST_READER_RATIO}",
             yardstick / measured >= SMALLEST_READER_RATIO)
    ratio = max(series["lists.native.reader_memory_ratio"])
    row("   their peak memory over that of the list", "", "", f"{ratio:.2f}",
        f"<= {LARGEST_MEMORY_RATIO}", ratio <= LARGEST_MEMORY_RATIO)
    print("   planning, an entry of 1,000,000 (yardstick: of 10,000)")
    for plan in ("registers", "i2c_steps", "i2c_packets"):
        for shape in ("consecutive", "scattered"):
            short, long = (median(series[f"lists.native.{plan}_{shape}_{size}_ns"])
                           for size in (10_000, 1_000_000))
            slower = max(short, long)
            title = f"   {plan.replace('_', ' ').replace('i2c', 'I2C')}, {shape}"
            row(f"{title}, slower", f"{long:.1f} ns", f"{short:.1f} ns", f"{slower:.1f} ns",
                f"<= {LARGEST_PLAN_NS} ns", slower <= LARGEST_PLAN_NS)
            row(f"{title}, ratio", "", "", f"{long / short:.2f}", f"<= {LARGEST_PLAN_GROWTH}",
                long / short <= LARGEST_PLAN_GROWTH)


def print_tool(series):
    """The rows of the command-line tool."""
    median = statistics.median
    print("f. borvanusb at 125 us a transfer, whole process beside the DLL's own jobs")
    for name, title, target in (
            ("program", "programming 1 MiB, read twice before and after", LARGEST_TOOL_RATIO),
            ("equal", "an equal image beside two reads", LARGEST_EQUAL_RATIO)):
        rounds = series[f"tool.{name}_ratio"]
        print(f"   {title}")
        for kind, pick in (("least", min), ("median", median)):
            ratio = pick(rounds)
            row(f"      {kind} of {len(rounds)}", "", "", f"{ratio:.4f}", f"<= {target}",
                ratio <= target)
    # Under Wine a start takes 15 or 35 ms, whatever the program: the least of all shows what the program adds.
    help_ms, empty_ms = min(series["tool.help_ms"]), min(series["tool.empty_ms"])
    row("   --help beside an empty program, least", f"{help_ms:.1f} ms", f"{empty_ms:.1f} ms",
        f"{help_ms - empty_ms:.1f} ms", f"<= {LARGEST_HELP_MS} ms",
        help_ms - empty_ms <= LARGEST_HELP_MS)
    for name, yardstick, title in (("version", "empty", "--version beside an empty program, least"),
                                   ("list", "enumerate", "list beside a bare enumeration, least")):
        taken, bare = min(series[f"tool.{name}_ms"]), min(series[f"tool.{yardstick}_ms"])
        row(f"   {title}", f"{taken:.1f} ms", f"{bare:.1f} ms", f"{taken / bare:.2f}",
            f"<= {LARGEST_START_RATIO}", taken / bare <= LARGEST_START_RATIO)


def print_camera(series):
    """The rows of the virtual camera."""
    print("g. a transfer of the virtual camera (yardstick: of the flash in memory)")
    for place, title in (("native", "native"), ("dll", "under Wine")):
        for work, verb in (("program", "programming"), ("read", "reading")):
            for what, extra, target in (("camera", "", LARGEST_CAMERA_US),
                                        ("traced", ", traced", LARGEST_TRACED_US)):
                rounds = series[f"camera.{place}.{work}_{what}_ns"]
                memory = series[f"camera.{place}.{work}_memory_ns"]
                for name, pick in (("least", min), ("median", statistics.median)):
                    taken = pick(rounds) / 1000
                    row(f"   {verb}{extra}, {title}, {name}", f"{taken:.2f} us",
                        f"{pick(memory):.1f} ns", f"{taken:.2f} us", f"<= {target} us",
                        taken <= target)


def main():
    """Prints the table of the rounds in a file; see above."""
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    series = read_rounds(sys.argv[1])
    read_transfers(sys.argv[2], series)
    median = statistics.median

    print(f"{'figure':<44} {'measured':>10} {'yardstick':>10} {'result':>11} {'target':>11}")
    print("a. cost of a transfer beside a bare loop of the same calls")
    cost_row("   programming, native, median", series, "ProgramByLibrary", "ProgramByBareLoop", median)
    cost_row("   reading, native, median", series, "ReadByLibrary", "ReadByBareLoop", median)
    for name, pick in (("least", min), ("median", median)):
        for work, title in (("program", "programming"), ("read", "reading")):
            cost_row(f"   {title}, DLL under Wine, {name}", series,
                     f"transfers.dll.{work}_library_ns", f"transfers.dll.{work}_bare_ns", pick)

    print("b. 1 MiB with 125 us a transfer, whole job over the sum of the waits (yardstick: a bare job)")
    for place, title in (("native", "native"), ("dll", "DLL under Wine")):
        for work, verb in (("program", "programming"), ("read", "reading")):
            rounds = series[f"waits.{place}.{work}_ratio"]
            # Under Wine a thread and a file cost something by themselves.
            bare = series.get(f"waits.{place}.{work}_bare_ratio")
            for name, pick in (("least", min), ("median", median)):
                measured, yardstick = pick(rounds), pick(bare) if bare else 1
                ratio = measured / yardstick
                row(f"   {verb}, {title}, {name} of {len(rounds)}", f"{measured:.5f}" if bare else "",
                    f"{yardstick:.5f}" if bare else "", f"{ratio:.5f}", f"<= {LARGEST_WAIT_RATIO}",
                    ratio <= LARGEST_WAIT_RATIO)

    print("c. text dump of 16 MiB")
    measured, yardstick = median(series["dump.native.format_ms"]), median(series["dump.native.xxd_ms"])
    pair_row("   formatting, native, beside xxd", measured, yardstick, yardstick / measured,
             f">= {SMALLEST_FORMAT_RATIO}", yardstick / measured >= SMALLEST_FORMAT_RATIO)
    print(f"   (xxd needs {median(series['dump.native.xxd_start_ms']):.1f} ms of it for an empty file)")
    for place, title, pick in (("native", "native", median), ("dll", "DLL, least", min)):
        measured = pick(series[f"dump.{place}.write_ms"])
        yardstick = pick(series[f"dump.{place}.one_write_ms"])
        pair_row(f"   whole dump, {title}, beside one write", measured, yardstick,
                 measured / yardstick, f"<= {LARGEST_WRITE_RATIO}",
                 measured / yardstick <= LARGEST_WRITE_RATIO)

    print("d. peak growth of memory over the data")
    for name, rounds in series.items():
        if name.startswith("memory."):
            _, place, what = name.removesuffix("_ratio").split(".")
            work, mebibytes = what.rsplit("_", 1)
            title = {"native": "native", "dll": "DLL under Wine"}[place]
            ratio = max(rounds)
            row(f"   {work.replace('_', ' ')}, {mebibytes} MiB, {title}", "", "", f"{ratio:.2f}",
                f"<= {LARGEST_MEMORY_RATIO}", ratio <= LARGEST_MEMORY_RATIO)

    print_lists(series)
    print_tool(series)
    print_camera(series)


if __name__ == "__main__":
    main()
