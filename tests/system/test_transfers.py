#!/usr/bin/python3
"""How the hosts see an update: one file at a time, over one connection, and one launcher."""

import subprocess
import time
from typing import Any

from harness import case, hosts

DEADLINE = 30


class Transfers(case.SystemTest):

    def _wait_for_files(self, process: "subprocess.Popen[str]", count: int) -> None:
        give_up = time.monotonic() + DEADLINE
        while len(self.hosts.file_requests()) < count:
            self.assertIsNone(process.poll(), "the update ended too early")
            self.assertLess(time.monotonic(), give_up, "no files are asked for")

    def test_each_file_is_asked_for_once_and_over_one_connection(self) -> None:
        self.ends(self.player.update(), case.VALID)
        manifest, *files = self.hosts.requests()
        self.assertEqual((manifest["method"], manifest["path"]), ("GET", hosts.MANIFEST))
        published = {f"/mac/{path.relative_to(self.source)}.bz2"
                     for path in self.source.rglob("*") if path.is_file()}
        self.assertEqual(len(files), len(published))
        self.assertEqual(len({entry["path"] for entry in files}), len(published))
        self.assertEqual({entry["connection"] for entry in files}, {files[0]["connection"]})

    def test_one_file_is_under_way_at_a_time(self) -> None:
        self.hosts.fail({"path": "*.bz2", "fault": {"delay": 0.02}})
        under_way: list[int] = []
        with self.player.start("--update") as process:
            self._wait_for_files(process, 1)
            while process.poll() is None:
                under_way.append(sum(not entry["done"] for entry in self.hosts.file_requests()))
            process.communicate()
        self.assertEqual(process.returncode, case.VALID)
        self.assertEqual(max(under_way), 1)

    def test_what_is_asked_tells_nothing_about_the_player(self) -> None:
        self.ends(self.player.update(), case.VALID)
        facts: set[str] = {fact for entry in self.hosts.requests() for fact in self._extras(entry)}
        self.assertEqual(facts, set())

    def _extras(self, entry: dict[str, Any]) -> list[str]:
        return [entry["path"]] if "?" in entry["path"] or "fields" in entry else []

    def test_a_second_update_leaves_the_first_alone(self) -> None:
        self.hosts.fail({"path": "*.bz2", "fault": {"delay": 0.05}})
        with self.player.start("--update") as first:
            self._wait_for_files(first, 2)
            outcome = self.ends(self.player.update(), case.ANOTHER_LAUNCHER)
            self.assertIn("Another launcher is at work", outcome.errors)
            first.communicate(timeout=DEADLINE)
        self.assertEqual(first.returncode, case.VALID)
        self.has_the_game()

    def test_a_check_during_an_update_spoils_nothing(self) -> None:
        self.hosts.fail({"path": "*.bz2", "fault": {"delay": 0.02}})
        with self.player.start("--update") as update:
            self._wait_for_files(update, 1)
            while update.poll() is None:
                self.ends(self.player.verify(), case.VALID, case.INVALID)
            output, errors = update.communicate()
        self.assertEqual(update.returncode, case.VALID, output + errors)
        self.has_the_game()
        self.ends(self.player.verify(), case.VALID)


if __name__ == "__main__":
    case.main()
