"""One publishing run, from the checks to the clean-up."""

from __future__ import annotations

import fcntl
import os
import threading
import time
from contextlib import contextmanager
from dataclasses import dataclass, field
from typing import Callable, Iterator, Optional

from . import folder as game
from .folder import GameFile, Refused
from .packing import Job, Outcome, Packer
from .tree import Record, State, Tree, manifest, sync_folder

Progress = Callable[[int, int], None]


@dataclass(frozen=True)
class Options:
    """What the operator asked for."""

    game_folder: str
    tree: str
    server_version: str
    launcher_version: str
    executable: str
    threads: int


@dataclass
class Summary:
    """What a run did, for the operator."""

    files: int = 0
    compressed: int = 0
    removed: int = 0
    bytes_read: int = 0
    bytes_written: int = 0
    seconds: float = 0.0
    notes: list[str] = field(default_factory=list)


def publish(options: Options, progress: Progress, stop: threading.Event) -> Summary:
    """Makes the tree describe the folder as it is now.

    Raises Refused before the tree is touched, or OSError, or Stopped after `stop` was
    set. `stop` counts until the first file moves: from there on everything to do is a
    rename, and half of them would be worse for players than all.
    """
    started = time.monotonic()
    files = _checked(options)
    tree = Tree(options.tree)
    os.makedirs(options.tree, exist_ok=True)
    with _locked(options.tree):
        summary = _publish_locked(options, tree, files, progress, stop)
    summary.seconds = time.monotonic() - started
    return summary


def _checked(options: Options) -> list[GameFile]:
    if not os.path.isdir(options.game_folder):
        raise Refused([f"{options.game_folder!r} is not a folder"])
    if os.path.exists(options.tree) and not os.path.isdir(options.tree):
        raise Refused([f"{options.tree!r} is not a folder"])
    source, target = (os.path.join(os.path.realpath(path), "")
                      for path in (options.game_folder, options.tree))
    if target.startswith(source) or source.startswith(target):
        raise Refused(["the game folder and the tree lie in one another"])
    files = game.scan(options.game_folder)
    keys = {file.key for file in files}
    problems = [problem for problem in (
        game.exec_problem(options.executable, keys),
        game.version_problem("--server-version", options.server_version),
        game.launcher_version_problem(options.launcher_version),
    ) if problem]
    problems.extend(Tree(options.tree).obstacles(sorted(keys)))
    if problems:
        raise Refused(problems)
    return files


@contextmanager
def _locked(path: str) -> Iterator[None]:
    """The lock lives on the folder itself, so a killed run leaves none behind."""
    handle = os.open(path, os.O_RDONLY | os.O_DIRECTORY)
    try:
        fcntl.flock(handle, fcntl.LOCK_EX | fcntl.LOCK_NB)
        yield
    except BlockingIOError:
        raise Refused([f"{path!r} is being published by another run"]) from None
    finally:
        os.close(handle)


def _publish_locked(options: Options, tree: Tree, files: list[GameFile],
                    progress: Progress, stop: threading.Event) -> Summary:
    state = tree.load_state()
    try:
        tree.make_stage()
        jobs = _jobs(tree, state, files)
        outcomes = _packed(jobs, options.threads, progress, stop)
        return _put_in_place(options, tree, state, files, outcomes)
    finally:
        tree.clear_stage()


def _jobs(tree: Tree, state: State, files: list[GameFile]) -> list[Job]:
    jobs = []
    for number, file in enumerate(files):
        known: Optional[Record] = state.files.get(file.key)
        if known and not tree.holds(file.key, known):
            known = None
        if known is None or _looks_changed(file, known):
            jobs.append(Job(file, tree.stage / f"{number}.bz2", known))
    return jobs


def _looks_changed(file: GameFile, known: Record) -> bool:
    return ((file.size, file.mtime_ns, file.ctime_ns)
            != (known.size, known.mtime_ns, known.ctime_ns))


def _packed(jobs: list[Job], threads: int, progress: Progress,
            stop: threading.Event) -> list[Outcome]:
    total = sum(job.file.size for job in jobs)
    lock = threading.Lock()
    so_far = 0

    def done(size: int) -> None:
        nonlocal so_far
        with lock:
            so_far += size
            progress(so_far, total)

    return Packer(threads, done, stop).run(jobs)


def _put_in_place(options: Options, tree: Tree, state: State, files: list[GameFile],
                  outcomes: list[Outcome]) -> Summary:
    keys = {file.key for file in files}
    records = {key: record for key, record in state.files.items() if key in keys}
    records.update({outcome.key: outcome.record for outcome in outcomes})
    patches, strange = tree.patches()
    document = manifest((options.server_version, options.launcher_version),
                        options.executable,
                        {key: record.sha256 for key, record in records.items()}, patches)
    stale = state.placed - keys
    moving = [outcome for outcome in outcomes if outcome.staged]
    _announce(tree, state, moving)
    _move(tree, [outcome for outcome in moving if outcome.key not in state.placed])
    # From here to the new manifest an old one is out with some new files behind
    # it; their addresses are fixed, so all that can be done is to be quick.
    _move(tree, [outcome for outcome in moving if outcome.key in state.placed])
    tree.replace(tree.manifest, document)
    for key in sorted(stale):
        tree.remove(key)
    tree.save_state(State(records, keys))
    return _summary(files, moving, len(stale), _notes(keys, patches, strange))


def _announce(tree: Tree, state: State, moving: list[Outcome]) -> None:
    """Notes what is about to move, so that a run after a crash trusts none of it."""
    tree.content.mkdir(exist_ok=True)
    keys = {outcome.key for outcome in moving}
    kept = {key: record for key, record in state.files.items() if key not in keys}
    tree.save_state(State(kept, state.placed | keys))


def _move(tree: Tree, outcomes: list[Outcome]) -> None:
    targets = [(outcome.staged, tree.packed(outcome.key)) for outcome in outcomes]
    folders = {target.parent for _, target in targets}
    for parent in folders:
        parent.mkdir(parents=True, exist_ok=True)
    for staged, target in targets:
        assert staged is not None
        os.replace(staged, target)
    for parent in folders:
        for above in (parent, *parent.parents):
            sync_folder(above)
            if above == tree.root:
                break


def _notes(keys: set[str], patches: dict[str, list[str]], strange: list[str]) -> list[str]:
    names = {key.rpartition("/")[2] for key in keys}
    notes = [f"patches/{name!r} is not named like a patch and is not listed"
             for name in strange]
    for name, listed in patches.items():
        if name not in names:
            notes.append(f"patches for {name!r} match no file: {', '.join(listed)}")
    return notes


def _summary(files: list[GameFile], moving: list[Outcome], removed: int,
             notes: list[str]) -> Summary:
    return Summary(
        files=len(files), compressed=len(moving), removed=removed,
        bytes_read=sum(outcome.record.size for outcome in moving),
        bytes_written=sum(outcome.record.packed_size for outcome in moving), notes=notes)
