#!/usr/bin/python3
"""The launcher on Wayland: its window shows, and dragging it is left to the compositor."""

from __future__ import annotations

import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import Optional

import paths  # noqa: F401

from harness import case, isolation, settings

from stage.children import Services
from stage.display import HEIGHT, WIDTH, Area, Display
from stage.waiting import until

SOCKET = "wayland-q"
GOLD = (224, 178, 91)  # what can be pressed
NEAR = 40
MARK = 24  # a square of less gold, or a move by less, is an accident
STEP = 12
SECONDS = 60.0


def is_gold(colour: tuple[int, int, int]) -> bool:
    return all(abs(one - other) < NEAR for one, other in zip(colour, GOLD))


class OnWayland(case.WindowTest):
    """In a compositor that is itself a window of a display, so that it has a mouse."""

    def setUp(self) -> None:
        super().setUp()
        folder = Path(tempfile.mkdtemp(prefix="quellmoor-wayland-", dir="/tmp"))
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        self.environment = {**self.player.environment(), "XDG_RUNTIME_DIR": str(folder)}
        self.services = Services(folder, self.environment)
        self.addCleanup(self.services.stop)
        self.display = Display(self.services, folder)
        self.services.start(
            "weston", ["weston", "--backend=x11-backend.so", "--use-pixman", "--no-config",
                       "--idle-time=0", f"--socket={SOCKET}",
                       f"--width={WIDTH - 40}", f"--height={HEIGHT - 40}"],
            more=self.display.environment)
        until("the compositor", lambda: (folder / SOCKET).exists(), SECONDS)

    def start_launcher(self) -> subprocess.Popen[bytes]:
        launcher = subprocess.Popen(
            [str(settings.launcher())], stdin=subprocess.DEVNULL,
            env={**self.environment, "WAYLAND_DISPLAY": SOCKET, "QT_QPA_PLATFORM": "wayland",
                 "QTWEBENGINE_DISABLE_SANDBOX": "1"},
            preexec_fn=isolation.die_with_parent)
        self.addCleanup(launcher.wait)
        self.addCleanup(launcher.kill)
        return launcher

    def play_button(self) -> Optional[tuple[int, int]]:
        """The middle of all that is golden on the screen; none while there is too little."""
        colours = self.display.colours(Area(0, 0, WIDTH, HEIGHT))
        golden = [divmod(place, WIDTH) for place, colour in enumerate(colours) if is_gold(colour)]
        if len(golden) < MARK * MARK:
            return None
        rows, columns = zip(*golden)
        return sorted(columns)[len(columns) // 2], sorted(rows)[len(rows) // 2]

    def test_the_window_shows_and_the_compositor_moves_it(self) -> None:
        launcher = self.start_launcher()
        start = until("the play button", self.play_button, SECONDS)
        # Between the play button and the left edge there is nothing but the picture.
        self.display.xdotool("mousemove", str(start[0] - 130), str(start[1]), "mousedown", "1")

        def moved() -> Optional[tuple[int, int]]:
            """Goes on until the compositor has taken the move over and the window follows."""
            self.display.xdotool("mousemove_relative", "--sync", str(STEP), str(STEP))
            place = self.play_button()
            return place if place and place[0] > start[0] + MARK and place[1] > start[1] + MARK \
                else None
        until("the window at another place", moved, SECONDS)
        self.display.xdotool("mouseup", "1")
        self.assertIsNone(launcher.poll())


if __name__ == "__main__":
    case.main()
