#!/usr/bin/python3
"""Asks a window's thread again and again, and tells how long it let a question wait.

A question goes over the accessibility bus to the thread that draws, which answers between two of
its events: a thread that answers could have drawn a frame. Time in which a thread of the way was
ready and got no processor is taken off, since it is the machine's and not the launcher's.
"""

from __future__ import annotations

import json
import os
import signal
import sys
import time
from pathlib import Path

import dbus
import dbus.bus

INTERVAL = 0.02
LONGEST = 0.1
SERVERS, CARRIER = ("dbus-daemon", "Xvfb", "openbox", "xcompmgr"), "QDBusConnection"


def main() -> None:
    address, owner, path, pid, result = sys.argv[1:]
    bus = dbus.bus.BusConnection(address)
    threads = threads_on_the_way(int(pid))
    beats, worst, worst_raw, late, most_run = 0, 0.0, 0.0, [], 0.0
    is_over: list[int] = []
    signal.signal(signal.SIGTERM, lambda *_: is_over.append(1))
    while not is_over:
        waited, ran = machine_wait(threads), run_time(threads[0])
        started = time.monotonic()
        try:
            bus.call_blocking(owner, path, "org.a11y.atspi.Accessible", "GetRole", "", (),
                              timeout=30)
        except dbus.DBusException:
            break
        raw = time.monotonic() - started
        own = max(0.0, raw - (machine_wait(threads) - waited))
        beats, worst, worst_raw = beats + 1, max(worst, own), max(worst_raw, raw)
        most_run = max(most_run, run_time(threads[0]) - ran)
        if own > LONGEST:
            late.append(round(own, 3))
        signal.sigtimedwait([signal.SIGUSR1], INTERVAL)
    Path(result).write_text(json.dumps({"beats": beats, "worst": worst, "worst_raw": worst_raw,
                                        "most_run": most_run, "late": late}))


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
    try:
        return int((task / "schedstat").read_text().split()[0]) / 1e9
    except (OSError, IndexError):
        return 0.0


def machine_wait(tasks: list[Path]) -> float:
    """The seconds for which the threads were ready and did not run."""
    total = 0
    for task in tasks:
        try:
            total += int((task / "schedstat").read_text().split()[1])
        except (OSError, IndexError):
            pass
    return total / 1e9


if __name__ == "__main__":
    main()
