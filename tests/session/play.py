#!/usr/bin/python3
"""Plays a whole session with the launcher, as a player would, and says what was seen."""

from __future__ import annotations

import argparse
import signal
import sys
import time
from pathlib import Path
from typing import Sequence

import paths  # noqa: F401

from harness import isolation, settings

import acts
from player.album import Album
from player.person import Player
from stage.waiting import NotSeen
from stage.whole import Stage

LAST_WORDS = 2000


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", nargs="?", type=Path,
                        default=settings.REPOSITORY / "build" / "demo",
                        help="where the pictures go (default: build/demo)")
    parser.add_argument("--play", choices=acts.PLAYS, default="session",
                        help="what is played (default: a whole session)")
    words = parser.parse_args()
    folder = words.folder.resolve()
    isolation.enter()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    is_whole = False
    try:
        with Stage() as stage:
            is_whole = play(Player(stage, Album(folder)), acts.PLAYS[words.play])
    finally:
        print(f"The pictures are in {folder}.")
    return 0 if is_whole else 1


def play(player: Player, whole: Sequence[acts.Act]) -> bool:
    """Plays act after act, each of which builds on the ones before; true when all was seen."""
    for act in whole:
        print(f"  {(act.__doc__ or act.__name__).strip()} ... ", end="", flush=True)
        started = time.monotonic()
        try:
            act(player)
        except (NotSeen, TimeoutError) as missed:
            print("NO")
            explain(player, missed)
            return False
        print(f"{time.monotonic() - started:.1f} s")
    print("All of it was seen.")
    return True


def explain(player: Player, missed: Exception) -> None:
    player.takes_picture("not-seen")
    print(f"Not seen: {missed}.\nThe status line: {player.status()!r}\n"
          f"The launcher's last words:\n{player.launcher.errors()[-LAST_WORDS:]}")


if __name__ == "__main__":
    sys.exit(main())
