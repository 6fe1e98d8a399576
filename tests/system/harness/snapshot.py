"""What a folder holds, in a form that two of them can be compared by."""

from __future__ import annotations

import hashlib
import os
import stat
from pathlib import Path
from typing import Iterator

Contents = dict[str, tuple[str, str]]
Identities = dict[str, tuple[int, int]]


def contents(root: Path, leave_out: tuple[Path, ...] = ()) -> Contents:
    """Kind and bytes (of a link, where it leads) of everything below `root`."""
    return {str(path.relative_to(root)): _described(path) for path in _walk(root, leave_out)}


def files_only(everything: Contents) -> Contents:
    return {name: entry for name, entry in everything.items() if entry[0] != "folder"}


def identities(root: Path) -> Identities:
    """Inode and date of every regular file: the same while nobody has written it anew."""
    found = {}
    for path in _walk(root, ()):
        about = path.lstat()
        if stat.S_ISREG(about.st_mode):
            found[str(path.relative_to(root))] = (about.st_ino, about.st_mtime_ns)
    return found


def _walk(folder: Path, leave_out: tuple[Path, ...]) -> Iterator[Path]:
    for entry in os.scandir(folder):
        path = Path(entry.path)
        if path in leave_out:
            continue
        yield path
        if entry.is_dir(follow_symlinks=False):
            yield from _walk(path, leave_out)


def _described(path: Path) -> tuple[str, str]:
    mode = path.lstat().st_mode
    if stat.S_ISLNK(mode):
        return "link", os.readlink(path)
    if stat.S_ISDIR(mode):
        return "folder", ""
    if stat.S_ISREG(mode):
        return "file", hashlib.sha256(path.read_bytes()).hexdigest()
    return "other", str(stat.S_IFMT(mode))
