"""The processes of a session: those it starts, and those that are left to it."""

from __future__ import annotations

import contextlib
import ctypes
import os
import signal
import subprocess
import time
from contextlib import ExitStack
from pathlib import Path
from typing import Any, Mapping, Optional, Sequence

from harness import isolation

from .waiting import until

ADOPT_ORPHANS = 36
SECONDS_TO_END = 20.0


def adopt_orphans() -> None:
    """From now on this process inherits what its descendants leave behind, as init would."""
    ctypes.CDLL(None).prctl(ADOPT_ORPHANS, 1)


class Services:
    """Servers that run for the whole session and end with it, the last started first."""

    def __init__(self, logs: Path, environment: Mapping[str, str]) -> None:
        self._logs = logs
        self._environment = environment
        self._ending = ExitStack()
        self.pids: set[int] = set()

    def start(self, name: str, command: Sequence[str], passed: Sequence[int] = (),
              more: Optional[Mapping[str, str]] = None) -> subprocess.Popen[bytes]:
        with open(self._logs / f"{name}.log", "wb") as log:
            process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, pass_fds=passed,
                env={**self._environment, **(more or {})}, preexec_fn=isolation.die_with_parent)
        self.pids.add(process.pid)
        self._ending.callback(end, process)
        return process

    def stop(self) -> None:
        self._ending.close()


def end(process: subprocess.Popen[Any]) -> None:
    """Asks the process to end, and insists."""
    if process.poll() is not None:
        return
    process.terminate()
    try:
        process.wait(SECONDS_TO_END)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def status(pid: int) -> Optional[tuple[str, int]]:
    """State and parent of a process; none when there is no such process."""
    try:
        words = Path(f"/proc/{pid}/stat").read_text(errors="replace").rpartition(")")[2].split()
    except OSError:
        return None
    return words[0], int(words[1])


def is_running(pid: int) -> bool:
    found = status(pid)
    return found is not None and found[0] != "Z"


def children(parent: int) -> dict[int, str]:
    """The states of the children of a process."""
    found = {}
    for entry in os.scandir("/proc"):
        if entry.name.isdigit() and (about := status(int(entry.name))) and about[1] == parent:
            found[int(entry.name)] = about[0]
    return found


def zombies(parent: int) -> list[int]:
    return [pid for pid, state in children(parent).items() if state == "Z"]


def seconds_since_start(pid: int) -> float:
    """How long ago the process was started, by the clock of the kernel."""
    fields = Path(f"/proc/{pid}/stat").read_text(errors="replace").rpartition(")")[2].split()
    started = int(fields[19]) / os.sysconf("SC_CLK_TCK")
    return time.clock_gettime(time.CLOCK_BOOTTIME) - started


def streams(pid: int) -> list[str]:
    """Where the standard streams of a process lead."""
    return [os.readlink(f"/proc/{pid}/fd/{number}") for number in range(3)]


def reap(orphan: int) -> None:
    """Takes note of the end of an adopted process, as init would."""
    with contextlib.suppress(ChildProcessError):
        os.waitpid(orphan, os.WNOHANG)


def described(pid: int) -> str:
    with contextlib.suppress(OSError):
        words = Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0")
        return f"{pid} {words[0].decode(errors='replace')}"
    return str(pid)


def end_orphans() -> None:
    """Ends whatever was adopted. Only when nothing of the session's own is left."""
    while orphans := children(os.getpid()):
        for orphan in orphans:
            with contextlib.suppress(ProcessLookupError, ChildProcessError):
                os.kill(orphan, signal.SIGKILL)
                os.waitpid(orphan, 0)


def exit_code_of_orphan(pid: int) -> int:
    """Waits for the end of an adopted process."""
    def ended() -> Optional[tuple[int]]:
        found, how = os.waitpid(pid, os.WNOHANG)
        return (os.waitstatus_to_exitcode(how),) if found else None
    (code,) = until(f"the end of process {pid}", ended)
    return code
