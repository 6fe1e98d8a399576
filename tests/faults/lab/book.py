"""The record of the cases: what was done, what was seen, what was kept."""

from __future__ import annotations

import contextlib
import dataclasses
import json
import re
import sys
import time
from dataclasses import dataclass
from pathlib import Path
from typing import Iterator

# What differs from run to run and tells a reader nothing.
CHANGING = ((re.compile(r"^.*\[line \d+\]: "), ""),
            (re.compile(r"/tmp/[\w.-]+(/[\w.-]+)*?/(?=player|data)"), ".../"),
            (re.compile(r"error:[0-9A-F]{8}:SSL routines::"), ""), (re.compile(r"\s+"), " "))
LONGEST = 160
LONGEST_COMPLAINT = 600


class Complaint(Exception):
    """A case went otherwise than it must."""


class Crash(Complaint):
    """The launcher ended as no launcher should."""


class Hang(Complaint):
    """The launcher did not end, or went on no more."""


@dataclass
class Case:
    """One row of the report. `runs` is how often the launcher was started for it, `faults` how often
    something went wrong; `peak` is the most memory that it held and `bound` what it may hold, in
    megabytes, where measured. `questions` were asked of the window's thread, `late` of them waited
    too long, and `longest` is the longest wait in milliseconds.
    """

    area: str
    name: str
    saw: str = ""
    files: str = "kept"
    settings: str = "kept"
    after: str = ""
    runs: int = 0
    seconds: float = 0.0
    faults: int = 1
    peak: int = 0
    bound: int = 0
    questions: int = 0
    late: int = 0
    longest: int = 0
    complaint: str = ""
    kind: str = ""

    def sees(self, text: str) -> None:
        for pattern, plain in CHANGING:
            text = pattern.sub(plain, text)
        text = text.strip()
        self.saw = text if len(text) <= LONGEST else text[:LONGEST - 3] + "..."

    def expect(self, what: str, seen: object, expected: object) -> None:
        if seen != expected:
            raise Complaint(f"{what}: expected {expected!r}, saw {seen!r}")

    def expect_one_of(self, what: str, seen: object, expected: tuple[object, ...]) -> None:
        if seen not in expected:
            raise Complaint(f"{what}: expected one of {expected!r}, saw {seen!r}")


class Book:
    """All cases of a group, and facts of it that are no cases."""

    def __init__(self, is_short: bool, seed: int) -> None:
        self.is_short, self.seed = is_short, seed
        self.cases: list[Case] = []
        self.facts: dict[str, str] = {}

    @contextlib.contextmanager
    def case(self, area: str, name: str) -> Iterator[Case]:
        """A case. What it complains of is written down and does not end the others."""
        case = Case(area, name)
        started = time.monotonic()
        try:
            yield case
        except Exception as complaint:  # whatever it is, the other cases go on
            case.kind = type(complaint).__name__
            kind = "" if isinstance(complaint, Complaint) else f"{case.kind}: "
            case.complaint = f"{kind}{complaint}"[:LONGEST_COMPLAINT]
            print(f"  FAILED {area}: {name}: {case.complaint}", file=sys.stderr, flush=True)
        case.seconds = time.monotonic() - started
        self.cases.append(case)

    def write(self, path: Path) -> None:
        cases = [dataclasses.asdict(case) for case in self.cases]
        path.write_text(json.dumps({"cases": cases, "facts": self.facts}))


def read(path: Path) -> tuple[list[Case], dict[str, str]]:
    document = json.loads(path.read_text())
    return [Case(**entry) for entry in document["cases"]], document["facts"]
