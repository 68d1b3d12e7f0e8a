"""The camera object: the instance of the library and the camera that it has selected."""
import contextlib
import dataclasses
import enum
import os
import tempfile
import threading
from typing import Callable, Generator, Iterator, List, Optional, Tuple, Union

from . import jobs
from .errors import (ArgumentError, BorvanError, BusyError, CameraNotFoundError, JobError, status_error)
from .library import Library, UsbDeviceInfo, encode
from .status import FILE_ERROR, FIRST_FAILURE, OUT_OF_MEMORY, WAIT_TIME_LIMIT

USUAL_TIME_LIMIT = 600.0  # seconds
MOST_REGISTERS = 56  # that one transfer reads
SECTOR = 4096
NOTHING_WRITTEN = 11  # status of a register list that does not begin with 0xfffd

FileName = Union[str, "os.PathLike[str]"]
Progress = Optional[Callable[[int], None]]
Steps = Generator[int, None, None]


class I2cMode(enum.IntEnum):
    """Widths of I2C accesses: bits of the register address, bits of the data."""
    ADDRESS_8_DATA_8 = 0
    ADDRESS_16_DATA_8 = 1
    ADDRESS_16_DATA_16 = 2
    ADDRESS_32_DATA_8 = 3
    ADDRESS_32_DATA_16 = 4
    ADDRESS_32_DATA_32 = 5


_ADDRESS_BITS = (8, 16, 16, 32, 32, 32)
_DATA_BITS = (8, 8, 16, 8, 16, 32)


@dataclasses.dataclass(frozen=True)
class CameraInfo:
    """A camera of the list. `index` is -1 for the selected one."""
    index: int
    path: str
    name: str
    vendor_id: str
    product_id: str


@dataclasses.dataclass
class _Process:
    """State that exists once per process, like the library's instance."""
    library: Optional[Library] = None
    has_camera: bool = False
    pending: Optional[jobs.PendingJob] = None


_PROCESS = _Process()


def _info(record: UsbDeviceInfo, index: int) -> CameraInfo:
    return CameraInfo(index, record.text("path"), record.text("name"), record.text("vendor_id"),
                      record.text("product_id"))


def _check_number(what: str, name: str, value: int, largest: int) -> None:
    if not 0 <= value <= largest:
        raise ArgumentError(f"{what}: {name} {value:#x} is not allowed: 0 to {largest:#x}")


def _check_i2c(what: str, slave: int, address: int, mode: int, option: int = 0) -> None:
    if not 0 <= mode <= 5:
        raise ArgumentError(f"{what}: mode {int(mode)} is not allowed: 0 to 5")
    _check_number(what, "slave", slave, 0xFF)
    _check_number(what, "option", option, 0xFF)
    _check_number(what, "address", address, 2 ** _ADDRESS_BITS[mode] - 1)


def _check_run(what: str, first: int, last: int) -> None:
    _check_number(what, "first", first, 0xFFFFFFFF)
    if last < first:
        raise ArgumentError(f"{what}: last {last:#x} is not allowed: {first:#x} or more")
    if last - first >= MOST_REGISTERS:
        raise ArgumentError(f"{what}: {last - first + 1} registers are not allowed: 1 to {MOST_REGISTERS}")


def _encoded(what: str, file: FileName) -> bytes:
    try:
        return encode(file)
    except UnicodeError as error:
        raise ArgumentError(f"{what}: the file name is not allowed: characters of the ANSI code page") from error


def _finish(steps: Steps, progress: Progress) -> None:
    for percent in steps:
        if progress is not None:
            progress(percent)


@contextlib.contextmanager
def _temporary_file() -> Iterator[str]:
    """The name of an empty file. While a job has it open, it can't be removed and stays."""
    handle, name = tempfile.mkstemp(prefix="borvan-", suffix=".bin")
    os.close(handle)
    try:
        yield name
    finally:
        with contextlib.suppress(OSError):
            os.remove(name)


class Camera:
    """Use one object at a time in a process, from the thread that made it.

    Every job has a time limit, in seconds. After a TimeLimitError the job may still run, because nothing
    can stop it; all calls but list, selected, wait and close then raise BusyError until `wait` has seen
    its end. The job calls take `progress`, a function that gets percentages that rise. Those that end in
    `_iter` are generators of the percentages; a generator that is left early leaves its job running.
    """

    def __init__(self, library: Optional[Library] = None) -> None:
        if _PROCESS.has_camera:
            raise BusyError("Camera: another Camera exists: close it first")
        # While a job of an earlier Camera is pending, its instance is reused, so that wait can wait for the job.
        if _PROCESS.pending is None or _PROCESS.library is None:
            _PROCESS.library = library or _PROCESS.library or Library()
            code = _PROCESS.library.UsbIniDevice()
            if code < 0:
                _PROCESS.library.UsbDestroyUSB()
                raise status_error("Camera", code & 0xFFFFFFFF)
        self._library = _PROCESS.library
        self._thread = threading.get_ident()
        self._open = True
        _PROCESS.has_camera = True

    def __enter__(self) -> "Camera":
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def close(self) -> None:
        """Ends the instance, except while a job may run, because this makes a transfer."""
        if self._open:
            self._open = False
            _PROCESS.has_camera = False
            if _PROCESS.pending is None:
                self._library.UsbDestroyUSB()

    # What all calls have in common.

    def _check(self, what: str, while_job_runs: bool = False) -> None:
        if not self._open:
            raise BorvanError("closed", f"{what}: the camera object is closed")
        if threading.get_ident() != self._thread:
            raise BorvanError("thread", f"{what}: the camera object belongs to another thread")
        if not while_job_runs and _PROCESS.pending is not None:
            raise BusyError(f"{what}: a job may still be running: wait for it with wait()")

    @staticmethod
    def _check_access(what: str, success: bool) -> None:
        if not success:
            raise BorvanError("access", f"{what}: the access failed: no camera is open, or the camera "
                              "refused a transfer")

    def _read(self, what: str, call: Callable[[int], Tuple[bool, int]]) -> int:
        """If the value does not change, it is read once more with another initial value: the camera may
        not have answered."""
        self._check(what)
        for before in (0xA5C3F00D, 0x5A3C0FF2):
            success, value = call(before)
            self._check_access(what, success)
            if value != before:
                return value
        raise BorvanError("no-answer", f"{what}: the camera did not answer the request")

    def _run(self, job: jobs.PendingJob, limit: float, start: Callable[[], bool]) -> Steps:
        """Starts a job and waits for it."""
        self._check(job.what)
        if job.file.rsplit(".", maxsplit=1)[-1] == "txt":
            raise ArgumentError(f"{job.what}: a name that ends in .txt is not allowed: the job would write "
                                "text of unknown length")
        job.before = jobs.before_job(self._library)
        try:
            started = start()
        except OSError as error:  # the library's exception: no thread, or no memory
            raise JobError("status", f"{job.what}: the job can't be started: no thread could be created, "
                           "or memory ran out", OUT_OF_MEMORY) from error
        if not started:
            raise status_error(job.what, FILE_ERROR)
        _PROCESS.pending = job
        yield from self._wait(job, limit)

    def _wait(self, job: jobs.PendingJob, limit: float) -> Steps:
        status = yield from jobs.wait(self._library, job, limit)
        if status != WAIT_TIME_LIMIT:
            _PROCESS.pending = None
        if job.is_register_list and status == NOTHING_WRITTEN:
            raise BorvanError("nothing-written", f"{job.what}: nothing was written: the list does not begin "
                              "with 0xfffd", status)
        if status >= FIRST_FAILURE:
            raise status_error(job.what, status)

    # Cameras.

    def list(self) -> List[CameraInfo]:
        """The cameras that are plugged in now. Each call leaks some memory of the library."""
        self._check("list", True)
        if not self._library.UsbUpdateDevice():
            raise BorvanError("access", "list: the system's list of cameras can't be read")
        return [_info(record, i) for i, record in enumerate(self._library.UsbGetAllDeviceInfo())]

    def select(self, index: int) -> None:
        """Selects a camera of the list. One without a vendor unit is selected, too; then every access
        fails."""
        self._check("select")
        selected, message = self._library.borvan_select_device(index)
        if message is not None:
            raise BorvanError("cannot-open", f"select: {message}")
        if not selected:
            raise CameraNotFoundError(f"select: there is no camera with index {index}: the list has "
                                      f"{self._library.UsbGetDeviceNum()}")

    def selected(self) -> CameraInfo:
        """The selected camera; empty texts when none is."""
        self._check("selected", True)
        return _info(self._library.UsbGetSelectDeviceInfo(), -1)

    def wait(self, time_limit: float = USUAL_TIME_LIMIT, progress: Progress = None) -> None:
        """Waits again for a job that did not end within its time limit."""
        self._check("wait", True)
        if _PROCESS.pending is not None:
            _finish(self._wait(_PROCESS.pending, time_limit), progress)

    # Registers of the chip.

    def read_register(self, address: int, wide: bool = False) -> int:
        """A register of 8 bits, or of 32."""
        what = f"read_register({address:#x})"
        _check_number(what, "address", address, 0xFFFFFFFF)
        return self._read(what, lambda before: self._library.UsbRegisterRead(address, int(wide), before))

    def write_register(self, address: int, value: int, wide: bool = False) -> None:
        """Writes a register of 8 bits, or of 32."""
        what = f"write_register({address:#x})"
        _check_number(what, "address", address, 0xFFFFFFFF)
        _check_number(what, "value", value, 0xFFFFFFFF if wide else 0xFF)
        self._check(what)
        self._check_access(what, self._library.UsbRegisterWrite(address, value, int(wide)))

    def read_registers_file(self, file: FileName, first: int, last: int,
                            time_limit: float = USUAL_TIME_LIMIT, progress: Progress = None) -> None:
        """Reads 1 to 56 registers into a file, one byte for each."""
        name = os.fspath(file)
        what = f"read_registers_file({name})"
        _check_run(what, first, last)
        encoded = _encoded(what, file)
        _finish(self._run(jobs.PendingJob(what, name, last - first + 1), time_limit,
                          lambda: self._library.UsbRegisterReadFile(encoded, first, last)), progress)

    def write_register_list(self, file: FileName, time_limit: float = USUAL_TIME_LIMIT,
                            progress: Progress = None) -> None:
        """Writes the registers of a list file."""
        what = f"write_register_list({os.fspath(file)})"
        encoded = _encoded(what, file)
        _finish(self._run(jobs.PendingJob(what, is_register_list=True), time_limit,
                          lambda: self._library.UsbRegisterWriteFile(encoded)), progress)

    # Registers of devices on the I2C bus.

    def read_i2c(self, slave: int, address: int, mode: int, option: int = 0) -> int:
        """A register of a device; `mode` is an I2cMode."""
        what = f"read_i2c({address:#x})"
        _check_i2c(what, slave, address, mode, option)
        return self._read(what, lambda before: self._library.UsbI2cRead(slave, address, mode, option, before))

    def write_i2c(self, slave: int, address: int, value: int, mode: int, option: int = 0) -> None:
        """Writes a register of a device."""
        what = f"write_i2c({address:#x})"
        _check_i2c(what, slave, address, mode, option)
        _check_number(what, "value", value, 2 ** _DATA_BITS[mode] - 1)
        self._check(what)
        self._check_access(what, self._library.UsbI2cWrite(slave, address, value, mode, option))

    # pylint: disable-next=too-many-arguments
    def read_i2c_file(self, file: FileName, slave: int, mode: int, first: int, last: int,
                      time_limit: float = USUAL_TIME_LIMIT, progress: Progress = None) -> None:
        """Reads 1 to 56 registers into a file, one byte for each: of wider values the low 8 bits."""
        name = os.fspath(file)
        what = f"read_i2c_file({name})"
        _check_i2c(what, slave, last, mode)
        _check_run(what, first, last)
        encoded = _encoded(what, file)
        _finish(self._run(jobs.PendingJob(what, name, last - first + 1), time_limit,
                          lambda: self._library.UsbI2CReadFile(first, last, encoded, slave, mode)), progress)

    def write_i2c_list(self, file: FileName, option: int = 0, time_limit: float = USUAL_TIME_LIMIT,
                       progress: Progress = None) -> None:
        """Writes the registers of a list file, which names slave and width."""
        what = f"write_i2c_list({os.fspath(file)})"
        _check_number(what, "option", option, 0xF)
        encoded = _encoded(what, file)
        _finish(self._run(jobs.PendingJob(what), time_limit,
                          lambda: self._library.UsbI2CWriteFile(encoded, option)), progress)

    # Flash.

    def read_flash_word(self, address: int) -> int:
        """Four bytes, the one at `address` in bits 24 to 31. The library gives 0 for a failure too, so a
        0 is confirmed by a dump of these bytes."""
        what = f"read_flash_word({address:#x})"
        _check_number(what, "address", address, 0xFFFFFFFF)
        self._check(what)
        success, value = self._library.UsbFlashRead(address)
        self._check_access(what, success)
        return value or int.from_bytes(self._dump(what, address, 4, 10.0, None), "big")

    def write_flash_word(self, address: int, value: int) -> None:
        """Clears bits in four bytes. Nothing is read back."""
        what = f"write_flash_word({address:#x})"
        _check_number(what, "address", address, 0xFFFFFFFF)
        _check_number(what, "value", value, 0xFFFFFFFF)
        self._check(what)
        self._check_access(what, self._library.UsbFlashWrite(address, value))

    def erase_flash_sector(self, address: int) -> None:
        """Erases 4096 bytes. The call does not wait for the flash."""
        what = f"erase_flash_sector({address:#x})"
        _check_number(what, "address", address, 0xFFFFFFFF)
        if address % SECTOR != 0:
            raise ArgumentError(f"{what}: address {address:#x} is not allowed: a multiple of {SECTOR}")
        self._check(what)
        self._check_access(what, self._library.UsbFlashErase(address))

    def read_flash(self, first: int, count: int, time_limit: float = USUAL_TIME_LIMIT,
                   progress: Progress = None) -> bytes:
        """`count` bytes of flash. After a time limit the bytes are lost."""
        return self._dump(f"read_flash({first:#x})", first, count, time_limit, progress)

    def _dump(self, what: str, first: int, count: int, limit: float, progress: Progress) -> bytes:
        _check_number(what, "first", first, 0xFFFFFFFF)
        if not 1 <= count <= 0x100000000 - first:
            raise ArgumentError(f"{what}: count {count} is not allowed: 1 or more, up to the end of 32-bit "
                                "addresses")
        with _temporary_file() as name:
            encoded = _encoded(what, name)
            _finish(self._run(jobs.PendingJob(what, name, count), limit,
                              lambda: self._library.UsbFlashQuickReadFile(encoded, first,
                                                                          first + count - 1)), progress)
            with open(name, "rb") as file:
                return file.read()

    def read_flash_file(self, file: FileName, first: int, last: int,
                        time_limit: float = USUAL_TIME_LIMIT, progress: Progress = None) -> None:
        """Dumps the flash from `first` to `last`, included, into a file."""
        _finish(self.read_flash_file_iter(file, first, last, time_limit), progress)

    def read_flash_file_iter(self, file: FileName, first: int, last: int,
                             time_limit: float = USUAL_TIME_LIMIT) -> Steps:
        """As read_flash_file; a generator of percentages."""
        name = os.fspath(file)
        what = f"read_flash_file({name})"
        _check_number(what, "first", first, 0xFFFFFFFF)
        _check_number(what, "last", last, 0xFFFFFFFF)
        encoded = _encoded(what, file)
        return self._run(jobs.PendingJob(what, name, last - first + 1), time_limit,
                         lambda: self._library.UsbFlashQuickReadFile(encoded, first, last))

    def write_flash_file(self, file: FileName, address: int, time_limit: float = USUAL_TIME_LIMIT,
                         progress: Progress = None) -> None:
        """Erases and programs, without a backup and without reading back: program_flash is the safe way.
        The sectors of 4096 bytes count from `address`, and up to 59 bytes after the image become 0."""
        _finish(self.write_flash_file_iter(file, address, time_limit), progress)

    def write_flash_file_iter(self, file: FileName, address: int,
                              time_limit: float = USUAL_TIME_LIMIT) -> Steps:
        """As write_flash_file; a generator of percentages."""
        what = f"write_flash_file({os.fspath(file)})"
        _check_number(what, "address", address, 0xFFFFFFFF)
        encoded = _encoded(what, file)
        return self._run(jobs.PendingJob(what), time_limit,
                         lambda: self._library.UsbFlashWriteFile(encoded, address))
