"""Kills at any moment of an update of fifty files, and installations damaged at random."""

from __future__ import annotations

import random
import shutil
import signal
import subprocess
import time
from pathlib import Path

from harness import damage, games, snapshot
from harness.player import Player
from lab.book import Book, Case, Complaint
from lab.ground import VALID, give_settings, keeps_the_players
from lab.wire import Wire

FILES, MEGABYTES = 50, 2
KILLS, SHORT_KILLS = 200, 6
DAMAGED, SHORT_DAMAGED = 500, 8
SECONDS = 60


class Versions:
    """An installed version and the next one, which the wire serves."""

    def __init__(self, folder: Path) -> None:
        self.old, self.new, tree = folder / "old", folder / "new", folder / "tree"
        tree.mkdir()
        games.small_game(self.old, FILES, MEGABYTES)
        games.publish(self.old, tree)
        self.wire = Wire(folder, tree)
        self.player = Player(folder / "player")
        shutil.copytree(self.old, self.player.game)
        self.player.verify()
        give_settings(self.player)
        self.installed = folder / "installed"
        self.player.root.rename(self.installed)
        games.next_version(self.old, self.new)
        games.publish(self.new, tree)
        self.before, self.after = (snapshot.files_only(snapshot.contents(root))
                                   for root in (self.old, self.new))

    def fresh(self) -> None:
        shutil.rmtree(self.player.root, ignore_errors=True)
        shutil.copytree(self.installed, self.player.root, symlinks=True)

    def nothing_is_torn(self, case: Case) -> None:
        """Every file is one version or the other, and the player's settings are what they were."""
        found = snapshot.files_only(snapshot.contents(self.player.game))
        for name in {*self.before, *self.after}:
            if found.get(name) not in (self.before.get(name), self.after.get(name)):
                case.files = "TORN"
                raise Complaint(f"{name} is torn")
        keeps_the_players(case, self.player)

    def finishes(self, case: Case) -> None:
        """The next start makes the game whole and leaves nothing behind."""
        case.runs += 1
        outcome = self.player.update()
        case.expect("exit code", outcome.code, VALID)
        now = snapshot.files_only(snapshot.contents(self.player.game))
        case.expect("a whole game", now == {**self.before, **self.after}, True)
        left = [path.name for path in (*self.player.data.iterdir(),
                                       *self.player.temporary.iterdir()) if path.name != "Game"]
        case.expect("things left behind", left, [])
        keeps_the_players(case, self.player)


def run_kills(book: Book, folder: Path) -> None:
    versions = Versions(folder)
    count = SHORT_KILLS if book.is_short else KILLS
    title = f"SIGKILL at {count} moments of an update of {FILES} files"
    with book.case("game file", title) as case:
        timed_kills(versions, case, random.Random(book.seed), count)
    versions.wire.stop()


def run_damage(book: Book, folder: Path) -> None:
    versions = Versions(folder)
    count = SHORT_DAMAGED if book.is_short else DAMAGED
    with book.case("game file", f"{count} installations damaged at random") as case:
        damaged(versions, case, random.Random(book.seed), count, folder)
    versions.wire.stop()


def timed_kills(versions: Versions, case: Case, chance: random.Random, count: int) -> None:
    versions.fresh()
    started = time.monotonic()
    versions.player.update()
    duration, attempts = time.monotonic() - started, 0
    case.faults = 0
    while case.faults < count:
        attempts += 1
        case.expect("kills within three attempts each", attempts <= 3 * count, True)
        versions.fresh()
        case.runs += 1
        started = time.monotonic()
        with versions.player.start("--update") as process:
            try:
                process.communicate(timeout=duration * (case.faults + chance.random()) / count)
            except subprocess.TimeoutExpired:
                process.kill()
                process.communicate()
        case.faults += process.returncode == -signal.SIGKILL
        if process.returncode == VALID:
            # A machine that was busy before may be faster now.
            duration = min(duration, time.monotonic() - started)
        versions.nothing_is_torn(case)
        versions.finishes(case)
    case.saw = "no file torn at any of the moments"
    case.after = "finished by the next run"


def damaged(versions: Versions, case: Case, chance: random.Random, count: int,
            folder: Path) -> None:
    """Each time one to all files, one to three ways each; one run heals them all."""
    outside = folder / "outside"
    case.faults = count
    for number in range(count):
        seed = chance.randrange(2**32)
        heal_once(versions, case, random.Random(seed), outside, f"installation {number}, {seed}")
    case.saw = "each healed by one run to exactly what a fresh installation is"
    case.after = "healed by the same run"


def heal_once(versions: Versions, case: Case, chance: random.Random, outside: Path,
              name: str) -> None:
    versions.fresh()
    shutil.rmtree(versions.player.game)
    shutil.copytree(versions.new, versions.player.game)
    outside.mkdir()
    paths = sorted(path for path in versions.player.game.rglob("*")
                   if path.is_file() and path.stat().st_size > 1)
    for path in chance.sample(paths, chance.randint(1, len(paths))):
        chance.choice(damage.ALL)(path, outside, chance)
    before = snapshot.contents(outside)
    case.runs += 1
    outcome = versions.player.update()
    case.expect(f"{name}: exit code", outcome.code, VALID)
    case.expect(f"{name}: a whole game", snapshot.contents(versions.player.game)
                == snapshot.contents(versions.new), True)
    case.expect(f"{name}: bytes outside", snapshot.contents(outside) == before, True)
    shutil.rmtree(outside)
    keeps_the_players(case, versions.player)
