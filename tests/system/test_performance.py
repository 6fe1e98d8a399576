#!/usr/bin/python3
"""What a check of many unchanged files costs, beside merely asking for their dates."""

import os
import time
from pathlib import Path
from typing import ClassVar

from harness import case, games, isolation

FILES = 50_000
FOLDERS = 200
ROUNDS = 3
# The loop is about as fast as the system itself; a busy machine must not fail the test.
LARGEST_RATIO = 40


class ManyFiles(case.SystemTest):

    memory: ClassVar[Path]

    @classmethod
    def make_game(cls) -> None:
        """In memory: many small files take a disk's journal minutes."""
        cls.memory = cls.folder / "memory"
        cls.memory.mkdir()
        isolation.mount("-t", "tmpfs", "tmpfs", str(cls.memory))
        cls.addClassCleanup(isolation.unmount, str(cls.memory))
        hashes = {key: cls._make_file(key, b"%d" % number)
                  for number, key in enumerate(cls._keys())}
        games.write_manifest(cls.tree, games.manifest(hashes))

    @classmethod
    def _keys(cls) -> list[str]:
        return [f"data/{number % FOLDERS}/{number}.bin" for number in range(FILES)]

    @classmethod
    def _make_file(cls, key: str, data: bytes) -> str:
        path = cls.memory / "game" / key
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
        return games.short_hash(data)

    def setUp(self) -> None:
        super().setUp()
        self.player = case.Player(self.memory / "player")
        self.player.data.mkdir()
        (self.memory / "game").rename(self.player.game)

    def test_a_check_of_unchanged_files_costs_little_more_than_their_dates(self) -> None:
        first = self.ends(self.player.verify(), case.VALID)
        check = min(self._seconds_to_check() for _ in range(ROUNDS))
        dates = min(self._seconds_to_ask_for_dates() for _ in range(ROUNDS))
        self.hosts.fail_manifest(body="{}")
        nothing = min(self.ends(self.player.verify(), case.VALID).seconds for _ in range(ROUNDS))
        print(f"\n{FILES} files: first check {first.seconds:.2f} s, unchanged {check:.3f} s "
              f"(with no files {nothing:.3f} s), dates alone {dates:.3f} s: "
              f"ratio {check / dates:.1f}")
        self.assertLess(check / dates, LARGEST_RATIO)

    def _seconds_to_check(self) -> float:
        outcome = self.ends(self.player.verify(), case.VALID)
        self.assertIn(f"({FILES} without reading them)", outcome.output)
        return outcome.seconds

    def _seconds_to_ask_for_dates(self) -> float:
        paths = [f"{self.player.game}/{key}" for key in self._keys()]
        started = time.perf_counter()
        for path in paths:
            os.lstat(path)
        return time.perf_counter() - started


if __name__ == "__main__":
    case.main()
