"""The news page through faults: whatever comes, the window goes on and shows the next page."""

from __future__ import annotations

from pathlib import Path

from lab.book import Book, Case
from lab.ground import Ground
from lab.reply import Reply
from lab.window import Window
from tables import transport
from tables.news import PAGES
from tables.transport import Effect, Row

from .windows import NEWS, Desk

STRIDE, SHORT_STRIDE = 2, 20
REDIRECTS = ("302", "307", "308")
MOST_REDIRECTS = 10


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    ground.fresh()
    desk = Desk(ground)
    window = Window(folder, ground.player)
    # Only a launcher that started without a network waits for its return.
    window.network.tell(False)
    window.start()
    window.waits_for("the first news", lambda: shows(window) == desk.news())
    rows = transport.QUICK[::SHORT_STRIDE] if book.is_short else transport.some(STRIDE)
    for row in rows:
        with book.case("news", row.name) as case:
            faulty(ground, window, desk, case, row)
    for name, body in PAGES[::5 if book.is_short else 1]:
        with book.case("news", name) as case:
            odd(ground, window, desk, case, body)
    with book.case("news", "a page that leads to itself") as case:
        leads_to_itself(ground, window, desk, case)
    window.writes_pulse(book, "news")
    window.close()
    ground.stop()


def shows(window: Window) -> str:
    return window.reads("label", "News").strip()


def load(ground: Ground, window: Window) -> None:
    """A network that went and comes back is what fetches the news anew."""
    ground.wire.drop()
    window.network.tell(False)
    window.network.tell(True)


def begin(ground: Ground, window: Window, desk: Desk) -> str:
    """The newest page shows, also after a case that failed."""
    ground.wire.heal()
    if shows(window) != desk.news():
        load(ground, window)
        window.waits_for("the news of before", lambda: shows(window) == desk.news())
    return desk.news()


def faulty(ground: Ground, window: Window, desk: Desk, case: Case, row: Row) -> None:
    before = begin(ground, window, desk)
    for path, place in transport.PLACES.items():
        ground.wire.fail(path, place)
    ground.wire.fail(NEWS, row.fault)
    load(ground, window)
    # A page that leads elsewhere stays, and the browser is asked to go there.
    leads_elsewhere = isinstance(row.fault, Reply) and row.fault.status[:3] in REDIRECTS
    window.waits_for("another page, or none", lambda: shows(window) != before or
                     leads_elsewhere and NEWS in ground.wire.asked_for())
    # The page undoes content codings, as browsers do, so what is said wrongly shows nothing.
    if row in transport.ORIGINS:
        case.expect("pages of another origin", ground.wire.asked_elsewhere(), [])
    elif row.effect in (Effect.WHOLE, Effect.STATUS) and row not in transport.CODINGS:
        window.waits_for("the newest page", lambda: shows(window) == desk.news())
    finish(ground, window, desk, case)


def odd(ground: Ground, window: Window, desk: Desk, case: Case, body: bytes) -> None:
    before = begin(ground, window, desk)
    ground.wire.fail(NEWS, Reply(body=body))
    load(ground, window)
    window.waits_for("another page, or none", lambda: shows(window) != before)
    finish(ground, window, desk, case)


def leads_to_itself(ground: Ground, window: Window, desk: Desk, case: Case) -> None:
    """Ten redirects are followed; then there is no page, and nobody asks any more."""
    begin(ground, window, desk)
    before = ground.wire.count(NEWS)
    ground.wire.fail(NEWS, Reply(status="302 Found", body=b"", headers=(f"Location: {NEWS}",)))
    load(ground, window)
    window.waits_for("no page", lambda: not shows(window))
    case.expect("questions for one page", ground.wire.count(NEWS) - before, 1 + MOST_REDIRECTS)
    finish(ground, window, desk, case)


def finish(ground: Ground, window: Window, desk: Desk, case: Case) -> None:
    text = shows(window)
    ground.keeps(case)
    ground.wire.heal()
    load(ground, window)
    window.waits_for("the next news", lambda: shows(window) == desk.news() != text)
    case.sees(f"\"{text}\"" if text.isprintable() and text else
              "letters that are none" if text else "no text")
    case.after = "the same window shows the next page"
