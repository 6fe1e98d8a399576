"""Games of real bytes, published as their makers would; kept for the next run."""

from __future__ import annotations

import math
import os
import random
import shutil
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Iterator

from harness import games, settings

from .bench import Bench

MEGABYTE = 1_000_000
REAL_BYTES = ("/usr/lib", "/usr/bin", "/usr/share")
SPARSE_PIECE = 1 << 20
SPARSE_REAL = SPARSE_PIECE // 4
MEBIBYTE = 1 << 20


@dataclass(frozen=True)
class Game:
    """A game folder and its tree for the download host."""

    title: str
    folder: Path

    @property
    def source(self) -> Path:
        return self.folder / "source"

    @property
    def tree(self) -> Path:
        return self.folder / "tree"

    def keys(self) -> list[str]:
        return sorted(str(path.relative_to(self.source))
                      for path in self.source.rglob("*") if path.is_file())

    def archives(self) -> list[Path]:
        return sorted(self.tree.rglob("*.bz2"))

    def size(self) -> int:
        return sum((self.source / key).stat().st_size for key in self.keys())

    def largest_size(self) -> int:
        return max((self.source / key).stat().st_size for key in self.keys())

    def compressed_size(self) -> int:
        return sum(path.stat().st_size for path in self.archives())


def mixed(bench: Bench) -> Game:
    return _of_all_sizes(bench, bench.sized(1000, 20), bench.sized(600, 4) * MEGABYTE)


def for_the_line(bench: Bench) -> Game:
    """As the mixed game, but a fifth of it, so that a slow line does not take the whole day."""
    return _of_all_sizes(bench, bench.sized(200, 10), bench.sized(120, 2) * MEGABYTE)


def _of_all_sizes(bench: Bench, count: int, total: int) -> Game:
    """From 10 KB to 4 MB, as many files of each order of magnitude."""
    chance = random.Random(1)
    sizes = [10_000 * math.exp(chance.random() * math.log(400)) for _ in range(count)]
    unit = total / sum(sizes)
    return _published(bench, f"{count:,} files of 10 KB to 4 MB", f"mixed-{count}-{total}",
                      [int(size * unit) for size in sizes])


def small(bench: Bench) -> Game:
    count = bench.sized(5000, 20)
    return _published(bench, f"{count:,} files of 20 KB", f"small-{count}", [20_000] * count)


def large(bench: Bench) -> Game:
    megabytes = bench.sized(200, 3)
    return _published(bench, f"one file of {megabytes} MB", f"large-{megabytes}",
                      [megabytes * MEGABYTE])


def five_gigabytes(bench: Bench) -> Game:
    return _repeated(bench, bench.sized(250, 4), bench.sized(20, 2) * MEBIBYTE)


def huge(bench: Bench) -> Game:
    return _repeated(bench, 1, bench.sized(2048, 4) * MEBIBYTE)


def make_all(bench: Bench) -> None:
    for game in (mixed, for_the_line, small, large, five_gigabytes, huge):
        game(bench)


def _repeated(bench: Bench, count: int, size: int) -> Game:
    """The same file under many names, which costs little to make. Its archive has an eighth of its
    size: more than may wait to be decoded, for a game of five gigabytes.
    """
    title = f"{count} x {size // MEBIBYTE} MiB"
    game = Game(title, bench.data / f"repeated-{count}-{size}")
    if not (game.folder / "done").exists():
        print(f"bench: making {title}", flush=True)
        shutil.rmtree(game.folder, ignore_errors=True)
        first = game.source / "first.bin"
        first.parent.mkdir(parents=True)
        _write_sparse(first, size)
        _publish(game, first.name)
        packed = game.tree / "mac" / "first.bin.bz2"
        digest = _short_hash(first)
        keys = [f"data/{number // 100}/{number}.bin" for number in range(count)]
        for key in keys:
            archive = game.tree / "mac" / f"{key}.bz2"
            archive.parent.mkdir(parents=True, exist_ok=True)
            os.link(packed, archive)
        packed.unlink()
        games.write_manifest(game.tree, games.manifest(dict.fromkeys(keys, digest)))
        (game.folder / "done").touch()
    return game


def _published(bench: Bench, title: str, name: str, sizes: list[int]) -> Game:
    game = Game(title, bench.data / name)
    if (game.folder / "done").exists():
        return game
    print(f"bench: making {title}", flush=True)
    shutil.rmtree(game.folder, ignore_errors=True)
    pieces = _real_bytes(sizes)
    for number, content in enumerate(pieces):
        path = game.source / "data" / f"region_{number // 100}" / f"archive_{number}.bin"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    _publish(game, "data/region_0/archive_0.bin")
    (game.folder / "done").touch()
    return game


def _publish(game: Game, executable: str) -> None:
    subprocess.run([sys.executable, settings.TOOLS / "publish", "--server-version", "7.3.0",
                    "--launcher-version", "1.0.0", "--exec", executable, game.source, game.tree],
                   check=True, stdout=subprocess.DEVNULL)


def _real_bytes(sizes: list[int]) -> Iterator[bytes]:
    """One piece after the other of this machine's files, from the start again at their end."""
    source = _blocks()
    rest = b""
    for size in sizes:
        gathered = [rest]
        length = len(rest)
        while length < size:
            block = next(source)
            gathered.append(block)
            length += len(block)
        whole = b"".join(gathered)
        yield whole[:size]
        rest = whole[size:]


def _blocks() -> Iterator[bytes]:
    while True:
        for top in REAL_BYTES:
            for folder, folders, names in os.walk(top):
                folders.sort()
                for name in sorted(names):
                    path = Path(folder, name)
                    if path.is_file() and not path.is_symlink():
                        with open(path, "rb") as file:
                            while block := file.read(MEGABYTE):
                                yield block


def _write_sparse(path: Path, size: int) -> None:
    """Some real bytes in each piece, the rest zeros: large, and soon compressed."""
    with open(path, "wb") as file:
        for content in _real_bytes([SPARSE_REAL] * (size // SPARSE_PIECE)):
            file.write(content)
            file.write(bytes(SPARSE_PIECE - SPARSE_REAL))


def _short_hash(path: Path) -> str:
    said = subprocess.run(["sha256sum", path], check=True, capture_output=True, text=True)
    return said.stdout[:7]
