"""The way of the keyboard through windows, menu and sheets, and what shows where it is."""

from __future__ import annotations

from player.person import Player
from stage import accounts
from stage.accessibility import Element
from stage.display import Colour
from stage.waiting import NotSeen, expect, until

from . import login, quitting

WAY = ["Account", "Password", "Play", "Forgot password?", "Create an account", "Home page",
       "Support", "Community forum", "Manage account", "Player’s guide", "Release notes",
       "Minimise", "Close"]
MENU = ["Minimise", "Reset fingerprint login", "Copy diagnostics", "Quit"]
SHEET = [login.TWO_STEPS, "Confirm", "Cancel"]
VISIBLE = 20  # of 255, in lightness


def through_the_window(player: Player) -> None:
    """Tab goes from control to control, Shift+Tab back, and each shows that it has the keyboard"""
    player.moves_away()
    goes_into_account(player)
    goes_round(player, WAY)
    for name in reversed(WAY[-4:-1]):
        player.presses("shift+Tab")
        comes_to(player, name)


def through_the_menu(player: Player) -> None:
    """The Menu key opens the menu, each entry of which is told and shown, and Escape closes it"""
    player.stage.bus.heard()
    player.presses("Menu")
    entry = hears_entry(player, MENU[0])
    for name in MENU[1:]:
        chosen = entry_colours(player, entry)
        player.presses("Down")
        following = hears_entry(player, name)
        shows_focus(entry.name(), chosen, entry_colours(player, entry))
        entry = following
    windows = len(player.launcher.windows())
    player.presses("Escape")
    until("the end of the menu", lambda: len(player.launcher.windows()) < windows)


def through_the_sheet(player: Player) -> None:
    """In the two-step sheet, too; Escape cancels it, and Play can be pressed again"""
    player.fills_in("robin", accounts.PASSWORDS["robin"])
    player.presses("Return")
    player.sees("dialog", login.TWO_STEPS)
    player.has_focus_in(player.sees("text", login.TWO_STEPS))
    player.moves_away()
    goes_round(player, SHEET)
    player.presses("Escape")
    player.no_longer_sees("dialog", login.TWO_STEPS)
    login.slow_down_the_largest_file(player)
    player.logs_in("wren", accounts.PASSWORDS["wren"])


def nothing_focused_during_the_game(player: Player) -> None:
    """Brought forward during the game, the launcher has put the keyboard on no control"""
    pid = player.stage.game_run.report()["pid"]
    until("a launcher out of sight", lambda: not player.launcher.windows())
    quitting.comes_forward(player)
    until("the keyboard in the window itself", lambda: (focused := player.focused())
          and focused.role() == "frame")
    player.takes_picture("forward-during-the-game")
    player.stage.game_run.end()
    until("the end of the game", lambda: not player.stage.display.windows_of(pid))
    player.sees_login_form()
    player.presses("Tab")
    comes_to(player, "Account")


def goes_into_account(player: Player) -> None:
    player.clicks(player.sees("text", "Account"))
    player.moves_away()
    comes_to(player, "Account")


def goes_round(player: Player, way: list[str]) -> None:
    """From the first, which has the keyboard, by Tab to the last; each has to show it."""
    current = comes_to(player, way[0])
    for name in way[1:]:
        with_keyboard = player.sees_colours(current)
        player.presses("Tab")
        following = comes_to(player, name)
        shows_focus(current.name(), with_keyboard, player.sees_colours(current))
        current = following
    with_keyboard = player.sees_colours(current)
    player.presses("shift+Tab")
    comes_to(player, way[-2])
    shows_focus(current.name(), with_keyboard, player.sees_colours(current))
    player.presses("Tab")
    comes_to(player, way[-1])


def comes_to(player: Player, name: str) -> Element:
    return until(f"the keyboard in {name}", lambda: focused if (focused := player.focused())
                 and focused.name() == name else None)


def hears_entry(player: Player, name: str) -> Element:
    def hear() -> Element | None:
        for event in player.stage.bus.heard():
            if event.kind == "focused" and event.value == 1 and event.element.name() == name:
                expect("its role", event.element.role(), "menu item")
                return event.element
        return None
    return until(f"the menu's {name}", hear)


def entry_colours(player: Player, entry: Element) -> list[Colour]:
    return player.stage.display.colours(entry.area())


def shows_focus(name: str, with_keyboard: list[Colour], without: list[Colour]) -> None:
    """As many dots as a thin ring around something of that size has must be clearly lighter or
    darker: not everybody sees another hue."""
    if len(with_keyboard) != len(without):
        raise NotSeen(f"{name} in its place")
    differing = sum(abs(lightness(one) - lightness(other)) >= VISIBLE
                    for one, other in zip(with_keyboard, without))
    if differing ** 2 < len(without):
        raise NotSeen(f"where the keyboard is: of {name} only {differing} dots differ")


def lightness(colour: Colour) -> float:
    red, green, blue = colour
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue
