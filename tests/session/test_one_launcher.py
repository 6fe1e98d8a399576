#!/usr/bin/python3
"""One launcher for a player and a data folder, however many are started."""

from __future__ import annotations

import os
import shutil
import signal
import tempfile
import unittest
from pathlib import Path
from typing import ClassVar

import paths  # noqa: F401

from harness import hosts, isolation, snapshot

from acts.game import OTHER_PROGRAM, OTHER_TITLE
from player.album import Album
from player.person import Player
from stage import children
from stage.launcher import Launcher
from stage.waiting import until
from stage.whole import Stage

MANY = 30
MANIFEST = f"download.localhost{hosts.MANIFEST}"


class OneLauncher(unittest.TestCase):
    """Each test begins with a whole game and no launcher."""

    stage: ClassVar[Stage]
    player: ClassVar[Player]

    @classmethod
    def setUpClass(cls) -> None:
        cls.stage = cls.enterClassContext(Stage())
        folder = tempfile.TemporaryDirectory(prefix="quellmoor-pictures-")
        cls.player = Player(cls.stage, Album(Path(cls.enterClassContext(folder))))
        shutil.copytree(cls.stage.game.source, cls.stage.home.game)
        assert cls.stage.home.verify().code == 0

    def setUp(self) -> None:
        self.stage.hosts.forget()

    def start(self) -> Launcher:
        launcher = self.stage.start_launcher()
        self.addCleanup(launcher.end)
        return launcher

    def test_of_many_started_at_once_one_stays_and_is_in_front(self) -> None:
        other_program = self.stage.start_program(OTHER_PROGRAM)
        self.addCleanup(children.end, other_program)
        until("another program", lambda: self.stage.display.windows_named(OTHER_TITLE))
        game, settings = self._game(), self.stage.home.stored_settings()

        launchers = [self.start() for _ in range(MANY)]

        until("the end of all but one",
              lambda: sum(one.process.poll() is None for one in launchers) == 1)
        (staying,) = (one for one in launchers if one.process.poll() is None)
        others = [one for one in launchers if one is not staying]
        self.assertEqual([one.process.returncode for one in others], [0] * (MANY - 1))
        self.assertEqual([one.errors() for one in others], [""] * (MANY - 1))
        until("one launcher in front with the focus", staying.is_in_front)
        until("the manifest", lambda: MANIFEST in self.stage.hosts.asked_for())
        self.assertEqual(self.stage.hosts.asked_for().count(MANIFEST), 1)
        self._is_closed(staying)
        self.assertEqual(self._game(), game)
        self.assertEqual(self.stage.home.stored_settings(), settings)

    def test_a_killed_launcher_leaves_its_place_to_the_next(self) -> None:
        killed = self.start()
        until("a window", killed.windows)
        os.kill(killed.pid, signal.SIGKILL)
        killed.process.wait()
        self.assertTrue((self.stage.home.data / ".launcher.lock").exists())

        following = self.start()
        until("a window of the next", following.windows)

        self.assertEqual(self.stage.start_second_launcher(), 0)
        until("the next in front", following.is_in_front)
        self._is_closed(following)

    def test_launchers_of_two_data_folders_do_not_meet(self) -> None:
        """Though the player and the folder for sockets are the same."""
        first = self.start()
        until("a window", first.windows)
        elsewhere = self.stage.folder / "elsewhere"
        elsewhere.mkdir()
        self.addCleanup(shutil.rmtree, elsewhere)
        other = self.stage.start_launcher(more={"XDG_DATA_HOME": str(elsewhere),
                                                "XDG_CONFIG_HOME": str(elsewhere)})
        self.addCleanup(other.end)
        until("the window of the other in front", other.is_in_front)

        self.assertEqual(self.stage.start_second_launcher(), 0)
        until("the first in front", first.is_in_front)
        self.assertIsNone(other.process.poll())
        self._is_closed(first)
        self.assertIsNone(other.process.poll())
        self._is_closed(other)

    def _is_closed(self, launcher: Launcher) -> None:
        close = until("the close button", lambda: launcher.find("push button", "Close"))
        self.stage.display.xdotool(
            "mousemove", "--sync", *(str(number) for number in launcher.area(close).centre()),
            "click", "1")
        self.assertEqual(launcher.ended(), 0)

    def _game(self) -> snapshot.Contents:
        return snapshot.contents(self.stage.home.game)


if __name__ == "__main__":
    isolation.enter()
    unittest.main(verbosity=2)
