"""Manifest keys and layouts of links that lead out of the game folder."""

from __future__ import annotations

import bz2
import json
import os
from pathlib import Path

from harness import games, snapshot
from lab.book import Book, Case, Complaint
from lab.ground import INVALID, TARGET, VALID, Ground, keeps_the_players, shown
from lab.reply import Reply
from lab.wire import MANIFEST
from tables import hostile

EVIL = b"evil bytes\n" * 50


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    canaries(folder)
    stride = 8 if book.is_short else 1
    for name, key, is_refused in hostile.keys(ground.player.root)[::stride]:
        with book.case("manifest", f"the key {name}") as case:
            hostile_key(ground, case, folder, key, is_refused)
    for name, lay in hostile.LAYOUTS[::stride]:
        with book.case("manifest", f"a game folder with {name}") as case:
            layout(ground, case, folder, lay)
    ground.stop()


def canaries(folder: Path) -> None:
    (folder / "canary.txt").write_text("must stay as it is")
    (folder / "outside").mkdir()
    (folder / "outside" / "canary.txt").write_text("must stay as it is, too")


def outside_of(ground: Ground, folder: Path) -> snapshot.Contents:
    """The whole tree but the game itself, the settings and the log."""
    player = ground.player
    return snapshot.contents(folder, leave_out=(player.game, player.settings.parent,
                                                player.root / "state"))


def is_untouched(case: Case, ground: Ground, folder: Path, before: snapshot.Contents) -> None:
    now = outside_of(ground, folder)
    changed = {name for name in {*now, *before} if now.get(name) != before.get(name)}
    case.expect("changes outside of the game folder", changed, set())


def hostile_key(ground: Ground, case: Case, folder: Path, key: str, is_refused: bool) -> None:
    """The wire has evil bytes with the right hash for it."""
    ground.fresh()
    document = json.loads((ground.tree / "mac" / "patcher.json").read_bytes())
    document["files"][key] = {"path": "", "hash": games.short_hash(EVIL), "patches": []}
    ground.wire.fail(MANIFEST, Reply(body=json.dumps(document).encode()))
    ground.wire.fail_unknown(bz2.compress(EVIL))
    before = outside_of(ground, folder)
    outcome = ground.run(case)
    case.sees(shown(outcome))
    is_untouched(case, ground, folder, before)
    ground.ends(case, outcome, INVALID if is_refused else VALID)
    ground.keeps(case)
    extra = {name: entry for name, entry in snapshot.contents(ground.player.game).items()
             if name not in ground.right and entry[0] != "folder"}
    case.expect("files that nobody published", bool(extra), not is_refused)
    for name in extra:
        (ground.player.game / name).unlink()
    case.after = "not needed" if is_refused else "the file of that very name is there"


def layout(ground: Ground, case: Case, folder: Path, lay: hostile.Lay) -> None:
    """The folder is laid out by someone else before the update."""
    ground.fresh()
    lay(ground.player.game, folder / "outside")
    before, good = outside_of(ground, folder), good_files(ground)
    outcome = ground.run(case)
    case.sees(shown(outcome))
    is_untouched(case, ground, folder, before)
    ground.ends(case, outcome, VALID, INVALID)
    if lost := good - good_files(ground):
        case.files = f"LOST {', '.join(sorted(lost))}"
        raise Complaint(f"good files were lost: {sorted(lost)}")
    keeps_the_players(case, ground.player)
    if outcome.code == VALID:
        ground.wire.heal()
        ground.ends(case, ground.run(case, "--verify"), VALID)
        case.after = "healed by the same run"
    else:
        remove_links(ground.player.game)
        ground.recovers(case, "healed by the next run, once the link is gone")
    for name in os.listdir(folder / "outside"):
        if name != "canary.txt":
            raise AssertionError(f"the layout left {name}")


def good_files(ground: Ground) -> set[str]:
    """Those of the laid out folder itself, byte for byte; what a link leads to is not of it."""
    game = ground.player.game
    found = {} if game.is_symlink() else snapshot.files_only(snapshot.contents(game))
    return {name for name, entry in found.items()
            if name != TARGET and entry == ground.right.get(name)}


def remove_links(game: Path) -> None:
    """As the player has to."""
    for path in [game] if game.is_symlink() else [*game.rglob("*")]:
        if path.is_symlink():
            path.unlink()
