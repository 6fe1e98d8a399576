#!/usr/bin/python3
"""The options of the launcher, without a display."""

import bz2
import functools
import json
import os
import re
import subprocess
from pathlib import Path
from typing import BinaryIO, Mapping, Optional

from harness import case, games, hosts, settings, trace

MISTAKES = (
    ("--verify", "--update"), ("--verify", "--nonsense"), ("--update", "--nonsense=1"),
    ("--update", "--environment"), ("--environment", "qa"), ("--update=now",),
    ("--update", "environment", "qa"),
    ("--verify", "--environment", "qa", "--update"))
NOT_PART_OF_A_HOST = ("qa/", "a/../b", "evil.example:443/", "@evil.example", "a b", "ä", "a%2fb",
                      "?", "#", "a:1", "qa\n", "\\", "[::1]")


def _read_terminal(reading: BinaryIO) -> bytes:
    """What came; nothing once nobody has the terminal open."""
    try:
        return reading.read(4096)
    except OSError:
        return b""


class CommandLine(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        cls.qa_source, cls.qa_tree = cls.folder / "qa source", cls.folder / "qa tree"
        for seed, (source, tree) in enumerate(((cls.source, cls.tree),
                                               (cls.qa_source, cls.qa_tree))):
            games.small_game(source, megabytes=1, seed=seed)
            games.publish(source, tree)

    @classmethod
    def trees(cls) -> Mapping[Optional[str], Path]:
        return {None: cls.tree, "qa": cls.qa_tree}

    def _asked_hosts(self) -> set[str]:
        return {entry["host"] for entry in self.hosts.requests()}

    def test_help_needs_no_display(self) -> None:
        for option in ("--help", "-h"):
            outcome = self.ends(self.player.run(option), 0)
            self.assertIn("--update", outcome.output)
            self.assertEqual(outcome.errors, "")

    def test_the_version_needs_no_display(self) -> None:
        for option in ("--version", "-v"):
            outcome = self.ends(self.player.run(option), 0)
            self.assertRegex(outcome.output, re.compile(r"\Aquellmoor-launcher \d+(\.\d+)+\n\Z"))
            self.assertEqual(outcome.errors, "")

    def test_help_and_version_leave_no_trace(self) -> None:
        for option in ("--help", "--version"):
            self.ends(self.player.run(option), 0)
        self.assertEqual([path for path in self.player.root.rglob("*") if path.is_file()], [])

    def test_a_mistake_does_nothing_and_says_what_helps(self) -> None:
        for arguments in MISTAKES:
            with self.subTest(arguments):
                outcome = self.ends(self.player.run(*arguments), case.MISTAKE)
                self.assertEqual(outcome.output, "")
                self.assertIn("--help", outcome.errors)
        self.assertEqual(self.hosts.requests(), [])
        self.assertFalse(self.player.data.exists())

    def test_an_environment_has_a_download_host_of_its_own(self) -> None:
        self.ends(self.player.run("--update", "--environment", "qa"), case.VALID)
        self.has_the_game(self.qa_source)
        self.assertEqual(self._asked_hosts(), {"download-qa.localhost"})

    def test_changing_the_environment_and_back_changes_the_game_and_back(self) -> None:
        self.ends(self.player.update(), case.VALID)
        self.ends(self.player.run("--verify", "--environment", "qa"), case.INVALID)
        self.ends(self.player.run("--update", "--environment", "qa"), case.VALID)
        self.has_the_game(self.qa_source)
        self.ends(self.player.verify(), case.INVALID)
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()

    def test_an_environment_without_hosts_never_falls_back_to_the_usual_ones(self) -> None:
        for name in ("dev", "", "nobody.knows"):
            with self.subTest(name):
                self.ends(self.player.run("--update", "--environment", name), case.NO_MANIFEST)
                self.assertNotIn("download.localhost", self._asked_hosts())

    def test_an_environment_that_cannot_name_a_host_makes_no_connection(self) -> None:
        for name in NOT_PART_OF_A_HOST:
            with self.subTest(name):
                outcome, calls = trace.traced(self.player, "--update", "--environment", name,
                                              calls="connect,sendto,sendmmsg")
                self.ends(outcome, case.NO_MANIFEST)
                self.assertEqual([call.line for call in calls if "AF_INET" in call.line], [])

    def test_progress_in_a_pipe_is_plain_lines(self) -> None:
        outcome = self.ends(self.player.update(), case.VALID)
        self.assertNotRegex(outcome.output, r"[\x1b\r]")
        self.assertEqual(len(re.findall(r"^Updating file \d+ of 40: ", outcome.output, re.M)), 40)

    def test_progress_on_a_terminal_is_one_line_that_changes(self) -> None:
        name = "data/100%1 %4.bin"
        right = os.urandom(400_000)
        packed = self.player.root / "packed"
        packed.write_bytes(bz2.compress(right))
        document = games.manifest({name: games.short_hash(right), "../out": "0123456"})
        self.hosts.fail({"path": hosts.MANIFEST, "fault": {"body": json.dumps(document)}},
                        {"path": "*", "fault": {"file": str(packed), "rate": 500_000}})
        outside, terminal = os.openpty()
        with open(outside, "rb", buffering=0) as reading, subprocess.Popen(
                [str(settings.launcher()), "--update"], env=self.player.environment(),
                stdin=subprocess.DEVNULL, stdout=terminal) as process:
            os.close(terminal)
            shown = b"".join(iter(functools.partial(_read_terminal, reading), b"")).decode()
        self.assertEqual(process.returncode, case.INVALID)
        self.assertRegex(shown, r"\r\x1b\[KUpdating file 1 of 1: 100%1 %4\.bin "
                                r"\[\d+\.\d/\d+\.\d MB @ \d+\.\d MB/s\]")
        self.assertRegex(shown, r"(?m)^1 of 1 files valid")

    def test_an_output_that_nobody_reads_does_not_stop_an_update(self) -> None:
        with self.player.start("--update") as process:
            process.stdout.close()
            process.stdout = None
            process.communicate(timeout=60)
        self.assertEqual(process.returncode, case.VALID)
        self.has_the_game()


if __name__ == "__main__":
    case.main()
