"""A folder with the cameras and files of bindings/cases.json, for those who run the cases."""
import json
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BINDINGS = ROOT / "bindings"
CASES = BINDINGS / "cases.json"


def content(description):
    """The bytes that a description {repeat, bytes} or {text} means."""
    if "text" in description:
        return description["text"].encode("ascii")
    pattern = bytes.fromhex(description["repeat"])
    size = description["bytes"]
    return (pattern * (size // len(pattern) + 1))[:size]


def fill(folder):
    """Makes the configuration and the files of the table in an empty folder; returns the table."""
    table = json.loads(CASES.read_text(encoding="utf-8"))
    (folder / "cameras.json").write_bytes((BINDINGS / table["cameras"]).read_bytes())
    for file in table["files"]:
        (folder / file["file"]).write_bytes(content(file))
    return table


def run(program, *arguments, config, cwd, cameras=False):
    """Runs a program with the cameras of `config` to its end and returns what it left: a Windows program
    through Wine, any other as it is, with cameras registered in Wine if `cameras`."""
    environment = dict(os.environ, BORVAN_VIRTUAL_CAMERA=str(config))
    line = [str(program), *map(str, arguments)]
    if cameras or str(program).endswith(".exe"):
        line = [str(ROOT / "scripts" / "with_cameras.sh"), "--config", str(config), *line]
    return subprocess.run(line, env=environment, cwd=cwd, timeout=150, check=False,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, encoding="utf-8")
