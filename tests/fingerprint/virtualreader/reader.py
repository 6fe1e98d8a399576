"""The reader: which fingers it knows, and which finger is on it."""

from __future__ import annotations

import contextlib
import socket
from typing import Any, Iterator

import dbus

from .services import SERVICE, Services, wait_until

MANAGER_PATH = "/net/reactivated/Fprint/Manager"
MANAGER = "net.reactivated.Fprint.Manager"
DEVICE = "net.reactivated.Fprint.Device"
PROPERTIES = "org.freedesktop.DBus.Properties"
IN_USE = "net.reactivated.Fprint.Error.AlreadyInUse"
THIS_USER = ""


class Reader:
    """A finger is a word: equal words match."""

    def __init__(self, services: Services) -> None:
        self._services = services

    def enrol(self, finger: str, place: str = "right-index-finger") -> None:
        """This reader only compares: of several places the daemon asks for the first."""
        device = self._device()
        statuses: list[str] = []
        listener = self._services.bus.add_signal_receiver(
            lambda status, is_done: statuses.append(str(status)), "EnrollStatus", DEVICE)
        with self.claimed():
            device.EnrollStart(place)
            while not statuses or statuses[-1] == "enroll-stage-passed":
                seen = len(statuses)
                self.scan(finger)
                wait_until(lambda: len(statuses) > seen, "a stage of enrolling")
            device.EnrollStop()
        listener.remove()
        if statuses[-1] != "enroll-completed":
            raise RuntimeError(f"{finger} was not enrolled: {statuses[-1]}")

    def forget(self) -> None:
        """No finger is known any more."""
        with self.claimed():
            self._device().DeleteEnrolledFingers2()

    # The others first wait until somebody waits for a finger.

    def scan(self, finger: str) -> None:
        self._command(f"SCAN {finger}")

    def retry(self, kind: int) -> None:
        """A finger that cannot be read; the reader waits for another try."""
        self._command(f"RETRY {kind}")

    def unplug(self) -> None:
        """The daemon notices at the next finger."""
        self._command("UNPLUG")

    def wait_until_needed(self) -> None:
        bus, device = self._services.bus, self._device()
        listener = bus.add_signal_receiver(lambda *_: None, "PropertiesChanged", PROPERTIES)
        properties = dbus.Interface(device.proxy_object, PROPERTIES)
        try:
            wait_until(lambda: bool(properties.Get(DEVICE, "finger-needed")),
                       "somebody waiting for a finger")
        finally:
            listener.remove()

    @contextlib.contextmanager
    def awaiting(self) -> Iterator[None]:
        """Ends when somebody has begun to wait for a finger since it began."""
        begun: list[bool] = []
        listener = self._services.bus.add_signal_receiver(
            lambda _, changes, __: begun.append(True) if changes.get("finger-needed") else None,
            "PropertiesChanged", PROPERTIES)
        try:
            yield
            wait_until(lambda: bool(begun), "somebody beginning to wait for a finger")
        finally:
            listener.remove()

    @contextlib.contextmanager
    def claimed(self) -> Iterator[None]:
        """Meanwhile nobody else gets the reader. Waits until whoever has it has freed it."""
        device = self._device()
        wait_until(lambda: _is_claimed(device), "the reader being free")
        try:
            yield
        finally:
            device.Release()

    def _command(self, text: str) -> None:
        self.wait_until_needed()
        self.raw_command(text)

    def raw_command(self, text: str) -> None:
        with socket.socket(socket.AF_UNIX) as connection:
            connection.connect(str(self._services.folder / "reader"))
            connection.sendall(text.encode())

    def _device(self) -> Any:
        bus = self._services.bus
        manager = bus.get_object(SERVICE, MANAGER_PATH, introspect=False)
        path = manager.GetDefaultDevice(dbus_interface=MANAGER)
        return dbus.Interface(bus.get_object(SERVICE, path, introspect=False), DEVICE)


def _is_claimed(device: Any) -> bool:
    try:
        device.Claim(THIS_USER)
    except dbus.DBusException as error:
        if error.get_dbus_name() != IN_USE:
            raise
        return False
    return True
