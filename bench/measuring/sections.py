"""What is measured, each section by itself; every function returns its chapter of the report."""

from __future__ import annotations

from typing import Callable

from . import data, micro, players, site
from .bench import Bench, Contestant, Times, compete, to_nowhere
from .memory import memory
from .report import seconds, table

PLAIN = "libbz2, one thread"


def decompress(bench: Bench) -> str:
    """One large stream: our decoder beside libbz2 and the tools."""
    archive = data.large(bench).archives()[0]
    tools = [Contestant(" ".join(map(str, words)), lambda words=words: to_nowhere([*words, archive]))
             for words in (("bzip2", "-dc"), ("pbzip2", "-dc"), ("lbzip2", "-dc", "-n", "1"),
                           ("lbzip2", "-dc", "-n", "2"))]
    times = Times()
    names = {"decompress_libbz2": PLAIN, "decompress/1": "ours, one thread",
             "decompress/2": "ours, two threads"}
    for _ in range(bench.rounds):
        for name, found in micro.run(bench, "^decompress", 1).items():
            times.add(names[name], found["seconds"])
        compete(tools, 1, times)
    scan = micro.run(bench, "^scan$", bench.rounds)["scan"]
    rows = [(name, seconds(times.median(name)), f"{times.ratio(PLAIN, name):.2f}")
            for name in [*names.values(), *(tool.name for tool in tools)]]
    return (f"## Decompression of {data.large(bench).title}\n\n"
            f"{table(('', 'time', 'times as fast as libbz2'), rows)}\n"
            f"The search for block starts reads {scan['rate'] / 1e9:.1f} GB/s. "
            "lbzip2 has a decoder of its own; ours feeds libbz2.\n")


def hash_(bench: Bench) -> str:
    """The first check of a game beside programs that only print hashes."""
    chapters = []
    for game in (data.mixed(bench), data.large(bench)):
        paths = [str(game.source / key) for key in game.keys()]
        ours = players.first_check(bench, game)
        openssl = ("openssl", "dgst", "-sha256")
        rivals = [Contestant(" ".join(words), lambda words=words: to_nowhere([*words, *paths]))
                  for words in (openssl, ("sha256sum",))]
        with site.serving(bench, game):
            times = compete([ours, *rivals], bench.rounds)
        rows = [(one.name, seconds(times.median(one.name)),
                 f"{times.ratio(one.name, ours.name):.2f}") for one in (ours, *rivals)]
        chapters.append(f"{game.title}, {game.size() / 1e6:.0f} MB:\n\n"
                        f"{table(('', 'time', 'times as long'), rows)}\n")
    inside = micro.run(bench, "^hash_", bench.rounds)
    rows = [(name, seconds(found["seconds"]), f"{found['rate'] / 1e6:.0f} MB/s")
            for name, found in inside.items()]
    return ("## Hashing\n\nThe launcher's time holds its start, the manifest over https, one sync "
            f"of the file system and saving the results.\n\n{''.join(chapters)}"
            "Inside one process, by the size of the file in bytes:\n\n"
            f"{table(('', 'a file', 'rate'), rows)}")


def check(bench: Bench) -> str:
    """A check of an unchanged game beside a bare loop over stat()."""
    found = micro.run(bench, "^check_", bench.rounds)
    rows = []
    for count in sorted({int(name.split("/")[1]) for name in found}):
        loop, loaded, loading = (found[f"check_{name}/{count}"]["seconds"] for name in (
            "statLoop", "unchanged", "unchangedWithLoading"))
        rows.append((f"{count:,}", seconds(loop), f"{seconds(loaded)} ({loaded / loop:.2f})",
                     f"{seconds(loading)} ({loading / loop:.2f})"))
    head = ("files", "bare stat() loop", "check, settings loaded", "check and loading them")
    return ("## Check of an unchanged game\n\nIn brackets: times the bare loop.\n\n"
            f"{table(head, rows)}")


def update(bench: Bench) -> str:
    """From nothing to all valid over https without a delay."""
    chapters = []
    for game in (data.mixed(bench), data.small(bench), data.large(bench)):
        with site.serving(bench, game) as base:
            ours = players.launcher(bench, game)
            rivals = [players.decode_only(game), *players.others(bench, game, base)]
            times = compete([ours, *rivals], bench.rounds)
        rows = [(one.name, seconds(times.median(one.name)),
                 seconds(times.median(one.name) / len(game.keys())),
                 f"{times.ratio(ours.name, one.name):.2f}") for one in (ours, *rivals)]
        chapters.append(f"{game.title}, {game.size() / 1e6:.0f} MB "
                        f"({game.compressed_size() / 1e6:.0f} MB compressed):\n\n"
                        f"{table(('', 'time', 'a file', 'ours to this'), rows)}\n")
    return ("## Whole update without a delay\n\nThe launcher's time holds the check before, the "
            "check after and one sync; nobody else verifies anything.\n\n" + "".join(chapters))


def line(bench: Bench) -> str:
    """The same on a line with a round trip of 20 ms."""
    game = data.mixed(bench)
    files, size = len(game.keys()), game.compressed_size()
    chapters = []
    for title, megabits in (("100 Mbit/s", 100.0), ("1 Gbit/s", 1000.0)):
        where = site.Line(title, 0.020, megabits)
        with site.serving(bench, game, where) as base:
            ours = players.launcher(bench, game)
            contestants = [ours, *players.others(bench, game, base)]
            times = compete(contestants, bench.rounds)
        transfer, trips = where.transfer_seconds(size), files * where.round_trip
        rows = [(one.name, seconds(times.median(one.name)),
                 f"{times.median(one.name) / (transfer + trips):.3f}") for one in contestants]
        chapters.append(
            f"{title}: the transfer alone takes {seconds(transfer)}, a round trip a file "
            f"{seconds(trips)}.\n\n{table(('', 'time', 'times the sum of both'), rows)}\n")
    return (f"## On a long line\n\n{game.title}, {size / 1e6:.0f} MB compressed, 20 ms round trip. "
            "The line is a relay in one process, without slow start and loss.\n\n"
            f"{''.join(chapters)}"
            "The launcher fetches one file at a time, so every file waits for one round trip: with "
            "small files that is most of the time, and a tool with several connections is faster "
            "there.\n")


def parts(bench: Bench) -> str:
    """The parts that no other section shows."""
    found = micro.run(bench, "^(settings|json|solver|urlEncode|progress)", bench.rounds)
    def order(name: str) -> tuple[str, int]:
        text, _, number = name.partition("/")
        return (text, int(number)) if number.isdigit() else (name, 0)

    rows = [(name, seconds(found[name]["seconds"])) for name in sorted(found, key=order)]
    return f"## Parts\n\n{table(('', 'time'), rows)}"


SECTIONS: dict[str, Callable[[Bench], str]] = {
    "decompress": decompress, "hash": hash_, "check": check, "update": update, "line": line,
    "memory": memory, "parts": parts,
}
