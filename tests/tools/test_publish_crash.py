"""A publisher that is killed: what players see meanwhile, and that the next run heals."""

from __future__ import annotations

import bz2
import fcntl
import io
import json
import os
import random
import shutil
import signal
import subprocess
import tempfile
import unittest
from contextlib import redirect_stdout
from pathlib import Path
from typing import Any, Callable, Optional

from support import TOOLS, run_tool, snapshot, write_files

from publishing.command import main

OPTIONS = ("--server-version=1", "--launcher-version=1", "--exec=keep")
OLD = {"keep": b"k" * 500, "change": b"old" * 900, "gone/deep/file": b"g", "also": b"a"}
NEW = {"keep": b"k" * 500, "change": b"new" * 700, "fresh/deep/file": b"f", "also": b"b"}

CHANGES = ("replace", "unlink", "rmdir", "mkdir", "fsync")


def publish_and_die(step: int, arguments: list[str]) -> None:
    """Ends the process: killed before its N-th change of the disk, or well."""
    left = step

    def deadly(real: Callable[..., Any]) -> Callable[..., Any]:
        def call(*given: Any, **more: Any) -> Any:
            nonlocal left
            left -= 1
            if left < 0:
                os.kill(os.getpid(), signal.SIGKILL)
            return real(*given, **more)
        return call

    for name in CHANGES:
        setattr(os, name, deadly(getattr(os, name)))
    with open(os.devnull, "w", encoding="ascii") as nowhere, redirect_stdout(nowhere):
        os._exit(main(arguments))


class KilledPublisher(unittest.TestCase):

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.game, self.tree = self.root / "game", self.root / "tree"

    def fill(self, contents: dict[str, bytes]) -> None:
        shutil.rmtree(self.game, ignore_errors=True)
        write_files(self.game, contents)

    def publish(self, tree: Optional[Path] = None) -> None:
        with redirect_stdout(io.StringIO()):
            self.assertEqual(main([str(self.game), str(tree or self.tree), *OPTIONS]), 0)

    def killed_at(self, step: int) -> bool:
        child = os.fork()
        if child == 0:
            publish_and_die(step, [str(self.game), str(self.tree), "--jobs=1", *OPTIONS])
        _, status = os.waitpid(child, 0)
        code = os.waitstatus_to_exitcode(status)
        self.assertIn(code, (0, -signal.SIGKILL))
        return code != 0

    def assertServes(self, *versions: dict[str, bytes]) -> None:
        """Every file that the manifest names is there, as one of the versions has it."""
        path = self.tree / "mac" / "patcher.json"
        if not path.exists():
            self.assertNotIn(OLD, versions, "the manifest of the old version is lost")
            return
        for key in json.loads(path.read_bytes())["files"]:
            content = bz2.decompress((self.tree / "mac" / f"{key}.bz2").read_bytes())
            self.assertIn(content, [version.get(key) for version in versions])

    def assertHealed(self, contents: dict[str, bytes]) -> None:
        """A tree that was never killed would look the same."""
        self.publish()
        clean = self.root / "clean"
        self.publish(clean)
        self.assertEqual(snapshot(self.tree / "mac"), snapshot(clean / "mac"))
        self.assertEqual(sorted(os.listdir(self.tree)), [".publish-state.json", "mac"])
        self.assertServes(contents)

    def run_through(self, start: Optional[dict[str, bytes]]) -> int:
        step = 0
        while True:
            shutil.rmtree(self.tree, ignore_errors=True)
            if start is not None:
                self.fill(start)
                self.publish()
            self.fill(NEW)
            if not self.killed_at(step):
                return step
            with self.subTest(step=step):
                self.assertServes(*([start] if start else []), NEW)
                self.assertHealed(NEW)
            step += 1

    def test_killedBeforeEachStepOfAFirstRun(self) -> None:
        self.assertGreater(self.run_through(None), 15)

    def test_killedBeforeEachStepOfAnUpdate(self) -> None:
        self.assertGreater(self.run_through(OLD), 20)

    def test_goingBackAfterAKillServesTheOldContentAgain(self) -> None:
        self.fill({"keep": b"AAAA"})
        os.utime(self.game / "keep", (1000, 1000))
        step = 0
        while True:
            self.publish()
            write_files(self.game, {"keep": b"BBBB"})
            killed = self.killed_at(step)
            write_files(self.game, {"keep": b"AAAA"})
            os.utime(self.game / "keep", (1000, 1000))
            self.publish()
            self.assertServes({"keep": b"AAAA"})
            if not killed:
                break
            step += 1
        self.assertGreater(step, 5)

    def test_killedAtRandomMoments(self) -> None:
        chance = random.Random(7)
        versions: list[dict[str, bytes]] = []
        for turn in range(8):
            versions.append({f"part {number}": chance.randbytes(60_000) for number in range(30)})
            versions[-1]["keep"] = b"k"
            self.fill(versions[-1])
            command = [str(TOOLS / "publish"), str(self.game), str(self.tree), *OPTIONS]
            with subprocess.Popen(command, stdout=subprocess.DEVNULL) as process:
                try:
                    process.wait(chance.uniform(0.05, 0.5))
                except subprocess.TimeoutExpired:
                    process.kill()
            self.assertServes(*versions)
        self.assertHealed(versions[-1])

    def test_stoppedByTheOperatorChangesNothing(self) -> None:
        self.fill(OLD)
        self.publish()
        before = snapshot(self.tree)
        write_files(self.game, {"huge": os.urandom(1 << 20) * 30})
        command = [str(TOOLS / "publish"), str(self.game), str(self.tree), *OPTIONS]
        with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as process:
            while not (self.tree / ".publish-stage").exists() and process.poll() is None:
                os.sched_yield()
            process.send_signal(signal.SIGINT)
            _, said = process.communicate()
        self.assertEqual((process.returncode, snapshot(self.tree)), (130, before), said)

    def test_twoAtATimeAreRefused(self) -> None:
        self.fill(OLD)
        self.tree.mkdir()
        handle = os.open(self.tree, os.O_RDONLY)
        self.addCleanup(os.close, handle)
        fcntl.flock(handle, fcntl.LOCK_EX)
        done = run_tool("publish", self.game, self.tree, *OPTIONS)
        self.assertEqual((done.returncode, os.listdir(self.tree)), (1, []))
        self.assertIn("another run", done.stderr)


if __name__ == "__main__":
    unittest.main()
