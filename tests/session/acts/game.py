"""The running game and the launcher's way back. Wants an update that has just ended."""

from __future__ import annotations

import hashlib
from typing import Any, Optional

from hosting.names import game_server

from player.person import Player
from stage import children
from stage.waiting import NotSeen, expect, until

# A busy machine needs longer.
EARLIEST, LATEST = 5.0, 15.0
OTHER_PROGRAM, OTHER_TITLE = "xcalc", "^Calculator$"


def what_it_is_handed(player: Player) -> None:
    """The game runs in its folder with the play cookie and the server of the login"""
    report = player.stage.game_run.report()
    expect_handover(player, report, "robin", None)
    until("the game's window", lambda: player.stage.display.windows_of(report["pid"]))
    expect("windows of the game with its name",
           set(player.stage.display.windows_of(report["pid"]))
           <= set(player.stage.display.windows_named("^Quellmoor$")), True)
    player.takes_picture("game-starts")


def launcher_out_of_sight(player: Player) -> None:
    """Five seconds after the start of the game the launcher is out of sight"""
    report = player.stage.game_run.report()
    hidden_after = until("a launcher out of sight", lambda: hidden_since_start(player, report))
    if not EARLIEST <= hidden_after < LATEST:
        raise NotSeen(f"a launcher that is gone after 5 seconds: it went after {hidden_after:.2f}")
    expect("the end of the launcher", player.launcher.process.poll(), None)
    until("the game's window", lambda: player.stage.display.windows_of(report["pid"]))
    player.takes_picture("launcher-out-of-sight")


def launcher_is_back(player: Player) -> None:
    """When the game ends, the launcher is in front again, with login form and user name"""
    other_program = player.stage.start_program(OTHER_PROGRAM)
    display = player.stage.display
    (other,) = until("another program", lambda: display.windows_named(OTHER_TITLE))
    display.xdotool("windowactivate", str(other))
    until("another program in front",
          lambda: other == display.front_window() == display.active_window())
    ends_game(player)
    until("a launcher in front with the focus", player.launcher.is_in_front)
    player.sees_login_form()
    player.sees_in_field("Account", "robin")
    player.sees_status("Login")
    until("no zombies of the launcher", lambda: not children.zombies(player.launcher.pid))
    player.takes_picture("launcher-is-back")
    children.end(other_program)


def hidden_since_start(player: Player, report: dict[str, Any]) -> Optional[float]:
    """The age of the game's shell once the launcher has no window on the screen. The launcher
    counts from the start of that shell.
    """
    (_, shell) = children.status(report["pid"]) or ("", 0)
    return None if player.launcher.windows() else children.seconds_since_start(shell)


def ends_game(player: Player) -> None:
    pid = player.stage.game_run.report()["pid"]
    player.stage.game_run.end()
    until("the end of the game", lambda: not children.is_running(pid))


def expect_handover(player: Player, report: dict[str, Any], account: str,
                    environment: Optional[str]) -> None:
    """The game was handed what the account API gave out, and nothing else."""
    cookie = report["VARNO_PLAYCOOKIE"]
    player.secrets.add(cookie)
    session = player.stage.hosts.sessions()[-1]
    expect("account of the play cookie", (session["account"], session["environment"]),
           (account, environment))
    expect("digest of the play cookie", hashlib.sha256(cookie.encode()).hexdigest(),
           session["cookie_sha256"])
    expect("server", report["VARNO_GAMESERVER"], game_server(environment))
    expect("VARNO_DEV", report["VARNO_DEV"], None if environment is None else "YES")
    expect("frameworks", report["DYLD_FRAMEWORK_PATH"], "Frameworks/")
    expect("libraries", report["DYLD_LIBRARY_PATH"], "libs/")
    expect("working directory", report["cwd"], str(player.stage.home.game))
