"""Failures that never end: the window asks again and again, and its memory must stay flat."""

from __future__ import annotations

import os
import time
from pathlib import Path

from harness import snapshot
from lab.book import Book, Case
from lab.ground import FILE, Ground
from lab.reply import Reply
from lab.window import Window
from lab.wire import MANIFEST

from .game_runs import IN_PLAY
from .windows import LOGIN

# What a host that takes a tenth of a second for an answer would be asked in an hour.
ROUNDS, SHORT_ROUNDS = 36_000, 200
WARM_UP, SHORT_WARM_UP = 1000, 100
# The allocator's own growth levels off; a leak of a kilobyte a round would be 3 MB.
MOST_GROWTH_KB = 2048
TEN_FILES = {f"part {number}.bin": b"part %d\n" % number * 200 for number in range(5)}


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder, TEN_FILES)
    with book.case("manifest", "a manifest that never parses, for thousands of rounds") as case:
        ground.fresh()
        ground.wire.fail(MANIFEST, Reply(body=b"<html>"))
        watched(ground, book, case, folder / "one", MANIFEST, does_log_in=False)
    with book.case("game file", "404 for one file of ten, for thousands of rounds") as case:
        ground.fresh()
        ground.wire.pages[LOGIN] = lambda _request: IN_PLAY
        ground.wire.fail(FILE, Reply(status="404 Not Found", body=b"Not here."))
        watched(ground, book, case, folder / "two", FILE, does_log_in=True)
    ground.stop()


def watched(ground: Ground, book: Book, case: Case, folder: Path, path: str,
            does_log_in: bool) -> None:
    """Memory, requests and processor time between two counts of requests, after a warm-up."""
    folder.mkdir()
    window = Window(folder, ground.player)
    window.start()
    case.runs += 1
    if does_log_in:
        window.logs_in()
    warm_up, rounds = ((SHORT_WARM_UP, SHORT_ROUNDS) if book.is_short else (WARM_UP, ROUNDS))
    reached(window, ground, path, warm_up)
    assert window.launcher
    pid = window.launcher.pid
    memory, used, started = resident(pid), processor_seconds(pid), time.monotonic()
    at_start = ground.wire.count(path)
    reached(window, ground, path, warm_up + rounds // 2)
    half = resident(pid)
    reached(window, ground, path, warm_up + rounds)
    seconds = time.monotonic() - started
    growth = resident(pid) - memory
    a_minute = (ground.wire.count(path) - at_start) * 60 / seconds
    share = (processor_seconds(pid) - used) / seconds
    case.sees(f"{rounds} rounds: {a_minute:.0f} requests a minute, {share:.0%} of a processor, "
              f"{memory / 1024:.0f} MB, {growth:+d} KB over them, {memory + growth - half:+d} KB of "
              f"it in their second half")
    book.facts[case.name] = case.saw
    case.expect("memory that stays flat", growth <= MOST_GROWTH_KB, True)
    ground.keeps(case)
    ground.wire.heal()
    window.waits_for("a healed window", window.can_play)
    if does_log_in:
        case.expect("a whole game", snapshot.contents(ground.player.game) == ground.right, True)
    case.after = "without a restart, once the failure ends"
    window.writes_pulse(book, case.name)
    window.close()


def reached(window: Window, ground: Ground, path: str, count: int) -> None:
    """However long it takes, as long as the requests go on."""
    before = -1
    while before < count:
        before = ground.wire.count(path)
        wanted = min(count, before + 50)
        window.waits_for(f"request {wanted}", lambda: ground.wire.count(path) >= wanted)


def resident(pid: int) -> int:
    """In kilobytes."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    return 0


def processor_seconds(pid: int) -> float:
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
