#!/usr/bin/env python3
"""Fetches npm packages in the versions of a package-lock.json, for the workbench's page and the bindings.

Usage: fetch_npm.py LOCK FOLDER PACKAGE...
Downloads are stored in build/downloads/npm, so a second run needs no network. Their checksums must equal those
in LOCK. The packages are unpacked into FOLDER/node_modules; no script of a package is run. npm itself is not
used, because it would reject packages for Windows.
"""
import base64
import hashlib
import json
import pathlib
import shutil
import subprocess
import sys
import tarfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOWNLOADS = ROOT / "build" / "downloads" / "npm"


def is_whole(archive, integrity):
    """Whether an archive exists and has the checksum of the lock file."""
    algorithm, expected = integrity.split("-", 1)
    if not archive.is_file():
        return False
    digest = hashlib.new(algorithm, archive.read_bytes()).digest()
    return base64.b64encode(digest).decode() == expected


def download(name, version, integrity):
    """The archive of a package. It is downloaded if it does not exist."""
    archive = DOWNLOADS / f"{name.lstrip('@').replace('/', '-')}-{version}.tgz"
    if is_whole(archive, integrity):
        return archive
    DOWNLOADS.mkdir(parents=True, exist_ok=True)
    subprocess.run(["npm", "pack", "--silent", f"{name}@{version}", "--pack-destination", str(DOWNLOADS)],
                   check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    if not is_whole(archive, integrity):
        sys.exit(f"fetch_npm.py: {archive}: the checksum is not that of the lock file\n"
                 "Remove the file and run the command again.")
    return archive


def unpack(archive, folder):
    """Unpacks an archive and replaces the content of the folder, unless it came from this archive."""
    mark = folder / ".archive"
    if mark.is_file() and mark.read_text(encoding="utf-8") == archive.name:
        return
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    with tarfile.open(archive) as contents:
        for member in contents.getmembers():
            # The first part of a name is "package".
            name = pathlib.PurePosixPath(*pathlib.PurePosixPath(member.name).parts[1:])
            if not member.isfile() or ".." in name.parts:
                continue
            target = folder / name
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(contents.extractfile(member).read())
    mark.write_text(archive.name, encoding="utf-8")


def main():
    """Fetches the packages on the command line."""
    if len(sys.argv) < 4 or sys.argv[1] in ("-h", "--help"):
        sys.exit(__doc__)
    lock_file, folder, names = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
    packages = json.loads(lock_file.read_text(encoding="utf-8"))["packages"]
    for name in names:
        entry = packages.get(f"node_modules/{name}")
        if entry is None:
            sys.exit(f"fetch_npm.py: {lock_file} has no package {name}")
        archive = download(name, entry["version"], entry["integrity"])
        unpack(archive, folder / "node_modules" / name)


if __name__ == "__main__":
    main()
