"""Settings and a machine that are not as they should be: damage, limits, owners, clocks."""

from __future__ import annotations

import contextlib
import os
import shutil
import sqlite3
from pathlib import Path
from typing import Callable, Sequence

from harness import isolation
from lab.book import Book, Case
from lab.ground import (INVALID, NO_MANIFEST, OLD, TARGET, VALID, Ground, keeps_the_players,
                        shown)
from tables import settings_damage

NOBODY = 65534
AS_NOBODY = ("setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", "--")
WITHOUT_POWERS = ("setpriv", "--bounding-set=-all", "--inh-caps=-all", "--")
FUTURE, PAST, SOON = "+40y", "-40y", "+1d"


def run(book: Book, folder: Path) -> None:
    folder.chmod(0o755)  # for the case of another user
    ground = Ground(folder)
    stride = 5 if book.is_short else 1
    for name, harm in settings_damage.DAMAGES[::stride]:
        with book.case("settings", name) as case:
            damaged(ground, case, harm)
    for name, check in MACHINES[::stride]:
        with book.case("settings" if "settings" in name else "game file", name) as case:
            check(ground, case)
    for name, nanoseconds in DATES[::stride]:
        with book.case("game file", name) as case:
            dated(ground, case, nanoseconds)
    ground.stop()


def damaged(ground: Ground, case: Case, harm: settings_damage.Harm) -> None:
    """What can be read is kept; what cannot is set aside, once, and the next run is as ever."""
    player = ground.fresh()
    harm(player.settings)
    before = player.settings.read_bytes() if player.settings.is_file() else None
    outcome = ground.ends(case, ground.run(case), VALID)
    case.sees(shown(outcome))
    aside = [path.read_bytes() for path in player.settings.parent.glob("*.bad*")]
    if aside:
        case.expect("the damaged bytes, kept aside", before in aside, True)
        case.settings = "damaged by the case, kept aside"
    elif player.settings.exists() and not player.settings.is_file():
        case.settings = "what the case put in their place, kept"
    else:
        case.settings = "readable, kept"
        if harm in settings_damage.HARMLESS:
            keeps_the_players(case, player)
    ground.is_whole(case)
    ground.ends(case, ground.run(case), VALID)
    if player.settings.is_file():
        case.expect("readable settings", bool(player.stored_settings()), True)
        case.expect("their mode", oct(player.settings.stat().st_mode & 0o777), oct(0o600))
    case.after = "by the next save"


def keeps_all(ground: Ground, case: Case, *codes: int, wrapper: Sequence[str] = (),
              undo: Callable[[], object] = bool) -> None:
    """A run that may fail in its way, and one that heals when the cause is gone."""
    outcome = ground.ends(case, ground.run(case, wrapper=wrapper), *codes)
    case.sees(shown(outcome))
    undo()
    ground.keeps(case)
    ground.recovers(case)


def small_disk(ground: Ground, case: Case, place: Path, room: int) -> None:
    """A disk of its own with so many bytes free, which is then emptied."""
    holder = ground.player.root / "before"
    place.rename(holder)
    place.mkdir()
    isolation.mount("-t", "tmpfs", "-o", "size=2m", "tmpfs", str(place))
    shutil.copytree(holder, place, dirs_exist_ok=True)
    filler = place / "filler"
    free = shutil.disk_usage(place).free
    filler.write_bytes(bytes(max(0, free - room)))
    try:
        outcome = ground.ends(case, ground.run(case), VALID, INVALID)
        case.sees(shown(outcome))
        filler.unlink()
        ground.keeps(case)
        ground.recovers(case)
    finally:
        isolation.unmount(str(place))


def full_game_disk(ground: Ground, case: Case) -> None:
    small_disk(ground, case, ground.fresh().game, 0)


def nearly_full_game_disk(ground: Ground, case: Case) -> None:
    small_disk(ground, case, ground.fresh().game, 12_000)


def full_settings_disk(ground: Ground, case: Case) -> None:
    small_disk(ground, case, ground.fresh().settings.parent, 0)


def nearly_full_settings_disk(ground: Ground, case: Case) -> None:
    small_disk(ground, case, ground.fresh().settings.parent, 4096)


def limited(size: int, *codes: int) -> Callable[[Ground, Case], None]:
    """No file may grow beyond so many bytes."""
    def check(ground: Ground, case: Case) -> None:
        ground.fresh()
        keeps_all(ground, case, *codes, wrapper=("prlimit", f"--fsize={size}", "--"))
    return check


def few_files(ground: Ground, case: Case) -> None:
    ground.fresh()
    keeps_all(ground, case, VALID, INVALID, NO_MANIFEST,
              wrapper=("prlimit", "--nofile=24", "--"))


def of_another_user(ground: Ground, case: Case) -> None:
    """Files of one user, and a launcher of another who may only read them."""
    player = ground.fresh()
    for path in (player.root, *player.root.rglob("*")):
        if not path.is_symlink():
            path.chmod(0o755 if path.is_dir() else 0o644)
    own = player.root / "run"
    own.chmod(0o700)
    os.chown(own, NOBODY, NOBODY)
    keeps_all(ground, case, INVALID, wrapper=AS_NOBODY, undo=lambda: os.chown(own, 0, 0))


def held(ground: Ground, case: Case) -> None:
    """Another program keeps the settings to itself for as long as the run takes."""
    player = ground.fresh()
    with contextlib.closing(sqlite3.connect(player.settings, isolation_level=None)) as holder:
        holder.execute("BEGIN EXCLUSIVE")
        keeps_all(ground, case, VALID, undo=lambda: holder.execute("ROLLBACK"))


def read_only(place: Callable[[Ground], Path]) -> Callable[[Ground, Case], None]:
    def check(ground: Ground, case: Case) -> None:
        ground.fresh()
        path = place(ground)
        is_folder, mode = path.is_dir(), path.stat().st_mode & 0o777
        path.chmod(0o500 if is_folder else 0o400)
        keeps_all(ground, case, VALID, INVALID, wrapper=WITHOUT_POWERS,
                  undo=lambda: path.chmod(mode))
    return check


def clock(shift: str, *codes: int) -> Callable[[Ground, Case], None]:
    """Certificates are of today, so a clock far off is told; nothing is lost."""
    def check(ground: Ground, case: Case) -> None:
        ground.fresh()
        keeps_all(ground, case, *codes, wrapper=("faketime", "-f", shift))
    return check


def dated(ground: Ground, case: Case, nanoseconds: int) -> None:
    """A right file with an odd date is right, and a wrong one is found; twice over."""
    player = ground.fresh()
    for path in player.game.rglob("*"):
        if path.is_file():
            os.utime(path, ns=(nanoseconds, nanoseconds))
    outcome = ground.ends(case, ground.run(case), VALID)
    case.sees(shown(outcome))
    keeps_the_players(case, player)
    ground.is_whole(case)
    (player.game / TARGET).write_bytes(OLD)
    os.utime(player.game / TARGET, ns=(nanoseconds, nanoseconds))
    ground.recovers(case)


MACHINES: tuple[tuple[str, Callable[[Ground, Case], None]], ...] = (
    ("a full disk under the game", full_game_disk),
    ("12 kB free under the game", nearly_full_game_disk),
    ("a full disk under the settings", full_settings_disk),
    ("one page free under the settings", nearly_full_settings_disk),
    ("no file may grow at all, nor may the settings", limited(0, VALID, INVALID)),
    ("files of at most 100 bytes", limited(100, VALID, INVALID)),
    ("files of at most 8 kB, as the settings have", limited(8192, VALID, INVALID)),
    ("files of at most 16 kB", limited(16_384, VALID, INVALID)),
    ("at most 24 open files", few_files),
    ("files and settings of another user", of_another_user),
    ("settings that another program holds", held),
    ("settings that may only be read", read_only(lambda ground: ground.player.settings)),
    ("a folder of settings that may only be read",
     read_only(lambda ground: ground.player.settings.parent)),
    ("a game folder that may only be read", read_only(lambda ground: ground.player.game)),
    ("a file that may only be read", read_only(lambda ground: ground.player.game / TARGET)),
    ("a clock that is forty years ahead", clock(FUTURE, NO_MANIFEST)),
    ("a clock that is forty years late", clock(PAST, NO_MANIFEST)),
    ("a clock that is a day ahead", clock(SOON, VALID)),
)

SECOND = 10**9
DATES: tuple[tuple[str, int], ...] = (
    ("files of 1970", 0), ("files of before 1970", -SECOND * 86_400 * 365),
    ("files of 2038", SECOND * 2**31), ("files of 2106", SECOND * 2**32),
    ("files of 2400", SECOND * 86_400 * 365 * 430), ("files with odd nanoseconds", 1_234_567_891),
)
