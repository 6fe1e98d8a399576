"""A start without a network. Wants no launcher, and leaves none."""

from __future__ import annotations

from harness import hosts

from player.person import Player
from stage.accounts import PASSWORDS
from stage.waiting import expect, until


def start_without_and_return(player: Player) -> None:
    """Started without a network, the launcher says so, and catches up when it comes"""
    player.stage.hosts.forget()
    player.stage.network.unplug()
    player.starts_launcher()
    player.logs_in("wren", PASSWORDS["wren"])
    player.sees_status("900: Couldn't connect to the account server.")
    player.sees_login_form()
    player.sees_no_news()
    player.takes_picture("without-network")
    player.stage.network.plug_in()
    player.sees("label", f"Server v{player.stage.game.server_version}")
    wanted = {f"download.localhost{hosts.MANIFEST}", "account.localhost/launcher/"}
    until("manifest and news", lambda: wanted <= set(player.stage.hosts.asked_for()))
    player.sees_news()
    player.takes_picture("network-is-back")
    player.clicks_button("Close")
    expect("exit code", player.launcher.ended(), 0)
