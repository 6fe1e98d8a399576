"""The launcher's own update, whose installer goes wrong on its way."""

from __future__ import annotations

import json
from pathlib import Path
from typing import Sequence

from lab.book import Book, Case
from lab.ground import Ground
from lab.reply import Reply
from lab.window import Window, press
from lab.wire import MANIFEST
from tables import installers, transport
from tables.transport import Effect, Row

VERSION = "9.9.9"
INSTALLER = f"VARNO_darwin_setup_{VERSION}.dmg"
PATH = f"/{INSTALLER}"
IMAGE = bytes(range(256)) * 40
PAGE = "https://www.localhost:8443/play/?update=1"
MOUNTER, BROWSER = "gnome-disk-image-mounter", "xdg-open"
STRIDE, SHORT_STRIDE = 3, 30


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder)
    ground.wire.pages[PATH] = lambda _request: IMAGE
    ground.fresh()
    window = Window(folder, ground.player)
    rows = transport.QUICK[::SHORT_STRIDE] if book.is_short else transport.some(STRIDE)
    for row in rows:
        with book.case("installer", row.name) as case:
            installer(ground, window, case, row)
    for name, version in installers.VERSIONS[::5 if book.is_short else 1]:
        with book.case("installer", name) as case:
            odd_version(ground, window, case, version)
    window.writes_pulse(book, "installers")
    window.close()
    ground.stop()


def installer(ground: Ground, window: Window, case: Case, row: Row) -> None:
    begin(ground, window, VERSION)
    for path, place in transport.PLACES.items():
        ground.wire.fail(path, place)
    ground.wire.fail(PATH, row.fault)
    ground.wire.drop()
    confirm(window, case)
    file = ground.player.data / INSTALLER
    handed, page = window.desktop.handed_to(MOUNTER), window.desktop.handed_to(BROWSER)
    if row.effect is Effect.NOTHING:
        case.expect("pages opened", page, [PAGE])
        # The mounter is asked in any case, and finds nothing.
        case.expect("an installer", file.exists(), False)
        case.sees("the download page in the browser, and the launcher's end")
    else:
        case.expect("pages opened", page, [])
        case.expect("images handed on", handed, [str(file)])
        is_right = file.read_bytes() == IMAGE
        case.expect("a right image", is_right, row.effect is not Effect.OTHER)
        case.sees("the image handed on, and the launcher's end" if is_right else
                  "what came handed on as an image, and the launcher's end")
    finish(ground, window, case)


def odd_version(ground: Ground, window: Window, case: Case, version: str) -> None:
    begin(ground, window, version)
    confirm(window, case)
    case.expect("pages opened", window.desktop.handed_to(BROWSER), [PAGE])
    case.sees("the download page in the browser, and the launcher's end")
    finish(ground, window, case)


def begin(ground: Ground, window: Window, version: str, wrapper: Sequence[str] = ()) -> None:
    """A launcher that asks whether it may be updated."""
    ground.fresh()
    window.desktop.forget()
    document = json.loads((ground.tree / "mac" / "patcher.json").read_bytes())
    document["mac-launcher-version"] = version
    ground.wire.fail(MANIFEST, Reply(body=json.dumps(document).encode()))
    window.start(has_form=False, wrapper=wrapper)


def confirm(window: Window, case: Case, code: int = 0) -> None:
    case.runs += 1
    press(window.sees("push button", "Update"))
    case.expect("exit code", window.ended(), code)


def finish(ground: Ground, window: Window, case: Case) -> None:
    """Files and settings are as they were, and the next start takes away what lies there."""
    ground.keeps(case)
    outside = [path.name for path in ground.player.root.parent.glob("*.dmg")]
    case.expect("installers elsewhere", outside, [])
    (ground.player.data / INSTALLER).unlink(missing_ok=True)
    ground.recovers(case, "the game is healed by the next run")
