"""Logging in: what goes wrong, and the second step. The first act starts the launcher."""

from __future__ import annotations

import re

from player.person import Player
from stage import accounts, games
from stage.waiting import expect

TWO_STEPS = "Two-step Authentication"
SECONDS_TO_WATCH = 6


def nothing_typed(player: Player) -> None:
    """The launcher shows the login form; Play without a user name and a password asks for them"""
    player.starts_launcher()
    player.sees_login_form()
    player.has_focus_in(player.sees("text", "Account"))
    player.sees("label", f"Launcher v{player.stage.version}")
    player.sees("label", f"Server v{player.stage.game.server_version}")
    player.sees_news()
    player.takes_picture("login-form")
    player.clicks_button("Play")
    player.sees_status("You must enter a Username and Password.")
    expect("logins sent", logins(player), 0)


def wrong_password(player: Player) -> None:
    """A wrong password is refused with 504, and Play can be pressed again"""
    player.logs_in("wren", "moorland-7")
    player.sees_status("504: The user name or the password is wrong.")
    expect("logins sent", logins(player), 1)
    player.sees_login_form()
    player.takes_picture("wrong-password")


def two_steps(player: Player) -> None:
    """A two-step account gets a sheet that asks for the token"""
    player.fills_in("robin", accounts.PASSWORDS["robin"])
    player.stage.game_run.forget()
    slow_down_the_largest_file(player)
    player.presses("Return")
    player.sees("dialog", TWO_STEPS)
    player.sees("label", "503: Enter your two-step token.")
    player.has_focus_in(player.sees("text", TWO_STEPS))
    player.sees_status("503: Enter your two-step token.")
    player.takes_picture("two-steps")
    token = accounts.token()
    expect("a token of six digits", bool(re.fullmatch(r"\d{6}", token)), True)
    player.types_secret(token)
    player.sees_in_field(TWO_STEPS, token)
    player.clicks_button("Confirm")
    player.no_longer_sees("dialog", TWO_STEPS)


def slow_down_the_largest_file(player: Player) -> None:
    """So much that a person can watch the bar."""
    game = player.stage.game
    player.stage.hosts.fail({"path": f"/mac/{games.LARGEST}.bz2",
                             "fault": {"rate": game.largest_packed() // SECONDS_TO_WATCH}})


def logins(player: Player) -> int:
    return player.stage.hosts.asked_for().count("account.localhost/login/")
