"""The acts of the plays, in the order they are played.

An act is a function that takes the player and raises NotSeen; its first line says what is seen in
it. Each leaves the launcher as the next one wants it, which the modules tell.
"""

from __future__ import annotations

from typing import Callable

from player.person import Player

from . import (aftermath, environment, fingerprint, game, keyboard, links, login, network,
               out_of_date, pointer, quitting, screen_reader, update)

Act = Callable[[Player], None]

PLAYS: dict[str, tuple[Act, ...]] = {
    "session": (
        login.nothing_typed, login.wrong_password, links.to_the_desktop, login.two_steps,
        update.moving_bar,
        game.what_it_is_handed, game.launcher_out_of_sight, game.launcher_is_back,
        environment.own_game, environment.without_a_name, quitting.while_the_game_runs,
        network.start_without_and_return,
        fingerprint.offer_is_accepted, fingerprint.finger_logs_in,
        out_of_date.update_is_handed_on, out_of_date.exit_downloads_nothing,
        aftermath.nothing_is_left_running, aftermath.no_secret_was_written),
    "accessibility": (
        screen_reader.names_in_the_window, screen_reader.news_can_be_read,
        screen_reader.status_is_read_out,
        keyboard.through_the_window, keyboard.through_the_menu, keyboard.through_the_sheet,
        screen_reader.bar_has_a_value,
        keyboard.nothing_focused_during_the_game),
    "pointer": (
        pointer.hovering, pointer.holding, pointer.letting_go_elsewhere, pointer.switched_off,
        pointer.dragging, pointer.stopping_at_the_top, pointer.minimising, pointer.closing,
        pointer.without_blending),
}
