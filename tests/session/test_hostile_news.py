#!/usr/bin/python3
"""The built launcher with somebody else's page in the place of its news."""

from __future__ import annotations

import json
import struct
import tempfile
import unittest
import zlib
from pathlib import Path
from typing import Any, ClassVar

import paths  # noqa: F401

from harness import isolation, settings, snapshot

from player.album import Album
from player.person import Player
from stage.accessibility import PAGE
from stage.pulse import Pulse
from stage.waiting import until
from stage.whole import Stage

TRICKS = Path(__file__).resolve().parents[1] / "web" / "tricks.json"
NEWS = "/launcher/"
QUIET = "quiet"
ELSEWHERE = "/elsewhere"
PICTURE = (8000, 6250)
AUTOSTART = "../../.config/autostart/x.desktop"


class HostileNews(unittest.TestCase):

    stage: ClassVar[Stage]
    player: ClassVar[Player]

    @classmethod
    def setUpClass(cls) -> None:
        cls.stage = cls.enterClassContext(Stage())
        folder = tempfile.TemporaryDirectory(prefix="quellmoor-pictures-")
        cls.player = Player(cls.stage, Album(Path(cls.enterClassContext(folder))))
        (cls.stage.folder / "picture.png").write_bytes(large_picture())

    def test_nothing_but_links_comes_out_and_the_launcher_answers(self) -> None:
        # The return of the network fetches the news anew.
        self.stage.network.tell(False)
        self.player.starts_launcher()
        self.addCleanup(self.player.launcher.end)
        self.player.sees_login_form()
        self.brings("", "", QUIET)
        windows, files = self.windows(), self.files()
        expected: list[str] = []

        with Pulse(self.stage.bus, self.player.launcher.pid):
            for trick in json.loads(TRICKS.read_text()):
                with self.subTest(trick["name"]):
                    expected += [self.elsewhere()] * trick.get("links", 0)
                    self.plays(trick, expected)
                    self.assertEqual(self.windows(), windows)
                    self.assertEqual(self.files(), files)

        self.assertFalse([one for one in self.stage.hosts.asked_for() if ELSEWHERE in one])
        self.player.clicks_button("Play")
        self.player.sees_status("You must enter a Username and Password.")
        self.assertEqual(self.stage.desktop.handed_to("xdg-open"), expected)

    def plays(self, trick: dict[str, Any], expected: list[str]) -> None:
        """Until the page has done what it can, and another one is there again."""
        done = "done: " + trick["name"]
        self.brings(trick.get("body", ""), trick.get("script", ""), done)
        until("the links in the browser",
              lambda: len(self.stage.desktop.handed_to("xdg-open")) >= len(expected))
        self.brings("", "", QUIET)
        self.assertEqual(self.stage.desktop.handed_to("xdg-open"), expected)

    def brings(self, body: str, script: str, title: str) -> None:
        """A page that has that title as soon as its script has run."""
        page = (f"<meta charset=utf-8><title>trick</title>{body}<script>onload = () => {{"
                f"{script} document.title = '{title}'; }}</script>")
        self.stage.hosts.fail(
            {"path": NEWS, "fault": {"body": page}},
            {"path": "/picture.png", "fault": {"file": str(self.stage.folder / "picture.png"),
                                               "status": 200,
                                               "headers": {"Content-Type": "image/png"}}},
            {"path": "/attachment", "fault": {"body": "x", "status": 200, "headers": {
                "Content-Disposition": f'attachment; filename="{AUTOSTART}"'}}})
        self.stage.network.tell(False)
        self.stage.network.tell(True)
        self.player.sees(PAGE, title)

    def windows(self) -> list[tuple[int, ...]]:
        """Where each window of the launcher is."""
        return [(window, *self.stage.display.place(window))
                for window in self.player.launcher.windows()]

    def files(self) -> snapshot.Contents:
        """Everything of the player's but what the launcher writes for itself, its log and its
        settings.
        """
        home = self.stage.home
        return snapshot.contents(home.root, (home.state_home, home.settings.parent))

    @staticmethod
    def elsewhere() -> str:
        return f"https://account.localhost:{settings.port()}{ELSEWHERE}"


def large_picture() -> bytes:
    """Few bytes on the way, 200 MB in memory."""
    width, height = PICTURE

    def chunk(kind: bytes, data: bytes) -> bytes:
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))

    lines = zlib.compress(bytes((1 + (width + 7) // 8) * height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 1, 0, 0, 0, 0))
            + chunk(b"IDAT", lines) + chunk(b"IEND", b""))


if __name__ == "__main__":
    isolation.enter()
    unittest.main(verbosity=2)
