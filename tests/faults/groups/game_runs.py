"""The game process: however it ends, the window comes back and goes on."""

from __future__ import annotations

import json
from pathlib import Path

from harness import games, snapshot
from lab.book import Book, Case
from lab.ground import Ground
from lab.reply import Reply
from lab.window import FIRST_STATUS, Window
from lab.wire import MANIFEST
from tables import game_runs

from .windows import LOGIN

IN_PLAY = json.dumps({"status": 7, "token": "cookie", "gameserver": "moor.localhost:1",
                      "message": "Welcome"}).encode()
SHORT = 6


def run(book: Book, folder: Path) -> None:
    ground = Ground(folder, {games.EXECUTABLE: b'#!/bin/sh\n. "$GAME"\n'})
    ground.fresh()
    ground.wire.pages[LOGIN] = lambda _request: IN_PLAY
    mark = folder / "the game ran"
    window = Window(folder, ground.player, {"MARK": str(mark), "GAME": str(folder / "script")})
    window.start()
    for name, script in game_runs.SCRIPTS[::SHORT if book.is_short else 1]:
        with book.case("game process", name) as case:
            (folder / "script").write_text(script)
            play(ground, window, case, mark)
            case.expect("a game that ran", mark.exists(), True)
            case.sees(f"the game ran; then \"{window.status()}\" and the login form")
            heals(ground, window, case, folder, mark)
    for name, executable in game_runs.EXECUTABLES[::SHORT if book.is_short else 1]:
        with book.case("game process", name) as case:
            document = json.loads((ground.tree / "mac" / "patcher.json").read_bytes())
            document["exec"] = executable
            ground.wire.fail(MANIFEST, Reply(body=json.dumps(document).encode()))
            play(ground, window, case, mark)
            case.expect("a game that ran", mark.exists(), False)
            case.sees(f"no game; \"{window.status()}\" and the login form")
            heals(ground, window, case, folder, mark)
    window.writes_pulse(book, "game process")
    window.close()
    ground.stop()


def play(ground: Ground, window: Window, case: Case, mark: Path) -> None:
    """From a login through an update and the game back to the form."""
    mark.unlink(missing_ok=True)
    before = ground.wire.asked_for().count(MANIFEST)
    window.logs_in()
    # The second manifest is that of the way back.
    window.waits_for("the way back", lambda: ground.wire.asked_for().count(MANIFEST) >= before + 2
                     and window.status() == FIRST_STATUS and window.can_play())


def heals(ground: Ground, window: Window, case: Case, folder: Path, mark: Path) -> None:
    """The next game runs, in a folder that is as it was published."""
    ground.wire.heal()
    (folder / "script").write_text(": >$MARK")
    play(ground, window, case, mark)
    case.expect("the next game", mark.exists(), True)
    now = snapshot.contents(ground.player.game)
    wrong = {name for name in ground.right if now.get(name) != ground.right[name]}
    case.expect("wrong files", wrong, set())
    ground.keeps_settings(case, may_date_anew=True)
    case.after = "the same window starts the next game"
