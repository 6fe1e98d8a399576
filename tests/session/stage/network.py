"""The network of the session: a loopback that can be unplugged."""

from __future__ import annotations

import os
import subprocess

from harness import isolation

from .waiting import NotSeen


def plug_in() -> None:
    """Hosts answer, and the system takes the route for one to the world."""
    _ip("link", "set", "lo", "up")
    _ip("route", "replace", "default", "dev", "lo")


def unplug() -> None:
    _ip("link", "set", "lo", "down")


def is_private() -> bool:
    return bool(os.environ.get(isolation.ENTERED))


def _ip(*words: str) -> None:
    if not is_private():
        raise NotSeen("a network that can be unplugged was not given: this machine allows no "
                      "network namespaces")
    subprocess.run(["ip", *words], check=True)
