"""Each way in which an answer can be made to go wrong, as a bare client sees it."""

from __future__ import annotations

import os
import socket
import tempfile
import time
import unittest
from pathlib import Path
from typing import Any

from support import PATIENCE, Client, Hosts, Reply, write_files

from hosting.faults import BadRule, parse_rules

HOST = "download.localhost"
SIZE = 600_000
CONTENT = os.urandom(SIZE)


class FaultCase(unittest.TestCase):
    """Hosts whose rules are gone again after each test."""

    @classmethod
    def setUpClass(cls) -> None:
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.root = Path(temporary.name)
        write_files(cls.root, {"mac/file": CONTENT, "mac/small": b"0123456789"})
        cls.hosts = Hosts("--quiet", "--tree", cls.root)
        cls.addClassCleanup(cls.hosts.stop)

    def setUp(self) -> None:
        self.addCleanup(self.hosts.control, "DELETE", "/faults")

    def rule(self, **rule: Any) -> None:
        self.hosts.control("PUT", "/faults", [rule])

    def get(self, target: str = "/mac/file") -> Reply:
        return self.hosts.ask("GET", HOST, target)

    def faulty(self, target: str = "/mac/file", **fault: Any) -> Reply:
        """The answer under one fault; the names use "_" for "-"."""
        self.rule(fault={name.replace("_", "-"): value for name, value in fault.items()})
        return self.get(target)


class OtherAnswers(FaultCase):

    def test_statusAndBody(self) -> None:
        reply = self.faulty(status=503, body="sörry", headers={"Retry-After": "9"})
        self.assertEqual((reply.status, reply.body.decode(), reply.headers["retry-after"],
                          reply.ending), (503, "sörry", "9", "kept"))

    def test_statusAlone(self) -> None:
        reply = self.faulty(status=404)
        self.assertEqual((reply.status, reply.body), (404, CONTENT))

    def test_bodyOfAFile(self) -> None:
        reply = self.faulty(file=str(self.root / "mac/small"))
        self.assertEqual((reply.status, reply.body), (200, b"0123456789"))

    def test_empty(self) -> None:
        reply = self.faulty(empty=True)
        self.assertEqual((reply.status, reply.headers["content-length"], reply.body),
                         (200, "0", b""))

    def test_redirect(self) -> None:
        for code, wanted in ((None, 302), (307, 307), (308, 308)):
            with self.subTest(code):
                more = {"code": code} if code else {}
                reply = self.faulty(redirect="https://other.localhost:1/x", **more)
                self.assertEqual((reply.status, reply.headers["location"], reply.body),
                                 (wanted, "https://other.localhost:1/x", b""))

    def test_damageAtOffsets(self) -> None:
        reply = self.faulty("/mac/small", damage={"offsets": [0, 3, -1, 99, -99]})
        wanted = bytearray(b"0123456789")
        for offset in (0, 3, 9):
            wanted[offset] ^= 0xFF
        self.assertEqual(reply.body, bytes(wanted))

    def test_damageByChanceIsTheSameForASeed(self) -> None:
        bodies = [self.faulty(damage={"count": 50, "seed": seed}).body for seed in (1, 1, 2)]
        differing = [sum(a != b for a, b in zip(body, CONTENT)) for body in bodies]
        self.assertEqual(differing, [50, 50, 50])
        self.assertEqual((bodies[0] == bodies[1], bodies[1] == bodies[2]), (True, False))


class BrokenFraming(FaultCase):

    def test_lengthThatIsTooLarge(self) -> None:
        for length, claimed in (("+7", SIZE + 7), (10 ** 12, 10 ** 12)):
            with self.subTest(length):
                reply = self.faulty(length=length)
                self.assertEqual((reply.headers["content-length"], reply.body, reply.ending),
                                 (str(claimed), CONTENT, "closed"))

    def test_lengthThatIsTooSmall(self) -> None:
        for length, claimed in (("-7", SIZE - 7), (5, 5), ("-9999999", 0)):
            with self.subTest(length):
                self.rule(fault={"length": length})
                client = Client(self.hosts, HOST)
                self.addCleanup(client.close)
                reply = client.ask("GET", "/mac/file")
                self.assertEqual(reply.headers["content-length"], str(claimed))
                self.assertEqual(reply.body + client.read(SIZE), CONTENT)

    def test_noLength(self) -> None:
        reply = self.faulty(no_length=True)
        self.assertNotIn("content-length", reply.headers)
        self.assertEqual((reply.body, reply.headers["connection"], reply.ending),
                         (CONTENT, "close", "closed"))

    def test_badChunk(self) -> None:
        for good, body in ((0, b""), (4, b"4\r\n0123\r\n"), (99, b"a\r\n0123456789\r\n")):
            with self.subTest(good):
                reply = self.faulty("/mac/small", bad_chunk=good)
                self.assertEqual(reply.headers["transfer-encoding"], "chunked")
                self.assertNotIn("content-length", reply.headers)
                self.assertEqual((reply.body, reply.ending),
                                 (body + b"no size\r\nno chunk\r\n", "closed"))


class BrokenConnections(FaultCase):

    def test_cutEndsCleanlyAfterSoManyBytes(self) -> None:
        for count in (0, 1, 262_144, 300_000, SIZE, SIZE + 1):
            with self.subTest(count):
                reply = self.faulty(cut=count)
                self.assertEqual((reply.status, reply.headers["content-length"]),
                                 (200, str(SIZE)))
                self.assertEqual(reply.body, CONTENT[:count])
                self.assertEqual(reply.ending, "closed" if count < SIZE else "kept")

    def test_cutClosesAlsoAfterAWholeBody(self) -> None:
        self.rule(fault={"cut": 10})
        client = Client(self.hosts, HOST)
        self.addCleanup(client.close)
        self.assertEqual(client.ask("GET", "/mac/small").body, b"0123456789")
        self.assertEqual(client.read(1), b"")

    def test_resetAfterSoManyBytes(self) -> None:
        for count in (0, 5, 300_000):
            with self.subTest(count):
                reply = self.faulty(reset=count)
                self.assertEqual((reply.status, len(reply.body), reply.ending),
                                 (200, count, "reset"))

    def test_noAnswerAtAll(self) -> None:
        for kind, ending in (("cut", "closed"), ("reset", "reset")):
            with self.subTest(kind):
                reply = self.faulty(**{kind: -1})
                self.assertEqual((reply.status, reply.body, reply.ending), (0, b"", ending))

    def test_cutAndResetOnAKeptConnection(self) -> None:
        client = Client(self.hosts, HOST)
        self.addCleanup(client.close)
        self.assertEqual(client.ask("GET", "/mac/small").ending, "kept")
        self.rule(fault={"reset": 3})
        reply = client.ask("GET", "/mac/file")
        self.assertEqual((reply.body, reply.ending), (CONTENT[:3], "reset"))

    def test_headHasNothingToCut(self) -> None:
        self.rule(fault={"cut": 5})
        self.assertEqual(self.hosts.ask("HEAD", HOST, "/mac/file").status, 200)


class SlowAnswers(FaultCase):

    def test_delay(self) -> None:
        reply = self.faulty("/mac/small", delay=0.3)
        self.assertEqual(reply.body, b"0123456789")
        self.assertGreaterEqual(reply.seconds, 0.28)

    def test_rate(self) -> None:
        reply = self.faulty(rate=2_000_000)
        self.assertEqual(reply.body, CONTENT)
        self.assertGreaterEqual(reply.seconds, 0.25)

    def test_drip(self) -> None:
        reply = self.faulty("/mac/small", drip={"bytes": 2, "seconds": 0.05})
        self.assertEqual(reply.body, b"0123456789")
        self.assertGreaterEqual(reply.seconds, 0.18)

    def test_stallForAWhileThenTheRest(self) -> None:
        reply = self.faulty(stall=1000, seconds=0.3)
        self.assertEqual(reply.body, CONTENT)
        self.assertGreaterEqual(reply.seconds, 0.28)

    def test_stallHoldsUntilTheClientGoes(self) -> None:
        self.hosts.control("GET", "/requests?clear=1")
        self.rule(fault={"stall": 7})
        client = Client(self.hosts, HOST)
        client.send("GET", "/mac/file")
        head = b""
        while not head.endswith(b"\r\n\r\n"):
            head += client.read(1)
        self.assertEqual(client.read(7), CONTENT[:7])
        client.socket.settimeout(0.3)
        with self.assertRaises(socket.timeout):
            client.read(1)
        self.assertFalse(self.hosts.control("GET", "/requests")[0]["done"])
        client.close()
        self.assertEventuallyDone(7)

    def test_stallBeforeTheAnswerStarts(self) -> None:
        reply = self.faulty(stall=-1, seconds=0.2)
        self.assertEqual((reply.status, reply.ending), (0, "closed"))
        self.assertGreaterEqual(reply.seconds, 0.18)

    def test_slowAnswerEndsWithItsClient(self) -> None:
        self.hosts.control("GET", "/requests?clear=1")
        self.rule(fault={"drip": {"bytes": 1, "seconds": 0.01}})
        client = Client(self.hosts, HOST)
        client.send("GET", "/mac/file")
        client.read(1)
        client.close()
        self.assertEventuallyDone(SIZE - 1)

    def assertEventuallyDone(self, most: int) -> None:
        """Each look is a request of its own, so the wait is one for the hosts."""
        give_up = time.monotonic() + PATIENCE
        entry = self.hosts.control("GET", "/requests")[0]
        while not entry["done"] and time.monotonic() < give_up:
            entry = self.hosts.control("GET", "/requests")[0]
        self.assertTrue(entry["done"])
        self.assertLessEqual(entry["bytes"], most)


class Rules(FaultCase):

    def test_onlyWhatARuleNames(self) -> None:
        self.rule(host="download*", path="/mac/s*", method="get", fault={"status": 500})
        seen = [self.hosts.ask(method, host, target).status for method, host, target in (
            ("GET", HOST, "/mac/small"), ("GET", HOST, "/mac/small?query"),
            ("HEAD", HOST, "/mac/small"), ("GET", HOST, "/mac/file"),
            ("GET", "www.localhost", "/"))]
        self.assertEqual(seen, [500, 500, 200, 200, 200])

    def test_soManyTimesThenTheNextRule(self) -> None:
        self.hosts.control("PUT", "/faults", [
            {"times": 2, "fault": {"status": 500}}, {"times": 1, "fault": {"status": 501}},
            {"times": 0, "fault": {"status": 502}}])
        self.assertEqual([self.get("/mac/small").status for _ in range(4)],
                         [500, 500, 501, 200])
        rules = self.hosts.control("GET", "/faults")
        self.assertEqual([(rule["times"], rule["hits"]) for rule in rules],
                         [(0, 2), (0, 1), (0, 0)])

    def test_rulesCanBeReadPutBackAndDeleted(self) -> None:
        rule = {"host": "*", "path": "/x", "method": None, "times": None,
                "fault": {"cut": 1}, "hits": 0}
        self.assertEqual(self.hosts.control("PUT", "/faults", [rule]), [rule])
        self.assertEqual(self.hosts.control("PUT", "/faults",
                                            self.hosts.control("GET", "/faults")), [rule])
        self.assertEqual(self.hosts.control("DELETE", "/faults"), [])

    def test_theControlHostNeverFails(self) -> None:
        self.rule(fault={"reset": -1})
        self.assertEqual(self.hosts.control("GET", "/health"), {"ok": True})

    def test_faultsOfALogin(self) -> None:
        self.rule(host="account.localhost", path="/login/", method="POST",
                  fault={"body": "not JSON"})
        reply = self.hosts.ask("POST", "account.localhost", "/login/", b"username=wren")
        self.assertEqual(reply.body, b"not JSON")

    def test_rulesThatCannotBeMeant(self) -> None:
        faults: list[Any] = [
            [], {"explode": 1}, {"cut": "5"}, {"cut": True}, {"cut": 1, "reset": 1},
            {"length": "5"}, {"length": "+-5"}, {"length": -1}, {"rate": 0}, {"delay": -1},
            {"drip": {"bytes": 0}}, {"drip": 5}, {"damage": {"offsets": ["1"]}},
            {"damage": {"at": 1}}, {"file": "/nowhere"}, {"status": 200.5}]
        rules: list[Any] = [{}, [], 5, None, {"fault": {}, "hots": "*"},
                            {"fault": {}, "times": "1"}, *({"fault": each} for each in faults)]
        for document in [*([rule] for rule in rules), {}, None, "x"]:
            with self.subTest(document), self.assertRaises(BadRule):
                parse_rules(document)

    def test_refusedRulesLeaveTheOldOnes(self) -> None:
        self.rule(fault={"status": 500})
        for body in (b"", b"[", b'[{"fault":{"explode":1}}]', b"\xff", b"[" * 100_000):
            with self.subTest(body[:30]):
                reply = self.hosts.ask("PUT", "control.localhost", "/faults", body)
                self.assertEqual((reply.status, set(reply.json())), (400, {"error"}))
        self.assertEqual(self.get("/mac/small").status, 500)


if __name__ == "__main__":
    unittest.main()
