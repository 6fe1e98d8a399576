#!/usr/bin/python3
"""Manifests that are missing, broken, strange or hostile."""

import bz2
import json
from pathlib import Path
from typing import Any, Mapping, Optional

from harness import case, games, hosts, snapshot
from harness.plain_http import PlainHttp

UNUSABLE: dict[str, dict[str, Any]] = {
    "a page": {"body": "<!DOCTYPE html><title>Sign in to this network</title>"},
    "nothing": {"empty": True},
    "white space": {"body": " \n"},
    "half of it": {"body": '{"server-version": "7.3.0", "files": {"a": {"hash": "0123'},
    "a number": {"body": "42"},
    "null": {"body": "null"},
    "a comma too many": {"body": '{"files": {},}'},
    "two objects": {"body": "{}{}"},
    "not UTF-8": {"file": "/bin/true"},
    "nested without end": {"body": "[" * 100_000},
    "nested too deep": {"body": '{"files":' * 2000 + "{}" + "}" * 2000},
    "status 404": {"status": 404},
    "status 403": {"status": 403},
    "status 500": {"status": 500},
    "status 503": {"status": 503},
    "a cut": {"cut": 100},
    "a reset": {"reset": 100},
    "a longer length": {"length": "+1"},
    "a shorter length": {"length": "-10"},
    "a bad chunk": {"bad-chunk": 10},
    "a redirect to itself": {"redirect": hosts.MANIFEST},
    "a redirect to a file": {"redirect": "file:///etc/hostname"},
    "a redirect to no host": {"redirect": "https://"},
}

# Manifests without a single file.
EMPTY: dict[str, Any] = {
    "an empty object": {},
    "an array": [1, 2, 3],
    "an array of objects": [{"files": {"a": {"hash": "0123456"}}}],
    "no files": {"server-version": "1", "mac-launcher-version": "1"},
    **{f"files are {json.dumps(value)}": {"files": value}
       for value in (None, True, 1, "files", [], [{"a": 1}], {})},
    "every other value of another type": {
        "files": {}, "server-version": 1, "mac-launcher-version": [], "exec": {}},
}

# Entries of one file that can never be right.
STRANGE_ENTRIES: dict[str, Any] = {
    **{f"the entry is {json.dumps(value)}": value for value in (None, True, 7, "text", [], {})},
    **{f"the hash is {json.dumps(value)}": {"path": "", "hash": value, "patches": []}
       for value in (None, False, 1234567, 1e300, [], {}, "", "ABCDEF0", "0" * 64)},
}

# Entries that are right in all that matters.
STRANGE_EXTRAS: dict[str, Any] = {
    **{f"the path is {json.dumps(value)}": {"path": value} for value in (None, 1, [], {})},
    **{f"the patches are {json.dumps(value)}": {"patches": value}
       for value in (None, 1, "text", {"a_b_c.patch": 1}, [1, None, {}, "nohash.patch", "_"])},
    "there is more": {"size": -1, "mode": "0777"},
}


class Manifests(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        cls.source.mkdir()
        (cls.source / "a.bin").write_bytes(b"The moor at dawn.\n" * 100)
        (cls.source / games.EXECUTABLE).write_bytes(b"A game.\n" * 500)
        games.publish(cls.source, cls.tree)

    def _serve(self, document: Any) -> None:
        self.hosts.fail_manifest(body=json.dumps(document))

    def _right_hash(self) -> str:
        return games.short_hash((self.source / "a.bin").read_bytes())

    def test_an_unusable_manifest_changes_nothing_and_is_told(self) -> None:
        self.install()
        (self.player.game / "a.bin").unlink()
        log = (self.player.state_home,)
        before = snapshot.contents(self.player.root, leave_out=log)
        for name, fault in UNUSABLE.items():
            for action in ("--verify", "--update"):
                with self.subTest(name, action=action):
                    self.hosts.fail_manifest(**fault)
                    outcome = self.ends(self.player.run(action), case.NO_MANIFEST)
                    self.assertIn("No manifest: ", outcome.errors)
        self.assertEqual(snapshot.contents(self.player.root, leave_out=log), before)
        self.assertEqual(self.hosts.file_requests(), [])

    def test_a_manifest_without_files_leaves_the_game_as_it_is(self) -> None:
        self.install()
        before = snapshot.identities(self.player.game)
        for name, document in EMPTY.items():
            with self.subTest(name):
                self._serve(document)
                outcome = self.ends(self.player.update(), case.VALID)
                self.assertIn("0 of 0 files valid", outcome.output)
        self.assertEqual(snapshot.identities(self.player.game), before)

    def test_an_entry_that_can_never_be_right_does_not_hold_up_the_others(self) -> None:
        for name, entry in STRANGE_ENTRIES.items():
            with self.subTest(name):
                right = games.manifest({"a.bin": self._right_hash()})["files"]
                self._serve({"files": {**right, games.EXECUTABLE: entry}})
                (self.player.game / "a.bin").unlink(missing_ok=True)
                outcome = self.ends(self.player.update(), case.INVALID)
                self.assertIn("1 of 2 files valid", outcome.output)
                self.has_the_game()

    def test_members_that_do_not_matter_may_be_anything(self) -> None:
        for name, extras in STRANGE_EXTRAS.items():
            with self.subTest(name):
                self._serve({"files": {"a.bin": {"hash": self._right_hash(), **extras}}})
                (self.player.game / "a.bin").unlink(missing_ok=True)
                self.ends(self.player.update(), case.VALID)

    def test_a_hundred_thousand_entries_are_checked(self) -> None:
        big = self.player.root / "big.json"
        hashes = {f"data/{number % 100}/{number}.bin": "0123456" for number in range(100_000)}
        big.write_text(json.dumps(games.manifest(hashes)))
        self.hosts.fail_manifest(file=str(big))
        outcome = self.ends(self.player.verify(), case.INVALID)
        self.assertIn("0 of 100000 files valid", outcome.output)

    def test_a_manifest_of_two_hundred_megabytes_is_refused(self) -> None:
        endless = self.player.root / "endless.json"
        with endless.open("wb") as file:
            file.truncate(200 * 1024 * 1024)
        self.hosts.fail_manifest(file=str(endless))
        outcome = self.ends(self.player.verify(), case.NO_MANIFEST)
        self.assertIn("No manifest: The answer is larger than 67108864 bytes.", outcome.errors)

    def test_a_manifest_is_never_fetched_without_tls(self) -> None:
        with PlainHttp((self.tree / "mac" / "patcher.json").read_bytes()) as plain:
            self.hosts.fail_manifest(redirect=f"{plain.url}{hosts.MANIFEST}")
            self.ends(self.player.update(), case.NO_MANIFEST)
            self.assertEqual(plain.requests, [])

    def test_a_manifest_may_be_redirected_to_another_host_with_tls(self) -> None:
        (self.tree / "mac" / "moved.json").write_bytes(
            (self.tree / "mac" / "patcher.json").read_bytes())
        self.hosts.fail_manifest(redirect="/mac/moved.json", code=301)
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()


class HostileKeys(case.SystemTest):
    """Whatever a key asks for, the hosts would serve it with the right hash."""

    EVIL = b"evil bytes\n" * 50

    @classmethod
    def make_game(cls) -> None:
        cls.source.mkdir()
        for name in ("good.bin", games.EXECUTABLE):
            (cls.source / name).write_bytes(f"good bytes of {name}\n".encode() * 50)
        games.publish(cls.source, cls.tree)
        cls.evil = cls.folder / "evil.bz2"
        cls.evil.write_bytes(bz2.compress(cls.EVIL))

    def _hostile_keys(self) -> list[str]:
        canary = str(self.player.root / "canary.txt")
        return ["", ".", "..", "/", "//", "a/", "a//b", "./b", "a/./b", "../x", "../../canary.txt",
                "../../../canary.txt", "a/..", "a/../b", "a/../../b", "a/../../../../canary.txt",
                canary, "/" + canary, "/etc/canary", "../Game/x", "a\0b", "\0", "x\0/../../y",
                "ends in NUL\0", "n" * 256, "n" * 300 + "/x", "deep/" * 2000 + "x", "ü" * 200,
                "a/" * 40_000 + "b"]

    def _plant_canaries(self) -> None:
        for place in (self.player.root, self.player.data_home, self.player.data):
            place.mkdir(exist_ok=True)
            (place / "canary.txt").write_text("must stay as it is")

    def test_no_key_leaves_the_game_folder(self) -> None:
        self._plant_canaries()
        keys = self._hostile_keys()
        good = {path.name: games.short_hash(path.read_bytes()) for path in self.source.iterdir()}
        evil = dict.fromkeys(keys, games.short_hash(self.EVIL))
        listed = self.player.root / "manifest.json"
        listed.write_text(json.dumps(games.manifest({**evil, **good})))
        self.hosts.fail({"path": hosts.MANIFEST, "fault": {"file": str(listed)}},
                        *({"path": f"/mac/{name}.bz2", "fault": {}} for name in good),
                        {"path": "*", "fault": {"status": 200, "file": str(self.evil)}})
        settings = (self.player.game, self.player.settings.parent, self.player.state_home)
        before = snapshot.contents(self.player.root, leave_out=settings)

        outcome = self.ends(self.player.update(), case.INVALID)

        self.assertEqual(snapshot.contents(self.player.root, leave_out=settings), before)
        self.has_the_game()
        self.assertIn(f"{len(set(keys))} of the manifest's files left out", outcome.output)
        self.assertEqual({entry["path"] for entry in self.hosts.requests()},
                         {hosts.MANIFEST, *(f"/mac/{name}.bz2" for name in good)})

    def test_odd_keys_that_name_a_file_get_exactly_that_file(self) -> None:
        names = ["...", "..a", "a..", " ", " lead", "trail ", "-rf", "~", "$HOME", "a\\..\\b",
                 "%2e%2e", "%2F", "CON", "\u202etxt", "tab\there", "new\nline", "b\x7f",
                 "ä", "a\u0308", "n" * 250, "q?x=1", "f#g", "&amp;", "*", "[a]", "a:b",
                 "\U0001f438"]
        self.hosts.fail({"path": "*.bz2*", "fault": {"status": 200, "file": str(self.evil)}},
                        {"path": "/mac/q*", "fault": {"status": 200, "file": str(self.evil)}},
                        {"path": hosts.MANIFEST, "fault": {"body": json.dumps(
                            games.manifest(dict.fromkeys(names, games.short_hash(self.EVIL))))}})
        self.ends(self.player.update(), case.VALID)
        self.assertEqual({path.name: path.read_bytes() for path in self.player.game.iterdir()},
                         dict.fromkeys(names, self.EVIL))


class NoHosts(case.SystemTest):

    @classmethod
    def trees(cls) -> Mapping[Optional[str], Path]:
        return {}

    def test_hosts_that_are_down_are_told_at_once(self) -> None:
        outcome = self.ends(self.player.update(), case.NO_MANIFEST)
        self.assertIn("Connection refused", outcome.errors)

    def test_hosts_of_another_authority_get_no_request(self) -> None:
        strangers = hosts.Hosts(self.player.root, {None: self.tree}, is_trusted=False)
        self.addCleanup(strangers.stop)
        self.ends(self.player.update(), case.NO_MANIFEST)
        self.assertEqual(strangers.requests(), [])
        self.assertFalse(self.player.game.exists())


if __name__ == "__main__":
    case.main()
