"""The command line of the publisher."""

from __future__ import annotations

import argparse
import os
import signal
import sys
import threading
from contextlib import contextmanager
from typing import Iterator, Optional, Sequence

from .folder import Refused
from .packing import Stopped
from .run import Options, Summary, publish

MEGABYTE = 1048576

DESCRIPTION = """\
Makes TREE/mac/patcher.json and one TREE/mac/<file>.bz2 for each file of GAME_FOLDER.
Put TREE behind any static web server or copy it to an object store as it is. Run the
same command again after every change of the game: only what changed is compressed."""

EPILOG = """\
Patches named NAME_FROM_TO.patch.bz2 in TREE/mac/patches are listed for the files NAME.
TREE/.publish-state.json remembers the last run and may be deleted at any time.

exit codes: 0 published; 1 the folder or the tree was refused, nothing was changed;
2 wrong use; 3 reading or writing failed, run it again; 130 stopped by the operator."""


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Publishes as the command line says and returns the exit code."""
    options = _parse(arguments)
    terminal = sys.stderr.isatty()
    try:
        with _stopped_by_signals() as stop:
            summary = publish(options, _shown_progress if terminal else _no_progress, stop)
    except Refused as refusal:
        _complain(refusal.problems)
        return 1
    except OSError as error:
        _complain([str(error)])
        return 3
    except Stopped:
        _complain(["stopped; the published files are as they were"])
        return 130
    finally:
        if terminal:
            print(end="\r\033[K", file=sys.stderr)
    _report(summary)
    return 0


@contextmanager
def _stopped_by_signals() -> Iterator[threading.Event]:
    """Signals ask for an end instead of tearing one thread out of the work."""
    stop = threading.Event()
    wanted = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
    before = {number: signal.signal(number, lambda *_: stop.set()) for number in wanted}
    try:
        yield stop
    finally:
        for number, handler in before.items():
            signal.signal(number, handler)


def _parse(arguments: Optional[Sequence[str]]) -> Options:
    parser = argparse.ArgumentParser(
        prog="publish", description=DESCRIPTION, epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("game_folder", metavar="GAME_FOLDER",
                        help="the installed game, exactly as players shall have it")
    parser.add_argument("tree", metavar="TREE", help="the download tree, made when missing")
    parser.add_argument("--server-version", required=True, metavar="V",
                        help="the version that the launcher shows")
    parser.add_argument("--launcher-version", required=True, metavar="V",
                        help="the launcher version that players must have")
    parser.add_argument("--exec", required=True, metavar="NAME", dest="executable",
                        help="the game executable, as a path in GAME_FOLDER")
    parser.add_argument("--jobs", type=_count, default=os.cpu_count() or 1, metavar="N",
                        help="files compressed at a time (default: one a processor)")
    given = parser.parse_args(arguments)
    return Options(given.game_folder, given.tree, given.server_version,
                   given.launcher_version, given.executable, given.jobs)


def _count(text: str) -> int:
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("must be at least 1")
    return number


def _complain(lines: Sequence[str]) -> None:
    for line in lines:
        shown = line.encode("utf-8", "backslashreplace").decode("utf-8")
        print(f"publish: {shown}", file=sys.stderr)


def _no_progress(done: int, total: int) -> None:
    """Output that nobody watches stays free of progress."""


def _shown_progress(done: int, total: int) -> None:
    percent = 100 * done // total if total else 100
    print(f"\rcompressing {percent:3d} %, {done / MEGABYTE:.0f} of {total / MEGABYTE:.0f} MB",
          end="", file=sys.stderr, flush=True)


def _report(summary: Summary) -> None:
    for note in summary.notes:
        print(f"note: {note}")
    print(f"{summary.files} files, {summary.compressed} compressed, "
          f"{summary.removed} removed, {summary.bytes_read / MEGABYTE:.1f} MB to "
          f"{summary.bytes_written / MEGABYTE:.1f} MB, {summary.seconds:.1f} s")
