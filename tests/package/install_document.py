"""Compares the code in docs/install.md with the files that the tests build.

A comment before a block names its file: <!-- tests/package/stranger/c/program.c -->
"""
import re

BLOCK = re.compile(r"^<!-- (\S+) -->\n+```[a-z]*\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def differences(root):
    """Complaints about blocks that differ from their files, and about files that no block shows."""
    text = (root / "docs/install.md").read_text(encoding="utf-8")
    blocks = dict(BLOCK.findall(text))
    found = [f"docs/install.md: the block of {name} differs from the file" for name, block in blocks.items()
             if block != (root / name).read_text(encoding="utf-8")]
    for name in ("mingw.cmake", "c/CMakeLists.txt", "c/program.c", "pkg_config/build.sh",
                 "load_library/program.cpp", "subdirectory/CMakeLists.txt"):
        if f"tests/package/stranger/{name}" not in blocks:
            found.append(f"docs/install.md: no block shows tests/package/stranger/{name}")
    return found
