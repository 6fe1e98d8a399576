"""Ways to get a game from its host: the launcher and other chains of tools."""

from __future__ import annotations

import os
import shutil
import sys
from pathlib import Path
from typing import Optional

from harness.player import Player

from .bench import Bench, Contestant, command, shell, to_nowhere
from .data import Game

LAUNCHER = "quellmoor-launcher --update"
CURL = "curl a file, piped to bzip2"
MANY = 2000  # more files than a tool that starts anew for each is measured with more than once
ONE_CONNECTION = "one connection, kept alive, nothing written"
DECODE = "bzip2 -dc on two cores, nothing else"


def launcher(bench: Bench, game: Game) -> Contestant:
    """From nothing to all valid, second check included."""
    home = bench.data / "player"

    def prepare() -> None:
        shutil.rmtree(home, ignore_errors=True)
        home.mkdir(parents=True)

    def run() -> None:
        command((bench.launcher, "--update"), environment=Player(home).environment())

    return Contestant(LAUNCHER, run, prepare)


def first_check(bench: Bench, game: Game) -> Contestant:
    """A whole check of a game that is there but that no earlier check has seen."""
    home = bench.data / "checker"
    shutil.rmtree(home, ignore_errors=True)
    player = Player(home)
    player.data.mkdir()
    player.game.symlink_to(game.source)

    def run() -> None:
        command((bench.launcher, "--verify"), environment=player.environment())

    return Contestant("quellmoor-launcher --verify",
                      run, lambda: player.settings.unlink(missing_ok=True))


def decode_only(game: Game) -> Contestant:
    return Contestant(DECODE, lambda: shell("find . -name '*.bz2' -print0 | xargs -0 -P 2 -n 16 "
                                            "sh -c 'exec bzip2 -dc \"$@\" >/dev/null' -", game.tree))


def one_connection(bench: Bench, base: str) -> Contestant:
    """Nothing but the transfers of `others`, one after the other."""
    return Contestant(ONE_CONNECTION, lambda: to_nowhere(
        [sys.executable, Path(__file__).with_name("one_connection.py"), base, bench.authority,
         plain_urls(bench)]))


def plain_urls(bench: Bench) -> Path:
    return bench.data / "plain-urls.txt"


def others(bench: Bench, game: Game, base: str) -> list[Contestant]:
    """Nobody of these verifies anything."""
    keys = game.keys()
    unpack = ("find . -name '*.bz2' -print0 | xargs -0 -P 2 -n 16 lbzip2 -d -n 1"
              if len(keys) > 1 else "find . -name '*.bz2' -print0 | xargs -0 lbzip2 -d")
    urls = bench.data / "urls.txt"
    urls.write_text("".join(f"{base}/mac/{key}.bz2\n\tout={key}.bz2\n" for key in keys))
    plain_urls(bench).write_text("".join(f"{base}/mac/{key}.bz2\n" for key in keys))
    pipes = bench.data / "pipes.sh"
    pipes.write_text("".join(
        f"mkdir -p {os.path.dirname(key)}\n"
        f"curl -sS --fail --cacert {bench.authority} {base}/mac/{key}.bz2 | bzip2 -d > {key}\n"
        for key in keys))

    def aria(connections: int) -> str:
        return (f"aria2c -q --no-conf --async-dns=false --ca-certificate={bench.authority} "
                f"-j {connections} -x {connections} -s {connections} -k 1M "
                f"--file-allocation=none -i {urls}")

    scripts = {
        "wget, then lbzip2": f"wget -q --no-config --ca-certificate={bench.authority} -x -nH "
                             f"-i {plain_urls(bench)}\n{unpack}",
        "aria2c, 1 connection, then lbzip2": f"{aria(1)}\n{unpack}",
        "aria2c, 4 connections, then lbzip2": f"{aria(4)}\n{unpack}",
        CURL: f". {pipes}",
    }
    once = 1 if len(keys) > MANY else None
    return [_chain(bench, name, script, len(keys), once if name == CURL else None)
            for name, script in scripts.items()]


def _chain(bench: Bench, name: str, script: str, count: int, rounds: Optional[int]) -> Contestant:
    folder = bench.data / "chain"

    def prepare() -> None:
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()

    def run() -> None:
        shell(script, folder)
        _require_files(folder, count, name)

    return Contestant(name, run, prepare, rounds)


def _require_files(folder: Path, count: int, name: str) -> None:
    found = sum(1 for path in folder.rglob("*.bin"))
    if found != count:
        raise RuntimeError(f"{name} left {found} of {count} files")


