"""What a session leaves behind. Wants no launcher."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Iterator

from player.person import Player
from stage import credentials, secrecy
from stage.waiting import expect

COOKIE_LINE = re.compile(rb"(?m)^VARNO_PLAYCOOKIE=.*\n")


def nothing_is_left_running(player: Player) -> None:
    """Every process of the launcher and its games has ended"""
    player.sees_nothing_left_running()
    expect("launchers that still run",
           [one.pid for one in player.stage.launchers if one.process.poll() is None], [])


def no_secret_was_written(player: Player) -> None:
    """No password, token or cookie is in any file, log line or output, but one in the settings"""
    stage = player.stage
    first_output = stage.launchers[0].output_file
    expect("the cookie where the sample game printed it",
           secrecy.is_in(first_output.read_bytes(), player.secrets), True)
    account = credentials.read(stage.home).account
    remembered = {account.password} if account else set()
    expect("remembered passwords", remembered <= player.secrets and len(remembered), 1)
    expect("files with the remembered password", files_with(player, remembered),
           [stage.home.settings])
    expect("files with another secret", files_with(player, player.secrets - remembered), [])


def files_with(player: Player, secrets: set[str]) -> list[Path]:
    outputs = [launcher.output_file for launcher in player.stage.launchers]
    return [path for path in written_files(player)
            if secrecy.is_in(COOKIE_LINE.sub(b"", path.read_bytes())
                             if path in outputs else path.read_bytes(), secrets)]


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
