"""The wheel of the Python package. Usage: wheel_test.py FOLDER, that of the products."""
import base64
import hashlib
import pathlib
import subprocess
import sys
import tempfile
import zipfile

import cases_folder

SCRIPT = cases_folder.BINDINGS / "python/build_wheel.py"
EXPECTED = {"borvanusb/__init__.py", "borvanusb/camera.py", "borvanusb/errors.py", "borvanusb/jobs.py",
            "borvanusb/library.py", "borvanusb/process.py", "borvanusb/program.py", "borvanusb/status.py",
            "borvanusb/py.typed", "borvanusb/BorvanUSB_x64.dll", "borvanusb/borvanusb.exe",
            "borvanusb/borvanusb_select.dll"}


def build(folder):
    """Builds a wheel into a folder and returns its path."""
    done = subprocess.run([sys.executable, "-B", str(SCRIPT), "--bin", sys.argv[1], "--out", str(folder)],
                          check=True, stdout=subprocess.PIPE, text=True)
    return pathlib.Path(done.stdout.strip())


def check_record(wheel):
    """Every file of the wheel is in RECORD with its hash and size."""
    with zipfile.ZipFile(wheel) as archive:
        names = archive.namelist()
        record = next(name for name in names if name.endswith("/RECORD"))
        lines = archive.read(record).decode("ascii").splitlines()
        assert sorted(line.split(",")[0] for line in lines) == sorted(names)
        for line in lines:
            name, digest, size = line.split(",")
            if name != record:
                content = archive.read(name)
                expected = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).decode().rstrip("=")
                assert digest == "sha256=" + expected and int(size) == len(content), name
        assert {name for name in names if "dist-info" not in name} == EXPECTED, names


def main():
    """Builds two wheels, compares them and looks into one."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        first, second = build(folder / "one"), build(folder / "two")
        assert first.name.endswith("-py3-none-win_amd64.whl"), first
        assert first.read_bytes() == second.read_bytes()
        check_record(first)
        # pip knows how to read it, and refuses it on this system only.
        done = subprocess.run(
            [sys.executable, "-m", "pip", "install", "--no-index", "--no-deps", "--platform", "win_amd64",
             "--only-binary", ":all:", "--target", str(folder / "installed"), str(first)],
            check=False, capture_output=True, text=True)
        if "No module named pip" not in done.stderr:
            assert done.returncode == 0, done.stderr
            assert (folder / "installed/borvanusb/borvanusb.exe").is_file()


if __name__ == "__main__":
    main()
