"""Waiting for a job of the library; the logic is that of borvan_wait_for_job.h."""
import ctypes
import dataclasses
import enum
import os
import time
from typing import Generator, Optional

from .library import Library
from .status import WAIT_END_MISSED, WAIT_TIME_LIMIT

POLL = 0.020  # seconds
DONE = 3.0  # maximum time for which a job's 100 is visible
CLEAR = 3.5  # time after which it is cleared, even on a slow machine


class State(enum.Enum):
    """The meaning of a value of GetProgressInfo."""
    RUNNING = 0
    DONE = 1
    FAILED = 2
    NOTICE = 3


def percent_of(progress: int) -> int:
    """The low half, signed."""
    return ctypes.c_int32(progress & 0xFFFFFFFF).value


def status_of(progress: int) -> int:
    """The high half, as a code of 32 bits."""
    return progress >> 32


def state_of(progress: int) -> State:
    """As borvan_progress_state."""
    status = status_of(progress)
    if status == 0:
        return State.DONE if percent_of(progress) == 100 else State.RUNNING
    if percent_of(progress) != 0:
        return State.RUNNING
    return State.FAILED if status >= 0x80000000 else State.NOTICE


@dataclasses.dataclass
class PendingJob:
    """A job that was started and may still run."""
    what: str
    file: str = ""  # that the job writes
    size: int = 0  # of that file
    is_register_list: bool = False
    before: int = 0
    reported: bool = False


def before_job(library: Library) -> int:
    """Prepares for a job; see borvan_before_job."""
    start = time.monotonic()
    while state_of(library.GetProgressInfo()) is State.DONE and time.monotonic() - start < CLEAR:
        time.sleep(POLL)
        if library.GetProgressInfo() == 0:
            time.sleep(POLL)  # a dump of less than eight bytes is cleared twice
    if library.GetProgressInfo() != 0:
        library.UsbFlashWriteFile(b"", 0)  # fails at once and without a transfer
    return library.GetProgressInfo()


def _progress(library: Library, job: PendingJob) -> int:
    """The progress; of a job that is done, what it reports a moment later if it failed all the same."""
    value = library.GetProgressInfo()
    if state_of(value) is State.DONE and value != job.before:
        job.reported = True
        time.sleep(POLL)
        later = library.GetProgressInfo()
        if state_of(later) is State.FAILED:
            return later
    return value


def _status_at_end(value: int, job: PendingJob) -> Optional[int]:
    """The status of a job that has ended; None for one that runs."""
    state = state_of(value)
    if state is State.DONE:
        return 0
    if state is State.FAILED or (state is State.NOTICE and job.is_register_list):
        return status_of(value)
    return None


def wait_for_report(library: Library, job: PendingJob, limit: float) -> Generator[int, None, int]:
    """Yields percentages that rise and returns the status; see borvan_wait_for_job."""
    start = last_look = time.monotonic()
    shown = 0
    while True:
        look = time.monotonic()
        value = _progress(library, job)
        now = time.monotonic()
        if value == 0:
            # Cleared. If this program looked often enough to see a 100, it was none of this job's.
            if (job.reported or job.before != 0) and now - last_look >= DONE:
                return WAIT_END_MISSED
        elif value != job.before or job.reported:
            job.reported = True
            percent = percent_of(value) if status_of(value) == 0 else 0
            if percent > shown:
                shown = percent
                yield percent
            status = _status_at_end(value, job)
            if status is not None:
                return status
        if now - start >= limit:
            return WAIT_TIME_LIMIT
        last_look = look
        time.sleep(POLL)


def is_file_complete(job: PendingJob) -> bool:
    """Whether the job's file has its whole length and nobody has it open. Elsewhere than on Windows,
    where this package is only tested, the length decides."""
    try:
        if os.path.getsize(job.file) != job.size:
            return False
    except OSError:
        return False
    return os.name != "nt" or _opens_alone(job.file)


def _opens_alone(file: str) -> bool:
    """Whether Windows opens a file without sharing it."""
    kernel = ctypes.WinDLL("kernel32")  # type: ignore[attr-defined]
    kernel.CreateFileW.restype = ctypes.c_void_p
    kernel.CreateFileW.argtypes = [ctypes.c_wchar_p, ctypes.c_uint32, ctypes.c_uint32, ctypes.c_void_p,
                                   ctypes.c_uint32, ctypes.c_uint32, ctypes.c_void_p]
    kernel.CloseHandle.argtypes = [ctypes.c_void_p]
    generic_read, open_existing = 0x80000000, 3
    handle = kernel.CreateFileW(file, generic_read, 0, None, open_existing, 0, None)
    if handle is None or handle == ctypes.c_void_p(-1).value:
        return False
    kernel.CloseHandle(handle)
    return True


def wait(library: Library, job: PendingJob, limit: float) -> Generator[int, None, int]:
    """Waits for the report of a job and for its file. Yields percentages, returns the status."""
    end = time.monotonic() + limit
    # The job may have ended since the last call, and the report may have been cleared.
    if job.reported and library.GetProgressInfo() == 0:
        status = WAIT_END_MISSED
    else:
        status = yield from wait_for_report(library, job, limit)
    if not job.file:
        return status
    if status in (WAIT_TIME_LIMIT, WAIT_END_MISSED):
        return 0 if is_file_complete(job) else status
    while status == 0 and not is_file_complete(job):
        value = library.GetProgressInfo()
        if state_of(value) is State.FAILED:
            return status_of(value)
        if time.monotonic() >= end:
            return WAIT_TIME_LIMIT
        time.sleep(POLL)
    return status
