"""The sample game folder: the same every time, of real size, with difficult names."""

from __future__ import annotations

import bz2
import os
import stat
import tempfile
import unittest
from pathlib import Path
from subprocess import CompletedProcess

from support import run_tool, snapshot

MEGABYTE = 1048576


class SampleGame(unittest.TestCase):

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.folder = self.root / "game"
        self.program = self.root / "program"
        self.program.write_bytes(b"#!/bin/sh\nexit 0\n")

    def make(self, *options: object, folder: str = "game") -> CompletedProcess[str]:
        return run_tool("make-sample-game", self.root / folder, "--executable", self.program,
                        *options)

    def make_small(self, *options: object, folder: str = "game") -> str:
        done = self.make("--files", 60, "--megabytes", 3, *options, folder=folder)
        self.assertEqual(done.returncode, 0, done)
        return done.stdout

    def sizes(self) -> dict[str, int]:
        return {str(path.relative_to(self.folder)): path.stat().st_size
                for path in self.folder.rglob("*") if path.is_file()}

    def test_sizeAndNamesOfTheUsualFolder(self) -> None:
        self.assertEqual(self.make().returncode, 0)
        sizes = self.sizes()
        self.assertEqual(len(sizes), 321)
        self.assertEqual(sum(sizes.values()) - sizes["Quellmoor"], 160 * MEGABYTE)
        self.assertAlmostEqual(max(sizes.values()) / MEGABYTE, 30, delta=2)
        self.assertGreaterEqual(list(sizes.values()).count(0), 3)
        self.assertGreater(sum(0 < size < 25_000 for size in sizes.values()), 150)
        missing = [letter for letter in " ()[]'#%&+;$@!~éłü水🏮"
                   if not any(letter in name for name in sizes)]
        self.assertEqual(missing, [])
        self.assertLessEqual({"Quellmoor", "Frameworks/Cg.framework/Cg"}, set(sizes))
        self.assertGreater(max(name.count("/") for name in sizes), 8)

    def test_contentsCompressAboutTwoToOne(self) -> None:
        self.make_small()
        content = (self.folder / "data/archives/world.pak").read_bytes()
        self.assertAlmostEqual(len(content) / len(bz2.compress(content)), 2, delta=0.3)

    def test_sameCallMakesTheSameFolderDownToDates(self) -> None:
        self.make_small()
        self.make_small(folder="again")
        self.assertEqual(snapshot(self.folder), snapshot(self.root / "again"))
        dates = {path.stat().st_mtime_ns for path in self.root.glob("*/data/maps/*/*")}
        self.assertEqual(len(dates), 1)

    def test_anotherSeedMakesOtherContents(self) -> None:
        self.make_small()
        self.make_small("--seed", 1, folder="other")
        contents = [(self.root / name / "libs/libsound.dylib").read_bytes()[:200]
                    for name in ("game", "other")]
        self.assertNotEqual(*contents)

    def test_executableIsTheGivenProgram(self) -> None:
        self.make_small()
        self.program.write_bytes(b"#!/bin/sh\nexit 1\n")
        self.assertIn("written", self.make_small())
        made = self.folder / "Quellmoor"
        self.assertEqual((made.read_bytes(), stat.S_IMODE(made.stat().st_mode)),
                         (self.program.read_bytes(), 0o755))

    def test_finishedFolderIsNotWrittenAgain(self) -> None:
        self.make_small()
        inodes = {path: path.stat().st_ino for path in self.folder.rglob("*")}
        self.assertIn(" 0 written", self.make_small())
        self.assertEqual({path: path.stat().st_ino for path in self.folder.rglob("*")}, inodes)

    def test_changedMissingAndForeignFilesAreMended(self) -> None:
        self.make_small()
        before = snapshot(self.folder)
        (self.folder / "libs/libsound.dylib").write_bytes(b"x")
        (self.folder / "Quellmoor").chmod(0o600)
        (self.folder / "data/empty.marker").unlink()
        (self.folder / "foreign/deep").mkdir(parents=True)
        (self.folder / "foreign/deep/file").write_bytes(b"x")
        (self.folder / "door").symlink_to("/")
        self.assertIn(" 3 written", self.make_small())
        self.assertEqual(snapshot(self.folder), before)

    def test_interruptedRunIsFinished(self) -> None:
        self.make_small()
        before = snapshot(self.folder)
        stamp = self.root / "game.stamp"
        stamp.write_text(stamp.read_text().replace("true", "false"))
        os.truncate(self.folder / "data/archives/world.pak", 10)
        self.make_small()
        self.assertEqual(snapshot(self.folder), before)

    def test_foldersOfOthersAreNotTouched(self) -> None:
        self.folder.mkdir()
        (self.folder / "mine").write_bytes(b"")
        done = self.make()
        self.assertEqual((done.returncode, os.listdir(self.folder)), (1, ["mine"]))
        self.assertIn("not made by this tool", done.stderr)

    def test_wrongUse(self) -> None:
        for options, code in ((("--files", 3), 2), (("--megabytes", 0), 2),
                              (("--executable", "/nowhere"), 1)):
            with self.subTest(options):
                done = self.make(*options)
                self.assertEqual((done.returncode, self.folder.exists()), (code, False), done)


if __name__ == "__main__":
    unittest.main()
