"""The errors of this package."""
from .status import WAIT_END_MISSED, WAIT_TIME_LIMIT, status_text


class BorvanError(Exception):
    """A failed call. `kind` is a short name; `status` is the code of a failed job, otherwise 0."""

    def __init__(self, kind: str, message: str, status: int = 0) -> None:
        super().__init__(message)
        self.kind = kind
        self.status = status


class ArgumentError(BorvanError, ValueError):
    """An argument is not allowed; nothing was done."""

    def __init__(self, message: str) -> None:
        super().__init__("argument", message)


class BusyError(BorvanError):
    """A job may still run, or another Camera exists."""

    def __init__(self, message: str) -> None:
        super().__init__("busy", message)


class CameraNotFoundError(BorvanError, LookupError):
    """No camera has this index."""

    def __init__(self, message: str) -> None:
        super().__init__("no-such-camera", message)


class JobError(BorvanError):
    """A job failed; `status` says why."""


class TimeLimitError(JobError, TimeoutError):
    """A job did not end within its time limit. It may still run: see Camera.wait."""


class ProcessError(BorvanError):
    """borvanusb can't be started, or ended without a result."""

    def __init__(self, message: str) -> None:
        super().__init__("process", message)


class ProgramError(BorvanError):
    """borvanusb reported a failure. `name` is its short name, such as "stopped", `hint` says what to do."""

    def __init__(self, exit_code: int, name: str, message: str, hint: str) -> None:
        super().__init__("program", message)
        self.exit_code = exit_code
        self.name = name
        self.hint = hint


def status_error(what: str, status: int) -> BorvanError:
    """The error for the status that a job ended with."""
    message = f"{what}: {status_text(status)}"
    if status == WAIT_TIME_LIMIT:
        return TimeLimitError("time-limit", message, status)
    return JobError("end-missed" if status == WAIT_END_MISSED else "status", message, status)
