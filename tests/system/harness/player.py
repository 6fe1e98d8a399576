"""One player: folders of their own, and the launcher started in them."""

from __future__ import annotations

import os
import sqlite3
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path
from typing import Sequence

from . import isolation, settings

SECONDS = 120
WITHOUT_ROOTS_POWERS = ("setpriv", "--bounding-set=-all", "--inh-caps=-all", "--")


@dataclass(frozen=True)
class Outcome:
    """How a run of the launcher ended."""

    code: int
    output: str
    errors: str
    seconds: float

    def __str__(self) -> str:
        return (f"exit code {self.code} after {self.seconds:.2f} s\n--- output\n"
                f"{self.output[-4000:]}--- errors\n{self.errors[-4000:]}")


class Player:
    """The folders lie below `root`, which belongs to the player alone."""

    def __init__(self, root: Path) -> None:
        self.root = root
        self.data_home = root / "data home"
        self.config_home = root / "config"
        self.state_home = root / "state"
        self.temporary = root / "tmp"
        for folder in (self.data_home, self.config_home, self.temporary, root / "cache"):
            folder.mkdir(parents=True)
        (root / "run").mkdir(mode=0o700)
        self.data = self.data_home / "Quellmoor"
        self.game = self.data / "Game"
        self.settings = self.config_home / "quellmoor-launcher" / "settings.sqlite"

    def environment(self) -> dict[str, str]:
        """Has no display, and passes on what a sanitizer wants to be told."""
        passed_on = {name: value for name, value in os.environ.items()
                     if name.endswith("SAN_OPTIONS") or name == "PATH"}
        return {**passed_on, "HOME": str(self.root), "LANG": "C.UTF-8",
                "XDG_DATA_HOME": str(self.data_home),
                "XDG_CONFIG_HOME": str(self.config_home),
                "XDG_CACHE_HOME": str(self.root / "cache"),
                "XDG_STATE_HOME": str(self.state_home),
                "XDG_RUNTIME_DIR": str(self.root / "run"),
                "TMPDIR": str(self.temporary)}

    def start(self, *arguments: str, wrapper: Sequence[str] = ()) -> subprocess.Popen[str]:
        return subprocess.Popen(
            [*wrapper, str(settings.launcher()), *arguments], env=self.environment(),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            text=True, errors="replace", preexec_fn=isolation.die_with_parent)

    def run(self, *arguments: str, wrapper: Sequence[str] = (),
            seconds: float = SECONDS) -> Outcome:
        """Waits for the launcher's end; one that hangs is ended and raises TimeoutExpired."""
        started = time.monotonic()
        with self.start(*arguments, wrapper=wrapper) as process:
            try:
                output, errors = process.communicate(timeout=seconds)
            except subprocess.TimeoutExpired:
                process.kill()
                raise
        return Outcome(process.returncode, output, errors, time.monotonic() - started)

    def update(self, wrapper: Sequence[str] = ()) -> Outcome:
        return self.run("--update", wrapper=wrapper)

    def verify(self) -> Outcome:
        return self.run("--verify")

    def stored_settings(self) -> dict[str, object]:
        """What the settings database holds; raises when it is damaged."""
        connection = sqlite3.connect(self.settings)
        try:
            (verdict,) = connection.execute("PRAGMA integrity_check").fetchone()
            if verdict != "ok":
                raise AssertionError(f"the settings are damaged: {verdict}")
            return dict(connection.execute("SELECT key, value FROM defaults"))
        finally:
            connection.close()
