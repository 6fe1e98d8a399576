"""The pictures of a session."""

from __future__ import annotations

from pathlib import Path

from stage.display import Display


class Album:
    """Numbered pictures in one folder, which holds those of the last session only."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        self._count = 0
        folder.mkdir(parents=True, exist_ok=True)
        for old in folder.glob("[0-9][0-9]-*.png"):
            old.unlink()

    def keep(self, display: Display, name: str) -> None:
        self._count += 1
        display.save_picture(self.folder / f"{self._count:02}-{name}.png")
