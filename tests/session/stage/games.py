"""The sample game of the session, its trees, and how the running game is asked to end."""

from __future__ import annotations

import json
import os
import shutil
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Optional

from harness import settings

from .waiting import until

EXECUTABLE = "Quellmoor"
FILES, MEGABYTES = 60, 16
LARGEST = "data/archives/world.pak"


@dataclass(frozen=True)
class Game:
    """A game folder and the tree that it is published in."""

    source: Path
    tree: Path
    server_version: str

    def publish(self, launcher_version: str) -> None:
        _run("publish", "--server-version", self.server_version,
             "--launcher-version", launcher_version, "--exec", EXECUTABLE,
             str(self.source), str(self.tree))

    def largest_packed(self) -> int:
        """How many bytes the largest download has."""
        return (self.tree / "mac" / f"{LARGEST}.bz2").stat().st_size


def make(folder: Path, launcher_version: str) -> tuple[Game, Game]:
    """The game that players have, and the one of the environment qa, which differs a little."""
    usual = Game(folder / "game", folder / "tree", "7.3.0")
    coming = Game(folder / "coming game", folder / "coming tree", "7.4.0-qa")
    _run("make-sample-game", str(usual.source), "--executable", str(_sample_game()),
         "--files", str(FILES), "--megabytes", str(MEGABYTES))
    usual.publish(launcher_version)
    shutil.copytree(usual.source, coming.source)
    shutil.copytree(usual.tree, coming.tree)
    (coming.source / "data" / "coming soon.txt").write_text("A ferry of brass.\n")
    with open(coming.source / LARGEST, "r+b") as archive:
        archive.write(b"qa")
    coming.publish(launcher_version)
    return usual, coming


class GameRun:
    """The game, as the launcher starts it: what it was handed, and when it may end."""

    def __init__(self, folder: Path) -> None:
        self.report_file = folder / "report.json"
        self._may_end = folder / "the game may end"
        self.environment = {"QUELLMOOR_SAMPLE_REPORT": str(self.report_file),
                            "QUELLMOOR_SAMPLE_UNTIL": str(self._may_end)}

    def forget(self) -> None:
        """Before the next game: nothing was reported, and the game goes on until it is ended."""
        self.report_file.unlink(missing_ok=True)
        self._may_end.unlink(missing_ok=True)

    def report(self) -> dict[str, Any]:
        """Waits for what the game says it was handed."""
        def read() -> Optional[dict[str, Any]]:
            return json.loads(self.report_file.read_text()) if self.report_file.exists() else None
        return until("the game's report", read)

    def end(self) -> None:
        self._may_end.touch()


def _sample_game() -> Path:
    default = settings.launcher().parents[1] / "tools" / "sample-game" / "quellmoor-sample-game"
    return Path(os.environ.get("QUELLMOOR_SAMPLE_GAME", default))


def _run(tool: str, *words: str) -> str:
    done = subprocess.run([sys.executable, str(settings.TOOLS / tool), *words], text=True,
                          capture_output=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{tool}: {done.stderr}")
    return done.stdout
