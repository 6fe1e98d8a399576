"""Compresses many files at a time into the staging folder."""

from __future__ import annotations

import bz2
import hashlib
import os
import threading
from concurrent.futures import FIRST_EXCEPTION, ThreadPoolExecutor, wait
from dataclasses import dataclass
from pathlib import Path
from typing import BinaryIO, Callable, Iterator, Optional

from .folder import GameFile, Refused
from .tree import Record

BLOCK = 1 << 20


class Stopped(Exception):
    """Another file failed, or the operator stopped the run."""


@dataclass(frozen=True)
class Job:
    """A file to look at; `known` is its record when that may still be true."""

    file: GameFile
    staged: Path
    known: Optional[Record]


@dataclass(frozen=True)
class Outcome:
    """What became of a job; `staged` is None when the packed file can stay."""

    key: str
    record: Record
    staged: Optional[Path]


class Packer:
    """Runs jobs on threads: compression holds no interpreter lock.

    Whoever sets `stop` ends the run soon; it is set as well when a job fails.
    """

    def __init__(self, threads: int, done: Callable[[int], None],
                 stop: threading.Event) -> None:
        self._threads = threads
        self._done = done
        self._stop = stop

    def run(self, jobs: list[Job]) -> list[Outcome]:
        """All outcomes; raises Stopped or the first failure once every thread has ended."""
        # The largest first, so that no thread is left alone with it at the end.
        ordered = sorted(jobs, key=lambda job: -job.file.size)
        with ThreadPoolExecutor(self._threads) as pool:
            futures = [pool.submit(self._one, job) for job in ordered]
            finished, _ = wait(futures, return_when=FIRST_EXCEPTION)
            failures = [future.exception() for future in finished if future.exception()]
            if failures:
                self._stop.set()
                pool.shutdown(cancel_futures=True)
        for failure in sorted(failures, key=lambda error: isinstance(error, Stopped)):
            assert failure is not None
            raise failure
        return [future.result() for future in futures]

    def _one(self, job: Job) -> Outcome:
        if self._stop.is_set():
            raise Stopped
        outcome = self._unchanged(job) or self._pack(job)
        self._done(job.file.size)
        return outcome

    def _unchanged(self, job: Job) -> Optional[Outcome]:
        """A file that was only touched or copied anew is not compressed again."""
        known, file = job.known, job.file
        if known is None or known.size != file.size:
            return None
        digest = hashlib.sha256()
        for block in self._blocks(file):
            digest.update(block)
        if digest.hexdigest() != known.sha256:
            return None
        record = Record(file.size, file.mtime_ns, file.ctime_ns, known.sha256,
                        known.packed_size, known.packed_mtime_ns)
        return Outcome(file.key, record, None)

    def _pack(self, job: Job) -> Outcome:
        digest = hashlib.sha256()
        packer = bz2.BZ2Compressor(9)
        with open(job.staged, "wb") as target:
            for block in self._blocks(job.file):
                digest.update(block)
                target.write(packer.compress(block))
            target.write(packer.flush())
            target.flush()
            os.fsync(target.fileno())
            about = os.fstat(target.fileno())
        file = job.file
        record = Record(file.size, file.mtime_ns, file.ctime_ns, digest.hexdigest(),
                        about.st_size, about.st_mtime_ns)
        return Outcome(file.key, record, job.staged)

    def _blocks(self, file: GameFile) -> Iterator[bytes]:
        with open(file.path, "rb", opener=_open_no_link) as source:
            _check_same(source, file)
            while block := source.read(BLOCK):
                if self._stop.is_set():
                    raise Stopped
                yield block
            _check_same(source, file)


def _open_no_link(path: str, flags: int) -> int:
    return os.open(path, flags | os.O_NOFOLLOW)


def _check_same(source: BinaryIO, file: GameFile) -> None:
    about = os.fstat(source.fileno())
    if (about.st_size, about.st_mtime_ns) != (file.size, file.mtime_ns):
        raise Refused([f"{file.key!r}: it was changed while it was being published"])
