"""The results of mutate.py: stored between runs, and printed."""
import collections
import json
import sys

from equivalent_mutants import LIST, ROOT

RESULTS = ROOT / "build" / "mutation" / "results.jsonl"
# Results of the brief form. It uses fewer programs, so its survivors may be killed by others.
BRIEF_RESULTS = RESULTS.with_name("brief_results.jsonl")


def remembered(path, digest):
    """Valid results of earlier runs, by edit."""
    found = {}
    if path.exists():
        for line in path.read_text("utf-8").splitlines():
            entry = json.loads(line)
            if entry["state"] != "survived" or entry["tests"] == digest:
                found[entry["id"]] = entry
            else:
                found.pop(entry["id"], None)
    return found


class Record:
    """Stores each result immediately, so that a stopped run can be continued."""

    def __init__(self, path, digest):
        self.path = path
        self.found = remembered(path, digest)
        self.digest = digest

    def put(self, edit, state, teller, slow):
        """Adds the result of an edit."""
        entry = {"id": edit.id, "state": state, "by": teller, "tests": self.digest, "slow": slow,
                 "file": str(edit.path.relative_to(ROOT)), "line": edit.line,
                 "was": edit.was, "now": edit.now}
        self.found[edit.id] = entry
        with self.path.open("a", encoding="utf-8") as file:
            file.write(json.dumps(entry) + "\n")
        print(f"{state:8} {entry['file']}:{edit.line} {edit.mutant.kind}"
              f"{', slow tests' if slow else ''}", file=sys.stderr, flush=True)


def report(edits, record, equivalents, windows_only):
    """Prints the figures and the survivors without a reason. Returns the number of the latter."""
    table = collections.defaultdict(collections.Counter)
    let_pass = []
    for edit in edits:
        result = record.found[edit.id]
        state = result["state"]
        if state == "survived" and equivalents.reason(edit):
            state = "equivalent"
        elif state == "survived":
            let_pass.append(edit)
        elif state == "killed" and equivalents.reason(edit):
            print(f"note: listed as equivalent, but {result['by']} fails with it:\n"
                  f"  {result['file']}:{edit.line}: {edit.now}")
        for room in (edit.room, "all"):
            table[room][state] += 1
            table[room]["time"] += "out of time" in (result["by"] or "")
    print(f"{'room':<24}{'compile':>9}{'killed':>9}{'by time':>9}{'equivalent':>12}{'let pass':>10}"
          f"{'killed of all':>15}{'but equivalents':>17}{'(not compiling)':>17}")
    for room in [*sorted(set(table) - {"all"}), "all"]:
        row = table[room]
        total = row["killed"] + row["equivalent"] + row["survived"]
        if total:
            print(f"{room:<24}{total:>9}{row['killed']:>9}{row['time']:>9}{row['equivalent']:>12}"
                  f"{row['survived']:>10}{100 * row['killed'] / total:>14.1f}%"
                  f"{100 * row['killed'] / max(1, total - row['equivalent']):>16.1f}%"
                  f"{row['invalid']:>17}")
    for edit in let_pass:
        print(f"\nLET PASS {edit.path.relative_to(ROOT)}:{edit.line} ({edit.mutant.kind})\n"
              f"  below: {edit.below}\n  above: {edit.above}\n"
              f"  was: {edit.was}\n  now: {edit.now}")
    for complaint in equivalents.complaints():
        print(f"note: {LIST.name}: {complaint}")
    print("\nNot in a native build, so not tried (the tests under Wine run them): "
          + ", ".join(str(path.relative_to(ROOT)) for path in windows_only))
    return len(let_pass)
