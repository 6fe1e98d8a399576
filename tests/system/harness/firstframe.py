"""The launcher's window without a screen, stopped at its first frame so that it can be looked at."""

from __future__ import annotations

import os
import signal
import subprocess
import time
from pathlib import Path
from typing import Callable, Mapping

from . import isolation, settings
from .player import Player

PROBE = Path(os.environ.get("QUELLMOOR_FIRST_FRAME",
                            settings.launcher().parents[1] / "bench" / "firstframe" /
                            "libquellmoor_first_frame.so"))
SECONDS = 60.0
PAUSE = 0.02


class FirstFrame:
    """One run of the program, with `more` in its environment; `close` ends it."""

    def __init__(self, window: Path, player: Player, more: Mapping[str, str] = {}) -> None:
        reading, writing = os.pipe()
        self._process = subprocess.Popen(
            [str(window)], pass_fds=[writing], preexec_fn=isolation.die_with_parent,
            env={**player.environment(), "QT_QPA_PLATFORM": "offscreen",
                 "QTWEBENGINE_DISABLE_SANDBOX": "1", "LD_PRELOAD": str(PROBE),
                 "FIRST_FRAME_FD": str(writing), "FIRST_FRAME_FOCUS": "accountIDField",
                 "FIRST_FRAME_STOP": "1", **more})
        os.close(writing)
        with open(reading, encoding="ascii") as told:
            # What the program says when the account field has the keyboard; nothing if it ended.
            self.told = told.readline() if comes_true(self._has_stopped) else ""

    def _has_stopped(self) -> bool:
        pid, how = os.waitpid(self._process.pid, os.WUNTRACED | os.WNOHANG)
        return pid != 0 and os.WIFSTOPPED(how)

    def loaded(self) -> str:
        return loaded_by(self._process.pid)

    def go_on(self) -> None:
        os.kill(self._process.pid, signal.SIGCONT)

    def close(self) -> None:
        self._process.kill()
        self._process.wait()


def loaded_by(pid: int) -> str:
    """The files that are in its memory."""
    return Path(f"/proc/{pid}/maps").read_text(encoding="utf-8", errors="replace")


def comes_true(look: Callable[[], bool]) -> bool:
    """Looks again and again until it is true; false when that takes too long."""
    deadline = time.monotonic() + SECONDS
    while not look():
        if time.monotonic() > deadline:
            return False
        time.sleep(PAUSE)
    return True
