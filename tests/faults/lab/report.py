"""The page that tells what was seen in a whole run."""

from __future__ import annotations

from collections import Counter

from .book import Case

HEAD = """# What the launcher withstands

Written by `scripts/faults`, which runs the built launcher through every case below; do not edit.
`tests/faults/run --help` tells how to run some of them. A few of each kind run with all tests.

"""
METHOD = """
How it is done: each group of cases has a network namespace of its own. A TLS server on raw
sockets and a TCP proxy answer wrongly byte by byte; `strace` fails or kills the launcher at
single system calls; mounts, limits, another user and another clock change the machine. After
every case the game folder is compared byte for byte with what it was and what was published, and
the stored settings entry by entry; an exit by a signal, a hang, or anything left behind after the
next start fails the case. "Kept" are the files that were good before and the settings; what the
player saw is the status line of the window or the line of the log that tells.

The window is felt 50 times a second, all along: a question over the accessibility bus goes to the
thread that draws, which answers it between two events. What one of the processes on the way
waited for a processor is taken off, as it tells of the machine; what they waited for a disk, or
for a process that is not on the way, is not. The rows "answers all along" count the waits of more
than 100 ms, tell for how long the thread itself worked while a question waited, and fail at a wait
of 500 ms. That a picture reached the screen is not measured. As the cases run as root, their news
is the text page.
"""
BOUNDS = """
## Bounds of size and time

- Without a byte for 60 s an answer has failed: "The request timed out." A pause of the launcher's
  own does not count.
- Answers are taken up to these sizes, and fail beyond: a manifest 64 MB, a login reply 128 MB, an
  installer 1 GB, news as text 4 MB, a game file a quarter of the memory (512 MB at least) packed
  and half of it (1 GB at least) unpacked.
- While more than 256 MB of bodies wait to be written, the engine reads no further.
- `--update` gives up after three rounds in a row that healed nothing. The window goes on.
- News as text, which only players without OpenGL and root get, are laid out on the window's
  thread: a page of 100 KB can hold it for seconds. Tables nested deeper than eight are not shown.
- An invalid size of a chunk passes for the end of a body. Manifests, game files and login replies
  that end too early are noticed by what they are; an installer is not.
- What was written beside a file and never put in its place is removed with the next check of that
  file. It stays when no manifest names the file any more, as the file itself does.

What was sent, and the most memory that the whole launcher held meanwhile (a machine of 2 GB is one
whose system says so):

| area | what came | what the player saw | memory |
| --- | --- | --- | ---: |
"""
# What a row of the summary counts, by how the names of its cases begin.
PROOFS = (("kills, one at each system call on a game file, its folder and the settings",
           "SIGKILL at each "),
          ("kills at any moment of an update of fifty files", "SIGKILL at 200 "),
          ("failing calls, one by one and for good: full disk", "ENOSPC of "),
          ("the same: input/output error", "EIO of "),
          ("the same: permission denied", "EACCES of "),
          ("installations damaged at random, healed by one run each", "500 installations "),
          ("manifest keys that lead elsewhere, or look like it", "the key "),
          ("game folders laid out with links and pipes", "a game folder with "))


def written(cases: list[Case], facts: dict[str, str]) -> str:
    """The whole page in Markdown."""
    return (HEAD + _counts(cases) + _proofs(cases) + _facts(facts) + METHOD + BOUNDS
            + _peaks(cases) + _tables(cases))


def _counts(cases: list[Case]) -> str:
    failed = [case for case in cases if case.complaint]
    lost = sum(case.files.startswith(("LOST", "TORN")) for case in cases)
    settings = sum(case.settings.startswith(("LOST", "SET")) for case in cases)
    words = [f"**{len(cases)} cases** with {sum(case.faults for case in cases)} faults in "
             f"{sum(case.runs for case in cases)} runs of the launcher, "
             f"besides windows that take many cases in a row: {len(failed)} failed, good files "
             f"lost in {lost}, settings lost in {settings}.", ""]
    words += ["| area | cases | failed |", "| --- | ---: | ---: |"]
    failures = Counter(case.area for case in failed)
    for area, count in Counter(case.area for case in cases).items():
        words.append(f"| {area} | {count} | {failures[area]} |")
    return "\n".join(words) + "\n"


def _proofs(cases: list[Case]) -> str:
    lines = ["", "Among them:", "", "| what | cases | faults | failed |",
             "| --- | ---: | ---: | ---: |"]
    for what, beginning in PROOFS:
        found = [case for case in cases if case.name.startswith(beginning)]
        if found:
            lines.append(f"| {what} | {len(found)} | {sum(case.faults for case in found)} "
                         f"| {sum(bool(case.complaint) for case in found)} |")
    return "\n".join(lines) + "\n"


def _facts(facts: dict[str, str]) -> str:
    """What failures that never end cost: the launcher asks again without a pause."""
    if not facts:
        return ""
    lines = [f"- {name}: {value}" for name, value in facts.items()]
    return ("\nFailures that never end, as many rounds as an hour has with a host that takes a tenth "
            "of a\nsecond to answer; here it answers at once:\n\n" + "\n".join(lines) + "\n")


def _peaks(cases: list[Case]) -> str:
    lines = [f"| {case.area} | {_cell(case.name.partition(': ')[2])} "
             f"| {_cell(case.complaint or case.saw)} | {case.peak} MB |"
             for case in cases if case.peak]
    return "\n".join(lines) + "\n"


def _tables(cases: list[Case]) -> str:
    lines = ["", "## All cases", "",
             "| area | case | faults | what the player saw | good files | settings | afterwards |",
             "| --- | --- | ---: | --- | --- | --- | --- |"]
    areas = list(dict.fromkeys(case.area for case in cases))
    for case in sorted(cases, key=lambda case: areas.index(case.area)):
        saw = f"**FAILED** {case.complaint}" if case.complaint else case.saw
        cells = (case.area, case.name, str(case.faults), saw, case.files, case.settings,
                 case.after)
        lines.append("| " + " | ".join(_cell(text) for text in cells) + " |")
    return "\n".join(lines) + "\n"


def _cell(text: str) -> str:
    """Text that stays in its cell; letters that cannot be printed are escaped."""
    plain = "".join(letter if letter.isprintable() else repr(letter)[1:-1] for letter in text)
    for sign in "\\|*_<>`[]":
        plain = plain.replace(sign, "\\" + sign)
    return plain
