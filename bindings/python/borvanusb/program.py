"""Safe programming of a flash by `borvanusb flash program` in a process of its own. The tool keeps a backup
and a journal, changes only the bytes of the image and reads them back."""
import dataclasses
import json
import os
import threading
from typing import Any, Callable, Dict, Generator, List, Optional, Sequence, Union

from .errors import ProcessError, ProgramError
from .library import PACKAGE
from .process import Process

TOOL_VARIABLE = "BORVANUSB_TOOL"  # full name of borvanusb.exe, instead of the one in the package


@dataclasses.dataclass(frozen=True)
class ProgramProgress:
    """The progress; see docs/json/progress.schema.json."""
    stage: str  # read, erase, program or verify
    done: int
    total: int
    unit: str
    percent: int  # of the stage
    rate: Optional[int]
    seconds_left: Optional[int]


@dataclasses.dataclass(frozen=True)
class FlashRange:
    """Addresses, both included."""
    first: int
    last: int


@dataclasses.dataclass(frozen=True)
class ProgramResult:
    """The result. docs/json/flash-program.schema.json describes all of `json`."""
    state: str  # "done", "unchanged" and others
    verified: Optional[bool]  # None: nothing was read back
    backup: Optional[str]  # file with the old bytes
    changed: List[FlashRange]  # sectors that differed
    changed_bytes: int
    sha256: str  # of the image
    seconds: float
    json: Dict[str, Any]


def _result(value: Dict[str, Any]) -> ProgramResult:
    return ProgramResult(
        value["state"], value["verified"], value["backup"],
        [FlashRange(each["first"], each["last"]) for each in value["changed"]],
        value["changed_bytes"], value["image"]["sha256"], value["seconds"]["total"], value)


def _parsed(text: str) -> Dict[str, Any]:
    """The JSON object of a text; an empty one when it has none."""
    try:
        value = json.loads(text)
    except ValueError:
        return {}
    return value if isinstance(value, dict) else {}


def _progress(line: str) -> Optional[ProgramProgress]:
    """The progress of a line of standard error; None when it is a remark."""
    value = _parsed(line).get("progress")
    if not isinstance(value, dict):
        return None
    try:
        return ProgramProgress(**value)
    except TypeError:
        return None


def _arguments(image: "Union[str, os.PathLike[str]]", options: Dict[str, Any]) -> List[str]:
    """The words after the name of the tool. Options that are None or False are left out."""
    words = ["flash", "program", "--json", "--progress", "json"]
    for name, value in options.items():
        if value is True:
            words.append(name)
        elif value is not None and value is not False:
            words.append(f"{name}={value}")
    return [*words, "--", os.fspath(image)]


# pylint: disable-next=too-many-locals
def program_flash_iter(image: "Union[str, os.PathLike[str]]", *, address: Optional[int] = None,
                       camera: Union[str, int, None] = None, backup: Optional[str] = None,
                       keep_backup: bool = True, verify: bool = True, dry_run: bool = False,
                       restore_on_failure: bool = False, force: bool = False,
                       flash_size: Union[str, int, None] = None, timeout: float = 10.0,
                       more_options: Optional[Dict[str, Any]] = None,
                       remark: Optional[Callable[[str], None]] = None,
                       cancel: Optional[threading.Event] = None,
                       tool: Union[str, Sequence[str], None] = None
                       ) -> Generator[ProgramProgress, None, ProgramResult]:
    """As program_flash; a generator of ProgramProgress whose return value is the ProgramResult. A
    generator that is closed early stops the tool at the next safe place and waits for its end."""
    options = {
        "--address": address, "--camera": camera, "--backup": backup, "--no-backup": not keep_backup,
        "--no-verify": not verify, "--dry-run": dry_run, "--restore-on-failure": restore_on_failure,
        "--force": force, "--flash-size": flash_size, "--timeout": timeout, **(more_options or {}),
    }
    command = tool or os.environ.get(TOOL_VARIABLE) or str(PACKAGE / "borvanusb.exe")
    words = [command] if isinstance(command, str) else list(command)
    remarks = []
    try:
        process = Process([*words, *_arguments(image, options)])
    except OSError as error:
        raise ProcessError(f"program_flash: borvanusb can't be started: {error}") from error
    try:
        for line in process.lines(cancel):
            progress = _progress(line)
            if progress is not None:
                yield progress
                continue
            remarks.append(line)
            if remark is not None:
                remark(line)
    finally:
        process.stop()  # does nothing after the end
    code, output = process.finish()
    value = _parsed(output)
    error = value.get("error")
    if code != 0 and isinstance(error, dict):
        raise ProgramError(code, error["kind"], error["message"], error["hint"])
    if code != 0 or "state" not in value:
        raise ProcessError("\n".join(
            [f"program_flash: borvanusb ended with code {code} and without a result", *remarks]))
    return _result(value)


def program_flash(image: "Union[str, os.PathLike[str]]", *,
                  progress: Optional[Callable[[ProgramProgress], None]] = None,
                  **options: Any) -> ProgramResult:
    """Programs the bytes of a file into the flash of a camera; returns when the tool has ended, which
    never waits without limit. No Camera may be using the camera meanwhile.

    Options, all by name:
    address: where the first byte goes; None: at 0, unless the name of the image has another address
    camera: as --camera of the tool; None: the only camera
    backup: file of the old bytes; None: a name beside the image. keep_backup=False: no backup
    verify, dry_run, restore_on_failure, force, flash_size, timeout (seconds without progress): as the
      options of the tool of the same names; more_options: further ones, such as {"--report": "r.json"}
    progress, remark: functions that get each ProgramProgress and each other line
    cancel: a threading.Event; once it is set, the tool stops at the next safe place and the call raises
      ProgramError with exit code 9
    tool: borvanusb.exe; None: that of BORVANUSB_TOOL, or the one in the package

    Raises ProgramError when the tool fails, and ProcessError when it can't be started or ends without a
    result. An exception of a function that was passed stops the tool, too, and waits for its end.
    """
    results: List[ProgramResult] = []

    def keep_result() -> Generator[ProgramProgress, None, None]:
        results.append((yield from program_flash_iter(image, **options)))
    steps = keep_result()  # pylint: disable=assignment-from-no-return
    try:
        for step in steps:  # pylint: disable=not-an-iterable
            if progress is not None:
                progress(step)
    finally:
        steps.close()
    return results[0]
