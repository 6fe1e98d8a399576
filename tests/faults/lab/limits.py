"""The chapter on what is taken from outside at most, and the tests that hold each bound."""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[3]
LIMITS = "tests/platform/tst_HttpLimits.cpp"
BODIES = f"{LIMITS} failsBeyondTheLimitAndHandsNothingMoreOn"


@dataclass(frozen=True)
class Bound:
    """`tests` are a file and a name in it each; `case` begins the name of cases of this page."""

    what: str
    most: str
    tests: tuple[str, ...] = ()
    case: str = ""


BOUNDS = (
    Bound("a manifest", "64 MB", (BODIES,), "a right one of 64 MB; one of 200 MB; one without end"),
    Bound("a login reply", "128 MB", (BODIES, f"{LIMITS} endsABodyWithoutEnd"),
          "one of 1 GB; one without end"),
    Bound("an installer", "1 GB", (BODIES,), "one without end"),
    Bound("news as text", "4 MB, of which some 20,000 letters are shown",
          ("tests/ui/tst_NewsText.cpp isShortWhateverCame",), "a page without end"),
    Bound("a game file, packed", "a quarter of the memory, 512 MB at least",
          (BODIES, f"{LIMITS} failsWhenThereIsNoMemoryForTheBody"),
          "one of 1 GB packed, with 2 GB of memory; one without end, with 2 GB of memory"),
    Bound("a game file, unpacked",
          "half of the memory, 1 GB at least, for one file at a time; beside it files of at most "
          "256 MB, as many as there are processors",
          ("tests/patcher/tst_Bzip2Damage.cpp limitsContentsByTheMemory",
           "tests/patcher/tst_Bzip2Damage.cpp refusesContentsBeyondTheLimit",
           "tests/patcher/tst_Bzip2.cpp refusesWhatDoesNotFitInMemory",
           "tests/patcher/tst_LargeContentsTurn.cpp isTakenForLargeContentsUntilTheyAreWritten"),
          "722 bytes that stand for 1 GB; three of 722 bytes that stand for 1 GB each, at once; "
          "850 bytes that stand for 1.2 GB, with 2 GB of memory"),
    Bound("bodies that wait to be written", "256 MB, then the engine reads no further",
          ("tests/patcher/tst_FlowControl.cpp pausesTheDownloadWhileMoreThanTheLimitWaits",)),
    Bound("memory reserved because a head promises a size", "64 MB",
          ("tests/patcher/tst_BodyMemory.cpp reservesLittleOfWhatIsPromised",)),
    Bound("time without a byte", "60 s; a pause of the launcher's own does not count",
          ("tests/platform/tst_HttpConnection.cpp timesOutWhenNothingArrives",)),
    Bound("what comes before a body or a chunk of it: status line, headers, the line with the "
          "chunk's size",
          "no size, for Qt gathers it and does not tell; but 60 s, since none of it counts as a "
          "byte",
          (f"{LIMITS} endsWhatComesBeforeABodyAndNeverEnds",)),
    Bound("redirects of one answer",
          "ten; of a news page on the web engine as many as that follows",
          ("tests/platform/tst_HttpTrust.cpp givesUpOnACircleOfRedirects",)),
    Bound("rounds of `--update` that heal nothing", "three in a row; the window goes on",
          ("tests/system/test_file_faults.py test_an_update_gives_up_on_a_file_that_never_comes_"
           "right",)),
    Bound("the log", "five files of 1 MB",
          ("tests/platform/tst_RotatingFile.cpp setsAFullFileAsideAndDropsTheOldest",
           "tests/platform/tst_RotatingFile.cpp neverGrowsBeyondItsLimit")),
)

REST = """
Beyond a bound an answer has failed, as if the connection had been lost.

- News as text, which only root and a launcher without its web plugin get, are laid out on the
  window's thread, flat and without tables and styles; only the first 20,000 letters are shown.
- An invalid size of a chunk passes for the end of a body. Manifests, game files and login replies
  that end too early are noticed by what they are; an installer is not.
- What was written beside a file and never put in its place is removed with the next check of that
  file. It stays when no manifest names the file any more, as the file itself does.
"""


def chapter(cases: list[str]) -> str:
    """In Markdown; raises when a test of those names is not there."""
    lines = ["", "## Bounds of size and time", "", "| what | at most | held by |",
             "| --- | --- | --- |"]
    for bound in BOUNDS:
        held = [_test(*test.split()) for test in bound.tests]
        held += [_case(name, cases) for name in bound.case.split("; ") if name]
        lines.append(f"| {bound.what} | {bound.most} | {', '.join(held)} |")
    return "\n".join(lines) + "\n" + REST


def _test(file: str, name: str) -> str:
    if not re.search(rf"\b{name}\(", (REPOSITORY / file).read_text()):
        raise LookupError(f"{file} has no {name}")
    return f"`{file}` `{name}`"


def _case(name: str, cases: list[str]) -> str:
    return f'"{name}"' if f"too much: {name}" in cases else f'"{name}" (not in this run)'
