"""A launcher that is out of date. Wants no launcher, and leaves none."""

from __future__ import annotations

from player.person import Player
from stage.waiting import expect, until

TITLE = "Launcher Update Required"
REASON = "There is a required update available for the launcher."
NEXT_VERSION = "9.9.9"
INSTALLER = f"VARNO_darwin_setup_{NEXT_VERSION}.dmg"
MOUNTER = "gnome-disk-image-mounter"


def update_is_handed_on(player: Player) -> None:
    """An out-of-date launcher fetches its successor, hands it on and ends"""
    is_asked_to_update(player)
    player.takes_picture("out-of-date")
    player.clicks_button("Update")
    expect("exit code", player.launcher.ended(), 0)
    image = player.stage.home.data / INSTALLER
    expect("handed to the mounter",
           until("the mounter", lambda: player.stage.desktop.handed_to(MOUNTER)), [str(image)])
    expect("handed to the browser", player.stage.desktop.handed_to("xdg-open"), [])
    expect("downloads of the installer", downloads(player), 1)
    served = [entry["bytes"] for entry in player.stage.hosts.requests()
              if entry["path"] == f"/{INSTALLER}"]
    expect("bytes of the installer", [image.stat().st_size], served)


def exit_downloads_nothing(player: Player) -> None:
    """Exit Launcher ends the launcher, which has removed the old installer and fetches none"""
    is_asked_to_update(player)
    player.clicks_button("Exit Launcher")
    expect("exit code", player.launcher.ended(), 0)
    expect("downloads of the installer", downloads(player), 0)
    expect("installers", list(player.stage.home.data.glob("*.dmg")), [])
    expect("handed to the desktop",
           [player.stage.desktop.handed_to(name) for name in (MOUNTER, "xdg-open")], [[], []])


def is_asked_to_update(player: Player) -> None:
    player.stage.game.publish(NEXT_VERSION)
    player.stage.desktop.forget()
    player.stage.hosts.forget()
    player.stage.start_launcher()
    player.sees("dialog", TITLE)
    player.sees("label", REASON)
    player.sees_no_login_form()


def downloads(player: Player) -> int:
    return player.stage.hosts.asked_for().count(f"download.localhost/{INSTALLER}")
