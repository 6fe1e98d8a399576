"""A player with an installed game of which one file is wrong, and the wire that has it right."""

from __future__ import annotations

import contextlib
import random
import shutil
import sqlite3
import subprocess
from pathlib import Path
from typing import Mapping, Optional, Sequence

from harness import games, snapshot
from harness.player import SECONDS, Outcome, Player

from .book import Case, Complaint, Crash, Hang
from .wire import Wire

TARGET = "target.bin"
FILE = f"/mac/{TARGET}.bz2"
OLD = b"the old bytes\n" * 10
SIZES = {TARGET: 20_000, "data/good 1.bin": 3000, "data/deep/good 2.bin": 5000, "empty.bin": 0,
         games.EXECUTABLE: 2000}
DATES = "lastValid/"
OF_THE_PLAYER: tuple[tuple[str, int, object], ...] = (
    ("prevUser", 0, "wren"), ("something of a later version", 3, bytes(range(256))))
VALID, INVALID, NO_MANIFEST = 0, 1, 2
# A wrapper tells so of a launcher that a signal ended.
SIGNALLED = 128


class Ground:
    """`player` is who the next run is for; `fresh` puts them back to the start."""

    def __init__(self, folder: Path, others: Optional[Mapping[str, bytes]] = None,
                 missing: Sequence[str] = ()) -> None:
        """`others` are the contents of files that matter; all else is noise of the seed. The
        `missing` ones are published and not installed, nor is a folder of them alone.
        """
        self.source, self.tree = folder / "source", folder / "tree"
        self.tree.mkdir()
        noise = {name: games.content(random.Random(name), size) for name, size in SIZES.items()}
        for name, content in {**noise, **(others or {})}.items():
            path = self.source / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
        games.publish(self.source, self.tree)
        self.wire = Wire(folder, self.tree)
        self.player = Player(folder / "player")
        self.right = snapshot.contents(self.source)
        self._missing = missing
        self._installed = folder / "installed"
        self._install()

    def stop(self) -> None:
        self.wire.stop()

    def _install(self) -> None:
        shutil.copytree(self.source, self.player.game)
        outcome = self.player.verify()
        if outcome.code != VALID:
            raise RuntimeError(f"the game cannot be installed: {outcome}")
        give_settings(self.player)
        (self.player.game / TARGET).write_bytes(OLD)
        for name in self._missing:
            path = self.player.game / name
            path.unlink()
            while not any((path := path.parent).iterdir()):
                path.rmdir()
        self._absent = set(self.right) - set(snapshot.contents(self.player.game))
        self.player.root.rename(self._installed)

    def fresh(self) -> Player:
        """The installed game with its wrong file, and a wire without faults."""
        shutil.rmtree(self.player.root, ignore_errors=True)
        shutil.copytree(self._installed, self.player.root, symlinks=True)
        self.wire.heal()
        self.stored = self.player.stored_settings()
        return self.player

    def run(self, case: Case, *arguments: str, wrapper: Sequence[str] = (),
            seconds: float = SECONDS) -> Outcome:
        """One run of the launcher; one that hangs is a complaint."""
        case.runs += 1
        try:
            return self.player.run(*(arguments or ("--update",)), wrapper=wrapper,
                                   seconds=seconds)
        except subprocess.TimeoutExpired as hang:
            raise Hang(f"the launcher hangs: {hang}") from None

    def ends(self, case: Case, outcome: Outcome, *codes: int) -> Outcome:
        if outcome.code not in codes:
            is_crash = outcome.code < 0 or outcome.code > SIGNALLED
            raise (Crash if is_crash else Complaint)(
                f"expected one of the exit codes {codes}, saw {outcome}")
        return outcome

    def keeps(self, case: Case) -> None:
        """Every good file is there byte for byte, and the wrong one is what it was or right."""
        now = snapshot.contents(self.player.game)
        lost = [name for name in self.right if name != TARGET and now.get(name) != self.right[name]
                and not (name in self._absent and name not in now)]
        torn = [name for name in lost if name in self._absent]
        if lost and not torn:
            case.files = f"LOST {', '.join(lost)}"
            raise Complaint(f"good files were lost: {lost}")
        target = self.player.game / TARGET
        if torn or target.read_bytes() not in (OLD, (self.source / TARGET).read_bytes()):
            case.files = "TORN"
            raise Complaint(f"neither what it was nor right: {torn or TARGET}")
        self.keeps_settings(case)

    def keeps_settings(self, case: Case, *, may_date_anew: bool = False) -> None:
        """What was stored of the player and about good files is stored still. A good file that was
        written anew has another date.
        """
        now = self.player.stored_settings() if self.stored else {}
        lost = [key for key, value in self.stored.items()
                if not any(name in key for name in (TARGET, *self._missing))
                and now.get(key) != value
                and not (may_date_anew and key.startswith(DATES) and key in now)]
        if lost:
            case.settings = f"LOST {len(lost)}"
            raise Complaint(f"settings were lost: {lost[:3]}")

    def recovers(self, case: Case, how: str = "healed by the next run") -> None:
        """Without faults one run makes the game whole and leaves nothing behind."""
        self.wire.heal()
        self.ends(case, self.run(case), VALID)
        self.is_whole(case)
        case.after = how

    def is_whole(self, case: Case) -> None:
        now = snapshot.contents(self.player.game)
        if now != self.right:
            names = {name for name in {*now, *self.right} if now.get(name) != self.right.get(name)}
            raise Complaint(f"the game is not whole: {sorted(names)[:5]}")
        left = [*(path.name for path in self.player.data.iterdir() if path.name != "Game"),
                *(path.name for path in self.player.temporary.iterdir())]
        case.expect("things left behind", left, [])


def give_settings(player: Player) -> None:
    """Stores what no run of the launcher would, beside what it stored itself."""
    with contextlib.closing(sqlite3.connect(player.settings)) as database, database:
        database.executemany("INSERT INTO defaults VALUES (?, ?, ?)", OF_THE_PLAYER)


def keeps_the_players(case: Case, player: Player) -> None:
    """What was stored of the player is stored still, whatever became of the files."""
    now = player.stored_settings()
    lost = [key for key, _, value in OF_THE_PLAYER if now.get(key) != value]
    if lost:
        case.settings = f"LOST {len(lost)}"
        raise Complaint(f"the player's settings were lost: {lost}")


def last_words(outcome: Outcome) -> str:
    """The line that tells a player what went wrong; else the summary."""
    lines = [line for line in (outcome.errors + outcome.output).splitlines() if line.strip()]
    telling = [line for line in lines if "[line " in line or line.startswith("VARNOPatcher")]
    summary = [line for line in lines if "files valid" in line]
    words = (telling or summary or lines or ["nothing"])[0]
    return words.partition(" (")[0] if words in summary else words


def shown(outcome: Outcome) -> str:
    return f"{last_words(outcome)} (exit code {outcome.code})"
