#!/usr/bin/python3
"""The launcher's window is there, with the keyboard, before anything that takes long."""

from __future__ import annotations

import socket
from pathlib import Path
from typing import Mapping, Optional

from harness import case, settings
from harness.firstframe import FirstFrame, comes_true

WINDOW = settings.launcher().with_name("quellmoor-launcher-window")
WEB_PLUGIN = settings.launcher().with_name("quellmoor-web-news.so")
WEB_ENGINE = "libQt6WebEngineCore"
# What must not be loaded for the first frame: the web engine, Qt's reader of interface files with
# the plugins of its designer, and graphics drivers.
HEAVY = (WEB_ENGINE, WEB_PLUGIN.name, "libQt6UiTools", "libQt6Designer", "libQt6Quick", "libGLX_mesa",
         "libLLVM", "_dri.so")


class BeforeAnythingElse(case.SystemTest):
    """Against hosts that take every connection and never answer."""

    @classmethod
    def make_game(cls) -> None:
        """None is needed."""

    @classmethod
    def trees(cls) -> Mapping[Optional[str], Path]:
        return {}

    def setUp(self) -> None:
        super().setUp()
        silent = socket.create_server(("127.0.0.1", settings.port()), backlog=64)
        self.addCleanup(silent.close)
        self.frame = FirstFrame(WINDOW, self.player)
        self.addCleanup(self.frame.close)
        self.assertRegex(self.frame.told, r"^\d+ \d+\n$")

    def test_nothing_heavy_is_loaded(self) -> None:
        loaded = self.frame.loaded()
        self.assertIn("libQt6Widgets", loaded)
        self.assertEqual([name for name in HEAVY if name in loaded], [])

    def test_the_web_engine_follows_where_there_is_one(self) -> None:
        self.frame.go_on()
        awaited = WEB_ENGINE if WEB_PLUGIN.exists() else "libQt6Widgets"
        self.assertTrue(comes_true(lambda: awaited in self.frame.loaded()))


if __name__ == "__main__":
    case.main()
