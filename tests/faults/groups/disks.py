"""System calls of an update and of the settings that fail, and kills at each of them."""

from __future__ import annotations

import json
import random
import shutil
import signal
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from typing import Callable, Iterable, Sequence

from harness import games
from lab import injection
from lab.book import Book, Case, Complaint
from lab.ground import INVALID, OLD, TARGET, VALID, Ground, shown
from lab.reply import Reply
from lab.wire import MANIFEST

# Large enough that the disk is told to begin with it.
LARGE, LARGE_SIZE = "made/for it/large.bin", 600_000
CHANGES = (*injection.WRITES, *injection.SYNCS, injection.RENAMES, injection.OPENINGS,
           injection.MAKINGS)
ASKING = (injection.STATS, injection.STATX, injection.QUESTIONS, injection.LINKS)
ERRORS: dict[str, tuple[injection.Kind, ...]] = {
    "ENOSPC": (*CHANGES, injection.CLOSE),
    "EIO": (*CHANGES, *injection.READS, injection.CLOSE, injection.REMOVALS, injection.MODES,
            injection.OPEN_MODE, *ASKING, injection.FILE_LOCK, injection.LOCK),
    "EACCES": (*CHANGES, injection.REMOVALS, injection.MODES, injection.OPEN_MODE, *ASKING)}


@dataclass(frozen=True)
class Place:
    """Files whose calls are met, and how the report calls them; `prepare` comes before a run."""

    name: str
    area: str
    paths: tuple[Path, ...]
    prepare: Callable[[Ground], object] = bool


def places(ground: Ground) -> tuple[Place, ...]:
    player, settings = ground.player, ground.player.settings
    target, large = player.game / TARGET, player.game / LARGE
    return (Place("the file that is written", "game file", (target, part_of(target))),
            Place("a large file and its new folders", "game file",
                  (large, part_of(large), large.parent, large.parent.parent)),
            Place("the game folder", "game file", (player.game,)),
            Place("the settings", "settings", (
                settings, settings.with_name(settings.name + "-journal"), settings.parent)),
            Place("the settings' new folder", "settings", (settings.parent,), without_settings),
            Place("the launcher's folder and lock", "launcher",
                  (player.data, player.data / ".launcher.lock")))


def part_of(path: Path) -> Path:
    return path.with_name(f".{path.name}.quellmoor-part")


def without_settings(ground: Ground) -> None:
    """As before the first start; there is nothing to lose."""
    shutil.rmtree(ground.player.settings.parent)
    ground.stored = {}


def ground_of(folder: Path) -> Ground:
    return Ground(folder, {LARGE: games.content(random.Random(LARGE), LARGE_SIZE)}, (LARGE,))


def run_errors(book: Book, folder: Path) -> None:
    ground = ground_of(folder)
    made: Counter[str] = Counter()
    for place in places(ground):
        calls = calls_on(ground, folder, place)
        made += calls
        for error, kinds in ERRORS.items():
            chosen = [name for kind in kinds for name in kind if calls[name]]
            for name in chosen[::4 if book.is_short else 1]:
                title = f"{error} of {name} on {place.name}, each and all"
                with book.case(place.area, title) as case:
                    fails_at_each(ground, case, place, name, error,
                                  numbers(book, calls[name]))
    with book.case("launcher", "each kind of call that is failed is one that it makes") as case:
        idle = {kind for kinds in ERRORS.values() for kind in kinds
                if not any(made[name] for name in kind)}
        case.expect("kinds that no run has", idle, set())
        case.faults, case.saw, case.after = 0, "no fault: nothing above is empty", "nothing to heal"
    ground.stop()


def run_kills(book: Book, folder: Path) -> None:
    ground = ground_of(folder)
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
    target = player.game / TARGET
    with book.case("game file", "SIGKILL in a file, then a manifest without its change") as case:
        killed = injection.at(injection.named(injection.RENAMES), 1, (target, part_of(target)),
                              "signal=SIGKILL")
        ground.ends(case, ground.run(case, wrapper=killed), -signal.SIGKILL, 128 + signal.SIGKILL)
        case.expect("a prepared file", part_of(target).exists(), True)
        document = json.loads((ground.tree / "mac" / "patcher.json").read_bytes())
        document["files"][TARGET]["hash"] = games.short_hash(OLD)
        ground.wire.fail(MANIFEST, Reply(body=json.dumps(document).encode()))
        case.sees(shown(ground.ends(case, ground.run(case), VALID)))
        case.expect("a prepared file", part_of(target).exists(), False)
        ground.keeps(case)
        ground.recovers(case, "the prepared file is gone")


def numbers(book: Book, count: int) -> Iterable[int]:
    """Each of the calls; in a short run the last."""
    return (count,) if book.is_short else range(1, count + 1)


def calls_on(ground: Ground, folder: Path, place: Place) -> Counter[str]:
    """What an update without faults asks for."""
    ground.fresh()
    place.prepare(ground)
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
        place.prepare(ground)
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
        place.prepare(ground)
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
    if [*ground.player.settings.parent.glob("*.bad*")]:
        case.settings = "SET ASIDE"
        raise Complaint("whole settings were set aside")
