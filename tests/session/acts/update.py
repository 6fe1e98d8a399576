"""The update after a login: bar and status line. Wants a login that has just succeeded."""

from __future__ import annotations

import re
from typing import Optional

from harness import snapshot

from player.person import Player
from stage import games
from stage.display import Area, Colour
from stage.waiting import NotSeen, expect, until

TRANSFER = re.compile(r"Updating file (\d+) of (\d+)\.\.\.\n(?P<name>.+)\n"
                      r"\[(?P<done>\d+\.\d)/(?P<all>\d+\.\d)MB @ \d+\.\dMB/s\]")
FILL: Colour = (91, 200, 181)
VIEWS = 4
# Status line and bar are looked at one after the other, while both move on.
TOLERANCE = 0.2


def moving_bar(player: Player) -> None:
    """The update shows a moving bar and a status of three lines, and brings every file"""
    player.sees_no_login_form()
    name = games.LARGEST.rpartition("/")[2]
    player.sees_status_that(f"three lines about {name}", lambda text: bool(about(name, text)))
    fractions: list[float] = []
    while len(fractions) < VIEWS:
        fractions.append(until("a bar that moves on", lambda: moved_on(player, name, fractions)))
        if len(fractions) == VIEWS - 1:
            player.takes_picture("update")
    player.stage.game_run.report()
    expect("the game folder", snapshot.contents(player.stage.home.game),
           snapshot.contents(player.stage.game.source))


def about(name: str, status: str) -> Optional[re.Match[str]]:
    found = TRANSFER.fullmatch(status)
    return found if found and found["name"].endswith(name) else None


def moved_on(player: Player, name: str, earlier: list[float]) -> Optional[float]:
    """How full the bar is, once it is fuller than before; it has to agree with the status."""
    before = about(name, player.status())
    fraction = fullness(player)
    after = about(name, player.status())
    if not before or not after or fraction <= max(earlier, default=0):
        return None
    low, high = (float(text["done"]) / float(text["all"]) for text in (before, after))
    if not low - TOLERANCE <= fraction <= high + TOLERANCE:
        raise NotSeen(f"a bar that agrees with the status: it is at {fraction:.2f}, "
                      f"while the status went from {low:.2f} to {high:.2f}")
    return fraction


def fullness(player: Player) -> float:
    """The part of the bar that is filled."""
    area = player.launcher.area(player.sees("progress bar", "Progress"))
    row = player.stage.display.colours(
        Area(area.x, area.y + area.height // 2, area.width, 1))
    return sum(is_fill(colour) for colour in row) / len(row)


def is_fill(colour: Colour) -> bool:
    return all(abs(one - other) < 25 for one, other in zip(colour, FILL))
