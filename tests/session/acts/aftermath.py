"""What a session leaves behind. Wants no launcher."""

from __future__ import annotations

import base64
import re
from pathlib import Path
from typing import Iterator
from urllib.parse import quote, quote_plus

from player.person import Player
from stage.waiting import NotSeen, expect

COOKIE_LINE = re.compile(rb"(?m)^VARNO_PLAYCOOKIE=.*\n")


def nothing_is_left_running(player: Player) -> None:
    """Every process of the launcher and its games has ended"""
    player.sees_nothing_left_running()
    expect("launchers that still run",
           [one.pid for one in player.stage.launchers if one.process.poll() is None], [])


def no_secret_was_written(player: Player) -> None:
    """No password, token or cookie is in any file, log line or output"""
    stage = player.stage
    first_output = stage.launchers[0].output_file
    expect("the cookie where the sample game printed it",
           holds_a_secret(player, first_output.read_bytes()), True)
    outputs = [launcher.output_file for launcher in stage.launchers]
    found = [str(path.relative_to(stage.folder)) for path in written_files(player)
             if holds_a_secret(player, COOKIE_LINE.sub(b"", path.read_bytes())
                               if path in outputs else path.read_bytes())]
    if found:
        raise NotSeen(f"a clean folder: a secret is in {', '.join(found)}")


def holds_a_secret(player: Player, data: bytes) -> bool:
    return any(is_in(form, data) for secret in player.secrets for form in forms(secret))


def forms(secret: str) -> set[bytes]:
    """A secret as it is, and as forms, headers and the toolkit write it."""
    plain = secret.encode()
    return {plain, quote(secret, safe="").encode(), quote_plus(secret).encode(),
            quote(secret, safe="!$&'()*+,/:;=?@").encode(), base64.b64encode(plain),
            secret.encode("utf-16-le")}


def is_in(form: bytes, data: bytes) -> bool:
    """Six digits are a token only when they stand alone, not as a part of some longer number."""
    if not form.isdigit():
        return form in data
    return form in data and bool(re.search(rb"(?<![\d.])" + form + rb"(?!\d)", data))


def written_files(player: Player) -> Iterator[Path]:
    """All files but those of the sample game's makers, and what the game reports on purpose."""
    stage = player.stage
    made_before = [game.source for game in (stage.game, stage.coming_game)]
    made_before += [game.tree for game in (stage.game, stage.coming_game)]
    for path in stage.folder.rglob("*"):
        is_plain = path.is_file() and not path.is_symlink()
        if is_plain and path != stage.game_run.report_file and not (
                set(made_before) & set(path.parents)):
            yield path
