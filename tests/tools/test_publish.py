"""The publisher: what it makes, what it leaves alone and what it refuses."""

from __future__ import annotations

import bz2
import hashlib
import io
import json
import os
import socket
import tempfile
import unittest
from contextlib import redirect_stderr, redirect_stdout
from pathlib import Path
from subprocess import CompletedProcess
from typing import Any

from support import run_tool, snapshot, write_files

from publishing.command import main

FILES = {
    "Quellmoor": b"#!/bin/sh\n" * 40,
    "empty": b"",
    "data/Low Hythe (night)/ferry [wreck] #3 100%.bin": os.urandom(70_000),
    "data/ł/水/été & l'été+.txt": b"mist " * 9000,
    "data/big.bin": os.urandom(100_000) * 10,
}


class PublishCase(unittest.TestCase):
    """A game folder and a tree beside it."""

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.root.chmod(0o755)
        self.game, self.tree = self.root / "game", self.root / "tree"
        write_files(self.game, FILES)

    def arguments(self, **changed: Any) -> list[str]:
        options = {"server_version": "7.3.0", "launcher_version": "1.4", "exec": "Quellmoor"}
        folders = (changed.pop("game", self.game), changed.pop("tree", self.tree))
        options.update(changed)
        return [*map(str, folders),
                *(f"--{name.replace('_', '-')}={value}" for name, value in options.items())]

    def publish(self, **changed: Any) -> CompletedProcess[str]:
        """Runs the command in this process, which saves the start of another."""
        arguments = self.arguments(**changed)
        out, errors = io.StringIO(), io.StringIO()
        with redirect_stdout(out), redirect_stderr(errors):
            try:
                code = main(arguments)
            except SystemExit as end:
                code = int(end.code or 0)
        return CompletedProcess(arguments, code, out.getvalue(), errors.getvalue())

    def published(self) -> dict[str, bytes]:
        """What a launcher would get, after checking it as a launcher does."""
        contents = {}
        for key, entry in self.manifest()["files"].items():
            content = bz2.decompress((self.tree / "mac" / f"{key}.bz2").read_bytes())
            self.assertEqual(hashlib.sha256(content).hexdigest()[:7], entry["hash"], key)
            contents[key] = content
        return contents

    def manifest(self) -> dict[str, Any]:
        return dict(json.loads((self.tree / "mac" / "patcher.json").read_bytes()))

    def packed_files(self) -> set[str]:
        mac = self.tree / "mac"
        return {str(path.relative_to(mac))[:-4] for path in mac.rglob("*.bz2")}


class MakesATree(PublishCase):

    def test_everyFileComesBackAsItWas(self) -> None:
        done = run_tool("publish", *self.arguments())
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.published(), FILES)
        self.assertEqual(self.packed_files(), set(FILES))

    def test_manifestSaysWhatALauncherReads(self) -> None:
        self.publish(exec="data/big.bin")
        manifest = self.manifest()
        files = manifest.pop("files")
        self.assertEqual(manifest, {"server-version": "7.3.0", "mac-launcher-version": "1.4",
                                    "exec": "data/big.bin"})
        self.assertEqual({key: entry["path"] for key, entry in files.items()},
                         {key: key.rpartition("/")[0] for key in FILES})

    def test_eachFileIsOneStreamInBlocksOf900Kilobytes(self) -> None:
        self.publish()
        packed = (self.tree / "mac" / "data" / "big.bin.bz2").read_bytes()
        stream = bz2.BZ2Decompressor()
        content = stream.decompress(packed)
        self.assertEqual((content, stream.eof, stream.unused_data, packed[:4]),
                         (FILES["data/big.bin"], True, b"", b"BZh9"))

    def test_anyoneMayReadWhatIsServed(self) -> None:
        self.publish()
        modes = {mode & 0o444 for mode, _ in snapshot(self.tree / "mac").values()}
        self.assertEqual(modes, {0o444})

    def test_oneThreadMakesTheSameTreeAsMany(self) -> None:
        self.publish(jobs=1)
        alone = snapshot(self.tree / "mac")
        self.publish(jobs=8, tree=self.root / "other")
        self.assertEqual(snapshot(self.root / "other" / "mac"), alone)


class OnlyWhatChanged(PublishCase):

    def setUp(self) -> None:
        super().setUp()
        self.publish()
        self.before = self.stamps()

    def stamps(self) -> dict[str, tuple[int, int]]:
        mac = self.tree / "mac"
        return {key: ((mac / f"{key}.bz2").stat().st_ino, (mac / f"{key}.bz2").stat().st_mtime_ns)
                for key in self.packed_files()}

    def changed(self) -> set[str]:
        after = self.stamps()
        return {key for key in after.keys() | self.before.keys()
                if after.get(key) != self.before.get(key)}

    def test_secondRunCompressesNothing(self) -> None:
        self.assertIn(" 0 compressed", self.publish().stdout)
        self.assertEqual(self.changed(), set())

    def test_changedFileAlone(self) -> None:
        write_files(self.game, {"data/big.bin": b"new"})
        self.assertIn(" 1 compressed", self.publish().stdout)
        self.assertEqual(self.changed(), {"data/big.bin"})
        self.assertEqual(self.published(), {**FILES, "data/big.bin": b"new"})

    def test_changeThatKeepsSizeAndDate(self) -> None:
        path = self.game / "Quellmoor"
        about, content = path.stat(), b"#!/bin/zs\n" * 40
        path.write_bytes(content)
        os.utime(path, ns=(about.st_atime_ns, about.st_mtime_ns))
        self.publish()
        self.assertEqual(self.published()["Quellmoor"], content)

    def test_touchedFileIsNotCompressedAgain(self) -> None:
        os.utime(self.game / "data/big.bin", (1, 1))
        self.assertIn(" 0 compressed", self.publish().stdout)
        self.assertEqual(self.changed(), set())

    def test_removedFileLeavesManifestAndTree(self) -> None:
        (self.game / "data/ł/水/été & l'été+.txt").unlink()
        self.assertIn(" 1 removed", self.publish().stdout)
        self.assertEqual(self.packed_files(), set(FILES) - {"data/ł/水/été & l'été+.txt"})
        self.assertEqual(set(self.published()), self.packed_files())
        self.assertFalse((self.tree / "mac/data/ł").exists())

    def test_packedFileThatVanishedOrWasReplacedIsMadeAgain(self) -> None:
        (self.tree / "mac/empty.bz2").unlink()
        packed = self.tree / "mac/Quellmoor.bz2"
        packed.write_bytes(b"x" * packed.stat().st_size)
        self.assertIn(" 2 compressed", self.publish().stdout)
        self.assertEqual(self.published(), FILES)

    def test_damagedStateOnlyCostsTime(self) -> None:
        for content in ("", "[]", '{"format":1,"files":{"a":7},"placed":[]}', '{"format":9}'):
            with self.subTest(content):
                (self.tree / ".publish-state.json").write_text(content)
                self.assertEqual(self.publish().returncode, 0)
                self.assertEqual(self.published(), FILES)

    def test_foreignFilesAreNeverDeleted(self) -> None:
        write_files(self.tree, {"mac/notes.bz2": b"mine", "mac/patches/notes.txt": b"mine"})
        (self.game / "empty").unlink()
        done = self.publish()
        self.assertIn("'notes.txt'", done.stdout)
        self.assertEqual((self.tree / "mac/notes.bz2").read_bytes(), b"mine")
        self.assertEqual((self.tree / "mac/patches/notes.txt").read_bytes(), b"mine")


class ListsPatches(PublishCase):

    def test_patchesStandAtTheFileOfTheirName(self) -> None:
        names = ["big.bin_77be012_3fa9c01.patch", "big.bin_a0c4d19_77be012.patch",
                 "gone_0000000_1111111.patch", "big.bin_short_3fa9c01.patch"]
        write_files(self.tree, {f"mac/patches/{name}.bz2": b"" for name in names})
        done = self.publish()
        listed = {key: entry["patches"] for key, entry in self.manifest()["files"].items()}
        self.assertEqual(listed, {**dict.fromkeys(FILES, []), "data/big.bin": names[:2]})
        self.assertIn("gone_0000000_1111111.patch", done.stdout)
        self.assertIn("big.bin_short_3fa9c01.patch", done.stdout)


class Refuses(PublishCase):

    def setUp(self) -> None:
        super().setUp()
        self.publish()
        self.before = snapshot(self.tree)

    def refused(self, text: str, code: int = 1, **changed: Any) -> None:
        done = self.publish(**changed)
        self.assertEqual(done.returncode, code, done)
        self.assertIn(text, done.stderr)
        self.assertEqual(snapshot(self.tree), self.before)

    def test_namesThatCannotBeServed(self) -> None:
        for name, text in (("what?", '"?"'), ("a\nb", "control"), ("a\x7fb", "control"),
                           ("\x01", "control"), (os.fsdecode(b"\xff.bin"), "UTF-8"),
                           ("n" * 252, "too long"), ("QUELLMOOR", "case"),
                           ("patches/a_1_2.patch", "patches"), ("DATA", "case"),
                           ("empty.bz2/x", "has to be")):
            with self.subTest(name):
                write_files(self.game, {name: b"x"})
                self.refused(text)
                (self.game / name).unlink()
                if "/" in name:
                    (self.game / name).parent.rmdir()

    def test_everyProblemIsNamedAtOnce(self) -> None:
        write_files(self.game, {"one?": b"", "two?": b""})
        self.refused("one?")
        self.refused("two?")

    def test_linksToFilesAndFolders(self) -> None:
        for target in ("Quellmoor", "data", "nowhere"):
            with self.subTest(target):
                link = self.game / "link"
                link.symlink_to(target)
                self.refused("'link': it is a symbolic link")
                link.unlink()

    def test_thingsThatAreNoFiles(self) -> None:
        os.mkfifo(self.game / "pipe")
        with socket.socket(socket.AF_UNIX) as listening:
            listening.bind(str(self.game / "socket"))
            self.refused("'pipe': it is neither")
            self.refused("'socket': it is neither")

    def test_unreadableFile(self) -> None:
        (self.game / "empty").chmod(0)
        # Root reads everything, so the run is somebody else's then.
        somebody = {"user": 65534} if os.getuid() == 0 else {}
        done = run_tool("publish", *self.arguments(), **somebody)
        self.assertEqual((done.returncode, snapshot(self.tree)), (1, self.before), done)
        self.assertIn("'empty': it cannot be read", done.stderr)

    def test_executables(self) -> None:
        self.refused("not a file", exec="Nothing")
        self.refused("not a file", exec="data")
        write_files(self.game, {"a;b": b""})
        self.refused("shell", exec="a;b")

    def test_versions(self) -> None:
        for version in ("../1.4", ".1", "1/4", "", "1 4", "1?4", "1\n4"):
            with self.subTest(version):
                self.refused("--launcher-version", launcher_version=version)
        self.refused("--server-version", server_version="7\x1b[2J")

    def test_foldersInOneAnother(self) -> None:
        self.refused("lie in one another", tree=self.game / "tree")
        self.refused("lie in one another", tree=self.game)
        self.refused("lie in one another", game=self.tree / "mac")
        (self.root / "door").symlink_to(self.game)
        self.refused("lie in one another", tree=self.root / "door" / "tree")
        self.assertFalse((self.game / "tree").exists())

    def test_emptyOrMissingFolder(self) -> None:
        (self.root / "bare" / "below").mkdir(parents=True)
        self.refused("holds no files", game=self.root / "bare")
        self.refused("not a folder", game=self.root / "nowhere")

    def test_treeThatIsAFile(self) -> None:
        self.refused("not a folder", tree=self.game / "empty")

    def test_obstacleInTheTree(self) -> None:
        write_files(self.tree, {"mac/other": b"mine"})
        self.before = snapshot(self.tree)
        write_files(self.game, {"other/file": b""})
        self.refused("a file stands where a folder has to be")

    def test_wrongUse(self) -> None:
        self.refused("must be at least 1", code=2, jobs=0)

    def test_refusalMakesNoTree(self) -> None:
        self.refused("not a file", tree=self.root / "new", exec="Nothing")
        self.assertFalse((self.root / "new").exists())


if __name__ == "__main__":
    unittest.main()
