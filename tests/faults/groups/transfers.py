"""Answers to `--update` that go wrong on their way: the manifest, and a game file."""

from __future__ import annotations

from pathlib import Path

from lab.book import Book, Case, Complaint
from lab.ground import FILE, INVALID, NO_MANIFEST, OLD, TARGET, VALID, Ground, shown
from lab.reply import Meeting, Reply
from lab.wire import MANIFEST
from tables import transport
from tables.transport import Effect, Row

MANIFEST_CODES = {Effect.NOTHING: NO_MANIFEST, Effect.WHOLE: VALID, Effect.OTHER: NO_MANIFEST,
                  Effect.STATUS: NO_MANIFEST}
FILE_CODES = {Effect.NOTHING: INVALID, Effect.WHOLE: VALID, Effect.OTHER: INVALID,
              Effect.STATUS: VALID}
SHORT_STRIDE = 12


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    for row in transport.QUICK[::SHORT_STRIDE if book.is_short else 1]:
        with book.case("manifest", row.name) as case:
            manifest(ground, case, row)
        with book.case("game file", row.name) as case:
            file(ground, case, row)
    ground.stop()


def run_stalls(book: Book, folder: Path) -> None:
    """Each takes the time-out of a minute."""
    ground = Ground(folder)
    for row in transport.SLOW:
        with book.case("manifest", row.name) as case:
            manifest(ground, case, row)
        with book.case("game file", row.name) as case:
            passing(ground, case, row)
    ground.stop()


def manifest(ground: Ground, case: Case, row: Row) -> None:
    """Nothing at all may change while there is no manifest."""
    player = ground.fresh()
    redirects(ground)
    ground.wire.fail(MANIFEST, row.fault)
    outcome = ground.run(case)
    case.sees(shown(outcome))
    ground.ends(case, outcome, MANIFEST_CODES[row.effect])
    ground.keeps(case)
    if outcome.code == VALID:
        ground.is_whole(case)
        case.after = "nothing to heal"
        return
    case.expect("the wrong file", (player.game / TARGET).read_bytes(), OLD)
    case.expect("the settings", player.stored_settings(), ground.stored)
    if "No manifest: " not in outcome.errors:
        raise Complaint(f"nothing tells why: {outcome}")
    ground.recovers(case)


def file(ground: Ground, case: Case, row: Row) -> None:
    """For as long as the fault lasts the old file stays; without it the next run heals."""
    ground.fresh()
    redirects(ground)
    ground.wire.fail_after(MANIFEST, FILE, row.fault)
    outcome = ground.run(case)
    case.sees(shown(outcome))
    ground.ends(case, outcome, FILE_CODES[row.effect])
    ground.keeps(case)
    if outcome.code == VALID:
        ground.is_whole(case)
        case.after = "nothing to heal"
        return
    case.expect("the wrong file", (ground.player.game / TARGET).read_bytes(), OLD)
    ground.recovers(case)
    if isinstance(row.fault, (Reply, Meeting)):
        passing(ground, case, row)


def passing(ground: Ground, case: Case, row: Row) -> None:
    """A fault that meets one answer is healed within the same run."""
    ground.fresh()
    redirects(ground)
    ground.wire.fail_after(MANIFEST, FILE, row.fault, times=1)
    outcome = ground.ends(case, ground.run(case), VALID)
    case.saw = case.saw or shown(outcome)
    ground.keeps(case)
    ground.is_whole(case)
    case.after = "healed in the same run"


def redirects(ground: Ground) -> None:
    for path, reply in transport.PLACES.items():
        ground.wire.fail(path, reply)
