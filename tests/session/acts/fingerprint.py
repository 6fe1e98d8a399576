"""The fingerprint login, with the system's daemon. Wants no launcher, and leaves none."""

from __future__ import annotations

import stat

from player.person import Player
from stage import credentials, secrecy
from stage.accounts import PASSWORDS
from stage.credentials import Account, Stored
from stage.waiting import expect, until

from . import game

NAME = "wren"
OFFER, OFFERED = "Enable Touch ID", "Use Touch ID to login to  Quellmoor."
QUESTION, HINT = "Login to Quellmoor", "Put your finger on the reader."
RETRY_HINT, TOO_SHORT = "The swipe was too short. Try again.", 1
PRIVATE = 0o600


def offer_is_accepted(player: Player) -> None:
    """With a finger enrolled, a login brings the offer to use it; Enable stores the account"""
    player.stage.reader.enrol(NAME)
    player.starts_launcher()
    player.logs_in(NAME, PASSWORDS[NAME])
    player.sees("dialog", OFFER)
    player.sees("label", OFFERED)
    player.takes_picture("fingerprint-offer")
    expect("stored before the answer", credentials.read(player.stage.home),
           Stored(False, False, None))
    player.clicks_button("Enable")
    player.no_longer_sees("dialog", OFFER)
    until("the stored account",
          lambda: credentials.read(player.stage.home) == Stored(
              True, True, Account(NAME, PASSWORDS[NAME])))
    expect("mode of the settings", stat.S_IMODE(player.stage.home.settings.stat().st_mode), PRIVATE)
    ends_game_and_launcher(player)


def finger_logs_in(player: Player) -> None:
    """Later Play with an empty form asks for the finger, once more after a bad try, and logs in"""
    player.stage.hosts.forget()
    player.starts_launcher()
    player.plays_without_typing()
    player.sees("dialog", QUESTION)
    player.sees("notification", HINT)
    player.takes_picture("fingerprint-question")
    player.stage.reader.retry(TOO_SHORT)
    player.sees("notification", RETRY_HINT)
    player.sees("dialog", QUESTION)
    player.takes_picture("fingerprint-retry")
    expect("logins before the match",
           player.stage.hosts.asked_for().count("account.localhost/login/"), 0)
    player.stage.reader.scan(NAME)
    player.no_longer_sees("dialog", QUESTION)
    game.expect_handover(player, player.stage.game_run.report(), NAME, None)
    player.takes_picture("fingerprint-matched")
    expect("processes that were told the password",
           secrecy.told_to_processes([PASSWORDS[NAME]]), [])
    ends_game_and_launcher(player)


def ends_game_and_launcher(player: Player) -> None:
    report = player.stage.game_run.report()
    player.secrets.add(report["VARNO_PLAYCOOKIE"])
    until("a launcher out of sight", lambda: not player.launcher.windows())
    game.ends_game(player)
    until("a launcher in front with the focus", player.launcher.is_in_front)
    player.sees_login_form()
    player.clicks_button("Close")
    expect("exit code", player.launcher.ended(), 0)
