"""Compiles the headers of the C++ binding with warnings as errors: as C++17 by the library's compiler,
as C++17 and C++20 by Clang in the ABI of Microsoft's compiler, with the standard library that is here.

Usage: compilers_test.py COMPILER CLANG FOLDER…; the folders are those of COMPILER's system headers.
"""
import pathlib
import subprocess
import sys
import tempfile

import cases_folder

SOURCE = """#include <borvan_usb.hpp>
#include <borvan_program_flash.hpp>
int main(int, char** argv) {
  borvan::Camera camera;
  camera.Select(0);
#ifdef __cpp_lib_span
  camera.WriteFlash(std::span<const std::uint8_t>{}, 0);
#endif
  const auto word = camera.TryWriteFlashFile("image.bin", 0) ? camera.ReadFlashWord(0) : 0;
  return static_cast<int>(borvan::ProgramFlash(argv[0]).changed_bytes + word);
}
"""
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wsign-conversion", "-Wshadow", "-Wold-style-cast",
            "-Werror"]
INCLUDES = [f"-I{cases_folder.ROOT / 'include'}", f"-I{cases_folder.BINDINGS / 'cpp'}"]


def microsoft(clang, folders):
    """The command of Clang in the ABI of Microsoft's compiler, with standard headers that were written
    for GCC."""
    standard = [word for folder in folders if not folder.endswith("/include-fixed")
                and not ("/gcc/" in folder and folder.endswith("/include"))
                for word in ("-isystem", folder)]
    return [clang, "--target=x86_64-pc-windows-msvc", "-nostdlibinc", "-fgnuc-version=12.1.0", "-D_UCRT",
            "-D__STRICT_ANSI__", "-fexceptions", "-fcxx-exceptions", "-Wno-language-extension-token",
            *standard]


def main():
    """Prints what a compiler says; exit code 1 when one says anything."""
    compiler, clang, *folders = sys.argv[1:]
    failed = False
    with tempfile.TemporaryDirectory() as name:
        source = pathlib.Path(name) / "program.cpp"
        source.write_text(SOURCE, encoding="ascii")
        for command in ([compiler, "-std=c++17"], [*microsoft(clang, folders), "-std=c++17"],
                        [*microsoft(clang, folders), "-std=c++20"]):
            done = subprocess.run([*command, *WARNINGS, *INCLUDES, "-c", "-o", f"{name}/object", str(source)],
                                  check=False, capture_output=True, text=True)
            if done.returncode != 0 or done.stderr:
                failed = True
                print(command[0], command[-1], done.stderr)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
