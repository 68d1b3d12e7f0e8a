"""A station with virtual cameras, on which tests run the built borvanusb.exe through Wine.

WINEPREFIX names the Wine prefix that they share; one test program uses it at a time.
"""
import contextlib
import dataclasses
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BIN = pathlib.Path(os.environ.get("BORVAN_BIN", ROOT / "build" / "windows" / "bin"))
# Programs and DLLs that are only there for tests.
TEST_PROGRAMS = pathlib.Path(os.environ.get("BORVAN_TEST_PROGRAMS", BIN.parent / "test-programs"))
RUN = ROOT / "scripts" / "run_with_wine.sh"
# As the script has it.
os.environ.setdefault("WINEPREFIX", str(ROOT / "build" / "wine-prefix"))
WINE = pathlib.Path("/usr/lib/wine/wine64")
SCHEMAS = ROOT / "docs" / "json"
SECTOR = 4096
# No command of these tests takes longer, however busy the machine is.
LONGEST = 120


def fixed_addresses():
    """What starts Wine without address randomization, which now and then puts the heap of Wine's loader
    where Wine needs another page: such a process ends with 1 before its program begins. Nothing
    where the system does not allow it."""
    command = ["setarch", "-R"]
    try:
        subprocess.run([*command, "true"], check=True, stdin=subprocess.DEVNULL, capture_output=True)
    except (OSError, subprocess.CalledProcessError):
        return []
    return command


FIXED_ADDRESSES = fixed_addresses()


def windows_name(path):
    """A file of this system as programs under Wine call it: the whole tree is drive Z."""
    return "Z:" + str(path).replace("/", "\\")


def camera(number=0, **changes):
    """The configuration of a virtual camera; `changes` replace or add keys."""
    settings = {
        "path": f"\\\\?\\usb#vid_1234&pid_{number:04x}&mi_00#{number}",
        "name": f"Test camera {number}",
        "flash": {"size": "64K"},
        "registers": {"0x1a3": "0x20", "0x100": "0x11", "0x101": "0x22"},
        "sensors": [{"slave": "0x6c", "mode": 1, "registers": {"0x300a": "0x56"}}],
    }
    settings.update(changes)
    return settings


@dataclasses.dataclass
class Outcome:
    """What a run of the tool left."""
    code: int
    out: str
    err: str

    @property
    def json(self):
        """Standard output as one JSON object."""
        return json.loads(self.out)

    @property
    def lines(self):
        """Standard output's JSON lines."""
        return [json.loads(line) for line in self.out.splitlines()]


def text_of(file):
    """What a process wrote into a file."""
    file.seek(0)
    return file.read().decode("utf-8").replace("\r\n", "\n")


class ToolTest(unittest.TestCase):
    """A test with a folder of its own, in which its cameras' files lie."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="borvanusb-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.environment = dict(os.environ, WINEDEBUG="-all",
                                BORVAN_VIRTUAL_CAMERA=windows_name(self.folder / "cameras.json"),
                                BORVANUSB_JOURNALS=windows_name(self.folder),
                                WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe=")

    # Cameras.

    def plug_in(self, *cameras):
        """Registers these cameras in place of all others; without any, the list is empty."""
        configuration = {"cameras": list(cameras)}
        (self.folder / "cameras.json").write_text(json.dumps(configuration), encoding="utf-8")
        self.virtual_camera("register" if cameras else "unregister")

    def configure(self, *cameras):
        """Changes how the registered cameras behave; their state stays."""
        (self.folder / "cameras.json").write_text(json.dumps({"cameras": list(cameras)}),
                                                  encoding="utf-8")

    def virtual_camera(self, *arguments):
        """Runs the virtual cameras' control program."""
        subprocess.run([*self.under_wine("virtual-camera.exe"), *arguments], check=True, timeout=LONGEST,
                       env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)

    def flash_file(self, number=0):
        """The file with a camera's flash."""
        return self.folder / f"cameras.camera{number}.flash"

    def flash(self, number=0):
        """A camera's flash, all of it."""
        return self.flash_file(number).read_bytes()

    def put_flash(self, content, number=0):
        """Gives a camera's flash its bytes; to be called before it is used."""
        self.flash_file(number).write_bytes(content)

    # Files.

    def file(self, name, content=b""):
        """Makes a file and returns its Windows name."""
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode("utf-8"))
        return windows_name(path)

    def name(self, name):
        """The Windows name of a file in the test's folder."""
        return windows_name(self.folder / name)

    # The tool.

    def start(self, *arguments, environment=None, **options):
        """Starts borvanusb; the caller waits for it."""
        options = {"cwd": self.folder, "stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE,
                   "stderr": subprocess.PIPE, **options}
        return subprocess.Popen([*self.command(), *map(str, arguments)], env=dict(
            self.environment, **(environment or {})), **options)

    @staticmethod
    def under_wine(program):
        """The command line that starts a program of ours. Wine's services run already."""
        return [*FIXED_ADDRESSES, str(WINE if WINE.exists() else "wine"), str(BIN / program)]

    def command(self):
        """The command line that starts borvanusb."""
        return self.under_wine("borvanusb.exe")

    def finish(self, process):
        """Waits for a started borvanusb."""
        out, err = process.communicate(timeout=LONGEST)
        return Outcome(process.returncode, out.decode("utf-8").replace("\r\n", "\n"),
                       err.decode("utf-8").replace("\r\n", "\n"))

    def run_tool(self, *arguments, environment=None, **options):
        """Runs borvanusb to its end."""
        # Not through pipes: a service of Wine that the tool starts may hold them open after it.
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            process = self.start(*arguments, environment=environment, stdout=out, stderr=err,
                                 **options)
            try:
                code = process.wait(LONGEST)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
                raise
            return Outcome(code, text_of(out), text_of(err))

    def succeed(self, *arguments, environment=None):
        """Runs borvanusb; it must end with 0."""
        outcome = self.run_tool(*arguments, environment=environment)
        self.assertEqual(outcome.code, 0, f"{arguments}\n{outcome.out}\n{outcome.err}")
        return outcome

    def refuse(self, code, message, *arguments, environment=None):
        """Runs borvanusb; it must end with `code` and a line that holds `message`: a program that
        crashes can end with a small number, too."""
        outcome = self.run_tool(*arguments, environment=environment)
        self.assertEqual(outcome.code, code, f"{arguments}\n{outcome.out}\n{outcome.err}")
        self.assertRegex(outcome.err, r"(?m)^borvanusb: .*" + message)
        return outcome

    # JSON.

    def assert_schema(self, name, value):
        """`value` must be as docs/json/NAME.schema.json says."""
        import jsonschema  # pylint: disable=import-outside-toplevel
        schema = json.loads((SCHEMAS / f"{name}.schema.json").read_text(encoding="utf-8"))
        jsonschema.Draft202012Validator.check_schema(schema)
        jsonschema.validate(value, schema, cls=jsonschema.Draft202012Validator)


@contextlib.contextmanager
def wine_services():
    """Keeps Wine's services alive. Started by the first program and ended after the last, they would hold
    a test's pipes open: a shell that waits for its input keeps them, apart from our output."""
    with subprocess.Popen([RUN, "cmd.exe"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL) as keeper:
        try:
            keeper.stdout.readline()  # the shell greets: it is there
            yield
        finally:
            keeper.stdin.close()


def main():
    """Runs the calling program's tests."""
    with wine_services():
        if not unittest.main(verbosity=2, exit=False).result.wasSuccessful():
            sys.exit(1)
