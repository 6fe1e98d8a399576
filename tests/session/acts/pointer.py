"""The mouse on the window. The first act starts the launcher, the last one ends it."""

from __future__ import annotations

from harness import settings

from player.person import Player
from stage.display import HEIGHT, Area
from stage.waiting import expect, until

from . import login

BUTTONS = ["Play", "Forgot password?", "Create an account", "Home page", "Support",
           "Community forum", "Manage account", "Player’s guide", "Release notes", "Minimise",
           "Close"]
BACKGROUND = (230, 590)  # in the window, below the play button
HOME = f"https://www.localhost:{settings.port()}"


def hovering(player: Player) -> None:
    """Each button has another picture under the mouse, and its own again when the mouse has left"""
    player.starts_launcher()
    player.sees_login_form()
    player.sees_news()
    player.moves_away()
    for name in BUTTONS:
        button = player.sees("push button", name)
        idle = player.sees_colours(button)
        player.moves_to(button)
        until(f"another picture of {name}", lambda: player.sees_colours(button) != idle)
        player.moves_away()
        until(f"the picture of {name} as it was", lambda: player.sees_colours(button) == idle)


def holding(player: Player) -> None:
    """A button that is held down looks so; it acts when it is let go"""
    button = player.sees("push button", "Play")
    player.moves_to(button)
    player.holds_down()
    held = player.sees_colours(button)
    player.takes_picture("play-held-down")
    expect("status", player.status(), "Login")
    player.lets_go()
    player.sees_status("You must enter a Username and Password.")
    until("another picture of Play", lambda: player.sees_colours(button) != held)
    released = player.sees_colours(button)
    player.holds_down()
    until("Play held down", lambda: player.sees_colours(button) == held)
    player.lets_go()
    until("Play as it was", lambda: player.sees_colours(button) == released)


def letting_go_elsewhere(player: Player) -> None:
    """Let go beside the button, nothing comes of it; the next click works"""
    button = player.sees("push button", "Community forum")
    idle = player.sees_colours(button)
    player.moves_to(button)
    player.holds_down()
    player.moves_away()
    player.lets_go()
    player.clicks_button("Home page")
    player.moves_away()
    until("the button as it was", lambda: player.sees_colours(button) == idle)
    until("one page in the browser",
          lambda: player.stage.desktop.handed_to("xdg-open") == [HOME])


def switched_off(player: Player) -> None:
    """While the account server is asked, Play has one picture and does nothing"""
    player.stage.hosts.fail({"path": "/login/", "fault": {"delay": 6}})
    player.logs_in("wren", "moorland-7")
    player.sees_status("Contacting account server...")
    button = player.sees("push button", "Play")
    player.moves_away()
    off = player.sees_colours(button)
    player.moves_to(button)
    player.holds_down()
    expect("Play switched off under the mouse", player.sees_colours(button) == off, True)
    player.takes_picture("play-switched-off")
    player.lets_go()
    expect("Play switched off after a click", player.sees_colours(button) == off, True)
    expect("status", player.status(), "Contacting account server...")
    player.sees_status("504: The user name or the password is wrong.")
    expect("logins sent", login.logins(player), 1)
    until("Play switched on", lambda: player.sees_colours(button) != off)


def dragging(player: Player) -> None:
    """The window follows the mouse that holds its background, but not one that holds a button"""
    start = place(player)
    drags(player, 60, 40)
    until("the window to the right and below", lambda: place(player) == moved(start, 60, 40))
    drags(player, -400, 70)
    off = moved(start, -340, 110)
    expect("room for that on the display", off.x < 0 < off.y + off.height - HEIGHT, True)
    until("the window beyond two edges", lambda: place(player) == off)
    drags(player, 340, -110)
    until("the window back", lambda: place(player) == start)
    player.moves_to(player.sees("push button", "Support"))
    player.holds_down()
    player.moves_by(80, 30)
    player.lets_go()
    expect("place of the window", place(player), start)


def stopping_at_the_top(player: Player) -> None:
    """The upper edge stops below what the desktop keeps for itself; the other way is free again"""
    start = place(player)
    top = player.stage.display.top_of_desktop()
    expect("room above the desktop", top > 0, True)
    drags(player, 20, -(start.y + 200))
    until("the window at the top", lambda: place(player) == moved(start, 20, top - start.y))
    drags(player, -20, start.y - top)
    until("the window back", lambda: place(player) == start)


def minimising(player: Player) -> None:
    """The minimise button puts the window away; back again, the button is not lit"""
    (window,) = player.launcher.windows()
    button = player.sees("push button", "Minimise")
    player.moves_away()
    idle = player.sees_colours(button)
    player.clicks(button)
    until("a window out of sight", lambda: not player.launcher.windows())
    expect("end of the launcher", player.launcher.process.poll(), None)
    player.moves_away()
    player.stage.display.xdotool("windowactivate", str(window))
    until("the window in front", player.launcher.is_in_front)
    player.presses("Tab")
    until("the button as it was", lambda: player.sees_colours(button) == idle)


def closing(player: Player) -> None:
    """The close button ends the launcher"""
    player.clicks_button("Close")
    expect("exit code", player.launcher.ended(), 0)
    player.sees_nothing_left_running()


def without_blending(player: Player) -> None:
    """On a desktop that cannot blend, windows are cut to their shapes instead of standing in black"""
    player.stage.display.stop_blending()
    player.starts_launcher()
    player.sees_login_form()
    (window,) = player.launcher.windows()
    is_cut(player, window, 1)
    player.presses("Menu")
    (menu,) = until("the menu", lambda: set(player.launcher.windows()) - {window})
    player.takes_picture("menu-without-blending")
    player.presses("Down", "Down", "Return")
    player.sees("dialog", "Diagnostics Copied")
    (alert,) = until("the alert", lambda: set(player.launcher.windows()) - {window, menu})
    is_cut(player, alert, 10)
    player.takes_picture("alert-without-blending")
    player.presses("Return")
    player.no_longer_sees("dialog", "Diagnostics Copied")
    player.clicks_button("Close")
    expect("exit code", player.launcher.ended(), 0)


def is_cut(player: Player, window: int, margin: int) -> None:
    """Away from the edges by so much at least, where there is only shadow."""
    whole, shape = player.stage.display.place(window), player.stage.display.shape(window)
    expect("room around the shape", shape.x >= margin and shape.y >= margin
           and shape.x + shape.width <= whole.width - margin
           and shape.y + shape.height <= whole.height - margin, True)


def drags(player: Player, right: int, down: int) -> None:
    """In small steps, as a hand does."""
    window = place(player)
    player.moves_to_place(window.x + BACKGROUND[0], window.y + BACKGROUND[1])
    player.holds_down()
    player.moves_by(right, down)
    player.lets_go()


def place(player: Player) -> Area:
    (window,) = player.launcher.windows()
    return player.stage.display.place(window)


def moved(area: Area, right: int, down: int) -> Area:
    return area._replace(x=area.x + right, y=area.y + down)
