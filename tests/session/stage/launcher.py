"""The launcher under test as a process with windows."""

from __future__ import annotations

import subprocess
from pathlib import Path
from typing import Iterator, Mapping, Optional, Sequence

from harness import isolation, settings

from . import children
from .accessibility import SHOWING, Bus, Element
from .display import Area, Display
from .waiting import until


class Launcher:
    """One run of the launcher. What it prints goes to files, as its game's words do. A `wrapper`
    has to become the launcher itself, and keep its process.
    """

    def __init__(self, environment: Mapping[str, str], display: Display, bus: Bus,
                 logs: Path, number: int, words: Sequence[str] = (),
                 wrapper: Sequence[str] = ()) -> None:
        self._display = display
        self._bus = bus
        self.output_file = logs / f"launcher-{number}.output"
        self.errors_file = logs / f"launcher-{number}.errors"
        with open(self.output_file, "wb") as output, open(self.errors_file, "wb") as errors:
            self.process = subprocess.Popen([*wrapper, str(settings.launcher()), *words],
                                            env=dict(environment), stdin=subprocess.DEVNULL,
                                            stdout=output, stderr=errors,
                                            preexec_fn=isolation.die_with_parent)
        self.pid = self.process.pid

    def elements(self) -> Iterator[Element]:
        return self._bus.elements_of(self.pid)

    def find(self, role: str, name: str) -> Optional[Element]:
        """The element that shows, by what it is called; none while there is no such one."""
        for element in self.elements():
            if element.role() == role and element.name() == name and element.has(SHOWING):
                return element
        return None

    def windows(self) -> list[int]:
        """Those that are on the screen."""
        return self._display.windows_of(self.pid)

    def area(self, element: Element) -> Area:
        """Where an element is on the display. A program may be wrong about the places of its
        windows, which the window manager moves; but it knows where in its window a thing is, and
        which one that is tells the size.
        """
        return until(f"the window of {element.name()} on the screen", lambda: self._area(element))

    def is_in_front(self) -> bool:
        windows = self.windows()
        return (self._display.active_window() in windows
                and self._display.front_window() in windows)

    def ended(self) -> int:
        """Waits for its end by itself; the exit code."""
        (code,) = until("the end of the launcher", self._code)
        return code

    def end(self) -> None:
        children.end(self.process)

    def errors(self) -> str:
        return self.errors_file.read_text(errors="replace")

    def _area(self, element: Element) -> Optional[Area]:
        inside, window = element.area(), (element.window or element).area()
        for candidate in self.windows():
            place = self._display.place(candidate)
            if (place.width, place.height) == (window.width, window.height):
                return inside._replace(x=place.x + inside.x - window.x,
                                       y=place.y + inside.y - window.y)
        return None

    def _code(self) -> Optional[tuple[int]]:
        code = self.process.poll()
        return None if code is None else (code,)
