"""The checks of scripts/release.sh: all places with a version have the same one."""
import hashlib
import re
import subprocess
import sys

import make_packages

sys.path.append(str(make_packages.HERE.parent / "tests/build"))
import pe_file  # pylint: disable=wrong-import-position

PRODUCTS = ("BorvanUSB_x64.dll", "BorvanVirtualCamera.dll", "borvanusb.exe", "virtual-camera.exe")
# Patterns for the version in documents and lists.
NAMED = {
    "docs/start.md": r"borvanusb-(\d+\.\d+\.\d+)-",
    "docs/install.md": r"borvanusb-(\d+\.\d+\.\d+)-",
    "docs/tool.md": r", version (\d+\.\d+\.\d+)",
    "packaging/vcpkg/vcpkg.json": r'"version-semver": "(\d+\.\d+\.\d+)"',
}
HEADING = re.compile(r"^## (\d+\.\d+\.\d+)(?: - \d{4}-\d\d-\d\d| (\(unreleased\)))?$", re.MULTILINE)


def of_tree(root):
    """Complaints about the sources: changelog and documents against CMakeLists.txt."""
    version = make_packages.project_version(root)
    found = []
    heading = HEADING.search((root / "CHANGELOG.md").read_text(encoding="utf-8"))
    if heading is None or heading[1] != version:
        found.append(f"CHANGELOG.md begins with {heading[1] if heading else 'no version'}, not with {version}")
    for name, pattern in NAMED.items():
        named = set(re.findall(pattern, (root / name).read_text(encoding="utf-8")))
        if named != {version}:
            found.append(f"{name} names version {', '.join(sorted(named)) or 'none'}, not {version}")
    return found


def of_release(root):
    """Complaints about parts that only a release has: the tag, and a heading with a date."""
    version = make_packages.project_version(root)
    found = []
    heading = HEADING.search((root / "CHANGELOG.md").read_text(encoding="utf-8"))
    if heading is not None and not re.search(r" - \d{4}-\d\d-\d\d$", heading[0]):
        found.append(f"CHANGELOG.md: the heading \"{heading[0]}\" has no date: ## {version} - YYYY-MM-DD")
    run = subprocess.run(["git", "tag", "--points-at", "HEAD"], cwd=root, check=False, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    if f"v{version}" not in run.stdout.split():
        found.append(f"no tag v{version} points at the current commit")
    if subprocess.run(["git", "diff", "--quiet", "HEAD"], cwd=root, check=False).returncode != 0:
        found.append("files differ from the current commit")
    return found


def of_products(folder, version):
    """Complaints about the version resources of the built products."""
    found = []
    for name in PRODUCTS:
        if not (folder / name).is_file():
            found.append(f"{folder / name} is missing")
            continue
        numbers, texts = pe_file.PeFile(folder / name).version()
        if numbers != (*map(int, version.split(".")), 0) or texts.get("ProductVersion") != version:
            found.append(f"{folder / name} has version {'.'.join(map(str, numbers))}, not {version}")
    return found


def of_packages(folder, version):
    """Complaints about the packages: names, checksums, the installer's own version."""
    wanted = {f"borvanusb-{version}-windows-x64.zip", f"borvanusb-{version}-windows-x64-symbols.zip",
              f"borvanusb-{version}-x64.msi"}
    found = []
    present = {path.name for path in folder.iterdir()} - {"SHA256SUMS"} if folder.is_dir() else set()
    if present != wanted:
        found.append(f"{folder} holds {', '.join(sorted(present)) or 'nothing'}; "
                     f"{', '.join(sorted(wanted))} are wanted")
        return found
    sums = {name: hashlib.sha256((folder / name).read_bytes()).hexdigest() for name in wanted}
    listed = dict(reversed(line.split("  ")) for line in
                  (folder / "SHA256SUMS").read_text(encoding="utf-8").splitlines())
    if sums != listed:
        found.append(f"{folder}/SHA256SUMS does not belong to the packages")
    table = subprocess.run(["msiinfo", "export", folder / f"borvanusb-{version}-x64.msi", "Property"], check=True,
                           text=True, stdout=subprocess.PIPE).stdout
    if f"ProductVersion\t{version}" not in table.replace("\r", "").splitlines():
        found.append(f"{folder}/borvanusb-{version}-x64.msi installs another version")
    return found


def main():
    """Prints the complaints; exit code 1 if there are any."""
    root = make_packages.HERE.parent
    version = make_packages.project_version(root)
    found = of_tree(root)
    if sys.argv[1:] != ["--tree"]:
        found += (of_release(root) + of_products(root / "build/package/bin", version)
                  + of_packages(root / "build/packages", version))
    for complaint in found:
        print(f"release.sh: {complaint}")
    if not found:
        print(f"version {version}: everything agrees")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
