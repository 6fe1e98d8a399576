"""A display of the session's own, with a window manager and a compositor, as players have them:
what is on it, and pictures of it.
"""

from __future__ import annotations

import os
import re
import subprocess
from pathlib import Path
from typing import NamedTuple, Optional

from .children import Services, end
from .waiting import until

WIDTH, HEIGHT = 1280, 800
PANEL = 24
USUAL_SETTINGS = Path("/etc/xdg/openbox/rc.xml")
PLACE = re.compile(r"Absolute upper-left X: +(-?\d+)\s+Absolute upper-left Y: +(-?\d+)"
                   r".*Width: (\d+)\s+Height: (\d+)", re.DOTALL)
SHAPE = re.compile(r"Window shape extents: +(\d+)x(\d+)\+(\d+)\+(\d+)")
Colour = tuple[int, int, int]


class Area(NamedTuple):
    """A rectangle on the display."""

    x: int
    y: int
    width: int
    height: int

    def centre(self) -> tuple[int, int]:
        return self.x + self.width // 2, self.y + self.height // 2


NOWHERE = Area(0, 0, 0, 0)


class Display:
    """An X server that nobody else uses; `environment` names it to programs."""

    def __init__(self, services: Services, folder: Path) -> None:
        reading, writing = os.pipe()
        try:
            services.start("display", ["Xvfb", "-displayfd", str(writing), "-screen", "0",
                                      f"{WIDTH}x{HEIGHT}x24",
                                      "-nolisten", "tcp", "-noreset"], passed=[writing])
            os.close(writing)
            with open(reading, encoding="ascii", closefd=False) as numbers:
                number = numbers.readline().strip()
        finally:
            os.close(reading)
        if not number:
            raise RuntimeError("the display does not start")
        self.environment = {"DISPLAY": f":{number}", "XDG_SESSION_TYPE": "x11",
                            "QT_QPA_PLATFORM": "xcb"}
        self._all = {**os.environ, **self.environment}
        services.start("window-manager", ["openbox", "--config-file", str(_settings(folder))],
                       more=self.environment)
        self._compositor = services.start("compositor", ["xcompmgr"], more=self.environment)
        until("the window manager",
              lambda: "window id" in self._property("_NET_SUPPORTING_WM_CHECK"))

    def windows_of(self, pid: int) -> list[int]:
        """The windows of a process that are on the screen."""
        return self._search("--pid", str(pid))

    def stop_blending(self) -> None:
        """From now on windows are put on the screen as they are, without what shines through."""
        end(self._compositor)

    def shape(self, window: int) -> Area:
        """The smallest rectangle around what a window shows, in the window."""
        told = self._run("xwininfo", "-shape", "-id", str(window)).stdout
        found = SHAPE.search(told)
        if not found:
            return self.place(window)._replace(x=0, y=0)
        width, height, x, y = (int(number) for number in found.groups())
        return Area(x, y, width, height)

    def windows_named(self, pattern: str) -> list[int]:
        return self._search("--name", pattern)

    def place(self, window: int) -> Area:
        told = self._run("xwininfo", "-id", str(window)).stdout
        found = PLACE.search(told)
        return Area(*(int(number) for number in found.groups())) if found else NOWHERE

    def active_window(self) -> Optional[int]:
        return self._last_of("_NET_ACTIVE_WINDOW")

    def front_window(self) -> Optional[int]:
        """The window that no other one covers."""
        return self._last_of("_NET_CLIENT_LIST_STACKING")

    def top_of_desktop(self) -> int:
        """Where the room for windows begins."""
        return int(self._property("_NET_WORKAREA").partition("=")[2].split(",")[1])

    def xdotool(self, *words: str, typed: Optional[str] = None) -> None:
        """Plays keys and mouse. What is typed goes through a pipe, for all see command lines."""
        done = self._run("xdotool", *words, typed=typed)
        if done.returncode != 0 and done.stderr:
            raise RuntimeError(f"xdotool {' '.join(words)}: {done.stderr}")

    def save_picture(self, path: Path) -> None:
        subprocess.run(["import", "-window", "root", str(path)], env=self._all, check=True)

    def colours(self, area: Area) -> list[Colour]:
        """The pixels of an area, line by line."""
        crop = f"{area.width}x{area.height}+{area.x}+{area.y}"
        raw = subprocess.run(["import", "-window", "root", "-crop", crop, "-depth", "8", "rgb:-"],
                             env=self._all, check=True, capture_output=True).stdout
        return [(raw[i], raw[i + 1], raw[i + 2]) for i in range(0, len(raw), 3)]

    def _search(self, *words: str) -> list[int]:
        """Searches again when a window went while it was looked at."""
        def search() -> Optional[subprocess.CompletedProcess[str]]:
            done = self._run("xdotool", "search", "--onlyvisible", *words)
            return None if "BadWindow" in done.stderr else done
        return [int(line) for line in until("the list of windows", search).stdout.split()]

    def _property(self, name: str) -> str:
        return self._run("xprop", "-root", name).stdout

    def _run(self, *words: str, typed: Optional[str] = None) -> subprocess.CompletedProcess[str]:
        return subprocess.run(words, env=self._all, input=typed, text=True, capture_output=True,
                              check=False)

    def _last_of(self, name: str) -> Optional[int]:
        last = self._property(name).replace(",", " ").split()[-1]
        return int(last, 16) if last.startswith("0x") else None


def _settings(folder: Path) -> Path:
    """The window manager's usual settings, but with room for a panel at the top."""
    usual = USUAL_SETTINGS.read_text()
    own = folder / "window-manager.xml"
    own.write_text(re.sub(r"(<margins>.*?<top>)\d+(</top>)", rf"\g<1>{PANEL}\g<2>", usual,
                          count=1, flags=re.DOTALL))
    return own
