"""The command line that makes the sample game folder."""

from __future__ import annotations

import argparse
import hashlib
import json
import os
import shutil
import sys
import time
from pathlib import Path
from typing import Any, Iterator, Optional, Sequence

from .contents import Contents
from .layout import EXECUTABLE, LEAST_FILES, MEGABYTE, layout

FORMAT = 2
SEED = 20261121
# Fixed, so that the folder is the same on every machine down to its dates.
MADE_AT = 1_790_000_000
DESCRIPTION = """\
Makes a sample game folder: some hundred files with awkward names and contents that
compress about two to one. The same call always makes the same folder; where the folder
is as it should be already, nothing is written."""


class CannotMake(Exception):
    """The folder cannot be made; the text says why."""


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Makes or mends the folder and returns the exit code."""
    given = _parser().parse_args(arguments)
    started = time.monotonic()
    try:
        written, total = _make(given)
    except (CannotMake, OSError) as error:
        print(f"make-sample-game: {error}", file=sys.stderr)
        return 1
    print(f"{given.folder}: {total} files, {written} written, "
          f"{time.monotonic() - started:.1f} s")
    return 0


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="make-sample-game", description=DESCRIPTION)
    parser.add_argument("folder", type=Path, metavar="FOLDER", help="the game folder")
    parser.add_argument("--executable", type=Path, required=True, metavar="PATH",
                        help=f'the program that becomes "{EXECUTABLE}"')
    parser.add_argument("--files", type=_at_least(LEAST_FILES), default=320, metavar="N",
                        help=f"files besides the executable (default: 320, "
                        f"at least {LEAST_FILES})")
    parser.add_argument("--megabytes", type=_at_least(1), default=160, metavar="N",
                        help="their size together (default: 160)")
    parser.add_argument("--seed", type=int, default=SEED, metavar="N",
                        help="another seed makes other contents")
    return parser


def _at_least(least: int) -> Any:
    def number(text: str) -> int:
        if int(text) < least:
            raise argparse.ArgumentTypeError(f"must be at least {least}")
        return int(text)
    return number


def _make(given: argparse.Namespace) -> tuple[int, int]:
    """Writes what is missing or wrong; returns files written and files in all."""
    sizes = layout(given.files, given.megabytes * MEGABYTE, given.seed)
    program = given.executable.read_bytes()
    stamp = given.folder.with_name(given.folder.name + ".stamp")
    plan = {"format": FORMAT, "files": given.files, "megabytes": given.megabytes,
            "seed": given.seed, "executable": hashlib.sha256(program).hexdigest()}
    known = _read_stamp(stamp)
    if known is None and given.folder.is_dir() and any(given.folder.iterdir()):
        raise CannotMake(f"{given.folder} was not made by this tool; not touched")
    given.folder.mkdir(parents=True, exist_ok=True)
    same = known == {**plan, "whole": True}
    stamp.write_text(json.dumps({**plan, "whole": False}))
    _remove_others(given.folder, {*sizes, EXECUTABLE})
    contents = Contents(given.seed)
    wrong = [name for name, size in sizes.items()
             if not (same and _is_as_made(given.folder / name, size))]
    for name in wrong:
        _write(given.folder / name, contents.blocks(name, sizes[name]), 0o644)
    target = given.folder / EXECUTABLE
    if not (same and _is_as_made(target, len(program), 0o755)):
        _write(target, iter([program]), 0o755)
        wrong.append(EXECUTABLE)
    stamp.write_text(json.dumps({**plan, "whole": True}))
    return len(wrong), len(sizes) + 1


def _read_stamp(path: Path) -> Optional[dict[str, Any]]:
    try:
        document = json.loads(path.read_bytes())
    except (OSError, ValueError):
        return None
    return document if isinstance(document, dict) else None


def _is_as_made(path: Path, size: int, mode: int = 0o644) -> bool:
    try:
        about = path.lstat()
    except OSError:
        return False
    wanted = (size, MADE_AT * 10 ** 9, 0o100000 | mode)
    return (about.st_size, about.st_mtime_ns, about.st_mode) == wanted


def _write(path: Path, blocks: Iterator[bytes], mode: int) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    # A new file in any case: the old one may be a link, or a game that is running.
    path.unlink(missing_ok=True)
    with open(path, "wb") as stream:
        for block in blocks:
            stream.write(block)
    path.chmod(mode)
    os.utime(path, (MADE_AT, MADE_AT))


def _remove_others(folder: Path, wanted: set[str]) -> None:
    """Takes away what the plan does not have, as a fresh folder would not have it."""
    for place, folders, files in os.walk(folder, topdown=False):
        for name in files:
            path = Path(place, name)
            if path.relative_to(folder).as_posix() not in wanted:
                path.unlink()
        for name in folders:
            path = Path(place, name)
            relative = path.relative_to(folder).as_posix()
            if path.is_symlink():
                path.unlink()
            elif relative in wanted:
                shutil.rmtree(path)
            elif not any(path.iterdir()):
                path.rmdir()
