"""What can have happened to the settings file while nobody ran."""

from __future__ import annotations

import os
import shutil
import sqlite3
from contextlib import closing
from pathlib import Path
from typing import Callable

Harm = Callable[[Path], None]


def bytes_of(content: bytes) -> Harm:
    def harm(path: Path) -> None:
        path.write_bytes(content)
    return harm


def cut_to(size: int) -> Harm:
    def harm(path: Path) -> None:
        os.truncate(path, size)
    return harm


def overwritten(start: int, length: int, byte: int) -> Harm:
    def harm(path: Path) -> None:
        with open(path, "r+b") as stream:
            stream.seek(start)
            stream.write(bytes([byte]) * length)
    return harm


def sql(statement: str) -> Harm:
    def harm(path: Path) -> None:
        with closing(sqlite3.connect(path)) as database, database:
            database.executescript(statement)
    return harm


def gone(path: Path) -> None:
    path.unlink()


def folder_gone(path: Path) -> None:
    shutil.rmtree(path.parent)


def a_folder(path: Path) -> None:
    path.unlink()
    path.mkdir()


def a_pipe(path: Path) -> None:
    path.unlink()
    os.mkfifo(path)


def a_stale_journal(path: Path) -> None:
    path.with_name(path.name + "-journal").write_bytes(b"")


def a_journal_of_noise(path: Path) -> None:
    path.with_name(path.name + "-journal").write_bytes(bytes(range(256)) * 8)


def readable_for_all(path: Path) -> None:
    path.chmod(0o644)


def with_an_older_one_aside(path: Path) -> None:
    path.with_name(path.name + ".bad").write_bytes(b"from before")
    path.write_bytes(b"damaged again")


ODD_VALUES = sql("INSERT INTO defaults VALUES ('odd', 99, 'x'), ('number', 0, 12), "
                 "('nothing', 3, NULL), ('', 0, ''), ('date', 1, 'never')")

DAMAGES: tuple[tuple[str, Harm], ...] = (
    ("no settings", gone), ("no folder for the settings", folder_gone),
    ("empty settings", bytes_of(b"")), ("settings of one byte", bytes_of(b"S")),
    ("settings that are text", bytes_of(b"not a database\n" * 300)),
    ("settings of zeroes", bytes_of(bytes(8192))),
    ("settings of ones", bytes_of(b"\xff" * 8192)),
    ("only the head of settings", cut_to(100)), ("half of the first page", cut_to(2048)),
    ("only the first page", cut_to(4096)), ("all but the last byte", cut_to(8191)),
    ("a damaged head in the settings", overwritten(0, 16, 0)),
    ("a damaged size in the settings", overwritten(16, 2, 0xFF)),
    ("a damaged list of tables in the settings", overwritten(100, 60, 0xAA)),
    ("a damaged page in the settings", overwritten(4096, 4096, 0)),
    ("noise in a page of the settings", overwritten(4096, 200, 0xFF)),
    ("a damaged entry in the settings", overwritten(8000, 100, 0x7F)),
    ("settings without the table", sql("DROP TABLE defaults")),
    ("settings with another table", sql("DROP TABLE defaults; CREATE TABLE defaults (x)")),
    ("settings with odd values", ODD_VALUES),
    ("settings in another journal mode", sql("PRAGMA journal_mode=WAL")),
    ("settings of a later version", sql("PRAGMA user_version=99; CREATE TABLE more (x)")),
    ("a folder in the place of the settings", a_folder),
    ("a pipe in the place of the settings", a_pipe),
    ("an empty journal beside the settings", a_stale_journal),
    ("a journal of noise beside the settings", a_journal_of_noise),
    ("settings readable for all", readable_for_all),
    ("damaged settings beside older damaged ones", with_an_older_one_aside),
)

# These cost the player nothing.
HARMLESS: tuple[Harm, ...] = (ODD_VALUES, a_stale_journal, a_journal_of_noise, readable_for_all,
                              *(harm for name, harm in DAMAGES
                                if name.endswith(("journal mode", "later version"))))
