"""What the launcher hands to the browser. Wants the login form."""

from __future__ import annotations

from harness import settings

from player.person import Player
from stage.waiting import until

PAGES = (("Forgot password?", "www.localhost", "/resetpass/"),
         ("Home page", "www.localhost", ""), ("Community forum", "forum.localhost", "/"),
         ("Player’s guide", "wiki.localhost", "/wiki/Main_Page"))


def to_the_desktop(player: Player) -> None:
    """The link buttons open their pages in the browser"""
    opened = []
    for button, host, path in PAGES:
        player.clicks_button(button)
        opened.append(f"https://{host}:{settings.port()}{path}")
        until(f"{opened[-1]} in the browser",
              lambda: player.stage.desktop.handed_to("xdg-open") == opened)
    player.sees_login_form()
