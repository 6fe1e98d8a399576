"""Which files the sample game has, and how large each is."""

from __future__ import annotations

import random

EXECUTABLE = "Quellmoor"
MEGABYTE = 1048576
LARGE_SHARE = 0.19
SMALL_SIZES = (200, 24_000)
SMALL_PART = 0.55

# Names that have to survive a manifest, an address, a disk and a shell.
AWKWARD = (
    "Frameworks/Cg.framework/Cg",
    "Frameworks/Cg.framework/Resources/Info (draft).plist",
    "libs/libsound.dylib",
    "libs/libmesh+physics.dylib",
    "data/maps/Low Hythe (night)/terrain.bin",
    "data/maps/Low Hythe (night)/ferry [wreck].bin",
    "data/maps/Cotter's Well/spring #3.bin",
    "data/maps/Cotter's Well/100% mist.bin",
    "data/maps/Heath & Moor/a+b=c.bin",
    "data/maps/Über den Mooren/Königsmühle.bin",
    "data/maps/Łąka/źródło.bin",
    "data/maps/水の原/泉.bin",
    "data/maps/cafe\u0301/combining.bin",
    "data/voices/l'été/à bientôt.ogg",
    "data/emoji 🌫️/lantern 🏮.png",
    "data/odd/semi;colon,comma.txt",
    "data/odd/dollar$ and @ home!.txt",
    "data/odd/tilde~caret^.txt",
    "data/odd/ leading and trailing .txt",
    "data/odd/%41 is not A.txt",
    "data/odd/..two dots",
    "data/odd/.hidden",
    "data/odd/no_extension",
    "data/odd/under_score_1234567_89abcde.bin",
    "data/odd/archive.bz2",
    "data/odd/" + "long name " * 20 + "end.txt",
    "a/b/c/d/e/f/g/h/i/j/k/deep.txt",
)
EMPTY = ("data/empty.marker", "data/odd/empty (too).txt", "saves/keep me.empty")
LARGE = "data/archives/world.pak"
FOLDERS = ("data/textures", "data/meshes/moor props", "data/sound/ambient [wind]",
           "data/scripts", "data/quests/Lantern Week (2026)", "data/ui/fonts & icons",
           "data/maps/Sallow Mere", "data/shaders")
ENDINGS = (".tex", ".mesh", ".ogg", ".lua", ".json", ".bin")
LEAST_FILES = len(AWKWARD) + len(EMPTY) + 2 + len(FOLDERS)


def layout(files: int, size: int, seed: int) -> dict[str, int]:
    """Sizes by name, `files` of them without the executable, `size` bytes in all."""
    chance = random.Random(f"{seed}/layout")
    sizes = dict.fromkeys(EMPTY, 0)
    sizes[LARGE] = int(size * LARGE_SHARE)
    for name in AWKWARD:
        sizes[name] = chance.randint(*SMALL_SIZES)
    bulk = [_bulk_name(number) for number in range(files - len(sizes))]
    small = bulk[:int(len(bulk) * SMALL_PART)]
    for name in small:
        sizes[name] = chance.randint(*SMALL_SIZES)
    rest = bulk[len(small):]
    left = max(0, size - sum(sizes.values()))
    weights = [chance.uniform(0.3, 1.7) for _ in rest]
    for name, weight in zip(rest, weights):
        sizes[name] = int(left * weight / sum(weights))
    sizes[rest[-1]] += max(0, size - sum(sizes.values()))
    return sizes


def _bulk_name(number: int) -> str:
    folder = FOLDERS[number % len(FOLDERS)]
    return f"{folder}/part {number:04d}{ENDINGS[number % len(ENDINGS)]}"
