"""System calls that fail, and kills at each of them, while an installer is saved or taken away."""

from __future__ import annotations

import os
import signal
from collections import Counter
from pathlib import Path
from typing import Sequence

from lab import injection
from lab.book import Book, Case
from lab.ground import Ground
from lab.window import Window, press
from stage import children, waiting

from .installers import BROWSER, IMAGE, INSTALLER, MOUNTER, PAGE, PATH, VERSION, begin, confirm

TRACER = "strace"
SAVE_ERRORS, REMOVAL_ERRORS = ("ENOSPC", "EIO", "EACCES"), ("EIO", "EACCES")
# All else that a start asks of its folder is met in a run without a window.
REMOVAL = (*injection.OPENINGS, *injection.LISTING, *injection.REMOVALS)
SAVED, OLD = "the installer that is saved", "an old installer and its folder"


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    ground.wire.pages[PATH] = lambda _request: IMAGE
    ground.fresh()
    window = Window(folder, ground.player)
    file, stride = ground.player.data / INSTALLER, 2 if book.is_short else 1
    saving = calls_of_a_save(folder, ground, window, file)
    for name, count in [*saving.items()][::stride]:
        for error in SAVE_ERRORS[::stride]:
            with book.case("installer", f"{error} of {name} on {SAVED}, for good") as case:
                unsaved(ground, window, case, injection.for_good(name, [file], f"error={error}"))
        with book.case("installer", f"SIGKILL at each {name} on {SAVED}") as case:
            killed_saves(ground, window, case, name, count)
    places = (file, file.parent)
    for name in [*calls_of_a_removal(folder, ground, window, places)][::stride]:
        for error in REMOVAL_ERRORS[::stride]:
            with book.case("installer", f"{error} of {name} on {OLD}, for good") as case:
                unremoved(ground, window, case, injection.for_good(name, places, f"error={error}"))
        with book.case("installer", f"SIGKILL at the first {name} on {OLD}") as case:
            killed_removal(ground, window, case, injection.at(name, 1, places, "signal=SIGKILL"))
    window.close()
    ground.stop()


def calls_of_a_save(folder: Path, ground: Ground, window: Window, file: Path) -> Counter[str]:
    log = folder / "calls"
    begin(ground, window, VERSION,
          injection.for_a_window(injection.counting(log, injection.ALL, [file])))
    press(window.sees("push button", "Update"))
    window.ended()
    return counted(log)


def calls_of_a_removal(folder: Path, ground: Ground, window: Window,
                       places: Sequence[Path]) -> Counter[str]:
    log = folder / "calls"
    lay_old(ground)
    window.start(wrapper=injection.for_a_window(injection.counting(log, REMOVAL, places)))
    is_gone(ground, window)
    window.end()
    return counted(log)


def counted(log: Path) -> Counter[str]:
    """Once the tracer has ended, which a launcher does not wait for."""
    waiting.until("the tracer's end", lambda: not any(
        state != "Z" and Path(f"/proc/{pid}/comm").read_text().strip() == TRACER
        for pid, state in children.children(os.getpid()).items()))
    return injection.counted(log)


def unsaved(ground: Ground, window: Window, case: Case, wrapper: Sequence[str]) -> None:
    """An image that could not be saved is handed to nobody."""
    begin(ground, window, VERSION, injection.for_a_window(wrapper))
    confirm(window, case)
    case.expect("images handed on", window.desktop.handed_to(MOUNTER), [])
    case.expect("pages opened", window.desktop.handed_to(BROWSER), [PAGE])
    case.sees("the download page in the browser, and the launcher's end")
    next_start(ground, window, case)


def killed_saves(ground: Ground, window: Window, case: Case, name: str, count: int) -> None:
    case.faults = count
    file = ground.player.data / INSTALLER
    for number in range(1, count + 1):
        wrapper = injection.at(name, number, [file], "signal=SIGKILL")
        begin(ground, window, VERSION, injection.for_a_window(wrapper))
        confirm(window, case, -signal.SIGKILL)
        case.expect("images handed on", window.desktop.handed_to(MOUNTER), [])
        case.saw = "nothing; the next start goes on"
        next_start(ground, window, case)


def lay_old(ground: Ground) -> None:
    ground.fresh()
    (ground.player.data / INSTALLER).write_bytes(IMAGE)


def unremoved(ground: Ground, window: Window, case: Case, wrapper: Sequence[str]) -> None:
    """It stays, and the window goes on."""
    lay_old(ground)
    window.start(wrapper=injection.for_a_window(wrapper))
    case.runs += 1
    case.sees(f"\"{window.status()}\" and the login form")
    window.end()
    case.expect("an old installer", (ground.player.data / INSTALLER).exists(), True)
    next_start(ground, window, case)


def killed_removal(ground: Ground, window: Window, case: Case, wrapper: Sequence[str]) -> None:
    lay_old(ground)
    window.launch(injection.for_a_window(wrapper))
    case.runs += 1
    case.expect("exit code", window.ended(), -signal.SIGKILL)
    case.saw = "nothing; the next start goes on"
    next_start(ground, window, case)


def next_start(ground: Ground, window: Window, case: Case) -> None:
    """It takes away whatever lies there, and the game can be healed."""
    ground.keeps(case)
    ground.wire.heal()
    window.start()
    case.runs += 1
    is_gone(ground, window)
    window.end()
    ground.recovers(case, "taken away by the next start")


def is_gone(ground: Ground, window: Window) -> None:
    window.waits_for("no installer", lambda: not (ground.player.data / INSTALLER).exists())
