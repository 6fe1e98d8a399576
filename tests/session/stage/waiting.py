"""Waiting for what has to be seen."""

from __future__ import annotations

import socket
import time
from pathlib import Path
from typing import Callable, Optional, TypeVar

from harness import settings

Seen = TypeVar("Seen")
PATIENCE = 40.0 * settings.slowness()
PAUSE = 0.04


class NotSeen(Exception):
    """What the session waited for and did not see."""


def until(what: str, look: Callable[[], Optional[Seen]], seconds: float = PATIENCE) -> Seen:
    """Looks again and again until there is something to see; raises NotSeen after the seconds."""
    deadline = time.monotonic() + seconds
    while True:
        if seen := look():
            return seen
        if time.monotonic() > deadline:
            raise NotSeen(f"{what} was not seen within {seconds:.0f} seconds")
        time.sleep(PAUSE)


def listens(place: Path) -> bool:
    """Does somebody take connections at the socket? Its file is there a moment before that."""
    with socket.socket(socket.AF_UNIX) as attempt:
        return attempt.connect_ex(str(place)) == 0


def expect(what: str, seen: object, expected: object) -> None:
    if seen != expected:
        raise NotSeen(f"{what}: expected {expected!r}, saw {seen!r}")
