"""Environments: another game from another host. Each act wants the login form."""

from __future__ import annotations

from harness import hosts, snapshot

from player.person import Player
from stage import children, games
from stage.accounts import PASSWORDS
from stage.waiting import expect, until

from . import game


def own_game(player: Player) -> None:
    """A login into an environment brings its own game and starts it for development"""
    player.stage.hosts.forget()
    player.logs_in("plover@qa", PASSWORDS["plover"])
    report = player.stage.game_run.report()
    player.sees_status("Launching the game(qa)...")
    player.sees("label", f"Server v{player.stage.coming_game.server_version}")
    game.expect_handover(player, report, "plover", "qa")
    asked = player.stage.hosts.asked_for()
    expect("the manifest of the environment", f"download-qa.localhost{hosts.MANIFEST}" in asked,
           True)
    expect("files of the usual game",
           [path for path in asked if path.startswith("download.localhost")], [])
    expect("the game folder",
           snapshot.contents(player.stage.home.game),
           snapshot.contents(player.stage.coming_game.source))
    until("the game's window", lambda: player.stage.display.windows_of(report["pid"]))
    player.takes_picture("environment")
    until("a launcher out of sight", lambda: not player.launcher.windows())
    game.ends_game(player)
    until("a launcher in front with the focus", player.launcher.is_in_front)
    player.sees_in_field("Account", "plover@qa")
    until("no zombies of the launcher", lambda: not children.zombies(player.launcher.pid))


def without_a_name(player: Player) -> None:
    """A user name that ends in "@" brings the game of the environment without a name"""
    player.stage.hosts.forget()
    player.logs_in("wren@", PASSWORDS["wren"])
    report = player.stage.game_run.report()
    player.sees_status("Launching the game()...")
    player.sees("label", f"Server v{player.stage.game.server_version}")
    game.expect_handover(player, report, "wren", "")
    asked = [path for path in player.stage.hosts.asked_for() if path.startswith("download")]
    own = "download-.localhost"
    expect("the manifest of the environment", f"{own}{hosts.MANIFEST}" in asked, True)
    expect("the game file that differs", f"{own}/mac/{games.LARGEST}.bz2" in asked, True)
    expect("requests to other hosts", [path for path in asked if not path.startswith(own)], [])
    largest = player.stage.home.game / games.LARGEST
    expect("the game file", largest.read_bytes() == (
        player.stage.game.source / games.LARGEST).read_bytes(), True)
    player.takes_picture("environment-without-a-name")
    game.ends_game(player)
    until("a launcher in front with the focus", player.launcher.is_in_front)
    player.sees_in_field("Account", "wren@")
