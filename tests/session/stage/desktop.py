"""Stand-ins for the desktop's programs that the launcher hands things to."""

from __future__ import annotations

import os
from pathlib import Path

PROGRAMS = ("xdg-open", "gnome-disk-image-mounter")
STAND_IN = """#!/bin/sh
printf '%s\\n' "$*" >>'{record}'
"""


class Desktop:
    """`environment` puts the stand-ins before the real programs."""

    def __init__(self, folder: Path) -> None:
        self._folder = folder
        folder.mkdir()
        for name in PROGRAMS:
            program = folder / name
            program.write_text(STAND_IN.format(record=self._record(name)))
            program.chmod(0o755)
        self.environment = {"PATH": f"{folder}:{os.environ['PATH']}"}

    def handed_to(self, program: str) -> list[str]:
        """What the program was asked to open, in this order."""
        record = self._record(program)
        return record.read_text().splitlines() if record.exists() else []

    def forget(self) -> None:
        for program in PROGRAMS:
            self._record(program).unlink(missing_ok=True)

    def _record(self, program: str) -> Path:
        return self._folder / f"{program}.record"
