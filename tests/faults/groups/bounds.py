"""Answers larger than the launcher takes: what the player sees, and the most memory that it held."""

from __future__ import annotations

import bz2
import json
import math
from dataclasses import dataclass
from pathlib import Path
from typing import Callable, Sequence

from harness import snapshot
from lab import injection, peak
from lab.book import Book, Case
from lab.ground import FILE, INVALID, NO_MANIFEST, TARGET, VALID, Ground, shown
from lab.reply import Ending, Reply
from lab.window import FIRST_STATUS, Window, press
from lab.wire import MANIFEST

from . import installers, news
from .game_runs import IN_PLAY
from .windows import LOGIN, NEWS, NO_CONNECTION, Desk, finish

MEGABYTE = 1024 * 1024
SECONDS = 600
SMALL_MACHINE = 2048 * MEGABYTE
# What the launcher itself takes, beside what it was sent.
OWN, OWN_WINDOW = 80, 160
CLOSED = "Connection: close"
# Wrong from the start, as the target is.
OTHERS = {"another.bin": b"another\n" * 100, "one more.bin": b"one more\n" * 100}
EACH = "/mac/*.bz2"


@dataclass(frozen=True)
class Row:
    """`most` is the memory that it may take, in megabytes."""

    area: str
    name: str
    path: str
    reply: Callable[[Ground], Reply]
    codes: tuple[int, ...]
    most: int
    is_small_machine: bool = False


def sized(megabytes: int) -> Callable[[Ground], Reply]:
    """As long as its head says."""
    return lambda _ground: Reply(body=b"", length=str(megabytes * MEGABYTE),
                                 more=megabytes * MEGABYTE, ending=Ending.CLOSE)


def endless(_ground: Ground) -> Reply:
    return Reply(body=b"", length=None, headers=(CLOSED,), more=math.inf, ending=Ending.CLOSE)


def padded_manifest(ground: Ground) -> Reply:
    """The right one with blanks, just within the bound."""
    right = (ground.tree / "mac" / "patcher.json").read_bytes()
    return Reply(body=right + b" " * (64 * MEGABYTE - len(right)))


def bomb(size: int) -> Callable[[Ground], Reply]:
    def reply(_ground: Ground) -> Reply:
        packer, piece = bz2.BZ2Compressor(), bytes(10**7)
        packed = b"".join(packer.compress(piece) for _ in range(size // len(piece)))
        return Reply(body=packed + packer.flush())
    return reply


ROWS: tuple[Row, ...] = (
    Row("manifest", "a right one of 64 MB", MANIFEST, padded_manifest, (VALID,), 400),
    Row("manifest", "one of 200 MB", MANIFEST, sized(200), (NO_MANIFEST,), 200),
    Row("manifest", "one without end", MANIFEST, endless, (NO_MANIFEST,), 200),
    Row("game file", "722 bytes that stand for 1 GB", FILE, bomb(10**9), (INVALID,), 1100),
    Row("game file", "three of 722 bytes that stand for 1 GB each, at once", EACH, bomb(10**9),
        (INVALID,), 1374),
    Row("game file", "850 bytes that stand for 1.2 GB, with 2 GB of memory", FILE,
        bomb(1_200_000_000), (INVALID,), 1200, True),
    Row("game file", "one of 1 GB packed, with 2 GB of memory", FILE, sized(1024), (INVALID,), 1200,
        True),
    Row("game file", "one without end, with 2 GB of memory", FILE, endless, (INVALID,), 1200,
        True),
)


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder, OTHERS, [*OTHERS])
    usual(book, ground, folder)
    for row in ROWS[1:2] if book.is_short else ROWS:
        with book.case(row.area, f"too much: {row.name}") as case:
            command_line(ground, case, folder, row)
    ground.stop()


def usual(book: Book, ground: Ground, folder: Path) -> None:
    """What there is to compare with."""
    with book.case("game file", "nothing too much: a usual update") as case:
        ground.fresh()
        measured(ground, case, folder, (VALID,), OWN)
        ground.keeps(case)
        ground.is_whole(case)
        case.after = "nothing to heal"


def command_line(ground: Ground, case: Case, folder: Path, row: Row) -> None:
    ground.fresh()
    ground.wire.fail(row.path, row.reply(ground))
    measured(ground, case, folder, row.codes, row.most,
             injection.less_memory(SMALL_MACHINE) if row.is_small_machine else ())
    now = snapshot.contents(ground.player.game)
    lost = [name for name in ground.right if name not in (TARGET, *OTHERS)
            and now.get(name) != ground.right[name]]
    case.expect("lost files", lost, [])
    ground.keeps_settings(case)
    ground.recovers(case)


def measured(ground: Ground, case: Case, folder: Path, codes: tuple[int, ...], most: int,
             wrapper: Sequence[str] = ()) -> None:
    result = folder / "peak"
    outcome = ground.ends(case, ground.run(case, wrapper=peak.around(result, wrapper),
                                             seconds=SECONDS), *codes)
    case.sees(shown(outcome))
    judge(case, int(result.read_text()), most)


def judge(case: Case, kilobytes: int, most: int) -> None:
    case.peak, case.bound = kilobytes // 1024, most
    case.expect(f"at most {most} MB of memory, {case.peak} of them", case.peak <= most, True)


def run_windows(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    desk = Desk(ground)
    ground.fresh()
    window = Window(folder, ground.player)
    # Only a launcher that started without a network fetches its news anew.
    window.network.tell(False)
    window.start()
    if not book.is_short:
        with book.case("news", "too much: a page without end") as case:
            page(ground, window, desk, case)
        window.end()
        window.start()
    for name, reply in (("one of 1 GB", sized(1024)), ("one without end", endless)):
        with book.case("login", f"too much: {name}") as case:
            login(ground, window, desk, case, reply(ground))
    window.end()
    if not book.is_short:
        ground.wire.pages[installers.PATH] = lambda _request: b""
        with book.case("installer", "too much: one without end") as case:
            installer(ground, window, case)
        ground.wire.pages[LOGIN] = lambda _request: IN_PLAY
        with book.case("manifest", "too much: one of 200 MB, in the window") as case:
            patching(ground, window, case, MANIFEST, sized(200)(ground), 200)
        small_bomb = "too much: 722 bytes that stand for 1 GB, in the window"
        with book.case("game file", small_bomb) as case:
            patching(ground, window, case, FILE, bomb(10**9)(ground), 1020)
    window.writes_pulse(book, "too much")
    window.close()
    ground.stop()


def login(ground: Ground, window: Window, desk: Desk, case: Case, reply: Reply) -> None:
    ground.wire.fail(LOGIN, reply)
    ground.wire.drop()
    window.logs_in()
    window.waits_for("a failure", lambda: window.can_play() and window.status() == NO_CONNECTION)
    assert window.launcher
    most = peak.of_process(window.launcher.pid)
    finish(ground, window, desk, case)
    # What is there, what it grows into, and what is still on its way between the threads.
    judge(case, most, 128 * 3 + OWN_WINDOW)


def page(ground: Ground, window: Window, desk: Desk, case: Case) -> None:
    before = news.begin(ground, window, desk)
    ground.wire.fail(NEWS, endless(ground))
    news.load(ground, window)
    window.waits_for("no page", lambda: news.shows(window) != before)
    assert window.launcher
    most = peak.of_process(window.launcher.pid)
    news.finish(ground, window, desk, case)
    judge(case, most, 4 * 10 + OWN_WINDOW)


def patching(ground: Ground, window: Window, case: Case, path: str, reply: Reply,
             most: int) -> None:
    """The first answer is too much. The same window has a whole game, starts it and comes back."""
    ground.fresh()
    ground.wire.fail(path, reply, times=1)
    before = ground.wire.count(path)
    window.start()
    case.runs += 1
    if path == MANIFEST:
        window.waits_for("the first manifest", lambda: ground.wire.count(path) > before)
    window.logs_in()
    window.waits_for("a whole game", lambda: ground.wire.count(path) >= before + 2
                     and snapshot.contents(ground.player.game) == ground.right)
    window.waits_for("the form", lambda: window.status() == FIRST_STATUS and window.can_play())
    ground.keeps(case)
    case.sees(f"the next answer's game; then \"{window.status()}\" and the login form")
    assert window.launcher
    judge(case, peak.of_process(window.launcher.pid), most + OWN_WINDOW)
    case.after = "the same window goes on"
    window.end()


def installer(ground: Ground, window: Window, case: Case) -> None:
    installers.begin(ground, window, installers.VERSION)
    ground.wire.fail(installers.PATH, endless(ground))
    most = 0

    def measure(pid: int) -> None:
        nonlocal most
        most = max(most, peak.of_process(pid))

    press(window.sees("push button", "Update"))
    case.expect("exit code", window.ended(measure, SECONDS), 0)
    case.expect("pages opened", window.desktop.handed_to(installers.BROWSER), [installers.PAGE])
    case.expect("an installer", (ground.player.data / installers.INSTALLER).exists(), False)
    case.sees("the download page in the browser, and the launcher's end")
    installers.finish(ground, window, case)
    judge(case, most, 1024 + OWN_WINDOW)
