#!/usr/bin/python3
"""The strip under the window of the built launcher, played with the mouse."""

from __future__ import annotations

import tempfile
import unittest
from pathlib import Path
from typing import ClassVar, Optional

import paths  # noqa: F401

from harness import isolation, settings

from player.album import Album
from player.person import Player
from stage.accessibility import SHOWING, Element
from stage.waiting import until
from stage.whole import Stage

HIGHEST_STRIP = 100
FINGER = "Log in with your fingerprint"
NO_READER = "Touch ID is not available"


class TouchBar(unittest.TestCase):

    stage: ClassVar[Stage]
    player: ClassVar[Player]

    @classmethod
    def setUpClass(cls) -> None:
        cls.stage = cls.enterClassContext(Stage())
        folder = tempfile.TemporaryDirectory(prefix="quellmoor-pictures-")
        cls.player = Player(cls.stage, Album(Path(cls.enterClassContext(folder))))

    def setUp(self) -> None:
        self.player.starts_launcher("--touch-bar")
        self.addCleanup(self.player.launcher.end)
        self.player.sees_login_form()
        until("the strip", lambda: self.on_strip(FINGER))

    def test_play_is_there_once_both_fields_are_filled_and_logs_in(self) -> None:
        self.assertIsNone(self.on_strip("Play"))
        self.player.fills_in("wren", "not the password")
        self.player.clicks(until("Play on the strip", lambda: self.on_strip("Play")))
        self.player.sees_status("504: The user name or the password is wrong.")
        self.player.empties_form()
        until("the strip without Play", lambda: self.on_strip("Play") is None)

    def test_the_finger_button_asks_the_launcher(self) -> None:
        self.player.clicks(until("the finger", lambda: self.on_strip(FINGER)))
        self.player.sees("dialog", NO_READER)
        self.player.presses("Escape")
        self.player.no_longer_sees("dialog", NO_READER)

    def test_a_link_opens_its_page(self) -> None:
        self.stage.desktop.forget()
        self.player.clicks(until("the link", lambda: self.on_strip("Community forum")))
        until("the forum", lambda: self.stage.desktop.handed_to("xdg-open") == [
            f"https://forum.localhost:{settings.port()}/"])

    def on_strip(self, name: str) -> Optional[Element]:
        """The button of that name which shows in the low window."""
        for element in self.player.launcher.elements():
            if (element.role() == "push button" and element.name() == name
                    and element.has(SHOWING) and element.window
                    and element.window.area().height < HIGHEST_STRIP):
                return element
        return None


if __name__ == "__main__":
    isolation.enter()
    unittest.main(verbosity=2)
