"""The page that tells what was seen in a whole run."""

from __future__ import annotations

from collections import Counter

from . import limits
from .book import Case

HEAD = """# What the launcher withstands

Written by `scripts/faults`, which runs the built launcher through every case below; do not edit.
`tests/faults/run --help` tells how to run some of them. A few of each kind run with all tests.

"""
METHOD = """
## How it is done

Each group of cases has a network namespace of its own. A TLS server on raw sockets and a TCP proxy
answer wrongly byte by byte; `strace` fails or kills the launcher at single system calls; mounts,
limits, another user and another clock change the machine. After every case the game folder is
compared byte for byte with what it was and what was published, and the stored settings entry by
entry; an exit by a signal, a hang, or anything left behind after the next start fails the case.
Settings that were damaged on purpose begin anew, the damaged ones are set aside: there "kept" means
that. The kills at any moment, the installations damaged at random and the folders laid out with
links ask for the settings of the player, not for what the launcher notes of files that have changed.
"Kept" are the files that were good before and the settings; what the player saw is the status line
of the window or the line of the log that tells.

The window is felt 50 times a second, from the moment it is on the accessibility bus to its end: a
question over that bus goes to the thread that draws, which answers it between two events. What the
one thread on the way that waited longest waited for a processor is taken off, as it tells of the
machine; what the others waited, which may have been at the same time, is not, nor what they waited
for a disk or for a process that is not on the way. No answer for 30 s is a wait of 30 s. A wait of
more than 100 ms fails the run; 500 ms when a few cases run with all other tests, on a machine that
does much else.

## What is left out

- The fingerprint: its daemon's faults have tests of their own (`tests/fingerprint`,
  `tests/session/test_fingerprint_login.py`).
- The page that the web engine shows. The cases run as root, whose news is the text page; the web
  page's faults have tests of their own (`tests/web`, `tests/session/test_hostile_news.py`).
- macOS: the harness needs Linux for its namespaces, for `strace` and for the accessibility bus.
- What the kernel promises: a loss of power, a file system that lies about what it wrote, memory
  that the kernel takes back by ending the launcher. That is a kill like the others to the launcher.
- A picture that reaches the screen: the pulse tells that the thread could have drawn one.
- A real hour. A host that answers at once is asked as often as a slow one is in an hour.
- Another user: the harness runs as root, which such a case takes; there is one, and without root
  it fails.
- A manifest that gives no data after a login: the window says "Checking for updates..." and asks
  no more, as it is meant to, until it is started anew or, when it started without a network, the
  network returns. Before the login the next login asks again.
"""
PEAKS = """
What was sent, and the most memory that the whole launcher held meanwhile beside the most that the
case allows it (a machine of 2 GB is one whose system says so):

| area | what came | what the player saw | memory | allowed |
| --- | --- | --- | ---: | ---: |
"""
# How a case went on, by the words of its row.
RECOVERIES = (
    ("recovered without a restart: the same run or the same window",
     ("healed in the same run", "healed by the same run", "the same window goes on",
      "the same window shows the next page", "the same window starts the next game",
      "without a restart, once the failure ends")),
    ("recovered by the next run, as the run ends with its fault: `--update`, a kill, an own update",
     ("healed by the next run", "finished by the next run", "by the next save", "taken away by the next start",
      "the prepared file is gone", "the game is healed by the next run")),
    ("nothing to recover from",
     ("nothing to heal", "not needed", "the file of that very name is there")),
    ("a link in the game folder that the player has to remove", ("healed by the next run, once the link is gone",)))
# What a row of the summary counts, by how the names of its cases begin.
PROOFS = (("kills, one at each system call on game files, their folders, the settings, the lock and "
           "an installer", ("SIGKILL at each ", "SIGKILL at the first ")),
          ("kills at any moment of an update of fifty files", "SIGKILL at 200 "),
          ("failing calls, one by one and for good: full disk", "ENOSPC of "),
          ("the same: input/output error", "EIO of "),
          ("the same: permission denied", "EACCES of "),
          ("installations damaged at random, healed by one run each", "500 installations "),
          ("manifest keys that lead elsewhere, or look like it", "the key "),
          ("game folders laid out with links and pipes", "a game folder with "))


def written(cases: list[Case], facts: dict[str, str]) -> str:
    """The whole page in Markdown."""
    return (HEAD + _summary(cases) + _areas(cases) + _proofs(cases)
            + _facts(facts) + METHOD + _bounds(cases) + _tables(cases))


def _summary(cases: list[Case]) -> str:
    kinds = Counter(case.kind for case in cases)
    longest = max((case.longest for case in cases), default=0)
    after = Counter(_how(case.after) for case in cases if case.after)
    rows = (("cases", f"**{len(cases)}**"),
            ("faults in them", f"{sum(case.faults for case in cases):,}"),
            ("starts of the launcher for one case alone", f"{sum(case.runs for case in cases):,}"),
            ("failed cases", f"**{sum(bool(case.complaint) for case in cases)}**"),
            ("cases that lost or tore a good file",
             f"**{sum(case.files.startswith(('LOST', 'TORN')) for case in cases)}**"),
            ("cases that lost settings",
             f"**{sum(case.settings.startswith(('LOST', 'SET')) for case in cases)}**"),
            ("crashes", f"**{kinds['Crash']}**"), ("launchers or windows that hung", f"**{kinds['Hang']}**"),
            ("the window let wait for more than 100 ms",
             f"**{sum(case.late for case in cases)}** of "
             f"{sum(case.questions for case in cases):,} questions; the longest {longest} ms"),
            *((how, str(after[how])) for how, _ in RECOVERIES))
    lines = [f"| {what} | {figure} |" for what, figure in rows]
    return "\n".join(["| | |", "| --- | ---: |", *lines]) + "\n"


def _how(after: str) -> str:
    """Which kind of recovery it is."""
    for how, words in RECOVERIES:
        if after in words:
            return how
    raise LookupError(f'"{after}" is no known end of a case')


def _areas(cases: list[Case]) -> str:
    words = ["", "| area | cases | failed |", "| --- | ---: | ---: |"]
    failures = Counter(case.area for case in cases if case.complaint)
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


def _bounds(cases: list[Case]) -> str:
    """The bounds, and what the launcher held when it was sent more; a part of a run has no table."""
    measured = [case for case in cases if case.peak]
    if not measured:
        return ""
    lines = [limits.chapter([case.name for case in measured]), PEAKS.strip()]
    lines += [f"| {case.area} | {_cell(case.name.partition(': ')[2])} "
              f"| {_cell(case.complaint or case.saw)} | {case.peak} MB | {case.bound} MB |"
              for case in measured]
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
