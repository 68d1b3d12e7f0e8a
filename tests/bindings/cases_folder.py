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


def command(program, *arguments, config):
    """The command line and environment that run a program with the cameras of `config`: a Windows
    program through Wine, any other as it is, on the native library."""
    environment = dict(os.environ, BORVAN_VIRTUAL_CAMERA=str(config))
    line = [str(program), *map(str, arguments)]
    if str(program).endswith(".exe"):
        line = [str(ROOT / "scripts" / "with_cameras.sh"), "--config", str(config), *line]
    return line, environment


def run(program, *arguments, config, cwd, limit=150):
    """Runs a program to its end and returns what it left."""
    line, environment = command(program, *arguments, config=config)
    return subprocess.run(line, env=environment, cwd=cwd, timeout=limit, check=False,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, encoding="utf-8")
