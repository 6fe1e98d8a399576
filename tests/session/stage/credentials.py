"""The stored account as another program reads and writes it."""

from __future__ import annotations

import plistlib
import sqlite3
from contextlib import closing
from plistlib import UID
from typing import NamedTuple, Optional

from harness.player import Player as Home

ITEM, ENABLED, ASKED = ("keychain-Item-Data-Key", "touchID-Enabled-Key",
                        "has-Asked-User-For-TouchID")
BOOLEAN, DATA = 2, 3


class Account(NamedTuple):
    """What a finger stands for."""

    username: str
    password: str


class Stored(NamedTuple):
    """The settings of the fingerprint login."""

    was_asked: bool
    is_enabled: bool
    account: Optional[Account]


def read(home: Home) -> Stored:
    """From the settings database of a player, whether or not a launcher runs."""
    settings = home.stored_settings() if home.settings.exists() else {}
    data = settings.get(ITEM)
    return Stored(bool(settings.get(ASKED)), bool(settings.get(ENABLED)),
                  unpacked(data) if isinstance(data, bytes) else None)


def write(home: Home, archive: bytes, was_asked: bool = True) -> None:
    """As if the player had accepted the offer. Only while no launcher runs."""
    home.settings.parent.mkdir(exist_ok=True)
    home.settings.touch(0o600)
    with closing(sqlite3.connect(home.settings)) as database, database:
        database.execute("CREATE TABLE IF NOT EXISTS defaults (key TEXT PRIMARY KEY, "
                         "type INTEGER NOT NULL, value) WITHOUT ROWID")
        database.executemany("INSERT OR REPLACE INTO defaults VALUES (?, ?, ?)",
                             [(ASKED, BOOLEAN, was_asked), (ENABLED, BOOLEAN, 1), (ITEM, DATA, archive)])


def unpacked(archive: bytes) -> Account:
    tree = plistlib.loads(archive, fmt=plistlib.FMT_BINARY)
    objects = tree["$objects"]
    item = objects[tree["$top"]["root"].data]
    return Account(*(objects[item[key].data] for key in ("USER", "PASS")))


def packed(account: Account, class_name: str = "KeychainItem", password: int = 4) -> bytes:
    """`password` is the number of the object that the password is."""
    item = {"$class": UID(2), "PASS": UID(password), "USER": UID(3)}
    tree = {"$version": 100000, "$archiver": "NSKeyedArchiver", "$top": {"root": UID(1)},
            "$objects": ["$null", item, {"$classname": class_name,
                                         "$classes": [class_name, "NSObject"]}, *account]}
    return plistlib.dumps(tree, fmt=plistlib.FMT_BINARY)
