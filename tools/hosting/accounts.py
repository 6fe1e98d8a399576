"""Accounts, passwords and the play cookies of those who logged in."""

from __future__ import annotations

import base64
import hashlib
import hmac
import json
import os
import secrets
import threading
import time
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Mapping, Optional

from . import totp

DEFAULT_ACCOUNTS = Path(__file__).with_name("accounts.json")
COOKIE_BYTES = 24
COOKIE_SECONDS = 12 * 3600
SCRYPT = {"n": 2 ** 14, "r": 8, "p": 1}


class AccountsError(Exception):
    """The accounts file cannot be used."""


@dataclass(frozen=True)
class Account:
    """One player; `environments` is None for a player who may go anywhere."""

    name: str
    display: str
    salt: bytes
    digest: bytes
    secret: Optional[str] = None
    banned: Optional[str] = None
    environments: Optional[tuple[str, ...]] = None

    def has_password(self, password: str) -> bool:
        return hmac.compare_digest(hash_password(password, self.salt), self.digest)


# Checked in place of an account that is not there, so that both take the same time.
NOBODY = Account("", "", b"nobody", bytes(64))


def hash_password(password: str, salt: bytes) -> bytes:
    return hashlib.scrypt(password.encode("utf-8", "surrogatepass"), salt=salt, dklen=64,
                          **SCRYPT)


def stored_password(password: str) -> str:
    """The text that an accounts file holds for a password."""
    salt = secrets.token_bytes(16)
    parts = (salt, hash_password(password, salt))
    return "scrypt$" + "$".join(base64.b64encode(part).decode() for part in parts)


def load_accounts(path: Path) -> dict[str, Account]:
    """Accounts by name; raises AccountsError with a text for the operator."""
    try:
        document = json.loads(path.read_bytes())
        return {entry["name"]: _account(entry) for entry in document["accounts"]}
    except OSError as error:
        raise AccountsError(f"{path}: {error.strerror}") from None
    except (ValueError, KeyError, TypeError) as error:
        raise AccountsError(f"{path}: not an accounts file ({error!r})") from None


def _account(entry: Mapping[str, Any]) -> Account:
    kind, salt, digest = entry["password"].split("$")
    if kind != "scrypt":
        raise ValueError(f"unknown password kind {kind!r}")
    environments, secret = entry.get("environments"), entry.get("secret")
    if secret is not None:
        totp.decode_secret(secret)
    return Account(
        name=entry["name"], display=entry.get("display", entry["name"]),
        salt=base64.b64decode(salt), digest=base64.b64decode(digest),
        secret=secret, banned=entry.get("banned"),
        environments=None if environments is None else tuple(environments))


class Sessions:
    """Play cookies in a file that holds only their digests."""

    def __init__(self, path: Path) -> None:
        self._path = path
        self._lock = threading.Lock()
        self._entries = self._load()

    def open(self, account: str, environment: Optional[str]) -> str:
        """A new play cookie. It stands unquoted in a shell line, hence url-safe."""
        cookie = secrets.token_urlsafe(COOKIE_BYTES)
        now = time.time()
        entry = {"account": account, "environment": environment,
                 "cookie_sha256": hashlib.sha256(cookie.encode()).hexdigest(),
                 "expires": int(now) + COOKIE_SECONDS}
        with self._lock:
            self._entries = [old for old in self._entries if old["expires"] > now]
            self._entries.append(entry)
            self._save()
        return cookie

    def entries(self) -> list[dict[str, Any]]:
        """Those that have not expired, oldest first."""
        now = time.time()
        with self._lock:
            return [dict(entry) for entry in self._entries if entry["expires"] > now]

    def _load(self) -> list[dict[str, Any]]:
        try:
            entries = json.loads(self._path.read_bytes())
            return [entry for entry in entries if isinstance(entry["expires"], int)]
        except (OSError, ValueError, KeyError, TypeError):
            return []

    def _save(self) -> None:
        staged = self._path.with_name(self._path.name + ".new")
        handle = os.open(staged, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600)
        with open(handle, "w", encoding="utf-8") as stream:
            json.dump(self._entries, stream, indent=1)
        os.replace(staged, self._path)
