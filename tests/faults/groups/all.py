"""The groups by name. The slow ones come first, so that the others run beside them."""

from __future__ import annotations

from pathlib import Path
from typing import Callable

from lab.book import Book

from . import (bounds, disks, game_runs, hostile, installer_calls, installers, kills, news,
               settings, steady, transfers, windows)

Group = Callable[[Book, Path], None]

GROUPS: dict[str, Group] = {
    "stalls": transfers.run_stalls,
    "damage": kills.run_damage,
    "moments": kills.run_kills,
    "steady": steady.run,
    "bounds": bounds.run,
    "bounds-of-windows": bounds.run_windows,
    "transfers": transfers.run,
    "errors": disks.run_errors,
    "kills": disks.run_kills,
    "hostile": hostile.run,
    "settings": settings.run,
    "logins": windows.run_logins,
    "game-processes": game_runs.run,
    "installers": installers.run,
    "installer-calls": installer_calls.run,
    "news": news.run,
}

# What a short run leaves out waits for time-outs.
SHORT = tuple(name for name in GROUPS if name != "stalls")

# Felt for their answers, these have the machine for themselves.
WINDOWS = ("steady", "bounds-of-windows", "game-processes", "installers", "news", "logins")
