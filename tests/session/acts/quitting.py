"""The end of the launcher during a game. Wants the login form; ends launcher and game."""

from __future__ import annotations

import time

from harness import settings

from player.person import Player
from stage import children
from stage.accounts import PASSWORDS
from stage.launcher import Launcher
from stage.waiting import NotSeen, expect, until

# Less than what unfinished work is given.
LONGEST_END = 1.5 * settings.slowness()


def while_the_game_runs(player: Player) -> None:
    """Started again, the launcher comes forward; closed, it leaves the game running"""
    player.logs_in("wren", PASSWORDS["wren"])
    first = player.launcher
    pid = player.stage.game_run.report()["pid"]
    player.secrets.add(player.stage.game_run.report()["VARNO_PLAYCOOKIE"])
    until("a launcher out of sight", lambda: not first.windows())
    streams = children.streams(pid)
    expect("the game's output", streams[1:], [str(first.output_file), str(first.errors_file)])

    comes_forward(player)
    player.takes_picture("forward-during-the-game")
    player.clicks(until("the close button", lambda: first.find("push button", "Close")))
    expect("exit code", ends_at_once(first), 0)
    expect("the game goes on", children.is_running(pid), True)
    expect("the game's streams", children.streams(pid), streams)
    until("the game's window", lambda: player.stage.display.windows_of(pid))
    player.takes_picture("game-without-launcher")

    (_, shell) = children.status(pid) or ("", 0)
    player.stage.game_run.end()
    expect("exit code of the game", children.exit_code_of_orphan(shell), 0)
    player.sees_nothing_left_running()


def ends_at_once(launcher: Launcher) -> int:
    """It does not wait for the game; the exit code."""
    clicked = time.monotonic()
    code = launcher.ended()
    took = time.monotonic() - clicked
    if took > LONGEST_END:
        raise NotSeen(f"a launcher that ends at once: it took {took:.1f} seconds")
    return code


def comes_forward(player: Player) -> None:
    """A second start brings the first launcher to the front, and ends."""
    first = player.launcher
    expect("exit code of the second launcher", player.stage.start_second_launcher(), 0)
    until("a launcher in front with the focus", first.is_in_front)
