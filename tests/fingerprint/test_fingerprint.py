#!/usr/bin/python3
"""The fingerprint login against the system's own daemon and a reader made of software."""

from __future__ import annotations

import os
import queue
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

from virtualreader.reader import Reader
from virtualreader.services import PATIENCE, Services

SHOWN = "show Login to the game"
SHOWN_BY_LOGIN = "show Login to Quellmoor"
NO_FINGER = "impossible No fingerprint login: no finger is enrolled."
NO_BIOMETRICS = "impossible "
REFUSAL = "Fingerprint refused: "
SWIPE_TOO_SHORT, NOT_CENTRED = 1, 2


class Probe:
    """The program that asks for the finger, as a child."""

    def __init__(self, program: str, address: str, log: Path) -> None:
        self._log = log
        self._lines: queue.Queue[str] = queue.Queue()
        with open(log, "wb") as errors:
            # pylint: disable=consider-using-with
            self._child = subprocess.Popen(
                [program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=errors, text=True,
                env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": address})
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def say(self, command: str) -> None:
        assert self._child.stdin is not None
        self._child.stdin.write(command + "\n")
        self._child.stdin.flush()

    def hear(self) -> str:
        """The next line; the program's log when none comes."""
        try:
            return self._lines.get(timeout=PATIENCE)
        except queue.Empty:
            raise AssertionError(f"the probe is silent\n{self._log.read_text()}") from None

    def hear_several(self, count: int) -> list[str]:
        return [self.hear() for _ in range(count)]

    def possible(self) -> str:
        self.say("possible")
        return self.hear()

    def refusals(self) -> list[str]:
        """Why questions were refused, as the log has it."""
        return [line.partition(REFUSAL)[2] for line in self._log.read_text().splitlines()
                if REFUSAL in line]

    def end(self) -> int:
        """Its exit code; what it said and nobody heard is a mistake of the test."""
        assert self._child.stdin is not None and self._child.stdout is not None
        self._child.stdin.close()
        code = self._child.wait(PATIENCE)
        self._reader.join()
        self._child.stdout.close()
        return code

    def unheard(self) -> list[str]:
        return list(self._lines.queue)

    def _read(self) -> None:
        assert self._child.stdout is not None
        for line in self._child.stdout:
            self._lines.put(line.rstrip("\n"))


class Fingerprint(unittest.TestCase):

    def setUp(self) -> None:
        folder = Path(tempfile.mkdtemp(prefix="quellmoor-fingerprint-"))
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        self.services = Services(folder / "stand")
        self.addCleanup(self.services.stop)
        self.services.start()
        self.reader = Reader(self.services)
        self.folder = folder

    def start_probe(self) -> Probe:
        probe = Probe(os.environ["QUELLMOOR_FINGERPRINT_PROBE"], self.services.address,
                      self.folder / "probe.log")
        self.addCleanup(self._end_probe, probe)
        return probe

    def _end_probe(self, probe: Probe) -> None:
        self.assertEqual(probe.end(), 0)
        self.assertEqual(probe.unheard(), [])

    def becomes(self, probe: Probe, wanted: str) -> None:
        """Each question brings fresher knowledge, until it is what is wanted."""
        end = time.monotonic() + PATIENCE
        answer = probe.possible()
        while answer != wanted and time.monotonic() < end:
            answer = probe.possible()
        self.assertEqual(answer, wanted)

    def ask(self, probe: Probe, command: str = "evaluate") -> None:
        """Afterwards the reader waits for a finger."""
        with self.reader.awaiting():
            probe.say(command)

    def ready_probe(self) -> Probe:
        """Alice's finger is known, and so does the probe."""
        self.reader.enrol("alice")
        probe = self.start_probe()
        self.becomes(probe, "possible")
        return probe

    def test_is_possible_once_a_finger_is_enrolled(self) -> None:
        probe = self.start_probe()
        self.becomes(probe, NO_FINGER)
        self.reader.enrol("alice")
        self.becomes(probe, "possible")
        self.reader.forget()
        self.becomes(probe, NO_FINGER)

    def test_takes_the_enrolled_finger(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "owner"])
        self.assertEqual(probe.refusals(), [])

    def test_refuses_another_finger(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        self.reader.scan("bob")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(probe.refusals(), ["this finger is not enrolled."])

    def test_waits_for_another_try(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        self.reader.retry(SWIPE_TOO_SHORT)
        self.assertEqual(probe.hear_several(2),
                         [SHOWN, "retry The swipe was too short. Try again."])
        self.reader.retry(NOT_CENTRED)
        self.assertEqual(probe.hear(), "retry Put your finger on the middle of the reader.")
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(2), ["hide", "owner"])

    def test_refuses_without_an_enrolled_finger(self) -> None:
        probe = self.start_probe()
        self.becomes(probe, NO_FINGER)
        probe.say("evaluate")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(probe.refusals(), ["no finger is enrolled."])
        self.reader.enrol("alice")  # The reader is free.

    def test_refuses_when_the_daemon_is_killed(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        self.services.kill_daemon()
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(probe.refusals(), ["the fingerprint service is gone."])
        self.becomes(probe, NO_BIOMETRICS)

        self.services.start_daemon()
        self.becomes(probe, "possible")
        self.ask(probe)
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "owner"])

    def test_refuses_when_the_reader_is_unplugged(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        self.reader.unplug()
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(len(probe.refusals()), 1)
        self.becomes(probe, "impossible No fingerprint login: there is no fingerprint reader.")

    def test_refuses_while_another_program_has_the_reader(self) -> None:
        probe = self.ready_probe()
        with self.reader.claimed():
            probe.say("evaluate")
            self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(probe.refusals(), ["the fingerprint reader is in use."])
        self.ask(probe)
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "owner"])

    def test_refuses_when_the_rights_are_missing(self) -> None:
        probe = self.ready_probe()
        self.services.allow([])
        probe.say("evaluate")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(probe.refusals(), ["this user may not use the fingerprint reader."])

    def test_cancelling_frees_the_reader(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        probe.say("cancel")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "refused"])
        self.assertEqual(probe.refusals(), ["the player cancelled."])
        self.ask(probe)
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(3), [SHOWN, "hide", "owner"])

    def test_the_end_of_the_program_frees_the_reader(self) -> None:
        self.reader.enrol("alice")
        probe = Probe(os.environ["QUELLMOOR_FINGERPRINT_PROBE"], self.services.address,
                      self.folder / "probe.log")
        self.becomes(probe, "possible")
        self.ask(probe)
        self.assertEqual(probe.end(), 0)
        self.assertEqual(probe.unheard(), [SHOWN, "hide"])
        with self.reader.claimed():
            pass

    def test_a_second_question_ends_the_first(self) -> None:
        probe = self.ready_probe()
        self.ask(probe)
        self.ask(probe)
        self.assertEqual(probe.hear_several(4), [SHOWN, "hide", SHOWN, "refused"])
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(2), ["hide", "owner"])

    def test_login_gets_the_stored_account_after_a_match(self) -> None:
        probe = self.ready_probe()
        probe.say("store")
        self.ask(probe, "load")
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(3),
                         [SHOWN_BY_LOGIN, "hide", "credentials 'mira' 'lantern'"])

    def test_login_gets_nothing_after_a_refusal(self) -> None:
        probe = self.ready_probe()
        probe.say("store")
        self.ask(probe, "load")
        self.reader.scan("bob")
        self.assertEqual(probe.hear_several(3), [SHOWN_BY_LOGIN, "hide", "credentials '' ''"])

    def test_login_stores_and_asks_nothing_without_a_finger(self) -> None:
        probe = self.start_probe()
        self.becomes(probe, NO_FINGER)
        probe.say("store")
        probe.say("load")
        self.assertEqual(probe.hear(), "credentials '' ''")
        self.reader.enrol("alice")
        self.becomes(probe, "possible")
        self.ask(probe, "load")
        self.reader.scan("alice")
        self.assertEqual(probe.hear_several(3), [SHOWN_BY_LOGIN, "hide", "credentials '' ''"])


if __name__ == "__main__":
    if "QUELLMOOR_FINGERPRINT_PROBE" not in os.environ:
        sys.exit("name the probe in QUELLMOOR_FINGERPRINT_PROBE")
    unittest.main(verbosity=2)
