#!/usr/bin/python3
"""Installing the game, and looking at it again when nothing has changed."""

import json
import shutil
import subprocess
import sys

from harness import case, games, settings, snapshot, trace


class Install(case.SystemTest):

    def test_a_fresh_install_gives_exactly_the_published_game(self) -> None:
        outcome = self.ends(self.player.update(), case.VALID)
        self.has_the_game()
        self.nothing_is_left_over()
        self.assertIn("40 of 40 files valid", outcome.output)

    def test_a_check_without_a_game_changes_nothing_and_tells(self) -> None:
        self.ends(self.player.verify(), case.INVALID)
        self.assertFalse(self.player.game.exists())
        self.assertEqual(self.hosts.file_requests(), [])

    def test_an_unchanged_game_is_neither_opened_nor_fetched(self) -> None:
        self.install()
        before = snapshot.identities(self.player.game)
        for action in ("--verify", "--update"):
            with self.subTest(action):
                outcome, calls = trace.traced(self.player, action)
                self.ends(outcome, case.VALID)
                opened = trace.count_below(_without_folders(calls), self.player.game,
                                           trace.OPENINGS)
                changed = trace.count_below(calls, self.player.game, trace.CHANGES)
                self.assertEqual((dict(opened), dict(changed)), ({}, {}))
        self.assertEqual(snapshot.identities(self.player.game), before)
        self.assertEqual(self.hosts.file_requests(), [])

    def test_an_unchanged_game_costs_one_attribute_read_a_file(self) -> None:
        self.install()
        _, calls = trace.traced(self.player, "--verify")
        counted = trace.count_below(calls, self.player.game, trace.ATTRIBUTE_READS)
        files = {str(path) for path in self.player.game.rglob("*") if path.is_file()}
        folders = {path: count for path, count in counted.items() if path not in files}
        self.assertEqual({path: counted[path] for path in files}, dict.fromkeys(files, 1))
        self.assertLessEqual(max(folders.values()), 2, "a folder is looked at once, not per file")
        print(f"\n{sum(counted.values())} attribute reads below the game folder "
              f"for {len(files)} files in {len(folders)} folders")

    def test_a_touched_file_is_read_once_and_trusted_again(self) -> None:
        self.install()
        touched = self.player.game / games.EXECUTABLE
        touched.touch()
        for expected in ({str(touched): 1}, {}):
            _, calls = trace.traced(self.player, "--verify")
            self.assertEqual(trace.count_below(_without_folders(calls), self.player.game,
                                               trace.OPENINGS), expected)

    def test_the_next_file_is_asked_for_before_the_one_at_hand_is_read(self) -> None:
        self.install()
        self.player.settings.unlink()
        outcome, calls = trace.traced(self.player, "--verify", calls="read,fadvise64")
        self.ends(outcome, case.VALID)
        seen = [call for call in calls if call.path.startswith(f"{self.player.game}/")]
        order = list(dict.fromkeys(call.path for call in seen if call.name == "read"))
        self.assertEqual(len(order), 40)
        for path, following in zip(order, order[1:]):
            asked = next(i for i, call in enumerate(seen)
                         if (call.name, call.path) == ("fadvise64", following))
            read = next(i for i, call in enumerate(seen)
                        if (call.name, call.path) == ("read", path))
            self.assertLess(asked, read, f"{following} before {path}")

    def test_files_of_the_player_stay_in_the_game_folder(self) -> None:
        mine = {"screenshots/one.png": b"mine", "settings.ini": b"also mine"}
        for name, data in mine.items():
            path = self.player.game / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)
        self.ends(self.player.update(), case.VALID)
        for name, data in mine.items():
            self.assertEqual((self.player.game / name).read_bytes(), data)


def _without_folders(calls: list[trace.Call]) -> list[trace.Call]:
    return [call for call in calls if "O_DIRECTORY" not in call.line]


class NextVersion(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        cls.old = cls.folder / "old"
        games.small_game(cls.old)
        games.next_version(cls.old, cls.source)
        games.publish(cls.source, cls.tree)

    def test_an_update_fetches_what_changed_and_leaves_the_rest_alone(self) -> None:
        shutil.copytree(self.old, self.player.game)
        old, new = (snapshot.files_only(snapshot.contents(path))
                    for path in (self.player.game, self.source))
        same = {name for name in new if old.get(name) == new[name]}
        before = snapshot.identities(self.player.game)

        self.ends(self.player.update(), case.VALID)

        now = snapshot.files_only(snapshot.contents(self.player.game))
        self.assertEqual(now, {**old, **new})
        after = snapshot.identities(self.player.game)
        self.assertTrue(same)
        self.assertEqual({name: after[name] for name in same},
                         {name: before[name] for name in same})
        self.assertEqual(len(self.hosts.file_requests()), len(new) - len(same))


class SampleGame(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        subprocess.run([sys.executable, settings.TOOLS / "make-sample-game", cls.source,
                        "--executable", settings.launcher()], check=True, capture_output=True)
        games.publish(cls.source, cls.tree)

    def test_the_sample_game_of_160_megabytes_installs_whole(self) -> None:
        outcome = self.ends(self.player.update(), case.VALID)
        self.has_the_game()
        listed = json.loads((self.tree / "mac" / "patcher.json").read_bytes())["files"]
        self.assertEqual(len(self.hosts.file_requests()), len(listed))
        print(f"\n{outcome.output.splitlines()[-1]}")


if __name__ == "__main__":
    case.main()
