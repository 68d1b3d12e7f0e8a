"""A program with its output in pipes, which can be asked to stop as by Ctrl-C."""
import ctypes
import os
import queue
import signal
import subprocess
import threading
from typing import Any, Iterator, List, Optional, Sequence, Tuple

LOOK = 0.05  # seconds between two looks at `cancel`
LAST_WORDS = 2.0  # seconds for what a program that has ended left in its pipes


class Process:
    """A running program. Its standard input is empty, its output is UTF-8."""

    def __init__(self, command: Sequence[str]) -> None:
        self._has_console = os.name != "nt" or _kernel().GetConsoleCP() != 0
        flags = 0
        if os.name == "nt":
            # A group of its own can be sent Ctrl-Break alone; without a console the child gets a hidden one.
            flags = (subprocess.CREATE_NEW_PROCESS_GROUP if self._has_console  # type: ignore[attr-defined]
                     else subprocess.CREATE_NO_WINDOW)  # type: ignore[attr-defined]
        # pylint: disable-next=consider-using-with
        self._process: "subprocess.Popen[bytes]" = subprocess.Popen(
            list(command), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            creationflags=flags)
        self._attached = False
        self._interrupted = False
        self._ended = False  # the lines
        self._output: List[bytes] = []
        self._lines: "queue.Queue[Optional[str]]" = queue.Queue()
        # Daemons: another program that inherited the pipes by chance could keep them open.
        self._readers = [threading.Thread(target=self._read_output, daemon=True),
                         threading.Thread(target=self._read_lines, daemon=True)]
        for reader in self._readers:
            reader.start()

    def _read_output(self) -> None:
        assert self._process.stdout is not None
        with self._process.stdout as stream:
            self._output.append(stream.read())

    def _read_lines(self) -> None:
        assert self._process.stderr is not None
        with self._process.stderr as stream:
            for line in stream:
                self._lines.put(line.decode("utf-8", errors="replace").rstrip("\r\n"))
        self._lines.put(None)

    def lines(self, cancel: Optional[threading.Event]) -> Iterator[str]:
        """The lines of standard error. Once `cancel` is set, the program is asked to stop."""
        looks_after_end = 0
        while looks_after_end * LOOK < LAST_WORDS:
            if cancel is not None and cancel.is_set():
                self._interrupt()
            try:
                line = self._lines.get(timeout=LOOK)
            except queue.Empty:
                looks_after_end += 0 if self._process.poll() is None else 1
                continue
            if line is None:
                break
            yield line
        self._ended = True

    def _interrupt(self) -> None:
        """Asks the program to stop, once."""
        if self._interrupted or self._process.poll() is not None:
            return
        if os.name != "nt":
            self._process.send_signal(signal.SIGINT)
            self._interrupted = True
        elif self._has_console:
            # pylint: disable-next=no-member
            self._process.send_signal(signal.CTRL_BREAK_EVENT)  # type: ignore[attr-defined]
            self._interrupted = True
        else:
            self._interrupted = self._interrupt_at_its_console()

    def _interrupt_at_its_console(self) -> bool:
        """All processes of that console receive the Ctrl-C. This program ignores it until the child has ended."""
        kernel = _kernel()
        if not self._attached:
            kernel.FreeConsole()
            self._attached = bool(kernel.AttachConsole(self._process.pid))
        if not self._attached:
            return False
        kernel.SetConsoleCtrlHandler(None, True)
        return bool(kernel.GenerateConsoleCtrlEvent(0, 0))

    def stop(self) -> None:
        """Waits for the end of the program; asks it to stop if its lines have not ended yet."""
        if not self._ended:
            at_once = threading.Event()
            at_once.set()
            for _ in self.lines(at_once):
                pass
        self._process.wait()
        self._readers[0].join(LAST_WORDS)
        if self._attached:
            self._attached = False
            _kernel().FreeConsole()
            _kernel().SetConsoleCtrlHandler(None, False)

    def finish(self) -> Tuple[int, str]:
        """The exit code and the standard output of the program that has stopped."""
        code = self._process.wait() & 0xFFFFFFFF
        return code, b"".join(self._output).decode("utf-8", errors="replace")


def _kernel() -> Any:
    """The functions of Windows for consoles."""
    return ctypes.WinDLL("kernel32")  # type: ignore[attr-defined]
