#!/usr/bin/python3
"""The launcher's window is there, with the keyboard, before anything that takes long."""

from __future__ import annotations

import os
import signal
import socket
import subprocess
import time
from pathlib import Path
from typing import Mapping, Optional

from harness import case, isolation, settings

PROBE = Path(os.environ.get("QUELLMOOR_FIRST_FRAME",
                            settings.launcher().parents[1] / "bench" / "firstframe" /
                            "libquellmoor_first_frame.so"))
WINDOW = settings.launcher().with_name("quellmoor-launcher-window")
WEB_PLUGIN = settings.launcher().with_name("quellmoor-web-news.so")
WEB_ENGINE = "libQt6WebEngineCore"
# What must not be loaded for the first frame: the web engine, Qt's reader of interface files with
# the plugins of its designer, and graphics drivers.
HEAVY = (WEB_ENGINE, WEB_PLUGIN.name, "libQt6UiTools", "libQt6Designer", "libQt6Quick", "libGLX_mesa",
         "libLLVM", "_dri.so")
SECONDS = 60.0
PAUSE = 0.02


def loaded(pid: int) -> str:
    return Path(f"/proc/{pid}/maps").read_text(encoding="utf-8", errors="replace")


class FirstFrame(case.SystemTest):
    """Against hosts that take every connection and never answer."""

    @classmethod
    def make_game(cls) -> None:
        """None is needed."""

    @classmethod
    def trees(cls) -> Mapping[Optional[str], Path]:
        return {}

    def setUp(self) -> None:
        super().setUp()
        self.silent = socket.create_server(("127.0.0.1", settings.port()), backlog=64)
        self.addCleanup(self.silent.close)
        reading, writing = os.pipe()
        self.process = subprocess.Popen(
            [str(WINDOW)], pass_fds=[writing], preexec_fn=isolation.die_with_parent,
            env={**self.player.environment(), "QT_QPA_PLATFORM": "offscreen",
                 "QTWEBENGINE_DISABLE_SANDBOX": "1", "LD_PRELOAD": str(PROBE),
                 "FIRST_FRAME_FD": str(writing), "FIRST_FRAME_FOCUS": "accountIDField",
                 "FIRST_FRAME_STOP": "1"})
        self.addCleanup(self.process.wait)
        self.addCleanup(self.process.kill)
        os.close(writing)
        with open(reading, encoding="ascii") as told:
            self.told = told.readline() if self.stops() else ""

    def stops(self) -> bool:
        """Waits until the launcher stops at its first frame."""
        deadline = time.monotonic() + SECONDS
        while time.monotonic() < deadline:
            pid, how = os.waitpid(self.process.pid, os.WUNTRACED | os.WNOHANG)
            if pid:
                return os.WIFSTOPPED(how)
            time.sleep(PAUSE)
        return False

    def test_comes_before_anything_heavy(self) -> None:
        self.assertRegex(self.told, r"^\d+ \d+\n$")
        maps = loaded(self.process.pid)
        self.assertIn("libQt6Widgets", maps)
        self.assertEqual([name for name in HEAVY if name in maps], [])

    def test_is_followed_by_the_web_engine_where_there_is_one(self) -> None:
        os.kill(self.process.pid, signal.SIGCONT)
        deadline = time.monotonic() + SECONDS
        awaited = WEB_ENGINE if WEB_PLUGIN.exists() else "libQt6Widgets"
        while awaited not in loaded(self.process.pid) and time.monotonic() < deadline:
            time.sleep(PAUSE)
        self.assertIn(awaited, loaded(self.process.pid))


if __name__ == "__main__":
    case.main()
