#!/usr/bin/python3
"""A fingerprint reader without hardware: the real daemon on a system bus of its own.

    stand.py start --enrol alice   starts it and prints what to set for the launcher
    stand.py scan alice            puts a finger on the reader: alice matches, bob does not
    stand.py retry                 puts a finger on it that cannot be read
    stand.py stop                  ends it

or, all around one command:  stand.py run --enrol alice -- COMMAND ...
"""

from __future__ import annotations

import argparse
import os
import signal
import subprocess
import sys
from pathlib import Path

from virtualreader.reader import Reader
from virtualreader.services import Services

DEFAULT_FOLDER = Path(__file__).resolve().parents[2] / "build/fingerprint"
RETRIES = {"scan": 0, "swipe": 1, "centre": 2, "lift": 3}


def start(words: argparse.Namespace) -> int:
    services = Services(words.folder, outlive=True)
    services.stop()
    try:
        services.start()
        if words.enrol:
            Reader(services).enrol(words.enrol)
    except BaseException:
        services.stop()
        raise
    print(f"export DBUS_SYSTEM_BUS_ADDRESS={services.address}")
    return 0


def run(words: argparse.Namespace) -> int:
    services = Services(words.folder)
    services.stop()
    try:
        services.start()
        if words.enrol:
            Reader(services).enrol(words.enrol)
        # Interrupting is the command's affair; the stand ends after it.
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": services.address}
        return subprocess.run(words.command, env=environment, check=False).returncode
    finally:
        services.stop()


def stop(words: argparse.Namespace) -> int:
    Services(words.folder).stop()
    return 0


def act(words: argparse.Namespace) -> int:
    """What is done with the reader of a stand that runs."""
    reader = Reader(Services(words.folder))
    if words.action == "enrol":
        reader.enrol(words.name)
    elif words.action == "forget":
        reader.forget()
    elif words.action == "scan":
        reader.scan(words.name)
    elif words.action == "retry":
        reader.retry(RETRIES[words.kind])
    else:
        reader.unplug()
    return 0


def parser() -> argparse.ArgumentParser:
    words = argparse.ArgumentParser(description=__doc__,
                                    formatter_class=argparse.RawDescriptionHelpFormatter)
    words.add_argument("--folder", type=Path, default=DEFAULT_FOLDER,
                       help="where it keeps its sockets and fingers")
    actions = words.add_subparsers(dest="action", required=True)
    for name, function in (("start", start), ("run", run)):
        action = actions.add_parser(name)
        action.add_argument("--enrol", metavar="NAME", help="a finger to know from the start")
        action.set_defaults(function=function)
        if name == "run":
            action.add_argument("command", nargs="+")
    actions.add_parser("stop").set_defaults(function=stop)
    for name in ("enrol", "scan"):
        action = actions.add_parser(name)
        action.add_argument("name")
        action.set_defaults(function=act)
    action = actions.add_parser("retry")
    action.add_argument("kind", nargs="?", choices=sorted(RETRIES), default="swipe")
    action.set_defaults(function=act)
    for name in ("forget", "unplug"):
        actions.add_parser(name).set_defaults(function=act)
    return words


def main() -> int:
    words = parser().parse_args()
    try:
        return int(words.function(words))
    except (RuntimeError, TimeoutError, OSError) as error:
        print(f"stand: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
