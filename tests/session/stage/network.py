"""The network of the session: a loopback that can be unplugged, and a manager that tells of it."""

from __future__ import annotations

import os
import subprocess
import sys

import dbus
import dbus.bus

from harness import isolation

from .children import Services
from .waiting import NotSeen, until

MANAGER = "org.freedesktop.NetworkManager"
MANAGER_PATH = "/org/freedesktop/NetworkManager"
DISCONNECTED, CONNECTED = 20, 70
NONE, FULL = 1, 4


class Network:
    """A network manager on the system bus of that address."""

    def __init__(self, services: Services, address: str) -> None:
        services.start("network-manager", [sys.executable, "-m", "dbusmock", "--system",
                                          "--template", "networkmanager"],
                       more={"DBUS_SYSTEM_BUS_ADDRESS": address})
        self._bus = dbus.bus.BusConnection(address)
        until("the network manager", lambda: bool(self._bus.name_has_owner(MANAGER)))
        if _is_private():
            self.plug_in()

    def close(self) -> None:
        self._bus.close()

    def plug_in(self) -> None:
        """Hosts can be reached, and the system knows."""
        _ip("link", "set", "lo", "up")
        self.tell(True)

    def unplug(self) -> None:
        """Without its routes every connection fails at once; a loopback only down swallows them."""
        _ip("link", "set", "lo", "down")
        _ip("route", "flush", "table", "local")
        self.tell(False)

    def tell(self, is_connected: bool) -> None:
        """Only tells of a network that comes or goes; the connections stay."""
        state, connectivity = (CONNECTED, FULL) if is_connected else (DISCONNECTED, NONE)
        for what, value in (("SetConnectivity", connectivity), ("SetGlobalConnectionState", state)):
            self._bus.call_blocking(MANAGER, MANAGER_PATH, "org.freedesktop.DBus.Mock", what, "u",
                                    (value,))


def _is_private() -> bool:
    return bool(os.environ.get(isolation.ENTERED))


def _ip(*words: str) -> None:
    if not _is_private():
        raise NotSeen("a network that can be unplugged; it takes a network namespace, which this "
                      "machine refuses")
    subprocess.run(["ip", *words], check=True)
