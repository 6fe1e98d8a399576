"""What every section works with."""

from __future__ import annotations

import os
import statistics
import subprocess
import time
from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable, Mapping, Optional, Sequence

Command = Sequence[str | Path]


@dataclass(frozen=True)
class Bench:
    """Where things are, and how much to measure."""

    build: Path
    data: Path
    authority: Path
    quick: bool
    rounds: int

    @property
    def launcher(self) -> Path:
        return self.build / "app" / "quellmoor-launcher"

    @property
    def window(self) -> Path:
        return self.launcher.with_name("quellmoor-launcher-window")

    @property
    def sample_game(self) -> Path:
        return self.build / "tools" / "sample-game" / "quellmoor-sample-game"

    @property
    def micro(self) -> Path:
        return self.build / "bench" / "micro" / "quellmoor-microbench"

    @property
    def relay(self) -> Path:
        return self.build / "bench" / "relay" / "quellmoor-relay"

    def fewer(self, most: int) -> int:
        """The rounds of what takes too long for all of them."""
        return min(self.rounds, most)

    def sized(self, full: int, quick: int) -> int:
        return quick if self.quick else full


@dataclass(frozen=True)
class Contestant:
    """A tool at one task. `prepare` is not measured. It takes part in the first `rounds` only, when
    more would take too long.
    """

    name: str
    run: Callable[[], None]
    prepare: Callable[[], None] = lambda: None
    rounds: Optional[int] = None


@dataclass
class Times:
    """Seconds by the contestants' names, a value a round."""

    values: dict[str, list[float]] = field(default_factory=dict)

    def add(self, name: str, seconds: float) -> None:
        self.values.setdefault(name, []).append(seconds)

    def median(self, name: str) -> float:
        return statistics.median(self.values[name])

    def rounds(self) -> str:
        """How often each was measured, in words."""
        counts = {name: len(values) for name, values in self.values.items()}
        most = max(counts.values())
        fewer = "".join(f"; {name}: of {count}" for name, count in counts.items() if count < most)
        return f"Median of {most}{fewer}."

    def ratio(self, name: str, other: str) -> float:
        """How many times longer `name` takes than `other`."""
        return self.median(name) / self.median(other)


def compete(contestants: Sequence[Contestant], rounds: int, times: Optional[Times] = None) -> Times:
    """Each runs once a round; every second round in the opposite order."""
    times = times or Times()
    for number in range(rounds):
        present = [one for one in contestants if one.rounds is None or number < one.rounds]
        for contestant in present if number % 2 == 0 else reversed(present):
            contestant.prepare()
            os.sync()
            started = time.perf_counter()
            contestant.run()
            times.add(contestant.name, time.perf_counter() - started)
    return times


def command(words: Command, *, environment: Optional[Mapping[str, str]] = None,
            folder: Optional[Path] = None) -> None:
    """Runs it silently; what it says is shown only when it fails."""
    done = subprocess.run(words, env=environment, cwd=folder, stdin=subprocess.DEVNULL,
                          capture_output=True, check=False)
    _require_success(words, done.returncode, done.stderr)


def to_nowhere(words: Command) -> None:
    """Runs it with its output thrown away unread."""
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, check=False)
    _require_success(words, done.returncode, done.stderr)


def shell(script: str, folder: Optional[Path] = None) -> None:
    command(("bash", "-euo", "pipefail", "-c", script), folder=folder)


def _require_success(words: Command, code: int, said: bytes) -> None:
    if code != 0:
        raise RuntimeError(f"{' '.join(map(str, words))[:500]} ended with {code}: "
                           f"{said[-2000:].decode(errors='replace')}")
