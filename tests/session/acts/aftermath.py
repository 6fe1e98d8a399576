"""What a session leaves behind. Wants no launcher."""

from __future__ import annotations

import base64
import re
from pathlib import Path
from typing import Iterator
from urllib.parse import quote, quote_plus

from player.person import Player
from stage.waiting import NotSeen, expect


def nothing_is_left_running(player: Player) -> None:
    """Every process of the launcher and its games has ended"""
    player.sees_nothing_left_running()
    expect("launchers that still run",
           [one.pid for one in player.stage.launchers if one.process.poll() is None], [])


def no_secret_was_written(player: Player) -> None:
    """No password, token or cookie is in any file, log line or output"""
    stage = player.stage
    expect("secrets to look for", len(player.secrets) >= 7, True)
    pattern = re.compile(b"|".join(pattern_for(form) for secret in sorted(player.secrets)
                                   for form in forms(secret)))
    found = [str(path.relative_to(stage.folder)) for path in files_below(stage.folder)
             if path != stage.game_run.report_file and pattern.search(content(player, path))]
    if found:
        raise NotSeen(f"a clean folder: a secret is in {', '.join(found)}")


def forms(secret: str) -> set[bytes]:
    """A secret as it is, and as forms and headers write it."""
    plain = secret.encode()
    return {plain, quote(secret, safe="").encode(), quote_plus(secret).encode(),
            base64.b64encode(plain), secret.encode("utf-16-le")}


def pattern_for(form: bytes) -> bytes:
    """Six digits are a token only when they stand alone, not as a part of some longer number."""
    if form.isdigit():
        return rb"(?<![\d.])" + form + rb"(?!\d)"
    return re.escape(form)


def content(player: Player, path: Path) -> bytes:
    """What a file holds. The sample game prints its cookie on purpose; the launcher must not."""
    data = path.read_bytes()
    if path in [launcher.output_file for launcher in player.stage.launchers]:
        return re.sub(rb"(?m)^VARNO_PLAYCOOKIE=.*\n", b"", data)
    return data


def files_below(folder: Path) -> Iterator[Path]:
    return (path for path in folder.rglob("*") if path.is_file() and not path.is_symlink())
