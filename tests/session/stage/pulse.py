"""Whether a window goes on answering."""

from __future__ import annotations

import threading
import time
from dataclasses import replace
from types import TracebackType
from typing import Optional

from harness import settings

from .accessibility import Bus, Element
from .waiting import PAUSE, NotSeen

# A window that waits for a service waits until that answers, or for the 25 seconds of a bus call.
LONGEST = 3.0 * settings.slowness()


class Pulse:
    """Asks a program for something that its window's thread answers, all through a `with` block,
    and raises NotSeen at its end when an answer took too long or none came.
    """

    def __init__(self, bus: Bus, pid: int) -> None:
        self._bus = bus
        self._pid = pid
        self._times: list[float] = []
        self._has_ended = threading.Event()
        self._thread: Optional[threading.Thread] = None

    def __enter__(self) -> Pulse:
        application = replace(self._bus.application_of(self._pid), bus=self._bus.another())
        self._thread = threading.Thread(target=self._feel, args=(application,))
        self._thread.start()
        return self

    def __exit__(self, kind: Optional[type[BaseException]], _error: Optional[BaseException],
                 _trace: Optional[TracebackType]) -> None:
        assert self._thread is not None
        self._has_ended.set()
        self._thread.join()
        longest = max(self._times, default=LONGEST)
        if kind is None and longest >= LONGEST:
            raise NotSeen(f"a window that answers all the time; once it took {longest:.1f} s")

    def _feel(self, application: Element) -> None:
        while not self._has_ended.wait(PAUSE):
            started = time.monotonic()
            answer = application.role()
            self._times.append(time.monotonic() - started if answer else LONGEST)
        application.bus.close()
