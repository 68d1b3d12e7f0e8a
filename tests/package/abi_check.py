"""Compares the library's interface with the one that was promised.

abi/exports.txt has the names and ordinals, abi/borvan_usb.abi the signatures and the record, as abidw writes
them for a shared library that has a variable of each function's type.
"""
import pathlib
import subprocess

BASELINE = pathlib.Path(__file__).resolve().parent / "abi"
RECORD = "UsbDeviceInfo"
TEXTS = ["--no-corpus-path", "--no-comp-dir-path", "--no-show-locs"]


def promised():
    """{ordinal: name} of the exports."""
    rows = (BASELINE / "exports.txt").read_text(encoding="utf-8").split()
    return dict(zip(map(int, rows[::2]), rows[1::2]))


def stub(include, folder, names):
    """Builds the shared library from the header in `include`."""
    lines = ["#include <borvan_usb.h>", f"{RECORD} abi_{RECORD};"]
    lines += [f"__typeof__(&{name}) abi_{name};" for name in names]
    (folder / "stub.c").write_text("\n".join(lines) + "\n", encoding="utf-8")
    library = folder / "stub.so"
    subprocess.run(["gcc", "-std=gnu11", "-g", "-O0", "-shared", "-fPIC", "-I", include, "-o", library,
                    folder / "stub.c"], check=True)
    return library


def signature_changes(library):
    """abidiff's report; empty when signatures and record are those that were promised."""
    run = subprocess.run(["abidiff", BASELINE / "borvan_usb.abi", library], check=False, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if run.returncode & 3:
        raise RuntimeError(f"abidiff failed: {run.stdout}")
    return run.stdout if run.returncode else ""


def export_changes(exports):
    """Complaints about (name, ordinal) pairs of a DLL."""
    found = {ordinal: name for name, ordinal in exports}
    wanted = promised()
    return [f"ordinal {ordinal}: {found.get(ordinal)} in place of {wanted.get(ordinal)}"
            for ordinal in sorted(set(found) | set(wanted)) if found.get(ordinal) != wanted.get(ordinal)]


def write_baseline(library):
    """Makes abi/borvan_usb.abi anew: only when a release adds to the interface."""
    subprocess.run(["abidw", *TEXTS, "--out-file", BASELINE / "borvan_usb.abi", library], check=True)
