"""The whole stage: everything of a session that is not the player."""

from __future__ import annotations

import os
import shutil
import subprocess
import tempfile
from contextlib import ExitStack
from pathlib import Path
from types import MappingProxyType, TracebackType
from typing import Any, Mapping, Optional

from harness import hosts, settings
from harness.player import Player as Home
from virtualreader.reader import Reader
from virtualreader.services import Services as System

from . import accounts, children, games
from .accessibility import Bus
from .children import Services
from .desktop import Desktop
from .display import Display
from .launcher import Launcher
from .network import Network
from .waiting import PATIENCE


class Hosts(hosts.Hosts):
    """The local hosts, and whom they let in."""

    def sessions(self) -> list[dict[str, Any]]:
        answer: list[dict[str, Any]] = self._ask("GET", "/sessions")
        return answer

    def asked_for(self) -> list[str]:
        """Host and path of each request so far."""
        return [f"{entry['host']}{entry['path']}" for entry in self.requests()]


class Stage:
    """Use it in a `with` statement; at its end nothing of it is left."""

    def __init__(self) -> None:
        self._closing = ExitStack()
        self._launchers: list[Launcher] = []
        # Paths of sockets are short, hence not in a folder of somebody's choice.
        self.folder = Path(tempfile.mkdtemp(prefix="quellmoor-session-", dir="/tmp"))
        self._closing.callback(shutil.rmtree, self.folder, ignore_errors=True)

    def __enter__(self) -> Stage:
        with self._closing:
            self._set_up()
            self._closing = self._closing.pop_all()
        return self

    def __exit__(self, _kind: Optional[type[BaseException]], _error: Optional[BaseException],
                 _trace: Optional[TracebackType]) -> None:
        self._closing.close()

    def _set_up(self) -> None:
        children.adopt_orphans()
        self._closing.callback(children.end_orphans)
        self.home = Home(self.folder / "home")
        self.logs = self.folder / "logs"
        self.logs.mkdir()
        self.services = Services(self.logs, self.home.environment())
        self._closing.callback(self.services.stop)
        self.display = Display(self.services, self.folder)
        self.bus = Bus(self.services, self.folder / "bus", self.display.environment)
        self._closing.callback(self.bus.close)
        self.system = System(self.folder / "system")
        self._closing.callback(self.system.stop)
        self.system.start()
        self.reader = Reader(self.system)
        self.network = Network(self.services, self.system.address)
        self._closing.callback(self.network.close)
        self.desktop = Desktop(self.folder / "desktop")
        self.version = launcher_version()
        self.game, self.coming_game = games.make(self.folder, self.version)
        self.game_run = games.GameRun(self.folder)
        accounts.write(self.folder / "accounts.json")
        self.hosts = Hosts(self.folder, {None: self.game.tree, "qa": self.coming_game.tree, "": self.game.tree},
                           options=("--accounts", str(self.folder / "accounts.json")))
        self._closing.callback(self.hosts.stop)
        self._own = set(children.children(os.getpid()))
        self._closing.callback(self._end_launchers)

    def environment(self) -> dict[str, str]:
        """What the launcher is started with."""
        own = {**self.home.environment(), **self.display.environment, **self.bus.environment,
               **self.desktop.environment, **self.game_run.environment,
               "DBUS_SYSTEM_BUS_ADDRESS": self.system.address}
        if os.geteuid() == 0:
            own["QTWEBENGINE_DISABLE_SANDBOX"] = "1"  # its sandbox refuses to work for root
        return own

    def start_launcher(self, *words: str,
                       more: Mapping[str, str] = MappingProxyType({})) -> Launcher:
        """With these words on its command line, and `more` in its environment."""
        launcher = Launcher({**self.environment(), **more}, self.display, self.bus, self.logs,
                            len(self._launchers) + 1, words)
        self._launchers.append(launcher)
        return launcher

    def start_second_launcher(self) -> int:
        """Starts the launcher beside the one that runs; the exit code."""
        return subprocess.run([str(settings.launcher())], env=self.environment(), check=False,
                              timeout=PATIENCE, capture_output=True).returncode

    def start_program(self, *command: str) -> subprocess.Popen[bytes]:
        """Another program on the same display."""
        return self.services.start(Path(command[0]).name, command, more=self.display.environment)

    @property
    def launcher(self) -> Launcher:
        """The one that was started last."""
        return self._launchers[-1]

    @property
    def launchers(self) -> list[Launcher]:
        return self._launchers

    def strays(self) -> set[int]:
        """The running processes that were left to the session by those who started them."""
        own = self._own | self.services.pids | {one.pid for one in self._launchers}
        for orphan in children.zombies(os.getpid()):
            if orphan not in own:
                children.reap(orphan)
        return set(children.children(os.getpid())) - own

    def _end_launchers(self) -> None:
        self.game_run.end()
        for launcher in self._launchers:
            launcher.end()


def launcher_version() -> str:
    done = subprocess.run([str(settings.launcher()), "--version"], check=True, text=True,
                          capture_output=True)
    return done.stdout.split()[1]
