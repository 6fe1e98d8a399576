#!/usr/bin/python3
"""Things in the way of an update: each ends it with a message, and none is destroyed."""

import os
import shutil
from pathlib import Path
from typing import Callable

from harness import case, games, isolation, snapshot

FILE_IN_FOLDER = "deep/er/and/deep/er.bin"
FOLDER = "deep/er"


class Obstacles(case.SystemTest):

    def _update_ends_with_all_but(self, wrong: set[str], message: str,
                                  *, without_powers: bool = False) -> None:
        """Every other file is right, and the run says what went wrong."""
        wrapper = case.WITHOUT_ROOTS_POWERS if without_powers else ()
        outcome = self.ends(self.player.update(wrapper=wrapper), case.INVALID)
        self.assertIn(message, outcome.output + outcome.errors)
        published = snapshot.files_only(snapshot.contents(self.source))
        present = snapshot.files_only(snapshot.contents(self.player.game))
        self.assertEqual({name for name in published if present.get(name) != published[name]},
                         wrong)

    def test_a_folder_in_place_of_a_file_stays_with_all_it_holds(self) -> None:
        obstacle = self.player.game / games.EXECUTABLE
        obstacle.mkdir(parents=True)
        (obstacle / "diary.txt").write_text("mine")
        self._update_ends_with_all_but({games.EXECUTABLE}, "Is a directory")
        self.assertEqual((obstacle / "diary.txt").read_text(), "mine")

    def test_an_empty_folder_in_place_of_a_file_stays(self) -> None:
        obstacle = self.player.game / games.EXECUTABLE
        obstacle.mkdir(parents=True)
        self._update_ends_with_all_but({games.EXECUTABLE}, "Is a directory")
        self.assertEqual(list(obstacle.iterdir()), [])

    def test_a_file_in_place_of_a_folder_stays(self) -> None:
        obstacle = self.player.game / "deep"
        self.player.game.mkdir(parents=True)
        obstacle.write_text("mine")
        self._update_ends_with_all_but({FILE_IN_FOLDER}, "Not a directory")
        self.assertEqual(obstacle.read_text(), "mine")

    def test_a_folder_that_leads_out_of_the_game_is_never_followed(self) -> None:
        outside = self.player.root / "outside"
        shutil.copytree(self.source / "deep", outside)
        (outside / "er/and/deep/er.bin").write_bytes(b"mine")
        before = snapshot.contents(outside)
        self.player.game.mkdir(parents=True)
        (self.player.game / "deep").symlink_to(outside)
        self._update_ends_with_all_but({FILE_IN_FOLDER}, "leads out of the game folder")
        self.assertEqual(snapshot.contents(outside), before)

    def test_a_folder_that_is_a_link_within_the_game_is_followed(self) -> None:
        (self.player.game / "elsewhere").mkdir(parents=True)
        (self.player.game / "deep").symlink_to("elsewhere")
        self.ends(self.player.update(), case.VALID)
        self.assertEqual((self.player.game / "elsewhere/er/and/deep/er.bin").read_bytes(),
                         (self.source / FILE_IN_FOLDER).read_bytes())

    def test_files_in_place_of_the_launchers_own_folders_stay(self) -> None:
        for name in ("Quellmoor", "Quellmoor/Game"):
            with self.subTest(name):
                shutil.rmtree(self.player.data, ignore_errors=True)
                obstacle = self.player.data_home / name
                obstacle.parent.mkdir(exist_ok=True)
                obstacle.write_text("mine")
                self.ends(self.player.update(), case.INVALID)
                self.assertEqual(obstacle.read_text(), "mine")
                obstacle.unlink()

    def test_a_leftover_folder_in_place_of_a_prepared_file_stops_only_that_file(self) -> None:
        self.player.game.mkdir(parents=True)
        (self.player.game / f".{games.EXECUTABLE}.quellmoor-part").mkdir()
        self._update_ends_with_all_but({games.EXECUTABLE}, "Cannot write")


class NoPermission(case.SystemTest):

    def setUp(self) -> None:
        super().setUp()
        self.install()

    def _spoil(self, name: str = games.EXECUTABLE) -> Path:
        path = self.player.game / name
        path.write_bytes(b"wrong")
        return path

    def _stays(self, code: int, *, message: str, run: Callable[[], case.Outcome]) -> None:
        """The run ends with that code, and every file is still the same one."""
        before = snapshot.identities(self.player.game), snapshot.contents(self.player.game)
        outcome = self.ends(run(), code)
        self.assertIn(message, outcome.output + outcome.errors)
        self.assertEqual((snapshot.identities(self.player.game),
                          snapshot.contents(self.player.game)), before)

    def _update_without_powers(self) -> case.Outcome:
        return self.player.update(wrapper=case.WITHOUT_ROOTS_POWERS)

    def _make_read_only(self, place: Path) -> None:
        isolation.mount("--bind", str(place), str(place))
        self.addCleanup(isolation.unmount, str(place))
        isolation.mount("-o", "remount,bind,ro", str(place))

    def test_a_wrong_file_on_a_read_only_disk_stays(self) -> None:
        self._spoil()
        self._make_read_only(self.player.data)
        self._stays(case.INVALID, message="Read-only file system", run=self.player.update)

    def test_a_right_game_on_a_read_only_disk_is_right(self) -> None:
        self._make_read_only(self.player.data)
        self._stays(case.VALID, message="40 of 40 files valid", run=self.player.update)

    def test_a_right_game_needs_no_settings(self) -> None:
        for path in self.player.game.rglob("*"):
            path.touch()
        self._make_read_only(self.player.root)
        self._stays(case.VALID, message="Cannot save the settings", run=self.player.update)

    def test_a_folder_that_must_not_be_written_keeps_its_files(self) -> None:
        self._spoil(FILE_IN_FOLDER)
        folder = (self.player.game / FILE_IN_FOLDER).parent
        folder.chmod(0o500)
        self._stays(case.INVALID, message="Permission denied", run=self._update_without_powers)
        folder.chmod(0o700)
        self.ends(self._update_without_powers(), case.VALID)
        self.has_the_game()

    def test_a_folder_that_must_not_be_entered_ends_the_update(self) -> None:
        (self.player.game / FOLDER).chmod(0)
        outcome = self.ends(self._update_without_powers(), case.INVALID)
        self.assertIn("Permission denied", outcome.output)
        (self.player.game / FOLDER).chmod(0o700)
        self.has_the_game()

    def test_settings_of_someone_else_do_not_stop_an_update(self) -> None:
        self._spoil()
        self.player.settings.parent.chmod(0o500)
        self.player.settings.chmod(0o400)
        outcome = self.ends(self._update_without_powers(), case.VALID)
        self.assertIn("Cannot save the settings", outcome.errors)
        self.has_the_game()

    def test_damaged_settings_cost_only_a_reading_of_the_game(self) -> None:
        for damage in (b"", b"not a database", os.urandom(5000)):
            with self.subTest(damage[:20]):
                self.player.settings.write_bytes(damage)
                self._stays(case.VALID, message="(0 without reading them)",
                            run=self.player.update)
                self._stays(case.VALID, message="(40 without reading them)",
                            run=self.player.update)

    def test_a_folder_in_place_of_the_settings_stays(self) -> None:
        self.player.settings.unlink()
        self.player.settings.mkdir()
        self._spoil()
        outcome = self.ends(self.player.update(), case.VALID)
        self.assertIn("Cannot save the settings", outcome.errors)
        self.assertTrue(self.player.settings.is_dir())
        self.has_the_game()


if __name__ == "__main__":
    case.main()
