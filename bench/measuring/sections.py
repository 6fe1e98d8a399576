"""What is measured without a window, each section by itself; every function returns its chapter of
the report.
"""

from __future__ import annotations

from dataclasses import replace
from typing import Callable

from . import data, micro, players, site
from .bench import Bench, Contestant, Times, compete, to_nowhere
from .memory import memory
from .report import at_least, at_most, seconds, table
from .window import first_frame, idle

PLAIN = "libbz2, one thread"
CHECK_AIMED_AT = 50_000


def decompress(bench: Bench) -> str:
    """One large stream: our decoder beside libbz2 and the tools."""
    game = data.large(bench)
    archive = game.archives()[0]
    tools = [Contestant(" ".join(map(str, words)), lambda words=words: to_nowhere([*words, archive]))
             for words in (("bzip2", "-dc"), ("pbzip2", "-dc"), ("lbzip2", "-dc", "-n", "1"),
                           ("lbzip2", "-dc", "-n", "2"))]
    times = Times()
    names = {"decompress_libbz2": PLAIN, "decompress/1": "ours, one thread",
             "decompress/2": "ours, two threads"}
    work = Times()
    for _ in range(bench.rounds):
        for name, found in micro.run(bench, "^decompress", 1, archive).items():
            times.add(names[name], found["seconds"])
            work.add(names[name], found["processor"])
        compete(tools, 1, times)
    scan = micro.run(bench, "^scan$", bench.rounds, archive)["scan"]["rate"] / 1e9
    rows = [(name, seconds(times.median(name)), f"{times.ratio(PLAIN, name):.2f}")
            for name in [*names.values(), *(tool.name for tool in tools)]]
    one, two = (times.ratio(PLAIN, names[f"decompress/{number}"]) for number in (1, 2))
    processor = work.ratio(names["decompress/2"], PLAIN)
    return (f"## Decompression of {game.title}\n\n"
            f"{at_least('Two threads, times as fast as libbz2', 1.9, two)}"
            f"{at_least('One thread, times as fast as libbz2', 0.98, one)}"
            f"{at_most('Processor time of two threads, times libbz2', 1.05, processor)}"
            f"{at_least('Search for block starts, GB/s', 5, scan)}\n"
            f"{table(('', 'time', 'times as fast as libbz2'), rows)}\n"
            f"lbzip2 has a decoder of its own; ours feeds libbz2. {times.rounds()}\n")


def hash_(bench: Bench) -> str:
    """The first check of a game beside programs that only print hashes."""
    chapters, aims = [], ""
    for game in (data.mixed(bench), data.large(bench)):
        paths = [str(game.source / key) for key in game.keys()]
        ours = players.first_check(bench, game)
        openssl, coreutils = ("openssl", "dgst", "-sha256"), ("sha256sum",)
        rivals = [Contestant(" ".join(words), lambda words=words: to_nowhere([*words, *paths]))
                  for words in (openssl, coreutils)]
        with site.serving(bench, game):
            times = compete([ours, *rivals], bench.rounds)
        rows = [(one.name, seconds(times.median(one.name)),
                 f"{times.ratio(one.name, ours.name):.2f}") for one in (ours, *rivals)]
        rival, limit = (("sha256sum", 3.5) if len(paths) > 1 else ("openssl dgst -sha256", 0.97))
        aims += at_least(f"{game.title}, times as fast as {rival}", limit,
                         times.ratio(rival, ours.name))
        chapters.append(f"{game.title}, {game.size() / 1e6:.0f} MB:\n\n"
                        f"{table(('', 'time', 'times as long'), rows)}\n{times.rounds()}\n\n")
    inside = micro.run(bench, "^hash_", bench.rounds)
    rows = [(name, seconds(found["seconds"]), f"{found['rate'] / 1e6:.0f} MB/s")
            for name, found in inside.items()]
    return (f"## Hashing\n\n{aims}\nThe launcher's time holds its start, the manifest over https, one sync "
            f"of the file system and saving the results.\n\n{''.join(chapters)}"
            "Inside one process, by the size of the file in bytes:\n\n"
            f"{table(('', 'a file', 'rate'), rows)}")


def check(bench: Bench) -> str:
    """A check of an unchanged game beside a bare loop over stat()."""
    found = micro.run(bench, "^check_", bench.rounds)
    rows, aims = [], ""
    for count in sorted({int(name.split("/")[1]) for name in found}):
        loop, loaded, loading = (found[f"check_{name}/{count}"]["seconds"] for name in (
            "statLoop", "unchanged", "unchangedWithLoading"))
        rows.append((f"{count:,}", seconds(loop), f"{seconds(loaded)} ({loaded / loop:.2f})",
                     f"{seconds(loading)} ({loading / loop:.2f})"))
        if count == CHECK_AIMED_AT:
            aims = (at_most(f"{count:,} files, settings loaded, times the bare loop", 1.3, loaded / loop)
                    + at_most("and with loading them", 2.5, loading / loop))
    head = ("files", "bare stat() loop", "check, settings loaded", "check and loading them")
    return (f"## Check of an unchanged game\n\n{aims}\nIn brackets: times the bare loop. The check "
            "opens no file, so that their sizes do not count; the cost grows with their number "
            f"only.\n\n{table(head, rows)}\nMedian of {bench.rounds}.\n")


def update(bench: Bench) -> str:
    """From nothing to all valid over https without a delay."""
    chapters, aims, bound = [], "", 0.0
    for game, rounds in ((data.mixed(bench), bench.rounds), (data.small(bench), bench.fewer(3)),
                         (data.large(bench), bench.fewer(3))):
        files, size = len(game.keys()), game.size()
        with site.serving(bench, game) as base:
            ours, decode = players.launcher(bench, game), players.decode_only(game)
            others = players.others(bench, game, base)
            times = compete([ours, decode, *others], rounds)
        rows = [(one.name, seconds(times.median(one.name)),
                 seconds(times.median(one.name) / files), f"{size / 1e6 / times.median(one.name):.1f}",
                 f"{times.ratio(ours.name, one.name):.2f}") for one in (ours, decode, *others)]
        if not chapters:
            best = min((one.name for one in others), key=times.median)
            bound = times.ratio(decode.name, best)
            aims = (at_most(f"{game.title}, times the best chain", 0.95, times.ratio(ours.name, best))
                    + at_most("and times the pure decoding", 1.1,
                              times.ratio(ours.name, decode.name)))
        chapters.append(f"{game.title}, {size / 1e6:.0f} MB "
                        f"({game.compressed_size() / 1e6:.0f} MB compressed):\n\n"
                        f"{table(('', 'time', 'a file', 'MB/s', 'ours to this'), rows)}\n"
                        f"{times.rounds()}\n\n")
    return (f"## Whole update without a delay\n\n{aims}\nThe launcher's time holds the check before, "
            "the check after and one sync; nobody else verifies anything. "
            f"Pure decoding with libbz2 alone takes {bound:.2f} times as long as the best chain: lbzip2 "
            "has a decoder of its own. How the cost grows with "
            "the size of a file shows in the columns \"a file\" and \"MB/s\" of the three games.\n\n"
            + "".join(chapters))


def line(bench: Bench) -> str:
    """The same on a line with a round trip of 20 ms."""
    game = data.for_the_line(bench)
    files, size = len(game.keys()), game.compressed_size()
    chapters, aims = [], ""
    for title, megabits in (("100 Mbit/s", 100.0), ("1 Gbit/s", 1000.0)):
        where = site.Line(title, 0.020, megabits)
        with site.serving(bench, game, where) as base:
            ours = players.launcher(bench, game)
            contestants = [ours, *players.others(bench, game, base),
                           players.one_connection(bench, base)]
            times = compete(contestants, bench.fewer(3))
        transfer, trips = where.transfer_seconds(size), files * where.round_trip
        rows = [(one.name, seconds(times.median(one.name)),
                 f"{times.median(one.name) / (transfer + trips):.3f}") for one in contestants]
        aims += at_most(f"{title}, times transfer and a round trip a file", 1.03,
                        times.median(ours.name) / (transfer + trips))
        chapters.append(
            f"{title}: the transfer alone takes {seconds(transfer)}, a round trip a file "
            f"{seconds(trips)}.\n\n{table(('', 'time', 'times the sum of both'), rows)}\n"
            f"{times.rounds()}\n\n")
    return (f"## On a long line\n\n{aims}\n{game.title}, {size / 1e6:.0f} MB compressed, 20 ms round "
            "trip: a fifth of the mixed game, so that this takes minutes. The line is a relay in one "
            "process, without slow start and loss.\n\n"
            f"{''.join(chapters)}"
            "The launcher fetches one file at a time, so every file waits for one round trip: with "
            "small files that is most of the time, and a tool with several connections is faster "
            "there. The last row is a loop of Python's: what one connection gets who does nothing "
            "else.\n")


def parts(bench: Bench) -> str:
    """The parts that no other section shows."""
    found = micro.run(bench, "^(settings|json|solver|urlEncode|progress)", bench.rounds)
    def order(name: str) -> tuple[str, int]:
        text, _, number = name.partition("/")
        return (text, int(number)) if number.isdigit() else (name, 0)

    rows = [(name, seconds(found[name]["seconds"])) for name in sorted(found, key=order)]
    return f"## Parts\n\n{table(('', 'time'), rows)}\nMedian of {bench.rounds}.\n"


SECTIONS: dict[str, Callable[[Bench], str]] = {
    "firstframe": first_frame, "idle": idle, "decompress": decompress, "hash": hash_, "check": check,
    "update": update, "line": line, "memory": memory, "parts": parts,
}
