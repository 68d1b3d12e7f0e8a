"""Gathers the copyright texts of everything that is linked into the products."""
import pathlib
import subprocess
import sys

# Third-party software in the products, and the Debian package whose copyright file contains its licence.
LINKED = (
    ("gcc-mingw-w64-base", "GCC's runtime library and libstdc++", "all programs and DLLs"),
    ("mingw-w64-x86-64-dev", "mingw-w64's C runtime and winpthreads", "all programs and DLLs"),
    ("mingw-w64-common", "mingw-w64's headers", "all programs and DLLs"),
    ("librapidxml-dev", "RapidXML", "borvanusb.exe"),
    ("libboost1.81-dev", "Boost", "borvanusb.exe"),
    ("libfmt-dev", "fmt", "borvanusb.exe, virtual-camera.exe, BorvanVirtualCamera.dll"),
    ("nlohmann-json3-dev", "JSON for Modern C++", "borvanusb.exe, virtual-camera.exe, BorvanVirtualCamera.dll"),
    ("libcli11-dev", "CLI11", "virtual-camera.exe"),
    ("libjs-lunr", "lunr.js", "the search of the documentation"),
)
# The npm packages that are bundled into the page of `borvanusb workbench`. Each has its licence in the file
# LICENSE.
BUNDLED = (
    ("preact", "Preact"),
    ("uplot", "uPlot"),
)
ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "tools" / "borvanusb" / "workbench" / "page"
MODULES = ROOT / "build" / "workbench-page"
DOCUMENTS = pathlib.Path("/usr/share/doc")


class NoticeMissing(Exception):
    """Raised if a package has no copyright file."""


def section(title, text):
    """The licence terms of one component."""
    line = "=" * 100
    return f"{line}\n{title}\n{line}\n\n" + text.strip() + "\n"


def bundled_sections():
    """The licence terms of the page's packages, in the versions of its lock file."""
    subprocess.run([sys.executable, "-B", ROOT / "scripts" / "fetch_npm.py", PAGE / "package-lock.json", MODULES,
                    *(package for package, _ in BUNDLED)], check=True)
    return [section(f"{name} (npm package {package})",
                    (MODULES / "node_modules" / package / "LICENSE").read_text(encoding="utf-8"))
            for package, name in BUNDLED]


def gather(linked=LINKED, documents=DOCUMENTS):
    """The text of THIRD-PARTY-NOTICES.txt."""
    sections = ["Software of others in BorvanUSB\n\n"
                "The programs and DLLs contain parts of the following software. Each section has the terms as\n"
                "the Debian or npm package gives them that the part was taken from.\n\n"
                + "".join(f"  {name}: in {where}\n" for _, name, where in linked)
                + "".join(f"  {name}: in the page of borvanusb workbench\n" for _, name in BUNDLED)]
    for package, name, _ in linked:
        file = documents / package / "copyright"
        if not file.is_file() or not file.read_text(encoding="utf-8").strip():
            raise NoticeMissing(f"{file} is missing or empty: the terms of {name} can't be handed out.\n"
                                f"Install the package {package} with its documents.")
        sections.append(section(f"{name} (Debian package {package})", file.read_text(encoding="utf-8")))
    return "\n".join(sections + bundled_sections())
