"""Gathers the copyright texts of everything that is linked into the products."""
import pathlib

# What of other people is in the products, and the Debian package whose copyright file has its terms.
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
DOCUMENTS = pathlib.Path("/usr/share/doc")


class NoticeMissing(Exception):
    """A package has no copyright file."""


def gather(linked=LINKED, documents=DOCUMENTS):
    """The text of THIRD-PARTY-NOTICES.txt."""
    sections = ["Software of others in BorvanUSB\n\n"
                "The programs and DLLs contain parts of the following software. Each section has the terms as\n"
                "the Debian package gives them that the part was taken from.\n\n"
                + "".join(f"  {name}: in {where}\n" for _, name, where in linked)]
    for package, name, _ in linked:
        file = documents / package / "copyright"
        if not file.is_file() or not file.read_text(encoding="utf-8").strip():
            raise NoticeMissing(f"{file} is missing or empty: the terms of {name} can't be handed out.\n"
                                f"Install the package {package} with its documents.")
        line = "=" * 100
        sections.append(f"{line}\n{name} (Debian package {package})\n{line}\n\n"
                        + file.read_text(encoding="utf-8").strip() + "\n")
    return "\n".join(sections)
