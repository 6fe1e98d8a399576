#!/usr/bin/python3
"""The launcher's window is there, with the keyboard, before anything that takes long."""

from __future__ import annotations

import shutil
import socket
import subprocess
from pathlib import Path

from harness import case, settings
from harness.firstframe import FirstFrame, comes_true, loaded_by

WINDOW = settings.launcher().with_name("quellmoor-launcher-window")
WEB_PLUGIN = settings.launcher().with_name("quellmoor-web-news.so")
ENGINE = settings.launcher().with_name("quellmoor-engine.so")
WEB_ENGINE = "libQt6WebEngineCore"
# What must not be loaded for the first frame: the web engine, Qt's reader of interface files with
# the plugins of its designer, what draws pictures that were not rendered, graphics drivers, and what
# settings, hosts and game files need.
HEAVY = (WEB_ENGINE, WEB_PLUGIN.name, "libQt6UiTools", "libQt6Designer", "libQt6Quick", "libQt6Svg",
         "libGLX_mesa", "libLLVM", "_dri.so", ENGINE.name, "libQt6Sql", "libQt6Network", "libcrypto",
         "libbz2")
DAMAGED = b"no settings"


class BeforeAnythingElse(case.WindowTest):
    """Against hosts that take every connection and never answer."""

    def setUp(self) -> None:
        super().setUp()
        self.silent = socket.create_server(("127.0.0.1", settings.port()), backlog=64)
        self.addCleanup(self.silent.close)
        self.silent.setblocking(False)
        self.player.settings.parent.mkdir(parents=True)
        self.player.settings.write_bytes(DAMAGED)
        self.frame = FirstFrame(WINDOW, self.player)
        self.addCleanup(self.frame.close)
        self.assertRegex(self.frame.told, r"^\d+ \d+\n$")

    def test_nothing_heavy_is_loaded(self) -> None:
        loaded = self.frame.loaded()
        self.assertIn("libQt6Widgets", loaded)
        self.assertEqual([name for name in HEAVY if name in loaded], [])

    def test_settings_and_hosts_are_asked_later(self) -> None:
        self.assertEqual(self.player.settings.read_bytes(), DAMAGED)
        with self.assertRaises(BlockingIOError):
            self.silent.accept()
        self.frame.go_on()
        self.assertTrue(comes_true(self._hosts_are_asked))
        kept = self.player.settings.with_name(self.player.settings.name + ".bad")
        self.assertEqual(kept.read_bytes(), DAMAGED)

    def _hosts_are_asked(self) -> bool:
        try:
            connection, _ = self.silent.accept()
        except BlockingIOError:
            return False
        connection.close()
        return True

    def test_a_second_launcher_waits_for_it(self) -> None:
        with subprocess.Popen(
                [str(WINDOW)], stderr=subprocess.PIPE, text=True,
                env={**self.player.environment(), "QT_QPA_PLATFORM": "offscreen"}) as second:
            self.assertTrue(comes_true(lambda: ENGINE.name in loaded_by(second.pid)))
            self.frame.go_on()
            self.assertEqual(second.wait(60), 0)

    def test_the_web_engine_follows_where_there_is_one(self) -> None:
        self.frame.go_on()
        awaited = WEB_ENGINE if WEB_PLUGIN.exists() else "libQt6Widgets"
        self.assertTrue(comes_true(lambda: awaited in self.frame.loaded()))


class WithoutItsEngine(case.WindowTest):
    """In a folder that holds only what the window needs."""

    def test_it_says_so_and_ends(self) -> None:
        for name in (WINDOW.name, "libquellmoor-window.so"):
            shutil.copy(WINDOW.with_name(name), self.player.root)
        ended = subprocess.run(
            [str(self.player.root / WINDOW.name)], capture_output=True, text=True, check=False,
            timeout=60, env={**self.player.environment(), "QT_QPA_PLATFORM": "offscreen"})
        self.assertEqual(ended.returncode, 1, ended.stderr)
        self.assertIn("The launcher is not whole: ", ended.stderr)


class WithSilentBuses(case.WindowTest):
    """Both of D-Bus's buses let everybody in and never say a word."""

    def setUp(self) -> None:
        super().setUp()
        self.buses = {f"DBUS_{bus.upper()}_BUS_ADDRESS": f"unix:path={self._silent(bus)}"
                      for bus in ("system", "session")}

    def _silent(self, name: str) -> Path:
        path = self.player.root / name
        bus = socket.socket(socket.AF_UNIX)
        self.addCleanup(bus.close)
        bus.bind(str(path))
        bus.listen(64)
        return path

    def _run(self, *arguments: str) -> int:
        return subprocess.run(
            [str(WINDOW), *arguments], stderr=subprocess.DEVNULL, check=False, timeout=60,
            env={**self.player.environment(), "QT_QPA_PLATFORM": "offscreen", **self.buses}
        ).returncode

    def test_the_window_is_there_and_calls_a_second_launcher_off(self) -> None:
        frame = FirstFrame(WINDOW, self.player, self.buses)
        self.addCleanup(frame.close)
        self.assertRegex(frame.told, r"^\d+ \d+\n$")
        frame.go_on()
        self.assertEqual(self._run(), 0)

    def test_a_mistake_ends_the_program(self) -> None:
        self.assertEqual(self._run("--nonsense"), case.MISTAKE)


if __name__ == "__main__":
    case.main()
