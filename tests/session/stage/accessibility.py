"""The windows as assistive technology sees them, over a private message bus."""

from __future__ import annotations

from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any, Iterator, NamedTuple, Optional

import dbus
import dbus.bus
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

from .children import Services
from .display import NOWHERE, Area
from .waiting import NotSeen, listens, until

ROOT = "/org/a11y/atspi/accessible/root"
SPI = "org.a11y.atspi."
PROPERTIES = "org.freedesktop.DBus.Properties"
FOCUSED, SHOWING = 12, 25
ON_SCREEN = 0
PAGE = "web document"
EVENTS = SPI + "Event.Object"
LISTENED_TO = ("object:state-changed:showing", "object:state-changed:focused",
               "object:property-change:accessible-value")


class Event(NamedTuple):
    """Something that a program told: what kind of change, to what, and the element it is about."""

    kind: str
    value: int
    element: Element


class Bus:
    """A private session bus, which `environment` names, with the accessibility bus on it, which has
    the `address`.
    """

    def __init__(self, services: Services, socket: Path, display: dict[str, str]) -> None:
        address = f"unix:path={socket}"
        self.environment = {"DBUS_SESSION_BUS_ADDRESS": address,
                            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        services.start("bus", ["dbus-daemon", "--session", "--nofork", "--nopidfile", "--address",
                              address], more=display)
        until("the message bus", lambda: listens(socket))
        session = dbus.bus.BusConnection(address)
        found = session.call_blocking("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus",
                                      "GetAddress", "", ())
        session.close()
        self.address = str(found)
        self._bus = dbus.bus.BusConnection(self.address, mainloop=DBusGMainLoop())
        self._heard: list[Event] = []
        until("the registry of accessible programs", lambda: self._registry().role())

    def close(self) -> None:
        self._bus.close()

    def another(self) -> Any:
        """A connection for another thread, which closes it."""
        return dbus.bus.BusConnection(self.address)

    def application_of(self, pid: int) -> Element:
        """A program with windows."""
        for application in self._registry().children():
            if self._owner(application) == pid:
                return application
        raise NotSeen(f"the windows of {pid}")

    def listen(self) -> None:
        """From now on events are kept, as a screen reader would ask for them."""
        for event in LISTENED_TO:
            self._bus.call_blocking(SPI + "Registry", "/org/a11y/atspi/registry", SPI + "Registry",
                                    "RegisterEvent", "s", (event,))
        self._bus.add_signal_receiver(self._hear, dbus_interface=EVENTS, sender_keyword="sender",
                                      path_keyword="path")

    def heard(self) -> list[Event]:
        """The events since the last call."""
        context = GLib.MainContext.default()
        while context.iteration(False):
            pass
        heard, self._heard = self._heard, []
        return heard

    def _hear(self, kind: str, value: int, *_more: Any, sender: str, path: str) -> None:
        self._heard.append(Event(str(kind), int(value), Element(self._bus, sender, path)))

    def elements_of(self, pid: int) -> Iterator[Element]:
        """Everything in the windows of a process, depth first; what goes meanwhile is left out."""
        for application in self._registry().children():
            if self._owner(application) == pid:
                for window in application.children():
                    yield window
                    yield from window.below(window)

    def _registry(self) -> Element:
        return Element(self._bus, SPI + "Registry", ROOT)

    def _owner(self, application: Element) -> Optional[int]:
        try:
            return int(self._bus.call_blocking(
                "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                "GetConnectionUnixProcessID", "s", (application.owner,)))
        except dbus.DBusException:
            return None


@dataclass(frozen=True)
class Element:
    """A part of a window. What it says is asked anew each time; one that is gone says nothing."""

    bus: Any
    owner: str
    path: str
    window: Optional[Element] = None

    def role(self) -> str:
        return str(self._ask("Accessible", "GetRoleName") or "")

    def name(self) -> str:
        return str(self._ask_property("Accessible", "Name") or "")

    def text(self) -> str:
        """What is in a field."""
        return str(self._ask("Text", "GetText", "ii", (0, -1)) or "")

    def value(self) -> float:
        """How far a bar has got."""
        return float(self._ask_property("Value", "CurrentValue") or 0)

    def is_page(self) -> bool:
        """A web page."""
        return self.role() == PAGE

    def has(self, state: int) -> bool:
        states = self._ask("Accessible", "GetState") or (0, 0)
        return bool(int(states[0]) >> state & 1)

    def area(self) -> Area:
        """Where the program believes that it is on the display."""
        return Area(*(int(number) for number in
                      self._ask("Component", "GetExtents", "u", (ON_SCREEN,)) or NOWHERE))

    def children(self) -> list[Element]:
        return [Element(self.bus, str(owner), str(path))
                for owner, path in self._ask("Accessible", "GetChildren") or ()]

    def below(self, window: Element) -> Iterator[Element]:
        """Everything in it, depth first, without the parts of web pages: of those there may be any
        number. Those of a page are below the page itself.
        """
        for child in self.children():
            child = replace(child, window=window)
            yield child
            if not child.is_page():
                yield from child.below(window)

    def _ask(self, interface: str, what: str, kinds: str = "", arguments: tuple[Any, ...] = ()
             ) -> Any:
        try:
            return self.bus.call_blocking(self.owner, self.path, SPI + interface, what, kinds,
                                          arguments)
        except dbus.DBusException:
            return None

    def _ask_property(self, interface: str, what: str) -> Any:
        try:
            return self.bus.call_blocking(self.owner, self.path, PROPERTIES, "Get", "ss",
                                          (SPI + interface, what))
        except dbus.DBusException:
            return None
