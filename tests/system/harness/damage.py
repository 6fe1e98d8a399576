"""What can happen to an installed file."""

from __future__ import annotations

import os
import random
import shutil
from pathlib import Path
from typing import Callable

Damage = Callable[[Path, Path, random.Random], None]


def delete(path: Path, _outside: Path, _chance: random.Random) -> None:
    path.unlink()


def truncate(path: Path, _outside: Path, chance: random.Random) -> None:
    os.truncate(path, chance.randrange(path.stat().st_size))


def empty(path: Path, _outside: Path, _chance: random.Random) -> None:
    os.truncate(path, 0)


def append(path: Path, _outside: Path, _chance: random.Random) -> None:
    with open(path, "ab") as stream:
        stream.write(b"\0")


def flip_a_byte(path: Path, _outside: Path, chance: random.Random) -> None:
    with open(path, "r+b") as stream:
        position = chance.randrange(path.stat().st_size)
        stream.seek(position)
        (byte,) = stream.read(1)
        stream.seek(position)
        stream.write(bytes([byte ^ (1 << chance.randrange(8))]))


def link_to_its_own_copy(path: Path, outside: Path, _chance: random.Random) -> None:
    target = outside / f"copy of {path.name}"
    shutil.move(path, target)
    path.symlink_to(target)


def link_to_another_file(path: Path, outside: Path, _chance: random.Random) -> None:
    target = outside / f"other than {path.name}"
    target.write_bytes(b"must stay as it is")
    path.unlink()
    path.symlink_to(target)


def link_to_nothing(path: Path, outside: Path, _chance: random.Random) -> None:
    path.unlink()
    path.symlink_to(outside / f"nothing for {path.name}")


def link_to_a_folder(path: Path, _outside: Path, _chance: random.Random) -> None:
    path.unlink()
    path.symlink_to("..")


def hard_link_to_another_file(path: Path, outside: Path, _chance: random.Random) -> None:
    target = outside / f"same as {path.name}"
    target.write_bytes(b"must stay as it is, too")
    path.unlink()
    os.link(target, path)


def pipe(path: Path, _outside: Path, _chance: random.Random) -> None:
    path.unlink()
    os.mkfifo(path)


ALL: tuple[Damage, ...] = (
    delete, truncate, empty, append, flip_a_byte, link_to_its_own_copy, link_to_another_file,
    link_to_nothing, link_to_a_folder, hard_link_to_another_file, pipe)
