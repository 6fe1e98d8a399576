"""What a game folder holds, and whether every file of it can be served."""

from __future__ import annotations

import os
import re
import stat
import unicodedata
from dataclasses import dataclass
from typing import Iterator, Optional

PACKED_SUFFIX = ".bz2"
LONGEST_NAME = 255
PATCH_FOLDER = "patches"

# The launch script escapes spaces and parentheses and nothing else, so any other
# character that a shell reads would change the command that starts the game.
SHELL_CHARACTERS = re.compile(r"[\"'`$&;|<>*?\[\]{}!#~\\\t]")
VERSION_IN_URL = re.compile(r"[A-Za-z0-9_+~-][A-Za-z0-9._+~-]*")


class Refused(Exception):
    """The input cannot be published; holds one line for each problem."""

    def __init__(self, problems: list[str]) -> None:
        super().__init__("\n".join(problems))
        self.problems = problems


@dataclass(frozen=True)
class GameFile:
    """One regular file of the game folder as the scan saw it."""

    key: str
    path: str
    size: int
    mtime_ns: int
    ctime_ns: int


def key_problem(key: str) -> Optional[str]:
    """Says why no launcher could fetch or store this key; None when it can."""
    try:
        key.encode("utf-8")
    except UnicodeEncodeError:
        return "its name is not UTF-8"
    if any(unicodedata.category(character) == "Cc" for character in key):
        return "its name holds a control character"
    if "?" in key:
        return 'its name holds "?", which would start the query of its address'
    parts = key.split("/")
    if any(part in ("", ".", "..") for part in parts):
        return "its name does not lead to a file in the folder"
    if len((parts[-1] + PACKED_SUFFIX).encode("utf-8")) > LONGEST_NAME:
        return f'its name is too long to be stored with "{PACKED_SUFFIX}" behind it'
    if parts[0] == PATCH_FOLDER and key.endswith(".patch"):
        return "it would lie among the patches of the tree"
    return None


def exec_problem(name: str, keys: set[str]) -> Optional[str]:
    """Says why the game could not be started by this name."""
    if name not in keys:
        return f"--exec: {name!r} is not a file of the game folder"
    if SHELL_CHARACTERS.search(name):
        return f"--exec: {name!r} holds a character that a shell would read"
    return None


def version_problem(option: str, version: str) -> Optional[str]:
    """Says why this version cannot stand in the manifest."""
    if not version or any(unicodedata.category(character)[0] == "C"
                          for character in version):
        return f"{option}: {version!r} is empty or holds a control character"
    return None


def launcher_version_problem(version: str) -> Optional[str]:
    """The version becomes part of a file name and, unescaped, of an address."""
    option = "--launcher-version"
    if "/" in version or version.startswith("."):
        return f'{option}: {version!r} holds "/" or starts with "."'
    if not VERSION_IN_URL.fullmatch(version):
        return f"{option}: {version!r} may hold letters, digits and . _ + ~ - only"
    return None


def scan(folder: str) -> list[GameFile]:
    """Lists every file of the folder by key, or refuses the whole folder."""
    problems: list[str] = []
    files = sorted(_walk(folder, "", problems), key=lambda file: file.key)
    for file in files:
        problem = key_problem(file.key) or _unreadable(file.path)
        if problem:
            problems.append(f"{file.key!r}: {problem}")
    problems.extend(_clashes([file.key for file in files]))
    if not files and not problems:
        problems.append(f"{folder!r} holds no files")
    if problems:
        raise Refused(problems)
    return files


def _walk(folder: str, prefix: str, problems: list[str]) -> Iterator[GameFile]:
    try:
        entries = sorted(os.scandir(folder), key=lambda entry: entry.name)
    except OSError as error:
        problems.append(f"{folder!r}: {error.strerror}")
        return
    for entry in entries:
        key = prefix + entry.name
        about = entry.stat(follow_symlinks=False)
        if stat.S_ISDIR(about.st_mode):
            yield from _walk(entry.path, key + "/", problems)
        elif stat.S_ISREG(about.st_mode):
            yield GameFile(key, entry.path, about.st_size,
                           about.st_mtime_ns, about.st_ctime_ns)
        elif stat.S_ISLNK(about.st_mode):
            problems.append(f"{key!r}: it is a symbolic link")
        else:
            problems.append(f"{key!r}: it is neither a file nor a folder")


def _unreadable(path: str) -> Optional[str]:
    try:
        os.close(os.open(path, os.O_RDONLY | os.O_NOFOLLOW | os.O_CLOEXEC))
    except OSError as error:
        return f"it cannot be read ({error.strerror})"
    return None


def _parents(key: str) -> Iterator[str]:
    position = key.find("/")
    while position >= 0:
        yield key[:position]
        position = key.find("/", position + 1)


def _folded(key: str) -> str:
    return unicodedata.normalize("NFD", key).casefold()


def _clashes(keys: list[str]) -> list[str]:
    """Keys of which a player's disk or the tree could hold only one.

    A disk that takes "A" and "a" for the same file would have the launcher
    replace the one by the other without end.
    """
    problems = []
    folders = {parent for key in keys for parent in _parents(key)}
    folded_folders = {_folded(folder) for folder in folders}
    first: dict[str, str] = {}
    for key in keys:
        folded = _folded(key)
        other = first.setdefault(folded, key)
        if other != key:
            problems.append(f"{key!r}: differs from {other!r} by case or accent form only")
        if folded in folded_folders:
            problems.append(f"{key!r}: differs from a folder by case only")
        if key + PACKED_SUFFIX in folders:
            problems.append(f"{key!r}: would be stored where the folder "
                            f"{key + PACKED_SUFFIX!r} has to be")
    return problems
