"""System calls that fail, or kill, at a chosen moment."""

from __future__ import annotations

import os
import re
from collections import Counter
from pathlib import Path
from typing import Iterable, Sequence

from harness import trace

LINE = re.compile(r"(?P<thread>\d+) +(?P<name>\w+)\(")
# Where "struct sysinfo" has it.
TOTAL_RAM_OFFSET = 32
ENDED = re.compile(r"^\d+ +(\+\+\+|---|<\.\.\.)")

# The calls by what they do. Which name of a kind is used is a matter of the machine, unless it is
# the only one of its kind.
Kind = tuple[str, ...]
OPENINGS: Kind = ("open", "openat")
RENAMES: Kind = ("rename", "renameat", "renameat2")
MAKINGS: Kind = ("mkdir", "mkdirat")
REMOVALS: Kind = ("unlink", "unlinkat")
STATS: Kind = ("lstat", "stat", "newfstatat", "fstat")
QUESTIONS: Kind = ("access", "faccessat", "faccessat2")
LINKS: Kind = ("readlink", "readlinkat")
MODES: Kind = ("chmod", "fchmodat")
WRITES: tuple[Kind, ...] = (("write",), ("pwrite64",))
SYNCS: tuple[Kind, ...] = (("fdatasync",), ("syncfs",), ("sync_file_range",))
READS: tuple[Kind, ...] = (("read",), ("pread64",), ("fadvise64",))
CLOSE, OPEN_MODE, STATX, LISTING = ("close",), ("fchmod",), ("statx",), ("getdents64",)
FILE_LOCK, LOCK = ("fcntl",), ("flock",)
ALL = tuple(name for kind in (
    OPENINGS, RENAMES, MAKINGS, REMOVALS, STATS, QUESTIONS, LINKS, MODES, *WRITES, *SYNCS, *READS,
    CLOSE, OPEN_MODE, STATX, FILE_LOCK, LOCK, LISTING) for name in kind)


def named(calls: Iterable[str]) -> str:
    return ",".join(f"?{call}" for call in calls)


def only(places: Iterable[Path]) -> list[str]:
    """Words that keep strace to calls on these files."""
    return [word for place in places for word in ("-P", str(place))]


def counting(log: Path, calls: Iterable[str], places: Iterable[Path]) -> Sequence[str]:
    """Runs the launcher and lists the calls on the places in the log."""
    return (*trace.STRACE, *only(places), "-o", str(log), "-e", f"trace={named(calls)}", "--")


def counted(log: Path) -> Counter[str]:
    """How often a thread made each call, for the thread that made it most often."""
    by_thread: Counter[tuple[str, str]] = Counter()
    for line in log.read_text(errors="replace").splitlines():
        if (found := LINE.match(line)) and not ENDED.match(line):
            by_thread[found["thread"], found["name"]] += 1
    most: Counter[str] = Counter()
    for (_, name), count in by_thread.items():
        most[name] = max(most[name], count)
    log.unlink()
    return most


def at(call: str, number: int, places: Iterable[Path], effect: str) -> Sequence[str]:
    """Runs the launcher with an effect at that one of a thread's calls on the places: "error=EIO"
    or "signal=SIGKILL". A number with a "+" behind it means that one and all after it.
    """
    return (*trace.STRACE, *only(places), "-o", os.devnull, "-e", f"trace={call}",
            "-e", f"inject={call}:{effect}:when={number}", "--")


def less_memory(size: int) -> Sequence[str]:
    """The system says that the machine has so many bytes of memory."""
    answer = (bytes(TOTAL_RAM_OFFSET) + size.to_bytes(8, "little")).hex()
    return (*trace.STRACE, "--seccomp-bpf", "-o", os.devnull, "-e", "trace=sysinfo",
            "-e", f"inject=sysinfo:poke_exit=@arg1={answer}", "--")


def for_good(call: str, places: Iterable[Path], effect: str) -> Sequence[str]:
    """Every such call on the places has the effect."""
    return (*trace.STRACE, *only(places), "-o", os.devnull, "-e", f"trace={call}",
            "-e", f"inject={call}:{effect}", "--")


def for_a_window(wrapper: Sequence[str]) -> Sequence[str]:
    """The same around a launcher that keeps its process."""
    return (*trace.STRACE, "-D", *wrapper[len(trace.STRACE):])
