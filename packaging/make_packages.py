#!/usr/bin/env python3
"""Packs a Windows build: archives, installer, checksums. The same build gives the same bytes on any machine.

Usage: make_packages.py --build FOLDER --output FOLDER [--version X.Y.Z]
A --version other than the build's is for tests of upgrades. SOURCE_DATE_EPOCH is the time stamp of files in
the packages; scripts/package.sh sets it.
"""
import argparse
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
import zipfile

import installer
import notices

HERE = pathlib.Path(__file__).resolve().parent
COMPONENTS = ("runtime", "development", "tools", "bindings", "virtual-camera")
SUMS = "SHA256SUMS"
SITE = installer.SITE
BINDINGS = pathlib.PurePosixPath("share/bindings")
# Debian's own Python, which has the packages for the documentation.
PYTHON = "/usr/bin/python3"


def project_version(root=HERE.parent):
    """The version in CMakeLists.txt."""
    text = (root / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(BorvanUSB VERSION (\d+\.\d+\.\d+)", text, re.MULTILINE)[1]


def windows_text(text):
    """The bytes of a text file with Windows line ends."""
    return text.replace("\r\n", "\n").replace("\n", "\r\n").encode("utf-8")


def install(build, component, folder):
    """{place: file} of an install component."""
    subprocess.run(["cmake", "--install", build, "--prefix", folder, "--component", component], check=True,
                   stdout=subprocess.DEVNULL)
    return {pathlib.PurePosixPath(path.relative_to(folder).as_posix()): path
            for path in sorted(folder.rglob("*")) if path.is_file()}


def sums_of(files):
    """The text of SHA256SUMS, which sha256sum --check reads."""
    return "".join(f"{hashlib.sha256(path.read_bytes()).hexdigest()}  {place}\n"
                   for place, path in sorted(files.items()))


def write_archive(target, top, files, epoch):
    """Writes a ZIP file whose bytes only depend on its content."""
    moment = time.gmtime(max(epoch, 315532800))[:6]  # ZIP times start in 1980
    with zipfile.ZipFile(target, "w") as archive:
        for place, path in sorted(files.items(), key=lambda item: str(item[0])):
            entry = zipfile.ZipInfo(f"{top}/{place}", moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            archive.writestr(entry, path.read_bytes(), compresslevel=9)


def common_files(version, folder):
    """README.txt, the notices, and the documentation as HTML."""
    folder.mkdir()
    site = folder / "html"
    subprocess.run([PYTHON, "-B", HERE.parent / "docs/site/build_site.py", HERE.parent, site, version],
                   check=True)
    readme = (HERE / "readme.txt.in").read_text(encoding="utf-8").replace("@VERSION@", version)
    files = {"README.txt": readme, "THIRD-PARTY-NOTICES.txt": notices.gather()}
    for name, text in files.items():
        (folder / name).write_bytes(windows_text(text))
    places = {pathlib.PurePosixPath(name): folder / name for name in files}
    places |= {SITE / path.relative_to(site).as_posix(): path for path in sorted(site.rglob("*")) if path.is_file()}
    return places


def binding_packages(build, folder):
    """The packages for Python, Node.js and .NET."""
    folder.mkdir()
    bindings = HERE.parent / "bindings"
    subprocess.run([PYTHON, "-B", bindings / "python/build_wheel.py", "--bin", build / "bin", "--out", folder],
                   check=True, stdout=subprocess.DEVNULL)
    subprocess.run([bindings / "node/pack.sh", build / "bin", folder], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([PYTHON, "-B", bindings / "csharp/pack.py", build / "bin", folder], check=True,
                   stdout=subprocess.DEVNULL)
    return {BINDINGS / path.name: path for path in sorted(folder.iterdir())}


def make(build, output, version, epoch, with_symbols=True):
    """Writes all packages into `output`. Returns their names."""
    output.mkdir(parents=True, exist_ok=True)
    name = f"borvanusb-{version}"
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        parts = {component: install(build, component, scratch / component) for component in COMPONENTS}
        parts["bindings"] |= binding_packages(build, scratch / "packages")
        parts["common"] = common_files(version, scratch / "common")
        symbols = install(build, "symbols", scratch / "symbols") if with_symbols else {}
        for path in scratch.rglob("*"):
            path.chmod(0o755 if path.is_dir() else 0o644)
            os.utime(path, (epoch, epoch))

        everything = {place: path for files in parts.values() for place, path in files.items()}
        sums = scratch / SUMS
        sums.write_text(sums_of(everything), encoding="utf-8")
        write_archive(output / f"{name}-windows-x64.zip", f"{name}-windows-x64",
                      {**everything, pathlib.PurePosixPath(SUMS): sums}, epoch)
        if with_symbols:
            write_archive(output / f"{name}-windows-x64-symbols.zip", f"{name}-windows-x64", symbols, epoch)
        installer.make(parts, version, output / f"{name}-x64.msi", scratch, epoch)
    packages = {path.name: path for path in output.iterdir()
                if path.name.startswith(name) and path.suffix in (".zip", ".msi")}
    (output / SUMS).write_text(sums_of(packages), encoding="utf-8")
    return sorted(packages)


def main():
    """Reads the arguments and makes the packages."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--output", type=pathlib.Path, required=True)
    parser.add_argument("--version", default=project_version())
    arguments = parser.parse_args()
    if "SOURCE_DATE_EPOCH" not in os.environ:
        sys.exit("make_packages.py: SOURCE_DATE_EPOCH is not set: use scripts/package.sh, or set it")
    missing = [tool for tool in ("cmake", "wixl", "msibuild", "npm") if shutil.which(tool) is None]
    if missing:
        sys.exit(f"make_packages.py: missing: {', '.join(missing)}: run scripts/packages.sh")
    for name in make(arguments.build.resolve(), arguments.output, arguments.version,
                     int(os.environ["SOURCE_DATE_EPOCH"])):
        print(arguments.output / name)


if __name__ == "__main__":
    main()
