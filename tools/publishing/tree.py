"""The download tree: where things lie in it, its manifest and the state of the last run."""

from __future__ import annotations

import json
import os
import re
import shutil
from dataclasses import asdict, dataclass, field
from pathlib import Path
from typing import Any, Iterable, Optional

from .folder import PACKED_SUFFIX, PATCH_FOLDER, key_problem

PATCH_NAME = re.compile(r"(?P<name>.+)_[0-9a-f]{7}_[0-9a-f]{7}\.patch\.bz2", re.DOTALL)
STATE_FORMAT = 1


@dataclass(frozen=True)
class Record:
    """A published file: what its source looked like and what was made of it."""

    size: int
    mtime_ns: int
    ctime_ns: int
    sha256: str
    packed_size: int
    packed_mtime_ns: int


@dataclass
class State:
    """What earlier runs left in the tree.

    `placed` names every key whose packed file may be in the tree, also from a run
    that was interrupted; only these are ever deleted.
    """

    files: dict[str, Record] = field(default_factory=dict)
    placed: set[str] = field(default_factory=set)


class Tree:
    """Paths of one download tree and the files the publisher keeps there."""

    def __init__(self, root: str) -> None:
        self.root = Path(root)
        self.content = self.root / "mac"
        self.manifest = self.content / "patcher.json"
        self.stage = self.root / ".publish-stage"
        self.state_file = self.root / ".publish-state.json"

    def packed(self, key: str) -> Path:
        return self.content / (key + PACKED_SUFFIX)

    def holds(self, key: str, record: Record) -> bool:
        """Is the packed file still the one that the record describes?"""
        try:
            about = os.stat(self.packed(key), follow_symlinks=False)
        except OSError:
            return False
        return (about.st_size, about.st_mtime_ns) == (record.packed_size,
                                                      record.packed_mtime_ns)

    def obstacles(self, keys: Iterable[str]) -> list[str]:
        """Things in the tree that stand where a packed file has to be."""
        problems = []
        for key in keys:
            target = self.packed(key)
            if target.is_dir():
                problems.append(f"{target}: a folder stands where a file has to be")
            for parent in target.relative_to(self.root).parents:
                place = self.root / parent
                if place.exists() and not place.is_dir():
                    problems.append(f"{place}: a file stands where a folder has to be")
        return list(dict.fromkeys(problems))

    def load_state(self) -> State:
        """The last run's state; an unreadable one only costs time."""
        state = State()
        document = _read_json(self.state_file)
        if document.get("format") == STATE_FORMAT:
            try:
                state.files = {key: Record(**record)
                               for key, record in document["files"].items()}
                state.placed = set(document["placed"])
            except (KeyError, TypeError, AttributeError):
                state = State()
        listed = _read_json(self.manifest).get("files")
        if isinstance(listed, dict):
            state.placed.update(listed)
        state.placed = {key for key in state.placed
                        if isinstance(key, str) and key_problem(key) is None}
        return state

    def save_state(self, state: State) -> None:
        document = {
            "format": STATE_FORMAT,
            "placed": sorted(state.placed),
            "files": {key: asdict(record) for key, record in sorted(state.files.items())},
        }
        self.replace(self.state_file, document)

    def replace(self, target: Path, document: dict[str, Any]) -> None:
        """Writes a JSON file so that a reader sees the old or the new one, whole."""
        staged = self.stage / target.name
        with open(staged, "w", encoding="utf-8") as stream:
            json.dump(document, stream, ensure_ascii=False, indent=1)
            stream.write("\n")
            stream.flush()
            os.fsync(stream.fileno())
        os.replace(staged, target)
        sync_folder(target.parent)

    def patches(self) -> tuple[dict[str, list[str]], list[str]]:
        """Patch names by the name of the file they change, and what is no patch."""
        found: dict[str, list[str]] = {}
        strange = []
        folder = self.content / PATCH_FOLDER
        names = sorted(os.listdir(folder)) if folder.is_dir() else []
        for name in names:
            match = PATCH_NAME.fullmatch(name)
            if match and key_problem(name) is None:
                found.setdefault(match["name"], []).append(name.removesuffix(PACKED_SUFFIX))
            elif not (folder / name).is_dir():
                strange.append(name)
        return found, strange

    def make_stage(self) -> None:
        self.clear_stage()
        self.stage.mkdir(parents=True)

    def clear_stage(self) -> None:
        shutil.rmtree(self.stage, ignore_errors=True)

    def remove(self, key: str) -> None:
        """Deletes a packed file and the folders that only it kept."""
        target = self.packed(key)
        target.unlink(missing_ok=True)
        for parent in target.parents:
            if parent in (self.content, self.content / PATCH_FOLDER):
                break
            try:
                os.rmdir(parent)
            except FileNotFoundError:
                # A run that was killed got this far.
                continue
            except OSError:
                break


def sync_folder(folder: Path) -> None:
    """Makes the renames in a folder last through a power cut."""
    handle = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
    try:
        os.fsync(handle)
    finally:
        os.close(handle)


def manifest(versions: tuple[str, str], executable: str, hashes: dict[str, str],
             patches: Optional[dict[str, list[str]]] = None) -> dict[str, Any]:
    """The manifest for files given by key and SHA-256."""
    files = {}
    for key, digest in sorted(hashes.items()):
        folder, _, name = key.rpartition("/")
        files[key] = {"path": folder, "hash": digest[:7],
                      "patches": (patches or {}).get(name, [])}
    return {"server-version": versions[0], "mac-launcher-version": versions[1],
            "exec": executable, "files": files}


def _read_json(path: Path) -> dict[str, Any]:
    try:
        document = json.loads(path.read_bytes())
    except (OSError, ValueError, RecursionError):
        return {}
    return document if isinstance(document, dict) else {}
