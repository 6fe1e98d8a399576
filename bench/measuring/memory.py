"""The most memory that an update takes, by the size of the game and of its files."""

from __future__ import annotations

import os
import shutil
import subprocess

from harness.player import Player

from . import data, site
from .bench import Bench
from .data import MEBIBYTE
from .report import at_most, table

WAITING_BODIES = 256
BASE = 60


def memory(bench: Bench) -> str:
    """The most that large games take."""
    rows, largest = [], 0.0
    for game in (data.five_gigabytes(bench), data.huge(bench), data.mixed(bench)):
        used = _peak_of_update(bench, game)
        limit = WAITING_BODIES + 3 * game.largest_size() / MEBIBYTE + BASE
        largest = max(largest, used / limit)
        rows.append((game.title, f"{game.compressed_size() / MEBIBYTE:.0f} MiB", f"{used:.0f} MiB",
                     f"{limit:.0f} MiB"))
    head = ("game", "compressed", "peak", "256 MiB of bodies + 3 x largest file + 60 MiB")
    return ("## Memory\n\nPeak of one update from nothing over https on loopback, where bodies come "
            f"faster than they can be decoded.\n\n{at_most('Largest part of its limit', 1, largest)}"
            f"\n{table(head, rows)}")


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
