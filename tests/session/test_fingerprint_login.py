#!/usr/bin/python3
"""The built launcher, the system's daemon, and a fingerprint login that does not simply work."""

from __future__ import annotations

import contextlib
import socket
import stat
import sys
import tempfile
import unittest
from pathlib import Path
from typing import ClassVar, Iterator

import paths  # noqa: F401

from harness import isolation, settings

from acts import aftermath
from acts.fingerprint import HINT, NAME, OFFER, PRIVATE, QUESTION
from player.album import Album
from player.person import Player
from stage import credentials, secrecy
from stage.accounts import PASSWORDS
from stage.credentials import Account, Stored
from stage.pulse import Pulse
from stage.waiting import until
from stage.whole import Stage

STRANGER = "bob"
WREN = Account(NAME, PASSWORDS[NAME])
ARCHIVE = credentials.packed(WREN)
DAMAGED = {"cut short": ARCHIVE[:-9], "text": b"no archive", "nothing": b"",
           "another class": credentials.packed(WREN, class_name="Other"),
           "a password that is the item itself": credentials.packed(WREN, password=1),
           "a password out of range": credentials.packed(WREN, password=77),
           "a table of offsets that leads nowhere": ARCHIVE[:-8] + b"\xff" * 8,
           "thirty megabytes of nothing": b"bplist00" + bytes(30_000_000)}
REFUSED = "505: Enter your user name and your password."
NOTHING_TYPED = "You must enter a Username and Password."
RESET, RESET_KEY = "Touch ID Has Been Reset", "r"
RESET_TEXT = ("To setup Touch ID again login to your account with the correct username and "
              "password and select Enable.")
UNREADABLE = "The stored credentials cannot be read."


class FingerprintLogin(unittest.TestCase):
    """Each test begins with one enrolled finger, nothing stored and no launcher."""

    stage: ClassVar[Stage]
    player: ClassVar[Player]

    @classmethod
    def setUpClass(cls) -> None:
        cls.stage = cls.enterClassContext(Stage())
        folder = tempfile.TemporaryDirectory(prefix="quellmoor-pictures-")
        cls.player = Player(cls.stage, Album(Path(cls.enterClassContext(folder))))
        cls.stage.reader.enrol(NAME)

    def setUp(self) -> None:
        for file in self.stage.home.settings.parent.glob("settings*"):
            file.unlink()
        self.stage.hosts.forget()
        self.addCleanup(self.keeps_the_password_to_itself)

    def keeps_the_password_to_itself(self) -> None:
        """In a file that only its owner reads, and nowhere else."""
        files = aftermath.files_with(self.player, {WREN.password})
        self.assertEqual([file for file in files if file != self.stage.home.settings], [])
        for file in self.stage.home.settings.parent.glob("settings*"):
            self.assertEqual(stat.S_IMODE(file.stat().st_mode), PRIVATE, file)

    @contextlib.contextmanager
    def launcher(self) -> Iterator[None]:
        """A launcher whose window answers all the time."""
        self.player.starts_launcher()
        try:
            with Pulse(self.stage.bus, self.player.launcher.pid):
                yield
        finally:
            self.stage.game_run.end()
            self.player.launcher.end()

    @contextlib.contextmanager
    def remembering_launcher(self) -> Iterator[None]:
        """One that knows the account from an archive that was written by another program."""
        credentials.write(self.stage.home, ARCHIVE)
        with self.launcher():
            yield

    def finger_is_asked_for(self) -> None:
        self.player.plays_without_typing()
        self.player.sees("dialog", QUESTION)

    def empty_login_is_refused(self) -> None:
        """By the hosts, which got three empty fields, once."""
        self.player.sees_status(REFUSED)
        self.player.no_longer_sees("dialog", QUESTION)
        sent = [entry["fields"] for entry in self.stage.hosts.requests()
                if entry["path"] == "/login/"]
        self.assertEqual([sorted((field["name"], field["length"]) for field in fields)
                          for fields in sent],
                         [[("gtoken", 0), ("password", 0), ("username", 0)]])
        self.stage.hosts.forget()

    def play_asks_for_an_account(self) -> None:
        """Once the launcher has heard of the change, no finger is asked for."""
        self.player.empties_form()

        def asked() -> bool:
            self.player.clicks_button("Play")
            return self.player.status() == NOTHING_TYPED
        until(f"the status \"{NOTHING_TYPED}\"", asked)

    def logs_in_without_an_offer(self) -> None:
        """The offer would come at once, long before the game."""
        self.player.logs_in(*WREN)
        self.stage.game_run.report()
        self.assertIsNone(self.player.launcher.find("dialog", OFFER))
        self.assertEqual(secrecy.told_to_processes([WREN.password]), [])

    def logs_in_with_an_offer(self) -> None:
        """Without a game, which would come to the front and take the keyboard."""
        self.stage.hosts.fail_manifest(status=503)
        self.player.logs_in(*WREN)
        self.player.sees("dialog", OFFER)

    def stores(self, wanted: Stored) -> None:
        until(f"the settings {wanted}", lambda: credentials.read(self.stage.home) == wanted)

    def resets_by_keyboard(self) -> None:
        self.player.has_focus_in(self.player.sees("text", "Account"))
        self.player.presses("Menu")
        until("the menu, a window of its own", lambda: len(self.player.launcher.windows()) == 2)
        self.player.presses(RESET_KEY)
        self.player.sees("dialog", RESET)
        self.player.sees("label", RESET_TEXT)
        self.player.presses("Escape")
        self.player.no_longer_sees("dialog", RESET)

    def test_takes_the_account_that_another_program_has_archived(self) -> None:
        with self.remembering_launcher():
            self.finger_is_asked_for()
            self.stage.reader.scan(NAME)
            self.stage.game_run.report()
            self.assertEqual(self.stage.hosts.sessions()[-1]["account"], NAME)
            self.assertEqual(credentials.read(self.stage.home), Stored(True, True, WREN))

    def test_takes_a_damaged_archive_for_none(self) -> None:
        for name, archive in DAMAGED.items():
            with self.subTest(name):
                credentials.write(self.stage.home, archive)
                with self.launcher():
                    self.finger_is_asked_for()
                    self.stage.reader.scan(NAME)
                    self.empty_login_is_refused()
                    self.assertEqual(self.player.launcher.errors().count(UNREADABLE), 1)

    def test_sends_an_empty_login_for_a_finger_that_is_refused(self) -> None:
        with self.remembering_launcher():
            self.finger_is_asked_for()
            self.stage.reader.scan(STRANGER)
            self.empty_login_is_refused()
            self.finger_is_asked_for()
            self.player.presses("Escape")
            self.empty_login_is_refused()

    def test_sends_an_empty_login_while_another_program_has_the_reader(self) -> None:
        with self.remembering_launcher():
            with self.stage.reader.claimed():
                self.player.plays_without_typing()
                self.empty_login_is_refused()
            self.finger_is_asked_for()
            self.stage.reader.scan(NAME)
            self.stage.game_run.report()

    def test_sends_an_empty_login_when_the_daemon_vanishes(self) -> None:
        with self.remembering_launcher():
            self.addCleanup(self.stage.system.start_daemon)
            self.finger_is_asked_for()
            self.stage.reader.wait_until_needed()
            self.stage.system.kill_daemon()
            self.empty_login_is_refused()
            self.play_asks_for_an_account()

    def test_sends_an_empty_login_when_the_reader_is_unplugged(self) -> None:
        with self.remembering_launcher():
            self.addCleanup(self.stage.system.start_daemon)
            self.addCleanup(self.stage.system.kill_daemon)
            self.finger_is_asked_for()
            self.stage.reader.unplug()
            self.empty_login_is_refused()
            self.play_asks_for_an_account()

    def test_can_be_used_while_the_daemon_hangs(self) -> None:
        with self.remembering_launcher(), self.stage.system.frozen_daemon():
            self.finger_is_asked_for()
            self.player.sees("notification", HINT)
            self.player.presses("Escape")
            self.empty_login_is_refused()
            self.logs_in_without_an_offer()
        with self.stage.system.frozen_daemon(), self.remembering_launcher():
            self.play_asks_for_an_account()
            self.logs_in_without_an_offer()

    def test_appears_and_closes_while_the_system_bus_hangs(self) -> None:
        """It lets everybody in and never says a word."""
        path = self.stage.folder / "silent bus"
        bus = socket.socket(socket.AF_UNIX)
        self.addCleanup(path.unlink)
        self.addCleanup(bus.close)
        bus.bind(str(path))
        bus.listen(64)
        launcher = self.stage.start_launcher(more={"DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={path}"})
        self.addCleanup(launcher.end)
        self.player.sees("text", "Account")
        self.player.clicks_button("Close")
        self.assertEqual(launcher.ended(), 0)

    def test_neither_offers_nor_asks_without_a_daemon(self) -> None:
        self.stage.system.kill_daemon()
        self.addCleanup(self.stage.system.start_daemon)
        self.neither_offers_nor_asks("")

    def test_neither_offers_nor_asks_without_an_enrolled_finger(self) -> None:
        self.stage.reader.forget()
        self.addCleanup(self.stage.reader.enrol, NAME)
        self.neither_offers_nor_asks("No fingerprint login: no finger is enrolled.")

    def neither_offers_nor_asks(self, reason: str) -> None:
        credentials.write(self.stage.home, ARCHIVE, was_asked=False)
        with self.launcher():
            self.play_asks_for_an_account()
            self.logs_in_without_an_offer()
            self.assertIn(reason, self.player.launcher.errors())
        self.assertEqual(credentials.read(self.stage.home), Stored(False, True, WREN))

    def test_never_repeats_a_declined_offer_until_the_reset(self) -> None:
        declined = Stored(True, False, None)
        with self.launcher():
            self.logs_in_with_an_offer()
            self.player.presses("Escape")
            self.stores(declined)
        self.stage.hosts.forget()
        with self.launcher():
            self.play_asks_for_an_account()
            self.logs_in_without_an_offer()
            self.assertEqual(credentials.read(self.stage.home), declined)
        with self.launcher():
            self.resets_by_keyboard()
            self.stores(Stored(False, False, Account("", "")))
            self.logs_in_with_an_offer()
            self.player.presses("Return")
            self.stores(Stored(True, True, WREN))

    def test_a_reset_leaves_nothing_of_the_password(self) -> None:
        with self.remembering_launcher():
            self.resets_by_keyboard()
            self.stores(Stored(False, False, Account("", "")))
        self.assertEqual(aftermath.files_with(self.player, {WREN.password}), [])


if __name__ == "__main__":
    if not settings.launcher().exists():
        sys.exit(f"{settings.launcher()} is missing; name it in QUELLMOOR_LAUNCHER")
    isolation.enter()
    unittest.main(verbosity=2)
