#!/usr/bin/python3
"""Game files whose downloads go wrong, once, twice or for good."""

import bz2
import os
from typing import Any

from harness import case, games, snapshot
from harness.plain_http import PlainHttp

TARGET = "target.bin"
PATH = f"/mac/{TARGET}.bz2"
OLD = b"the old bytes\n" * 10
MOST_FAILURES_IN_A_RUN = 2

# What is received is no file, so that the old one stays.
UNUSABLE: dict[str, dict[str, Any]] = {
    "status 404": {"status": 404, "body": "<h1>Not here</h1>"},
    "status 500 without a body": {"status": 500, "empty": True},
    "nothing": {"empty": True},
    "a page": {"body": "<!DOCTYPE html><title>Sign in to this network</title>"},
    "no answer": {"cut": -1},
    "a cut in the middle": {"cut": 5000},
    "a cut before the end": {"cut": -2, "no-length": True},
    "a reset at once": {"reset": 0},
    "a reset in the middle": {"reset": 5000},
    "a longer length": {"length": "+100"},
    "a shorter length": {"length": "-100"},
    "no length and a cut": {"no-length": True, "cut": 5000},
    "a bad chunk": {"bad-chunk": 5000},
    "one damaged byte": {"damage": {"count": 1, "seed": 5}},
    "a damaged head": {"damage": {"offsets": [0]}},
    "a damaged end": {"damage": {"offsets": [-2]}},
    "a redirect to itself": {"redirect": PATH},
    "a redirect to a page": {"redirect": "/no/such/page"},
    "a redirect to a file": {"redirect": "file:///etc/hostname"},
    "a redirect to nobody": {"redirect": "https://nobody.localhost:1/"},
}

# What is received is a file, but not this one.
OTHER_FILE: dict[str, dict[str, Any]] = {
    "a redirect to another file": {"redirect": "/mac/other.bin.bz2"},
    "an older version": {"file": "older"},
    "an empty file": {"file": "empty"},
}


class FileFaults(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        cls.source.mkdir()
        contents = {TARGET: os.urandom(100_000), "other.bin": b"another file\n" * 100,
                    games.EXECUTABLE: b"A game.\n" * 500, "z.bin": b"the last\n"}
        for name, data in contents.items():
            (cls.source / name).write_bytes(data)
        games.publish(cls.source, cls.tree)
        for name, data in (("older", b"an older version"), ("empty", b"")):
            (cls.folder / name).write_bytes(bz2.compress(data))

    def _given_an_old_file(self) -> None:
        path = self.player.game / TARGET
        path.parent.mkdir(parents=True, exist_ok=True)
        for other in path.parent.iterdir():
            other.unlink()
        path.write_bytes(OLD)

    def _fail(self, fault: dict[str, Any], **limit: int) -> None:
        wishes = dict(fault)
        if "file" in wishes:
            wishes["file"] = str(self.folder / wishes["file"])
        if wishes.get("cut", 0) < 0 and "no-length" in wishes:
            wishes["cut"] += (self.tree / "mac" / f"{TARGET}.bz2").stat().st_size
        self.hosts.forget()
        self.hosts.fail({"path": PATH, "fault": wishes, **limit})

    def _all_but_the_target_are_right(self) -> None:
        now, wanted = (snapshot.contents(root) for root in (self.player.game, self.source))
        self.assertEqual({name for name in wanted if now.get(name) != wanted[name]}, {TARGET})
        self.assertEqual(set(now), set(wanted))

    def test_a_fault_that_passes_is_healed_in_the_same_run(self) -> None:
        for name, fault in {**UNUSABLE, **OTHER_FILE}.items():
            for times in range(1, MOST_FAILURES_IN_A_RUN + 1):
                with self.subTest(name, times=times):
                    self._given_an_old_file()
                    self._fail(fault, times=times)
                    self.ends(self.player.update(), case.VALID)
                    self.has_the_game()

    def test_a_fault_that_stays_keeps_the_old_file_and_mends_the_others(self) -> None:
        for name, fault in UNUSABLE.items():
            with self.subTest(name):
                self._given_an_old_file()
                before = snapshot.identities(self.player.game)[TARGET]
                self._fail(fault)
                self.ends(self.player.update(), case.INVALID)
                self._all_but_the_target_are_right()
                self.assertEqual((self.player.game / TARGET).read_bytes(), OLD)
                self.assertEqual(snapshot.identities(self.player.game)[TARGET], before)
                self.nothing_is_left_over()

    def test_another_file_that_is_served_for_good_is_never_taken_for_right(self) -> None:
        for name, fault in OTHER_FILE.items():
            with self.subTest(name):
                self._given_an_old_file()
                self._fail(fault)
                self.ends(self.player.update(), case.INVALID)
                self._all_but_the_target_are_right()
                self.hosts.forget()
                self.ends(self.player.verify(), case.INVALID)
                self.ends(self.player.update(), case.VALID)
                self.has_the_game()

    def test_an_update_gives_up_on_a_file_that_never_comes_right(self) -> None:
        self._given_an_old_file()
        self._fail({"status": 404, "empty": True})
        self.ends(self.player.update(), case.INVALID)
        asked = [entry["path"] for entry in self.hosts.file_requests()]
        # The first round heals the others; three more in a row heal nothing.
        self.assertEqual(asked.count(PATH), 4)
        self.assertEqual(len(asked), 4 + 3)

    def test_a_file_is_never_fetched_without_tls(self) -> None:
        packed = (self.tree / "mac" / f"{TARGET}.bz2").read_bytes()
        with PlainHttp(packed) as plain:
            self._given_an_old_file()
            self._fail({"redirect": plain.url + PATH})
            self.ends(self.player.update(), case.INVALID)
            self.assertEqual(plain.requests, [])
        self._all_but_the_target_are_right()

    def test_a_fault_of_every_file_ends_the_update(self) -> None:
        self._given_an_old_file()
        self.hosts.fail({"path": "*.bz2", "fault": {"reset": 0}})
        self.ends(self.player.update(), case.INVALID)
        self.assertEqual((self.player.game / TARGET).read_bytes(), OLD)

    def test_what_follows_the_compressed_stream_is_ignored(self) -> None:
        packed = self.folder / "with more behind it"
        packed.write_bytes((self.tree / "mac" / f"{TARGET}.bz2").read_bytes() + b"more" * 1000)
        self._fail({"file": packed.name})
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()

    def test_a_whole_file_counts_whatever_the_status_says(self) -> None:
        self._fail({"status": 500})
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()

    def test_slow_hosts_are_waited_for(self) -> None:
        self._fail({"drip": {"bytes": 20_000, "seconds": 0.3}, "delay": 0.5})
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()


if __name__ == "__main__":
    case.main()
