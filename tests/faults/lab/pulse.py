#!/usr/bin/python3
"""Asks a window's thread again and again, and tells how long it let a question wait.

A question goes over the accessibility bus to the thread that draws, which answers between two of
its events: a thread that answers could have drawn a frame. Time in which a thread of the way was
ready and got no processor is taken off, since it is the machine's and not the launcher's; of all
threads only that of the one that waited longest, since they may have waited at the same time. The
first question is asked as soon as the launcher is on the bus.
"""

from __future__ import annotations

import json
import os
import signal
import sys
import time
from pathlib import Path
from typing import Any, Optional

import dbus
import dbus.bus

INTERVAL = 0.02
LONGEST = 0.1
PATIENCE = 30
ACCESSIBLE, ROOT = "org.a11y.atspi.Accessible", "/org/a11y/atspi/accessible/root"
REGISTRY, DAEMON = "org.a11y.atspi.Registry", "org.freedesktop.DBus"
SERVERS, CARRIER = ("dbus-daemon", "Xvfb", "openbox", "xcompmgr"), "QDBusConnection"


def main() -> None:
    address, pid, result = sys.argv[1:]
    is_over: list[int] = []
    signal.signal(signal.SIGTERM, lambda *_: is_over.append(1))
    bus = dbus.bus.BusConnection(address)
    owner = None
    while not is_over and not (owner := owner_of(bus, int(pid))):
        signal.sigtimedwait([signal.SIGUSR1], INTERVAL)
    threads = threads_on_the_way(int(pid)) if owner else []
    beats, worst, worst_raw, late, most_run = 0, 0.0, 0.0, [], 0.0
    while not is_over:
        waited, ran = machine_waits(threads), run_time(threads[0])
        started = time.monotonic()
        is_answered = asks(bus, owner)
        raw = time.monotonic() - started
        if not is_answered and raw < PATIENCE - 1:
            break  # the launcher has ended
        lost = max(after - before for before, after in zip(waited, machine_waits(threads)))
        own = max(0.0, raw - lost)
        beats, worst, worst_raw = beats + 1, max(worst, own), max(worst_raw, raw)
        most_run = max(most_run, run_time(threads[0]) - ran)
        if own > LONGEST:
            late.append(round(own, 3))
        signal.sigtimedwait([signal.SIGUSR1], INTERVAL)
    Path(result).write_text(json.dumps({"beats": beats, "worst": worst, "worst_raw": worst_raw,
                                        "most_run": most_run, "late": late}))


def owner_of(bus: Any, pid: int) -> Optional[str]:
    """The launcher's name on the bus; none while it is not there yet."""
    for owner, _ in bus.call_blocking(REGISTRY, ROOT, ACCESSIBLE, "GetChildren", "", ()):
        try:
            if bus.call_blocking(DAEMON, "/", DAEMON, "GetConnectionUnixProcessID", "s",
                                 (owner,)) == pid:
                return str(owner)
        except dbus.DBusException:
            pass  # one that has ended is still listed for a moment
    return None


def asks(bus: Any, owner: Optional[str]) -> bool:
    """Whether there was an answer in time."""
    try:
        bus.call_blocking(owner, ROOT, ACCESSIBLE, "GetRole", "", (), timeout=PATIENCE)
    except dbus.DBusException:
        return False
    return True


def threads_on_the_way(pid: int) -> list[Path]:
    """The drawing thread, those that carry the question to it, and this one."""
    tasks = [Path(f"/proc/{pid}/task/{pid}"), Path(f"/proc/self/task/{os.getpid()}")]
    tasks += [task for task in Path(f"/proc/{pid}/task").iterdir() if name_of(task) == CARRIER]
    here = network_of(Path("/proc/self"))
    for process in Path("/proc").iterdir():
        if process.name.isdigit() and name_of(process) in SERVERS and network_of(process) == here:
            tasks.append(process / "task" / process.name)
    return tasks


def name_of(task: Path) -> str:
    try:
        return (task / "comm").read_text().strip()
    except OSError:
        return ""


def network_of(process: Path) -> str:
    """The network tells this run's buses from those of others."""
    try:
        return os.readlink(process / "ns" / "net")
    except OSError:
        return ""


def run_time(task: Path) -> float:
    """The seconds for which the thread had a processor."""
    return schedstat(task, 0)


def machine_waits(tasks: list[Path]) -> list[float]:
    """The seconds for which each of the threads was ready and did not run."""
    return [schedstat(task, 1) for task in tasks]


def schedstat(task: Path, column: int) -> float:
    try:
        return int((task / "schedstat").read_text().split()[column]) / 1e9
    except (OSError, IndexError):
        return 0.0


if __name__ == "__main__":
    main()
