"""The window through faults of the login, one launcher for all of them."""

from __future__ import annotations

import json
from pathlib import Path

from lab.book import Book, Case
from lab.ground import Ground
from lab.reply import Reply
from lab.window import Window
from lab.wire import Request
from tables import logins, transport
from tables.transport import Effect, Row

LOGIN, NEWS = "/login/", "/launcher/"
NO_CONNECTION = "900: Couldn't connect to the account server."
CONTACTING = "Contacting account server..."
SHORT_STRIDE = 16


class Desk:
    """The account host's answers, each with a number, so that none is taken for another."""

    def __init__(self, ground: Ground) -> None:
        self._wire = ground.wire
        self._refusals = self._news_pages = 0
        ground.wire.pages[LOGIN] = self._refuse
        ground.wire.pages[NEWS] = self._news

    def refusal(self) -> str:
        """What the status line says about the newest answer."""
        return f"504: Refused {self._refusals}."

    def news(self) -> str:
        return f"News {self._news_pages}"

    def _refuse(self, _request: Request) -> bytes:
        self._refusals += 1
        return json.dumps({"status": 4, "message": f"Refused {self._refusals}."}).encode()

    def _news(self, _request: Request) -> bytes:
        self._news_pages += 1
        return f"<html><body><p>News {self._news_pages}</p></body></html>".encode()


def run_logins(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    ground.fresh()
    desk = Desk(ground)
    window = Window(folder, ground.player)
    window.start()
    stride = SHORT_STRIDE if book.is_short else 1
    for row in transport.QUICK[::stride]:
        with book.case("login", row.name) as case:
            login(ground, window, desk, case, row)
    for name, body, status in logins.REPLIES[::stride]:
        with book.case("login", name) as case:
            reply(ground, window, desk, case, body, status)
    window.writes_pulse(book, "logins")
    window.close()
    ground.stop()


def login(ground: Ground, window: Window, desk: Desk, case: Case, row: Row) -> None:
    for path, place in transport.PLACES.items():
        ground.wire.fail(path, place)
    ground.wire.fail(LOGIN, row.fault)
    ground.wire.drop()
    window.logs_in()
    wanted = {Effect.NOTHING: lambda: NO_CONNECTION, Effect.OTHER: lambda: CONTACTING,
              Effect.WHOLE: desk.refusal, Effect.STATUS: desk.refusal}[row.at_login or row.effect]
    window.waits_for(f"an answer like {wanted()!r}",
                     lambda: window.can_play() and window.status() == wanted())
    case.expect("logins at another origin", ground.wire.asked_elsewhere(), [])
    finish(ground, window, desk, case)


def reply(ground: Ground, window: Window, desk: Desk, case: Case, body: bytes,
          status: str) -> None:
    """A whole answer with an odd content."""
    ground.wire.fail(LOGIN, Reply(body=body))
    window.logs_in()
    window.waits_for(f"the status {status!r}",
                     lambda: window.can_play() and window.status() == status)
    finish(ground, window, desk, case)


def finish(ground: Ground, window: Window, desk: Desk, case: Case) -> None:
    """Nothing was lost, and the same window logs in as if nothing had been."""
    case.sees(window.status())
    ground.keeps(case)
    before = window.status()
    ground.wire.heal()
    ground.wire.drop()
    window.logs_in()
    window.waits_for("the next answer", lambda: window.can_play() and window.status() != before
                     and window.status() == desk.refusal())
    case.after = "the same window goes on"
