"""The player: does what a person can do, and sees what the windows say."""

from __future__ import annotations

from typing import Callable, Optional

from stage import children
from stage.accessibility import FOCUSED, SHOWING, Element
from stage.display import Colour
from stage.launcher import Launcher
from stage.waiting import NotSeen, expect, until
from stage.whole import Stage

from .album import Album

FIRST_STATUS = "Login"
LIGHT, LIGHT_DOTS_OF_A_PAGE = 180, 500
STEPS = 10
LOGIN_FORM = (("text", "Account"), ("text", "Password"), ("push button", "Play"),
              ("push button", "Forgot password?"), ("push button", "Create an account"))


class Player:
    """Plays on a stage and remembers what must never be written down."""

    def __init__(self, stage: Stage, album: Album) -> None:
        self.stage = stage
        self.secrets: set[str] = set()
        self._album = album
        self._status: Optional[Element] = None

    @property
    def launcher(self) -> Launcher:
        return self.stage.launcher

    def takes_picture(self, name: str) -> None:
        self._album.keep(self.stage.display, name)

    def starts_launcher(self, *words: str) -> None:
        """The status line is known by what it says first."""
        self.stage.start_launcher(*words)
        self._status = self.sees("notification", FIRST_STATUS)

    # What the player sees.

    def sees(self, role: str, name: str) -> Element:
        return until(f"the {role} \"{name}\"", lambda: self.launcher.find(role, name))

    def no_longer_sees(self, role: str, name: str) -> None:
        until(f"the end of the {role} \"{name}\"", lambda: not self.launcher.find(role, name))

    def status(self) -> str:
        return self._status.name() if self._status else ""

    def sees_status(self, text: str) -> None:
        self.sees_status_that(f"the status \"{text}\"", lambda status: status == text)

    def sees_status_that(self, what: str, fits: Callable[[str], bool]) -> str:
        return until(what, lambda: self.status() if fits(self.status()) else None)

    def sees_in_field(self, name: str, text: str) -> None:
        field = self.sees("text", name)
        until(f"\"{text}\" in the field {name}", lambda: field.text() == text)

    def has_focus_in(self, field: Element) -> None:
        until(f"the focus in {field.name()}", lambda: field.has(FOCUSED))

    def sees_login_form(self) -> None:
        for role, name in LOGIN_FORM:
            self.sees(role, name)

    def sees_no_login_form(self) -> None:
        for role, name in LOGIN_FORM:
            self.no_longer_sees(role, name)

    def sees_news(self) -> None:
        """News are light letters on the dark picture."""
        until("news to read", lambda: self._light_dots_in_the_news() > LIGHT_DOTS_OF_A_PAGE)

    def sees_no_news(self) -> None:
        expect("letters where no news can be", self._light_dots_in_the_news(), 0)

    def _light_dots_in_the_news(self) -> int:
        found = self.launcher.find("filler", "News")
        colours = self.stage.display.colours(self.launcher.area(found)) if found else []
        return sum(min(colour) > LIGHT for colour in colours)

    def focused(self) -> Optional[Element]:
        """What has the keyboard in the launcher. A page always claims to have it."""
        for element in self.launcher.elements():
            if (element.has(FOCUSED) and element.has(SHOWING)
                    and not element.is_page()):
                return element
        return None

    def sees_colours(self, element: Element) -> list[Colour]:
        return self.stage.display.colours(self.launcher.area(element))

    def sees_nothing_left_running(self) -> None:
        """Whatever a launcher has started is gone with it."""
        try:
            until("the end of all processes", lambda: not self.stage.strays())
        except NotSeen as missed:
            left = ", ".join(children.described(pid) for pid in self.stage.strays())
            raise NotSeen(f"{missed}; there is {left}") from None

    # What the player does.

    def moves_to(self, element: Element) -> None:
        expect(f"{element.name()} shows", element.has(SHOWING), True)
        self.moves_to_place(*self.launcher.area(element).centre())

    def moves_away(self) -> None:
        """To a corner of the display where nothing is."""
        self.moves_to_place(1, 1)

    def moves_to_place(self, x: int, y: int) -> None:
        self.stage.display.xdotool("mousemove", str(x), str(y))

    def moves_by(self, right: int, down: int) -> None:
        """In steps, as a hand does."""
        for step in range(STEPS):
            x, y = (part * (step + 1) // STEPS - part * step // STEPS for part in (right, down))
            self.stage.display.xdotool("mousemove_relative", "--", str(x), str(y))

    def holds_down(self) -> None:
        self.stage.display.xdotool("mousedown", "1")

    def lets_go(self) -> None:
        self.stage.display.xdotool("mouseup", "1")

    def clicks(self, element: Element) -> None:
        self.moves_to(element)
        self.stage.display.xdotool("click", "1")

    def clicks_button(self, name: str) -> None:
        self.clicks(self.sees("push button", name))

    def presses(self, *keys: str) -> None:
        self.stage.display.xdotool("key", "--clearmodifiers", *keys)

    def types(self, text: str) -> None:
        self.stage.display.xdotool("type", "--delay", "15", "--file", "-", typed=text)

    def types_secret(self, text: str) -> None:
        self.secrets.add(text)
        self.types(text)

    def fills_in(self, account: str, password: str) -> None:
        """Puts both into the login form, in place of what it held."""
        self._goes_into("Account")
        self.types(account)
        self.sees_in_field("Account", account)
        hidden = self._goes_into("Password")
        self.types_secret(password)
        expect("the password in its field", password in hidden.text(), False)

    def empties_form(self) -> None:
        self._goes_into("Account")
        self._goes_into("Password")

    def plays_without_typing(self) -> None:
        """Leaves it to the finger who logs in."""
        self.stage.game_run.forget()
        self.empties_form()
        self.clicks_button("Play")

    def logs_in(self, account: str, password: str) -> None:
        self.stage.game_run.forget()
        self.fills_in(account, password)
        self.clicks_button("Play")

    def _goes_into(self, name: str) -> Element:
        field = self.sees("text", name)
        self.clicks(field)
        self.has_focus_in(field)
        self.presses("ctrl+a", "BackSpace")
        until(f"an empty field {name}", lambda: not field.text())
        return field
