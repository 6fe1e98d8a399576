#!/usr/bin/python3
"""Updates on a disk that is full."""

import shutil
from pathlib import Path

from harness import case, games, isolation, snapshot

ROOM = 1024 * 1024
LIMIT_IN_BYTES = 50_000
NO_SPACE = "No space left on device"


class FullDisk(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        cls.old = cls.folder / "old"
        games.small_game(cls.old)
        games.next_version(cls.old, cls.source)
        games.publish(cls.source, cls.tree)

    def _small_disk(self, place: Path, megabytes: int) -> None:
        place.mkdir(parents=True, exist_ok=True)
        isolation.mount("-t", "tmpfs", "-o", f"size={megabytes}m", "tmpfs", str(place))
        self.addCleanup(isolation.unmount, str(place))

    def _fill(self, place: Path, room: int) -> Path:
        """Takes all of the disk but about `room` bytes."""
        filler = place / "filler"
        size = max(0, shutil.disk_usage(place).free - room)
        with open(filler, "wb", buffering=0) as stream:
            for start in range(0, size, ROOM):
                stream.write(bytes(min(ROOM, size - start)))
        return filler

    def _update_fails_for_want_of_space(self) -> None:
        outcome = self.ends(self.player.update(), case.INVALID)
        self.assertIn(NO_SPACE, outcome.output)

    def test_an_install_on_a_full_disk_fails_and_finishes_once_there_is_space(self) -> None:
        self._small_disk(self.player.data, megabytes=16)
        filler = self._fill(self.player.data, ROOM)
        self._update_fails_for_want_of_space()
        published = snapshot.files_only(snapshot.contents(self.source))
        present = snapshot.files_only(snapshot.contents(self.player.game))
        self.assertLess(0, len(present))
        self.assertEqual(present, {name: published[name] for name in present})

        filler.unlink()
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()
        self.nothing_is_left_over()

    def test_a_full_disk_keeps_the_good_files_and_the_old_ones(self) -> None:
        self._small_disk(self.player.data, megabytes=16)
        shutil.copytree(self.old, self.player.game)
        self._fill(self.player.data, 0)
        before = snapshot.contents(self.player.game)
        identities = snapshot.identities(self.player.game)
        self._update_fails_for_want_of_space()
        # A file that holds nothing needs no space.
        now = snapshot.contents(self.player.game)
        changed = {name for name in now if now[name] != before.get(name)}
        self.assertTrue(all((self.source / name).stat().st_size == 0
                            for name in changed if now[name][0] == "file"))
        after = snapshot.identities(self.player.game)
        kept = set(before) - changed
        self.assertEqual({name: after.get(name) for name in kept},
                         {name: identities.get(name) for name in kept})

    def test_settings_that_cannot_be_saved_do_not_spoil_the_update(self) -> None:
        self._small_disk(self.player.config_home, megabytes=1)
        filler = self._fill(self.player.config_home, 0)
        outcome = self.ends(self.player.update(), case.VALID)
        self.assertIn("Cannot save the settings", outcome.errors)
        self.has_the_game()

        filler.unlink()
        self.ends(self.player.verify(), case.VALID)
        self.assertEqual(len(self.player.stored_settings()), 2 * len(self._game_files()))

    def test_old_settings_survive_a_full_disk(self) -> None:
        self._small_disk(self.player.config_home, megabytes=1)
        shutil.copytree(self.source, self.player.game)
        self.ends(self.player.verify(), case.VALID)
        before = self.player.stored_settings()
        self._fill(self.player.config_home, 0)
        for path in self.player.game.rglob("*"):
            path.touch()
        outcome = self.ends(self.player.verify(), case.VALID)
        self.assertIn("Cannot save the settings", outcome.errors)
        self.assertEqual(self.player.stored_settings(), before)

    def test_everything_on_one_full_disk_ends_and_recovers(self) -> None:
        self._small_disk(self.player.root, megabytes=16)
        self.player = case.Player(self.player.root / "home")
        filler = self._fill(self.player.root, 0)
        self._update_fails_for_want_of_space()
        filler.unlink()
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()
        self.assertEqual(len(self.player.stored_settings()), 2 * len(self._game_files()))

    def test_a_limit_of_file_sizes_ends_no_update_but_the_files_beyond_it(self) -> None:
        shutil.copytree(self.old, self.player.game)
        before = snapshot.contents(self.player.game)
        limit = LIMIT_IN_BYTES
        outcome = self.ends(self.player.update(wrapper=("prlimit", f"--fsize={limit}", "--")),
                            case.INVALID)
        self.assertIn("File too large", outcome.output)
        now = snapshot.contents(self.player.game)
        large = {name for name in before if (self.old / name).stat().st_size > limit}
        self.assertEqual({name: now[name] for name in large},
                         {name: before[name] for name in large})
        self.ends(self.player.update(), case.VALID)

    def _game_files(self) -> list[str]:
        return list(snapshot.files_only(snapshot.contents(self.source)))


if __name__ == "__main__":
    case.main()
