"""The launcher's window on a display of its own, driven over the accessibility bus."""

from __future__ import annotations

import json
import os
import subprocess
import sys
from contextlib import ExitStack
from pathlib import Path
from typing import Any, Callable, Optional, Sequence

from harness import isolation
from harness.player import Player
from stage import children, waiting
from stage.accessibility import Bus, Element
from stage.children import Services
from stage.desktop import Desktop
from stage.display import Display
from stage.launcher import Launcher
from stage.network import Network

from .book import Book, Crash, Hang

ENABLED, SHOWING = 8, 25
FIRST_STATUS = "Login"
SPI = "org.a11y.atspi."
HANG = 0.1
# On a machine that does much else meanwhile a wait of some 100 ms need not be the launcher's.
HANG_WHEN_BUSY = 0.5
PULSE = Path(__file__).with_name("pulse.py")


class Window:
    """Starts the launcher for a player, as often as it is wanted, and feels its pulse."""

    def __init__(self, folder: Path, player: Player, more: Optional[dict[str, str]] = None) -> None:
        self._folder = folder
        self._player = player
        self._more = dict(more or {})
        self._closing = ExitStack()
        children.adopt_orphans()
        self._closing.callback(children.end_orphans)
        self._logs = folder / "logs"
        self._logs.mkdir()
        # The player's own folders come and go, those of the desktop's services stay.
        services = Services(self._logs, Player(folder / "services").environment())
        self._closing.callback(services.stop)
        self._display = Display(services, folder)
        self._bus = Bus(services, folder / "bus", self._display.environment)
        self._closing.callback(self._bus.close)
        system = folder / "system-bus"
        address = f"unix:path={system}"
        services.start("system-bus", ["dbus-daemon", "--session", "--nofork", "--nopidfile",
                                     "--address", address])
        waiting.until("the system bus", lambda: waiting.listens(system))
        self._more["DBUS_SYSTEM_BUS_ADDRESS"] = address
        self.network = Network(services, address)
        self._closing.callback(self.network.close)
        self.desktop = Desktop(folder / "desktop")
        self.launcher: Optional[Launcher] = None
        self.status_line: Optional[Element] = None
        self._starts = 0
        self._pulse: Optional[subprocess.Popen[bytes]] = None
        self.pulses: list[dict[str, Any]] = []
        self._closing.callback(self.end)

    def close(self) -> None:
        self._closing.close()

    def start(self, *, has_form: bool = True, wrapper: Sequence[str] = ()) -> None:
        """Starts the launcher and waits for its status line, as a rule for its login form, too. In
        a wrapper, which holds it up, its pulse tells nothing.
        """
        self.launch(wrapper)
        if not wrapper:
            self._feel_pulse()
        self.sees("push button", "Play" if has_form else "Update")
        if has_form:
            self.status_line = self.sees("notification", FIRST_STATUS)
            self._account = self.sees("text", "Account")
            self._password = self.sees("text", "Password")
            self.play = self.sees("push button", "Play")

    def launch(self, wrapper: Sequence[str] = ()) -> None:
        """Starts the launcher, and waits for nothing."""
        self._starts += 1
        self.status_line = None
        environment = {**self._player.environment(), **self._display.environment,
                       **self._bus.environment, **self.desktop.environment, **self._more}
        self.launcher = Launcher(environment, self._display, self._bus, self._logs, self._starts,
                                 wrapper=wrapper)

    def end(self) -> None:
        """Ends the launcher, if it is still there."""
        self._stop_pulse()
        if self.launcher:
            self.launcher.end()

    def sees(self, role: str, name: str) -> Element:
        assert self.launcher
        find = self.launcher.find
        found: Element = self.waits_for(f'the {role} "{name}"', lambda: find(role, name))
        return found

    def waits_for(self, what: str, look: Any) -> Any:
        """Waits for what has to be seen; raises Crash when the launcher ends meanwhile, and Hang
        when it is not seen.
        """
        def alive_and_seen() -> Any:
            assert self.launcher
            code = self.launcher.process.poll()
            if code is not None:
                raise Crash(f"the launcher ended with {code}: {self.launcher.errors()[-500:]}")
            return look()
        try:
            return waiting.until(what, alive_and_seen)
        except waiting.NotSeen as missed:
            raise Hang(f"{missed}; the status is {self.status()!r}") from None

    def status(self) -> str:
        return self.status_line.name() if self.status_line else ""

    def logs_in(self, account: str = "wren", password: str = "moorland") -> None:
        """Fills in the form and presses Play, which takes the launcher's answer to both."""
        self.waits_for("a Play button that can be pressed", self.can_play)
        for field, text in ((self._account, account), (self._password, password)):
            ask(field, "EditableText", "SetTextContents", "s", (text,))
        press(self.play)

    def can_play(self) -> bool:
        return self.play.has(ENABLED) and self.play.has(SHOWING)

    def reads(self, role: str, name: str) -> str:
        assert self.launcher
        found = self.launcher.find(role, name)
        return found.text() if found else ""

    def ended(self, watch: Callable[[int], object] = bool,
              seconds: float = waiting.PATIENCE) -> int:
        """Waits for the launcher's end by itself and watches its process meanwhile; the exit code.
        """
        assert self.launcher
        process = self.launcher.process

        def has_ended() -> bool:
            watch(process.pid)
            return process.poll() is not None

        try:
            waiting.until("the launcher's end", has_ended, seconds)
        except waiting.NotSeen:
            raise Hang(f"the launcher does not end; its status is {self.status()!r}") from None
        self._stop_pulse()
        return int(process.returncode)

    def _feel_pulse(self) -> None:
        assert self.launcher
        result = self._folder / f"pulse-{self._starts}.json"
        self._pulse = subprocess.Popen(
            [sys.executable, str(PULSE), self._bus.address, str(self.launcher.pid), str(result)],
            preexec_fn=isolation.die_with_parent,
            env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"})

    def _stop_pulse(self) -> None:
        pulse, self._pulse = self._pulse, None
        if not pulse:
            return
        pulse.terminate()
        pulse.wait()
        result = self._folder / f"pulse-{self._starts}.json"
        if result.exists():
            self.pulses.append(json.loads(result.read_text()))

    def writes_pulse(self, book: Book, name: str) -> None:
        """How the window's thread answered all along; one that did not is a failed case."""
        self._stop_pulse()
        beats = sum(pulse["beats"] for pulse in self.pulses)
        late = [gap for pulse in self.pulses for gap in pulse["late"]]
        worst = max((pulse["worst"] for pulse in self.pulses), default=0)
        raw = max((pulse["worst_raw"] for pulse in self.pulses), default=0)
        ran = max((pulse["most_run"] for pulse in self.pulses), default=0)
        with book.case("window", f"answers all along: {name}") as case:
            case.sees(f"{beats} questions, the longest wait {worst * 1000:.0f} ms "
                      f"({raw * 1000:.0f} ms with the machine's own waits), "
                      f"{len(late)} over 100 ms; the thread that draws was busy for at most "
                      f"{ran * 1000:.0f} ms of one")
            case.after = "nothing to heal"
            case.expect("questions at all", beats > 0, True)
            case.questions, case.late, case.longest = beats, len(late), round(worst * 1000)
            if worst > (HANG_WHEN_BUSY if book.is_short else HANG):
                raise Hang(case.saw)


def ask(element: Element, interface: str, what: str, kinds: str = "",
        arguments: tuple[Any, ...] = ()) -> Any:
    return element.bus.call_blocking(element.owner, element.path, SPI + interface, what, kinds,
                                     arguments)


def press(button: Element) -> None:
    ask(button, "Action", "DoAction", "i", (0,))
