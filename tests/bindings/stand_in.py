"""Stands in for borvanusb in the tests of the Python package. What it does is in STAND_IN:

done: two lines of progress, a remark and a result    failed: an error with exit code 7
garbage: no result    slow: progress until it is stopped by Ctrl-C, then exit code 9
"""
import json
import os
import signal
import sys
import time

RESULT = {"state": "done", "verified": True, "backup": "old.bin", "changed": [{"first": 4096, "last": 8191}],
          "changed_bytes": 4096, "image": {"file": "image.bin", "size": 3, "sha256": "ab" * 32},
          "seconds": {"read": 0.1, "program": 0.2, "verify": 0.3, "total": 0.95}}


def progress(stage, percent):
    """Prints a line of progress."""
    line = {"progress": {"stage": stage, "done": percent, "total": 100, "unit": "bytes",
                         "percent": percent, "rate": None, "seconds_left": 2}}
    print(json.dumps(line), file=sys.stderr, flush=True)


def fail(code, kind):
    """Ends as a failed command does."""
    print(json.dumps({"error": {"code": code, "kind": kind, "message": "what failed", "hint": "do this"}}))
    sys.exit(code)


def main():
    """Does what STAND_IN says; the arguments go to the file that STAND_IN_ARGUMENTS names."""
    which = os.environ["STAND_IN"]
    if "STAND_IN_ARGUMENTS" in os.environ:
        with open(os.environ["STAND_IN_ARGUMENTS"], "w", encoding="utf-8") as file:
            json.dump(sys.argv[1:], file)
    if which == "slow":
        signal.signal(signal.SIGINT, lambda *_: fail(9, "stopped"))
        for number in range(600):
            progress("program", number // 6)
            time.sleep(0.1)
    progress("read", 50)
    print("a remark: \u00e4", file=sys.stderr, flush=True)
    progress("verify", 100)
    if which == "failed":
        fail(7, "verify")
    if which == "garbage":
        print("{\"state\":")
        sys.exit(3)
    print(json.dumps(RESULT))


main()
