"""The most memory that an update takes, by the size of the game and of its files."""

from __future__ import annotations

import os
import shutil
import subprocess

from harness.player import Player

from . import data, site
from .bench import Bench
from .report import table

MEBIBYTE = 1 << 20
WAITING_BODIES = 256
BASE = 60


def memory(bench: Bench) -> str:
    """Large games over https on loopback, where bodies come faster than they can be decoded."""
    many = data.repeated(bench, "250 files of 20 MiB", bench.sized(250, 4),
                         bench.sized(20, 2) * MEBIBYTE)
    huge = data.repeated(bench, "one file of 2 GiB", 1, bench.sized(2048, 4) * MEBIBYTE)
    rows, largest = [], 0.0
    for game, size in ((many, 20), (huge, 2048), (data.mixed(bench), 4)):
        used = _peak_of_update(bench, game)
        limit = WAITING_BODIES + 3 * size + BASE
        largest = max(largest, used / limit)
        rows.append((game.title, f"{used:.0f} MiB", f"{limit} MiB"))
    head = ("game", "peak", "256 MiB of bodies + 3 x largest file + 60 MiB")
    verdict = "Every game stays below its limit." if largest <= 1 else "NOT every game stays below."
    return f"## Memory\n\nPeak of an update from nothing. {verdict}\n\n{table(head, rows)}"


def _peak_of_update(bench: Bench, game: data.Game) -> float:
    home = bench.data / "player"
    shutil.rmtree(home, ignore_errors=True)
    with site.serving(bench, game):
        # Its output stays short: without a terminal a line a file.
        process = subprocess.Popen([bench.launcher, "--update"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, env=Player(home).environment())
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    shutil.rmtree(home)
    if process.returncode != 0:
        raise RuntimeError(f"the update of {game.title} ended with {process.returncode}")
    return usage.ru_maxrss * 1024 / MEBIBYTE
