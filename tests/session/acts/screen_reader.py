"""What a screen reader finds and hears. The first act starts the launcher."""

from __future__ import annotations

from player.person import Player
from stage.accessibility import PAGE, SHOWING
from stage.waiting import expect, until

CONTAINERS = ("panel", "filler")
PARTS = [
    ("frame", "Quellmoor"), ("panel", "News"), ("notification", "Login"),
    ("text", "Account"), ("text", "Password"), ("push button", "Play"),
    ("push button", "Forgot password?"), ("push button", "Create an account"),
    ("push button", "Home page"), ("push button", "Support"), ("push button", "Community forum"),
    ("push button", "Manage account"), ("push button", "Player’s guide"),
    ("push button", "Release notes"), ("push button", "Minimise"), ("push button", "Close")]
STRIP = [
    ("frame", "Quellmoor"), ("push button", "Log in with your fingerprint"),
    ("push button", "Release notes"), ("push button", "Manage account"),
    ("push button", "Player’s guide"), ("push button", "Community forum")]
NEWS = [
    ("heading", "News from the moor"), ("label", "Dry paths, light mist"),
    ("heading", "Lantern Week"), ("link", "forum"), ("link", "Wiki"),
    ("label", "Wind in the reed beds no longer drowns out speech, inns remember your chair, and "
              "the heron of Sallow Mere has stopped stealing bread from other people's packs.")]
VALUES = 4


def names_in_the_window(player: Player) -> None:
    """Every part of the window and of the strip has a role and a name"""
    player.starts_launcher("--touch-bar")
    player.sees_login_form()
    player.sees("label", f"Server v{player.stage.game.server_version}")
    player.sees("push button", "Log in with your fingerprint")
    player.sees_news()
    parts = shown_parts(player)
    expect("parts without a name", [one for one in parts if is_unnamed(*one)], [])
    for part in PARTS + STRIP:
        if parts.count(part) < (PARTS + STRIP).count(part):
            expect(f"parts called {part}", parts, PARTS + STRIP)


def news_can_be_read(player: Player) -> None:
    """The news are a document with a name, whose headings, texts and links are there to be read"""
    page = player.sees(PAGE, "News from the moor")
    expect("place of the page", player.launcher.area(page),
           player.launcher.area(player.sees("panel", "News")))
    parts = [(part.role(), part.name().strip()) for part in page.below(page)]
    expect("parts of the news", [part for part in NEWS if part not in parts], [])


def status_is_read_out(player: Player) -> None:
    """The status line is read out when it changes, wherever the keyboard is"""
    player.stage.bus.listen()
    player.clicks_button("Play")
    hears_status(player, "You must enter a Username and Password.")
    expect("focus", focused_name(player), "Play")


def bar_has_a_value(player: Player) -> None:
    """The bar has a value, which grows while a file comes, and the status tells of the file"""
    values: list[float] = []
    spoken: list[str] = []

    def hear() -> bool:
        for event in player.stage.bus.heard():
            if event.kind == "accessible-value" and event.element.role() == "progress bar":
                values.append(event.element.value())
            elif event.kind == "showing" and event.element.role() == "notification":
                spoken.append(event.element.name())
        growing = [one for one in values if 0 < one < 1]
        return len(set(growing)) >= VALUES and any("Updating file" in one for one in spoken)

    until("a value of the bar that grows, and words about it", hear)
    expect("values between nothing and all", [one for one in values if not 0 <= one <= 1], [])
    player.sees("progress bar", "Progress")


def shown_parts(player: Player) -> list[tuple[str, str]]:
    """Roles and names of everything that shows but the page, whose name is its own affair."""
    return [(part.role(), part.name()) for part in player.launcher.elements()
            if part.has(SHOWING) and not part.is_page()]


def is_unnamed(role: str, name: str) -> bool:
    return not name and role not in CONTAINERS


def hears_status(player: Player, text: str) -> None:
    def hear() -> bool:
        return any(event.kind == "showing" and event.value == 1
                   and (event.element.role(), event.element.name()) == ("notification", text)
                   for event in player.stage.bus.heard())
    until(f"\"{text}\" read out", hear)


def focused_name(player: Player) -> str:
    focused = player.focused()
    return focused.name() if focused else ""
