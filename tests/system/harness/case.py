"""The base of all system tests."""

from __future__ import annotations

import shutil
import sys
import tempfile
import unittest
from pathlib import Path
from typing import ClassVar, Mapping, Optional, Sequence

from . import games, isolation, settings, snapshot
from .hosts import Hosts
from .player import WITHOUT_ROOTS_POWERS, Outcome, Player

__all__ = ["WITHOUT_ROOTS_POWERS", "Outcome", "Player", "SystemTest", "WindowTest", "main"]

VALID, INVALID, NO_MANIFEST, ANOTHER_LAUNCHER, MISTAKE = 0, 1, 2, 3, 64


class SystemTest(unittest.TestCase):
    """A class has one game, served by hosts of its own; each test has a fresh player."""

    folder: ClassVar[Path]
    source: ClassVar[Path]
    tree: ClassVar[Path]
    hosts: ClassVar[Hosts]

    @classmethod
    def setUpClass(cls) -> None:
        cls.folder = Path(tempfile.mkdtemp(prefix="quellmoor-system-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.source, cls.tree = cls.folder / "source", cls.folder / "tree"
        cls.tree.mkdir()
        cls.make_game()
        trees = cls.trees()
        if trees:
            cls.hosts = Hosts(cls.folder, trees, options=cls.host_options())
            cls.addClassCleanup(cls.hosts.stop)

    @classmethod
    def make_game(cls) -> None:
        """Puts the game into `source` and publishes it in `tree`."""
        games.small_game(cls.source)
        games.publish(cls.source, cls.tree)

    @classmethod
    def trees(cls) -> Mapping[Optional[str], Path]:
        """The trees to serve, by environment; none at all for tests without hosts."""
        return {None: cls.tree}

    @classmethod
    def host_options(cls) -> Sequence[str]:
        """What the hosts are told besides."""
        return ()

    def setUp(self) -> None:
        root = Path(tempfile.mkdtemp(prefix="player-", dir=self.folder))
        self.addCleanup(shutil.rmtree, root, ignore_errors=True)
        self.player = Player(root)
        if self.trees():
            self.hosts.forget()

    def install(self) -> None:
        """Gives the player the whole game, found valid and remembered as such."""
        shutil.copytree(self.source, self.player.game)
        self.ends(self.player.verify(), VALID)
        self.hosts.forget()

    def ends(self, outcome: Outcome, *codes: int) -> Outcome:
        """The launcher ended by itself and with one of these codes."""
        self.assertIn(outcome.code, codes, str(outcome))
        return outcome

    def has_the_game(self, source: Optional[Path] = None) -> None:
        """The game folder is the source, down to the last byte, and nothing else."""
        self.assertEqual(snapshot.contents(self.player.game),
                         snapshot.contents(source or self.source))

    def nothing_is_left_over(self) -> None:
        """The launcher leaves nothing beside the game folder and nothing temporary."""
        self.assertEqual([path.name for path in self.player.data.iterdir()], ["Game"])
        self.assertEqual(list(self.player.temporary.iterdir()), [])


class WindowTest(SystemTest):
    """Of a window that shows up: there is no game, and nobody serves one."""

    @classmethod
    def make_game(cls) -> None:
        """None is needed."""

    @classmethod
    def trees(cls) -> Mapping[Optional[str], Path]:
        return {}


def main() -> None:
    """Runs the tests of the program's file in isolation."""
    if not settings.launcher().exists():
        sys.exit(f"{settings.launcher()} is missing; name it in QUELLMOOR_LAUNCHER")
    isolation.enter()
    unittest.main(verbosity=2)
