"""What the launcher asks of the kernel, as strace saw it."""

from __future__ import annotations

import os
import re
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from typing import Iterable, Iterator, Optional

from .player import Outcome, Player

CALL = re.compile(r"\d+ +(?P<name>\w+)\((?P<rest>.*)")
FOLDER = re.compile(r"^\w+<((?:\\x[0-9a-f]{2})*)>")
TEXT = re.compile(r'"((?:\\x[0-9a-f]{2})*)"')
ATTRIBUTE_READS = ("stat", "lstat", "newfstatat", "fstatat64", "statx", "access", "faccessat",
                   "faccessat2", "readlink", "readlinkat")
OPENINGS = ("open", "openat", "openat2", "creat")
# Their text is no path.
DATA_CALLS = ("read", "write", "fadvise64")
CHANGES = ("rename", "renameat", "renameat2", "unlink", "unlinkat", "chmod", "fchmodat",
           "utimensat", "mkdir", "mkdirat", "symlink", "symlinkat", "truncate")


@dataclass(frozen=True)
class Call:
    """A system call with the file it is about, whole, and its line."""

    name: str
    path: str
    line: str


# A process under strace cannot also be searched for leaks.
WITHOUT_LEAK_SEARCH = f"ASAN_OPTIONS={os.environ.get('ASAN_OPTIONS', '')}:detect_leaks=0"
STRACE = ("strace", "-f", "-qq", "-E", WITHOUT_LEAK_SEARCH)


def traced(player: Player, *arguments: str, calls: str = "%file") -> tuple[Outcome, list[Call]]:
    """Runs the launcher and lists its calls of that kind, of all its threads."""
    log = player.root / "strace.log"
    outcome = player.run(*arguments, wrapper=(*STRACE, "-xx", "-y", "-o", str(log),
                                              "-e", f"trace={calls}", "--"))
    found = list(_parsed(log))
    log.unlink()
    return outcome, found


def count_below(calls: list[Call], folder: Path, names: tuple[str, ...]) -> Counter[str]:
    """How often the calls of these names met each path in the folder."""
    prefix = f"{folder}/"
    return Counter(call.path for call in calls
                   if call.name in names and call.path.startswith(prefix))


def killed_at(calls: str, number: int, paths: Iterable[Path] = ()) -> tuple[str, ...]:
    """Runs the launcher so that it dies on entering that one of a thread's calls.

    With paths, only the calls on these files count.
    """
    only = [word for path in paths for word in ("-P", str(path))]
    return (*STRACE, *only, "-o", "/dev/null", "-e", f"trace={calls}",
            "-e", f"inject={calls}:signal=SIGKILL:when={number}", "--")


def _parsed(log: Path) -> Iterator[Call]:
    with open(log, encoding="ascii", errors="replace") as lines:
        for line in lines:
            if call := CALL.match(line):
                yield Call(call["name"], _path(call["name"], call["rest"]), line)


def _path(name: str, rest: str) -> str:
    """What a descriptor stands for, and a name relative to it."""
    folder = FOLDER.search(rest)
    text = TEXT.search(rest) if name not in DATA_CALLS else None
    return str(Path(_decoded(folder), _decoded(text)))


def _decoded(found: Optional[re.Match[str]]) -> str:
    raw = bytes.fromhex(found[1].replace("\\x", "")) if found else b""
    return raw.decode("utf-8", "surrogateescape")
