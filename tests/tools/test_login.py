"""Logins: every answer of the account host, and what is never written down."""

from __future__ import annotations

import json
import re
import stat
import tempfile
import time
import unittest
from hashlib import sha256
from pathlib import Path
from typing import Optional
from urllib.parse import urlencode

from support import Hosts

from hosting import totp
from hosting.accounts import DEFAULT_ACCOUNTS, AccountsError, Sessions, load_accounts
from hosting.login import Login

NOW = 1_800_000_000.0
ROBIN_SECRET = "KF2WK3DMNVXW64SUN5VWK3RB"


def token(step: int = 0) -> str:
    return totp.token(totp.decode_secret(ROBIN_SECRET), NOW + 30 * step)


class Answers(unittest.TestCase):
    """The rules of the login, at a moment that stands still."""

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.sessions = Sessions(Path(temporary.name, "sessions.json"))
        self.login = Login(load_accounts(DEFAULT_ACCOUNTS), self.sessions, lambda: NOW)

    def status(self, username: Optional[str], password: Optional[str],
               gtoken: Optional[str] = "") -> int:
        form = {"username": username, "password": password, "gtoken": gtoken}
        reply = self.login.answer({name: text for name, text in form.items()
                                   if text is not None})
        self.assertEqual(set(reply), {"status", "message"} if reply["status"] != 7 else
                         {"status", "message", "token", "gameserver"})
        return int(reply["status"])

    def test_statusOfEachLogin(self) -> None:
        wrong = "%06d" % ((int(token()) + 1) % 10 ** 6)
        for row in (
            (7, "wren", "moorland-7"), (7, "wren", "moorland-7", "123456"),
            (7, "wren@qa", "moorland-7"), (7, "wren@", "moorland-7"),
            (7, "wren@ dev ", "moorland-7"),
            (4, "wren", "Moorland-7"), (4, "wren", "moorland-7 "), (4, "nobody", "moorland-7"),
            (4, "Wren", "moorland-7"), (4, "wren@a@b", "moorland-7"),
            (4, "wren@$(id)", "moorland-7"), (4, "@qa", "x"), (4, "wren", "\ud800"),
            (5, "", ""), (5, "wren", ""), (5, "", "moorland-7"), (5, None, None),
            (5, "wren", None), (5, "wren", "moorland-7", None),
            (3, "robin", "heather-and-gorse"), (3, "robin@qa", "heather-and-gorse", " "),
            (3, "robin", "heather-and-gorse", wrong), (7, "robin", "heather-and-gorse", token()),
            (7, "robin", "heather-and-gorse", token(-1)),
            (7, "robin", "heather-and-gorse", token(1)),
            (3, "robin", "heather-and-gorse", token(-2)),
            (3, "robin", "heather-and-gorse", token(2)),
            (4, "robin", "wrong", token()),
            (12, "raven", "peat-and-ink"), (4, "raven", "peat"),
            (7, "plover@qa", "mist on water"), (4, "plover", "mist on water"),
            (4, "plover@dev", "mist on water"), (4, "plover@", "mist on water"),
        ):
            with self.subTest(row):
                self.assertEqual(self.status(*row[1:]), row[0])

    def test_texts(self) -> None:
        replies = [self.login.answer({"username": name, "password": password, "gtoken": typed})
                   for name, password, typed in (
                       ("wren", "moorland-7", ""), ("robin", "heather-and-gorse", ""),
                       ("robin", "heather-and-gorse", "1"),
                       ("raven", "peat-and-ink", ""))]
        self.assertEqual([reply["message"] for reply in replies],
                         ["Welcome back, Wren.", "Enter your two-step token.",
                          "That token is not valid. Enter the current one.",
                          "This account is closed until the moor thaws."])

    def test_gameServerOfTheEnvironment(self) -> None:
        servers = [self.login.answer({"username": name, "password": "moorland-7",
                                      "gtoken": ""})["gameserver"]
                   for name in ("wren", "wren@", "wren@qa")]
        self.assertEqual(servers, ["game.localhost:7777", "game.localhost:7777",
                                   "game-qa.localhost:7777"])

    def test_cookiesStandInAShellLineAndDiffer(self) -> None:
        form = {"username": "wren", "password": "moorland-7", "gtoken": ""}
        cookies = {self.login.answer(form)["token"] for _ in range(5)}
        self.assertEqual(len(cookies), 5)
        for cookie in cookies:
            self.assertRegex(cookie, r"^[A-Za-z0-9_-]{32}$")

    def test_sessionsSurviveARestartAndExpire(self) -> None:
        cookie = self.sessions.open("wren", "qa")
        path = self.sessions._path
        entries = Sessions(path).entries()
        self.assertGreater(entries[0].pop("expires"), time.time() + 3600)
        self.assertEqual(entries, [{"account": "wren", "environment": "qa",
                                    "cookie_sha256": sha256(cookie.encode()).hexdigest()}])
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)
        path.write_text(path.read_text().replace('"expires": ', '"expires": -'))
        self.assertEqual(Sessions(path).entries(), [])

    def test_accountsFilesThatCannotBeUsed(self) -> None:
        path = Path(self.sessions._path.parent, "accounts.json")
        entry = {"name": "a", "password": "scrypt$YQ==$YQ=="}
        for content in ("", "[]", "{}", '{"accounts":[{}]}',
                        json.dumps({"accounts": [{**entry, "password": "plain"}]}),
                        json.dumps({"accounts": [{**entry, "password": "md5$a$b"}]}),
                        json.dumps({"accounts": [{**entry, "secret": "0"}]})):
            with self.subTest(content):
                path.write_text(content)
                with self.assertRaises(AccountsError):
                    load_accounts(path)
        path.write_text(json.dumps({"accounts": [entry]}))
        self.assertEqual(set(load_accounts(path)), {"a"})


class OverTheWire(unittest.TestCase):
    """The same as a launcher sees it."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.hosts = Hosts("--quiet")
        cls.addClassCleanup(cls.hosts.stop)

    def test_logsInWithTheTokenOfThisMoment(self) -> None:
        self.assertEqual(self.hosts.login("robin@qa", "heather-and-gorse")["status"], 3)
        now = totp.token(totp.decode_secret(ROBIN_SECRET), time.time())
        reply = self.hosts.login("robin@qa", "heather-and-gorse", now)
        self.assertEqual((reply["status"], reply["gameserver"]), (7, "game-qa.localhost:7777"))
        digests = [entry["cookie_sha256"] for entry in self.hosts.control("GET", "/sessions")]
        self.assertIn(sha256(reply["token"].encode()).hexdigest(), digests)

    def test_onlyFormsThatArePosted(self) -> None:
        reply = self.hosts.ask("GET", "account.localhost", "/login/")
        self.assertEqual((reply.status, reply.headers["allow"]), (405, "POST"))
        for body in (b"", b"\xff\xfe", b"&&&&", b"a=b&" * 500):
            with self.subTest(body[:8]):
                reply = self.hosts.ask("POST", "account.localhost", "/login/", body)
                self.assertEqual((reply.status, reply.json()["status"]), (200, 5))

    def test_nothingSecretIsWrittenDown(self) -> None:
        form = urlencode({"username": "robin", "password": "pa55-s3cret", "gtoken": "918273"})
        for target, body in (("/login/", form), ("/login/?" + form, ""),
                             ("/login/", "pa55-s3cret"), ("/login/", "pa55-s3cret=918273"),
                             ("/other/", form)):
            self.hosts.ask("POST", "account.localhost", target, body.encode())
        reply = self.hosts.login("wren", "moorland-7")
        listed = json.dumps(self.hosts.control("GET", "/requests"))
        self.hosts.control("GET", "/health")
        written = "".join(path.read_text() for path in self.hosts.state.iterdir())
        secrets = re.compile("|".join(["pa55", "918273", "moorland-7", reply["token"]]))
        self.assertIsNone(secrets.search(listed + written))

    def test_namesAndLengthsOfFieldsAreLogged(self) -> None:
        self.hosts.control("GET", "/requests?clear=1")
        self.hosts.login("wren", "äöü", "1 2")
        entry = self.hosts.control("GET", "/requests")[0]
        self.assertEqual(entry["fields"], [{"name": "username", "length": 4},
                                           {"name": "password", "length": 3},
                                           {"name": "gtoken", "length": 3}])


if __name__ == "__main__":
    unittest.main()
