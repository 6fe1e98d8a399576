#!/usr/bin/python3
"""Making a damaged game whole again."""

import os
import random
import shutil

from harness import case, damage, games, snapshot

DAMAGED_FILES = 50


class Heal(case.SystemTest):

    @classmethod
    def make_game(cls) -> None:
        games.small_game(cls.source, files=90)
        games.publish(cls.source, cls.tree)

    def setUp(self) -> None:
        super().setUp()
        self.outside = self.player.root / "outside"
        self.outside.mkdir()

    def test_one_update_heals_fifty_files_damaged_in_every_way(self) -> None:
        self.install()
        damaged = self._damage(random.Random(4711))
        before = snapshot.identities(self.player.game)
        outside = snapshot.contents(self.outside)
        self.ends(self.player.verify(), case.INVALID)

        self.ends(self.player.update(), case.VALID)

        self.has_the_game()
        self.nothing_is_left_over()
        self.assertEqual(snapshot.contents(self.outside), outside)
        after = snapshot.identities(self.player.game)
        spared = set(after) - damaged
        self.assertEqual({name: after[name] for name in spared},
                         {name: before[name] for name in spared})
        self.assertEqual(len(self.hosts.file_requests()), len(damaged))

    def _damage(self, chance: random.Random) -> set[str]:
        filled = sorted(path for path in self.player.game.rglob("*")
                        if path.is_file() and path.stat().st_size > 1)
        chosen = chance.sample(filled, DAMAGED_FILES)
        for number, path in enumerate(chosen):
            damage.ALL[number % len(damage.ALL)](path, self.outside, chance)
        return {str(path.relative_to(self.player.game)) for path in chosen}

    def test_a_game_folder_that_was_deleted_comes_back(self) -> None:
        self.install()
        shutil.rmtree(self.player.game)
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()

    def test_a_game_folder_that_is_a_link_is_filled_behind_the_link(self) -> None:
        self.player.data.mkdir()
        self.player.game.symlink_to(self.outside)
        self.ends(self.player.update(), case.VALID)
        self.assertTrue(self.player.game.is_symlink())
        self.has_the_game()

    def test_a_replaced_file_keeps_its_permissions(self) -> None:
        self.install()
        path = self.player.game / games.EXECUTABLE
        path.write_bytes(b"wrong")
        path.chmod(0o755)
        self.ends(self.player.update(), case.VALID)
        self.assertEqual(path.stat().st_mode & 0o7777, 0o755)

    def test_a_file_that_cannot_be_read_is_replaced(self) -> None:
        self.install()
        path = self.player.game / games.EXECUTABLE
        path.write_bytes(b"wrong")
        path.chmod(0)
        self.ends(self.player.update(wrapper=case.WITHOUT_ROOTS_POWERS), case.VALID)
        self.has_the_game()

    def test_changed_bytes_behind_the_same_date_are_trusted_until_the_date_moves(self) -> None:
        self.install()
        path = self.player.game / games.EXECUTABLE
        about = path.stat()
        damage.flip_a_byte(path, self.outside, random.Random(1))
        os.utime(path, ns=(about.st_atime_ns, about.st_mtime_ns))
        self.ends(self.player.verify(), case.VALID)
        os.utime(path, ns=(about.st_atime_ns, about.st_mtime_ns + 1))
        self.ends(self.player.verify(), case.INVALID)
        self.ends(self.player.update(), case.VALID)
        self.has_the_game()


if __name__ == "__main__":
    case.main()
