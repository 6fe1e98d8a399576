"""File contents that compress about two to one, quick to make and always the same."""

from __future__ import annotations

import random
from typing import Iterator

WORDS = """moor spring mist peat brass heather reed stone lantern weir heron hollow ford
bridge ember rowan sedge kestrel tarn drift cairn marsh bell ferry well root hearth frost
mesh vertex normal tangent texture sample volume pitch index offset count anchor joint
""".split()
TEXT_SIZE = 1 << 20
NOISE_SIZE = 3 << 10
TEXT_PIECE = 5 << 10


class Contents:
    """Makes the content of a file from its name and size alone."""

    def __init__(self, seed: int) -> None:
        self._seed = seed
        self._text = _text(random.Random(f"{seed}/text"))

    def blocks(self, name: str, size: int) -> Iterator[bytes]:
        """Noise as in sound and pictures, between structure as in scenes and text."""
        chance = random.Random(f"{self._seed}/{name}")
        left = size
        while left > 0:
            piece = self._piece(chance)[:left]
            left -= len(piece)
            yield piece

    def _piece(self, chance: random.Random) -> bytes:
        start = chance.randrange(TEXT_SIZE - TEXT_PIECE)
        return self._text[start:start + TEXT_PIECE] + chance.randbytes(NOISE_SIZE)


def _text(chance: random.Random) -> bytes:
    lines = []
    size = 0
    while size < TEXT_SIZE:
        number = chance.randrange(1 << 32)
        line = " ".join(chance.choices(WORDS, k=9)) + f" {number:08x}\n"
        lines.append(line)
        size += len(line)
    return "".join(lines).encode()[:TEXT_SIZE]
