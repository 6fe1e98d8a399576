#!/usr/bin/python3
"""Updates that are cut short: nothing is torn, and the next one finishes."""

import random
import shutil
import signal
import subprocess
import time
from pathlib import Path
from typing import ClassVar

from harness import case, games, snapshot, trace

RANDOM_KILLS = 30
DEADLINE = 30
RENAMES = "?rename,?renameat,?renameat2"
PART_SUFFIX = ".quellmoor-part"
SAVES = "?fsync,?fdatasync"


class Interruption(case.SystemTest):
    """Each test updates the old version of the game to the new one."""

    old: ClassVar[Path]
    installed: ClassVar[Path]

    @classmethod
    def make_game(cls) -> None:
        cls.old = cls.folder / "old"
        games.small_game(cls.old, megabytes=2)
        games.publish(cls.old, cls.tree)

    @classmethod
    def setUpClass(cls) -> None:
        """Installs the old version once; then the new one is published."""
        super().setUpClass()
        player = case.Player(cls.folder / "first")
        outcome = player.update()
        assert outcome.code == case.VALID, outcome
        cls.installed = player.root
        games.next_version(cls.old, cls.source)
        games.publish(cls.source, cls.tree)

    def setUp(self) -> None:
        super().setUp()
        self.old_files, self.new_files = (
            snapshot.files_only(snapshot.contents(root)) for root in (self.old, self.source))
        self._reset()

    def _reset(self) -> None:
        for part in ("data home", "config"):
            shutil.rmtree(self.player.root / part)
            shutil.copytree(self.installed / part, self.player.root / part)

    def _nothing_is_torn(self) -> None:
        found = snapshot.files_only(snapshot.contents(self.player.game))
        torn = {name for name in self.new_files
                if found.get(name) not in (None, self.old_files.get(name), self.new_files[name])}
        lost = {name for name in set(self.old_files) - set(found)}
        self.assertEqual((torn, lost), (set(), set()))
        self.player.stored_settings()

    def _next_update_finishes(self) -> None:
        self.ends(self.player.update(), case.VALID)
        self.assertEqual(snapshot.files_only(snapshot.contents(self.player.game)),
                         {**self.old_files, **self.new_files})
        self.nothing_is_left_over()
        self.assertTrue(self.player.stored_settings())

    def _run_until(self, seconds: float) -> tuple[int, float]:
        """Kills the launcher at that moment; how it ended, and how long it ran."""
        started = time.monotonic()
        with self.player.start("--update") as process:
            try:
                process.communicate(timeout=seconds)
            except subprocess.TimeoutExpired:
                process.kill()
                process.communicate()
        return process.returncode, time.monotonic() - started

    def test_a_kill_at_any_moment_tears_no_file(self) -> None:
        duration = self.ends(self.player.update(), case.VALID).seconds
        chance = random.Random(99)
        killed = 0
        for number in range(RANDOM_KILLS):
            self._reset()
            moment = duration * (number + chance.random()) / RANDOM_KILLS
            with self.subTest(moment=f"{moment:.3f} of {duration:.3f} s"):
                code, ran = self._run_until(moment)
                killed += code == -signal.SIGKILL
                # A machine that was busy before may be faster now.
                duration = duration if code != case.VALID else min(duration, ran)
                self._nothing_is_torn()
                self._next_update_finishes()
        self.assertGreater(killed, RANDOM_KILLS // 3)

    def test_a_kill_right_before_a_file_is_put_in_place_tears_nothing(self) -> None:
        self._kill_at_each(RENAMES)

    def test_a_kill_right_before_a_file_is_written_tears_nothing(self) -> None:
        self._kill_at_each("write")

    def _kill_at_each(self, calls: str) -> None:
        """One run for each of a few changed files, ended at the first such call on it."""
        changed = [name for name in sorted(self.old_files)
                   if self.new_files.get(name, self.old_files[name]) != self.old_files[name]]
        for name in changed[::len(changed) // 4]:
            with self.subTest(name):
                self._reset()
                path = self.player.game / name
                places = [path, path.with_name(f".{path.name}{PART_SUFFIX}")]
                killed = trace.killed_at(calls, 1, places)
                self.ends(self.player.update(wrapper=killed), -signal.SIGKILL)
                self._nothing_is_torn()
                self._next_update_finishes()

    def test_a_kill_while_the_settings_are_saved_loses_none_of_them(self) -> None:
        before = self.player.stored_settings()
        for number in (1, 2, 3):
            with self.subTest(save=number):
                self._reset()
                outcome = self.player.update(wrapper=trace.killed_at(SAVES, number))
                self.ends(outcome, -signal.SIGKILL)
                self.assertLessEqual(set(self._kept_keys(before)),
                                     set(self.player.stored_settings()))
                self._nothing_is_torn()
                self._next_update_finishes()

    def _kept_keys(self, before: dict[str, object]) -> list[str]:
        """The entries of files that both versions share."""
        same = {name for name in self.new_files
                if self.old_files.get(name) == self.new_files[name]}
        keys = [key for key in before if any(key.endswith(f"/mac/{name}.bz2") for name in same)]
        assert keys
        return keys

    def test_a_kill_takes_over_what_the_killed_launcher_had_prepared(self) -> None:
        self.ends(self.player.update(wrapper=trace.killed_at(RENAMES, 1)), -signal.SIGKILL)
        extra = set(snapshot.contents(self.player.game)) - set(self.old_files)
        self.assertTrue([name for name in extra if name.endswith(PART_SUFFIX)])
        self._next_update_finishes()

    def test_ctrl_c_ends_an_update_at_once_and_tears_nothing(self) -> None:
        self._signal_while_downloading(signal.SIGINT)

    def test_a_polite_end_ends_an_update_at_once_and_tears_nothing(self) -> None:
        self._signal_while_downloading(signal.SIGTERM)

    def _signal_while_downloading(self, number: signal.Signals) -> None:
        self.hosts.fail({"path": "*.bz2", "fault": {"delay": 0.05}})
        with self.player.start("--update") as process:
            self._wait_for_requests(process, 5)
            process.send_signal(number)
            process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, -number)
        self._nothing_is_torn()
        self.hosts.forget()
        self._next_update_finishes()

    def _wait_for_requests(self, process: "subprocess.Popen[str]", count: int) -> None:
        give_up = time.monotonic() + DEADLINE
        while len(self.hosts.file_requests()) < count:
            self.assertIsNone(process.poll(), "the update ended before the signal")
            self.assertLess(time.monotonic(), give_up, "no files are asked for")


if __name__ == "__main__":
    case.main()
