"""Small games, and the trees that serve them."""

from __future__ import annotations

import hashlib
import json
import random
import subprocess
import sys
from pathlib import Path
from typing import Any, Mapping, Optional

from . import settings

EXECUTABLE = "Quellmoor"
AWKWARD = ("moor & mist.bin", "a b/c d.bin", "100% peat.bin", "Hochmoor-Käuze/Ü.bin",
           "plus+hash#1.bin", "a.bz2b.bin", "deep/er/and/deep/er.bin", "沼/泥炭.bin",
           "emoji 🐸.bin", ".hidden", "empty.bin", "one byte.bin", "(brackets) [x].bin",
           "quote's \"n\" $HOME `x`.bin")
SIZES = {"empty.bin": 0, "one byte.bin": 1}


def small_game(folder: Path, files: int = 40, megabytes: float = 4, seed: int = 1) -> None:
    """Makes a game of awkward names, from empty to large files that compress two to one."""
    chance = random.Random(seed)
    plain = [f"data/part {number // 10}/file_{number}.bin"
             for number in range(files - len(AWKWARD) - 1)]
    names = [EXECUTABLE, *AWKWARD, *plain]
    weights = {name: chance.random() ** 3 for name in names}
    unit = megabytes * 1024 * 1024 / sum(weights.values())
    for name in names:
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content(chance, SIZES.get(name, int(weights[name] * unit) + 2000)))


def content(chance: random.Random, size: int) -> bytes:
    half = chance.randbytes(size // 2)
    return half + bytes(size - len(half))


def next_version(old: Path, new: Path, seed: int = 2) -> None:
    """Most files changed, some the same, one gone and three added."""
    chance = random.Random(seed)
    gone, *others = sorted(path for path in old.rglob("*.bin"))
    kept = {path: path.read_bytes() for path in [old / EXECUTABLE, old / ".hidden", *others]}
    for path, before in kept.items():
        target = new / path.relative_to(old)
        target.parent.mkdir(parents=True, exist_ok=True)
        is_same = chance.random() < 0.2
        target.write_bytes(before if is_same else content(chance, len(before) + 1))
    for number in range(3):
        (new / f"new {number}.bin").write_bytes(content(chance, 30_000))
    assert not (new / gone.relative_to(old)).exists()


def publish(game: Path, tree: Path) -> None:
    """Publishes with the tool that the game's makers use."""
    subprocess.run([sys.executable, str(settings.TOOLS / "publish"), "--server-version", "7.3.0",
                    "--launcher-version", "1.0.0", "--exec", EXECUTABLE, str(game), str(tree)],
                   check=True, capture_output=True)


def short_hash(data: bytes) -> str:
    return hashlib.sha256(data).hexdigest()[:7]


def manifest(hashes: Mapping[str, Optional[str]], **others: Any) -> dict[str, Any]:
    """A manifest of files given by key and short hash."""
    files = {key: {"path": key.rpartition("/")[0], "hash": value, "patches": []}
             for key, value in hashes.items()}
    return {"server-version": "7.3.0", "mac-launcher-version": "1.0.0", "exec": EXECUTABLE,
            "files": files, **others}


def write_manifest(tree: Path, document: Any) -> None:
    (tree / "mac").mkdir(parents=True, exist_ok=True)
    (tree / "mac" / "patcher.json").write_text(json.dumps(document))
