"""System calls of an update and of the settings that fail, and kills at each of them."""

from __future__ import annotations

import json
import os
import signal
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from typing import Iterable, Sequence

from harness import games
from lab import injection
from lab.book import Book, Case, Complaint
from lab.ground import INVALID, OLD, TARGET, VALID, Ground, shown
from lab.reply import Reply
from lab.wire import MANIFEST

PART = f".{TARGET}.quellmoor-part"
ERRORS = {"ENOSPC": (*injection.WRITES, *injection.SYNCS, *injection.RENAMES,
                     *injection.OPENINGS, "ftruncate", "mkdir", "fallocate", "close"),
          "EIO": (*injection.WRITES, *injection.SYNCS, *injection.RENAMES, *injection.OPENINGS,
                  "ftruncate", "read", "pread64", "close", "unlink", "fstat", "newfstatat",
                  "lstat", "fchmod", "flock"),
          "EACCES": (*injection.OPENINGS, *injection.RENAMES, "unlink", "mkdir", "fchmod",
                     "newfstatat", "lstat", "access", "faccessat2")}


@dataclass(frozen=True)
class Place:
    """Files whose calls are met, and how the report calls them."""

    name: str
    area: str
    paths: tuple[Path, ...]


def places(ground: Ground) -> tuple[Place, ...]:
    player, settings = ground.player, ground.player.settings
    return (Place("the file that is written", "game file",
                  (player.game / TARGET, player.game / PART)),
            Place("the game folder", "game file", (player.game,)),
            Place("the settings", "settings", (
                settings, settings.with_name(settings.name + "-journal"), settings.parent)),
            Place("the launcher's lock", "launcher", (player.data / ".launcher.lock",)))


def run_errors(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    for place in places(ground):
        calls = calls_on(ground, folder, place)
        for error, names in ERRORS.items():
            chosen = [name for name in names if calls[name]]
            for name in chosen[::4 if book.is_short else 1]:
                title = f"{error} of {name} on {place.name}, each and all"
                with book.case(place.area, title) as case:
                    fails_at_each(ground, case, place, name, error,
                                  numbers(book, calls[name]))
    ground.stop()


def run_kills(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    for place in places(ground):
        calls = calls_on(ground, folder, place)
        names = [name for name in injection.ALL if calls[name]]
        for name in names[::12 if book.is_short else 1]:
            with book.case(place.area, f"SIGKILL at each {name} on {place.name}") as case:
                killed_at_each(ground, case, place, name, numbers(book, calls[name]))
    taken_back(book, ground)
    ground.stop()


def taken_back(book: Book, ground: Ground) -> None:
    """Killed in the middle of a file; then the manifest wants the file of before again."""
    player = ground.fresh()
    places = (player.game / TARGET, player.game / PART)
    with book.case("game file", "SIGKILL in a file, then a manifest without its change") as case:
        killed = injection.at("?rename,?renameat,?renameat2", 1, places, "signal=SIGKILL")
        ground.ends(case, ground.run(case, wrapper=killed), -signal.SIGKILL, 128 + signal.SIGKILL)
        case.expect("a prepared file", (player.game / PART).exists(), True)
        document = json.loads((ground.tree / "mac" / "patcher.json").read_bytes())
        document["files"][TARGET]["hash"] = games.short_hash(OLD)
        ground.wire.fail(MANIFEST, Reply(body=json.dumps(document).encode()))
        case.sees(shown(ground.ends(case, ground.run(case), VALID)))
        case.expect("a prepared file", (player.game / PART).exists(), False)
        ground.keeps(case)
        ground.recovers(case, "the prepared file is gone")


def numbers(book: Book, count: int) -> Iterable[int]:
    """Each of the calls; in a short run the last."""
    return (count,) if book.is_short else range(1, count + 1)


def calls_on(ground: Ground, folder: Path, place: Place) -> Counter[str]:
    """What an update without faults asks for."""
    ground.fresh()
    log = folder / "calls"
    ground.player.run("--update", wrapper=injection.counting(log, injection.ALL, place.paths))
    return injection.counted(log)


def fails_at_each(ground: Ground, case: Case, place: Place, name: str, error: str,
                  numbers: Iterable[int]) -> None:
    """The first, the second, ... and all of the calls; then the disk is well again."""
    effect = f"error={error}"
    wrappers: list[Sequence[str]] = [injection.for_good(name, place.paths, effect)]
    wrappers += [injection.at(name, number, place.paths, effect) for number in numbers]
    case.faults = len(wrappers)
    for wrapper in wrappers:
        ground.fresh()
        outcome = ground.run(case, wrapper=wrapper)
        if not case.saw:
            case.sees(shown(outcome))
        ground.ends(case, outcome, VALID, INVALID)
        ground.keeps(case)
        nothing_aside(ground, case)
        ground.recovers(case)


def killed_at_each(ground: Ground, case: Case, place: Place, name: str,
                   numbers: Iterable[int]) -> None:
    killed = 0
    for number in numbers:
        ground.fresh()
        outcome = ground.run(case, wrapper=injection.at(name, number, place.paths,
                                                        "signal=SIGKILL"))
        # A call that another thread made in the first place need not come again.
        ground.ends(case, outcome, -signal.SIGKILL, 128 + signal.SIGKILL, VALID)
        killed += outcome.code != VALID
        ground.keeps(case)
        ground.recovers(case)
        nothing_aside(ground, case)
    case.expect("a kill at all", killed > 0, True)
    case.faults = killed
    case.saw = "nothing; the next start goes on"


def nothing_aside(ground: Ground, case: Case) -> None:
    """Settings that are whole are never set aside."""
    names = os.listdir(ground.player.settings.parent)
    if [name for name in names if name.endswith(".bad")]:
        case.settings = "SET ASIDE"
        raise Complaint("whole settings were set aside")
