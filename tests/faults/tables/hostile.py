"""Keys that would leave the game folder, and folders that would let them."""

from __future__ import annotations

import os
import shutil
from pathlib import Path
from typing import Callable

Lay = Callable[[Path, Path], None]

REFUSED: tuple[tuple[str, str], ...] = (
    ("that is empty", ""), (".", "."), ("..", ".."), ("/", "/"), ("//", "//"), ("///", "///"),
    ("a/", "a/"), ("a//b", "a//b"), ("./b", "./b"), ("a/./b", "a/./b"), ("a/.", "a/."),
    ("../x", "../x"), ("../../canary.txt", "../../canary.txt"),
    ("../../../canary.txt", "../../../canary.txt"),
    ("../../../../canary.txt", "../../../../canary.txt"), ("a/..", "a/.."), ("a/../b", "a/../b"),
    ("a/../../b", "a/../../b"), ("data/../../../canary.txt", "data/../../../canary.txt"),
    ("../Game/x", "../Game/x"), ("../Game", "../Game"), ("/etc/canary", "/etc/canary"),
    ("//etc/canary", "//etc/canary"), ("/proc/self/cwd/x", "/proc/self/cwd/x"),
    ("/dev/null", "/dev/null"), ("/dev/fd/1", "/dev/fd/1"), ("with a NUL", "a\0b"),
    ("that is a NUL", "\0"), ("that hides dots behind a NUL", "x\0/../../y"),
    ("that ends in a NUL", "a\0"), ("with a name of 256 letters", "n" * 256),
    ("with a folder of 300 letters", "n" * 300 + "/x"),
    ("with a name of 200 umlauts", "ü" * 200), ("of 2,000 folders", "deep/" * 2000 + "x"),
    ("of 40,000 folders", "a/" * 40_000 + "b"), ("with dots in the middle", "a/b/../../../c"),
    ("that ends in dots", "data/.."), ("with a slash at both ends", "/a/"),
    ("of dots and slashes", "../" * 50 + "canary.txt"), ("./", "./"), ("../", "../"),
    (".//..//x", ".//..//x"), ("with a letter and a slash", "a//"),
    ("of 64 folders upwards", "a/" * 32 + "../" * 64 + "canary.txt"),
)

# Odd, but names of files in the game folder.
TAKEN: tuple[tuple[str, str], ...] = (
    ("...", "..."), ("..a", "..a"), ("of a blank", " "), ("-rf", "-rf"), ("~", "~"),
    ("$HOME", "$HOME"), ("with backslashes", "..\\..\\b"), ("%2e%2e%2fx", "%2e%2e%2fx"),
    ("of a drive", "C:x"), ("with a line break", "new\nline"),
    ("with letters that turn the text", "\u202etxt"), ("with an escape", "\x1b[2J"),
    ("file:x", "file:x"), ("of markup", "<b>x<b>"), ("with a star", "*"), ("`x`", "`x`"),
)


def keys(root: Path) -> list[tuple[str, str, bool]]:
    """Name, key, and whether it must be refused."""
    here = (("that is a full path", str(root.parent / "canary.txt")),
            ("that is a full path behind a slash", "/" + str(root.parent / "canary.txt")))
    return [*((name, key, True) for name, key in (*REFUSED, *here)),
            *((name, key, False) for name, key in TAKEN)]


def _link_folder(game: Path, name: str, target: "Path | str") -> None:
    shutil.rmtree(game / name, ignore_errors=True)
    (game / name).symlink_to(target)


def _link_file(game: Path, name: str, target: "Path | str") -> None:
    (game / name).unlink(missing_ok=True)
    (game / name).symlink_to(target)


def _hard_link(game: Path, outside: Path) -> None:
    (game / "target.bin").unlink()
    os.link(outside / "canary.txt", game / "target.bin")


def _part_links(target: str) -> Lay:
    def lay(game: Path, outside: Path) -> None:
        (game / ".target.bin.quellmoor-part").symlink_to(target.format(outside=outside))
    return lay


def _part_hard_link(game: Path, outside: Path) -> None:
    os.link(outside / "canary.txt", game / ".target.bin.quellmoor-part")


def _chain(game: Path, outside: Path) -> None:
    (game / "one").symlink_to("two")
    (game / "two").symlink_to(outside)
    _link_folder(game, "data", "one")


def _ring(game: Path, _outside: Path) -> None:
    _link_folder(game, "data", "ring")
    (game / "ring").symlink_to("data")


def _game_folder(target: Callable[[Path, Path], "Path | str"]) -> Lay:
    def lay(game: Path, outside: Path) -> None:
        shutil.rmtree(game)
        game.symlink_to(target(game, outside))
    return lay


def _pipe(game: Path, _outside: Path) -> None:
    (game / "target.bin").unlink()
    os.mkfifo(game / "target.bin")


def _nested(game: Path, outside: Path) -> None:
    shutil.rmtree(game / "data" / "deep")
    (game / "data" / "deep").symlink_to(outside)


LAYOUTS: tuple[tuple[str, Lay], ...] = (
    ("a file that is a link to a file outside",
     lambda game, outside: _link_file(game, "target.bin", outside / "canary.txt")),
    ("a file that is a link to a folder outside",
     lambda game, outside: _link_file(game, "target.bin", outside)),
    ("a file that is a link to nothing outside",
     lambda game, outside: _link_file(game, "target.bin", outside / "nothing")),
    ("a file that is a link upwards",
     lambda game, outside: _link_file(game, "target.bin", "../../../outside/canary.txt")),
    ("a file that is a link to itself",
     lambda game, outside: _link_file(game, "target.bin", "target.bin")),
    ("a file that is a link to a device",
     lambda game, outside: _link_file(game, "target.bin", "/dev/full")),
    ("a file that is a link to a process's file",
     lambda game, outside: _link_file(game, "target.bin", "/proc/self/exe")),
    ("a file that is a second name of one outside", _hard_link),
    ("a pipe in the place of a file", _pipe),
    ("a folder that is a link outside",
     lambda game, outside: _link_folder(game, "data", outside)),
    ("a folder that is a link upwards",
     lambda game, outside: _link_folder(game, "data", "../../..")),
    ("a folder that is a link to the root",
     lambda game, outside: _link_folder(game, "data", "/")),
    ("a folder that is a link to nothing outside",
     lambda game, outside: _link_folder(game, "data", outside / "nothing")),
    ("a folder that is a link to the game folder's parent",
     lambda game, outside: _link_folder(game, "data", "..")),
    ("a folder within that is a link outside", _nested),
    ("a chain of links that ends outside", _chain),
    ("a ring of links", _ring),
    ("a prepared file that is a link outside", _part_links("{outside}/canary.txt")),
    ("a prepared file that is a link to nothing outside", _part_links("{outside}/nothing")),
    ("a prepared file that is a second name of one outside", _part_hard_link),
    ("itself as a link to nothing",
     _game_folder(lambda game, outside: game.with_name("nothing") / "at all")),
    ("itself as a link to itself", _game_folder(lambda game, outside: "Game")),
)
