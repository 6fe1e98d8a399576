"""The command line of the local hosts."""

from __future__ import annotations

import argparse
import errno
import fcntl
import os
import signal
import sys
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator, Optional, Sequence

from . import authority
from .accounts import DEFAULT_ACCOUNTS, AccountsError, Sessions, load_accounts
from .control import Control
from .downloads import Downloads
from .faults import FaultBook
from .journal import Journal
from .login import Login
from .names import (ACCOUNT, CONTROL, DEFAULT_ENVIRONMENTS, DOWNLOAD, FORUM, WIKI, WWW,
                    all_hosts, download_host, is_environment)
from .server import LocalHosts, tls_context
from .site import Site

REPOSITORY = Path(__file__).resolve().parents[2]
DESCRIPTION = """\
Serves the launcher's download, account, web, forum and wiki hosts as *.localhost on one
port, with a certificate authority of their own, and a control host to look at what was
asked and to make answers go wrong."""
EPILOG = """\
exit codes: 0 ended by SIGTERM or SIGINT; 1 a file cannot be used; 2 wrong use, the port
or the state folder is in use."""


class CannotStart(Exception):
    """The hosts cannot be served; holds the exit code and a text."""

    def __init__(self, code: int, text: str) -> None:
        super().__init__(text)
        self.code = code


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Serves until a signal comes and returns the exit code."""
    given = _parser().parse_args(arguments)
    ending = {signal.SIGTERM, signal.SIGINT, signal.SIGHUP}
    # Blocked before any thread starts, so that none but the waiting one gets them.
    signal.pthread_sigmask(signal.SIG_BLOCK, ending)
    try:
        with _state_folder(given.state) as state:
            _run(given, state, ending)
    except CannotStart as problem:
        print(f"localhosts: {problem}", file=sys.stderr)
        return problem.code
    except (AccountsError, OSError) as error:
        print(f"localhosts: {error}", file=sys.stderr)
        return 1
    return 0


def _run(given: argparse.Namespace, state: Path, ending: set[signal.Signals]) -> None:
    trees = dict(given.tree_for)
    environments = list(dict.fromkeys([*(given.environment or DEFAULT_ENVIRONMENTS), *trees]))
    files = authority.ensure(state, all_hosts(environments))
    if given.prepare_only:
        print(f"certificate authority: {files.authority}")
        return
    sessions, faults = Sessions(state / "sessions.json"), FaultBook()
    journal = Journal(state / "requests.log")
    site = Site(Downloads(given.tree, trees, given.installers),
                Login(load_accounts(given.accounts), sessions),
                Control(journal, faults, sessions), journal, faults)
    hosts = _bind(given.port, given.also_on, files, site)
    hosts.start()
    if not given.quiet:
        _introduce(hosts.port, environments, files, given.accounts)
    print(f"ready on {hosts.port}", flush=True)
    if given.ready_file:
        _write_whole(given.ready_file, f"{hosts.port}\n")
    signal.sigwait(ending)
    hosts.stop()
    journal.close()


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="localhosts", description=DESCRIPTION, epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--port", type=_port, default=8443, metavar="N",
                        help="the port of all hosts, 0 for any free one (default: 8443)")
    parser.add_argument("--also-on", action="append", default=[], metavar="ADDRESS",
                        help="an IPv4 address to serve besides the loopback's")
    parser.add_argument("--state", type=Path, default=REPOSITORY / "build" / "localhosts",
                        metavar="DIR", help="certificates, log and sessions "
                        "(default: build/localhosts)")
    parser.add_argument("--tree", type=Path, metavar="DIR",
                        help=f"the download tree of {DOWNLOAD}")
    parser.add_argument("--tree-for", type=_tree_for, action="append", default=[],
                        metavar="ENV=DIR", help="the download tree of an environment")
    parser.add_argument("--environment", type=_environment, action="append", metavar="NAME",
                        help="a name for the certificate (default: qa and dev); "
                        "those of --tree-for are added")
    parser.add_argument("--installers", type=Path, metavar="DIR",
                        help="installer images (default: the tree, or else one is made up)")
    parser.add_argument("--accounts", type=Path, default=DEFAULT_ACCOUNTS, metavar="FILE",
                        help="the accounts (default: the sample accounts)")
    parser.add_argument("--ready-file", type=Path, metavar="PATH",
                        help="a file that gets the port once the hosts can be reached")
    parser.add_argument("--prepare-only", action="store_true",
                        help="make the certificates and end")
    parser.add_argument("--quiet", action="store_true",
                        help='print nothing but "ready on PORT"')
    return parser


def _port(text: str) -> int:
    port = int(text)
    if not 0 <= port <= 65535:
        raise argparse.ArgumentTypeError("must be from 0 to 65535")
    return port


def _environment(text: str) -> str:
    if not is_environment(text):
        raise argparse.ArgumentTypeError("may hold letters, digits, _ and - only")
    return text


def _tree_for(text: str) -> tuple[str, Path]:
    name, equals, folder = text.partition("=")
    if not equals or not folder:
        raise argparse.ArgumentTypeError("must look like ENV=DIR")
    return _environment(name), Path(folder)


@contextmanager
def _state_folder(path: Path) -> Iterator[Path]:
    """Locks the folder itself: the lock goes with the process, however that ends."""
    path.mkdir(parents=True, exist_ok=True)
    handle = os.open(path, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    try:
        fcntl.flock(handle, fcntl.LOCK_EX | fcntl.LOCK_NB)
        yield path
    except BlockingIOError:
        raise CannotStart(2, f"{path} is in use by other local hosts") from None
    finally:
        os.close(handle)


def _bind(port: int, addresses: Sequence[str], files: authority.Certificates,
          site: Site) -> LocalHosts:
    context = tls_context(str(files.chain), str(files.key))
    try:
        return LocalHosts(port, context, site, addresses)
    except OSError as error:
        if error.errno not in (errno.EADDRINUSE, errno.EACCES):
            raise
        raise CannotStart(2, f"port {port}: {error.strerror}") from None


def _introduce(port: int, environments: Sequence[str], files: authority.Certificates,
               accounts: Path) -> None:
    for host in (DOWNLOAD, *map(download_host, environments), ACCOUNT, WWW, FORUM, WIKI,
                 CONTROL):
        print(f"https://{host}:{port}/")
    print(f"certificate authority: {files.authority}")
    if accounts == DEFAULT_ACCOUNTS:
        print("sample accounts: wren / moorland-7, robin / heather-and-gorse (two-step: "
              "tools/totp robin),\n  raven / peat-and-ink (banned), "
              "plover@qa / mist on water (qa only)")


def _write_whole(path: Path, text: str) -> None:
    staged = path.with_name(path.name + ".new")
    staged.write_text(text)
    os.replace(staged, path)
