"""What was asked of the hosts and how they answered, without anything secret."""

from __future__ import annotations

import datetime
import json
import threading
from collections import deque
from pathlib import Path
from typing import Any
from urllib.parse import parse_qsl

from .messages import Request
from .names import ACCOUNT

KEPT = 200_000
FIELDS = ("username", "password", "gtoken")


class Entry:
    """One request in the journal; its thread fills it in as the answer leaves."""

    def __init__(self, facts: dict[str, Any]) -> None:
        self.facts = facts

    def answered(self, status: int) -> None:
        self.facts["status"] = status

    def wrote(self, count: int) -> None:
        self.facts["bytes"] += count


class Journal:
    """The latest requests in memory, and all of them in a file, one JSON line each."""

    def __init__(self, path: Path) -> None:
        self._lock = threading.Lock()
        self._entries: deque[Entry] = deque(maxlen=KEPT)
        self._file = open(path, "a", encoding="utf-8")
        self._count = 0

    def open_entry(self, request: Request, connection: int, peer_port: int) -> Entry:
        """Called before the request is answered: who has an answer finds it here."""
        now = datetime.datetime.now(datetime.timezone.utc)
        with self._lock:
            self._count += 1
            entry = Entry({
                "number": self._count, "time": now.isoformat(timespec="milliseconds"),
                "connection": connection, "peer_port": peer_port,
                "host": request.host, "method": request.method,
                "path": _loggable_target(request), "status": None, "bytes": 0,
                "done": False})
            if request.method == "POST":
                entry.facts["fields"] = _loggable_fields(request)
            self._entries.append(entry)
        return entry

    def close_entry(self, entry: Entry) -> None:
        """The answer is out, or as much of it as will ever be."""
        with self._lock:
            entry.facts["done"] = True
            if not self._file.closed:
                self._file.write(json.dumps(entry.facts, ensure_ascii=False) + "\n")
                self._file.flush()

    def entries(self, clear: bool = False) -> list[dict[str, Any]]:
        """All that is kept, in the order in which it was asked."""
        with self._lock:
            facts = [dict(entry.facts) for entry in self._entries]
            if clear:
                self._entries.clear()
        return facts

    def close(self) -> None:
        with self._lock:
            self._file.close()


def _loggable_target(request: Request) -> str:
    """A login sent by mistake as a query must not put its password here."""
    if request.host != ACCOUNT or "?" not in request.target:
        return request.target
    return request.path + "?(not shown)"


def _loggable_fields(request: Request) -> list[dict[str, Any]]:
    """Names and lengths; an unknown name may itself be a mistyped secret."""
    text = request.body.decode("utf-8", "replace")
    try:
        pairs = parse_qsl(text, keep_blank_values=True, max_num_fields=100)
    except ValueError:
        return []
    return [{"name": name if name in FIELDS else "(other)", "length": len(value)}
            for name, value in pairs]
