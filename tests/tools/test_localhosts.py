"""The local hosts: certificates, files, pages, the journal and the process itself."""

from __future__ import annotations

import email.utils
import json
import os
import re
import signal
import socket
import ssl
import stat
import tempfile
import unittest
from pathlib import Path
from urllib.parse import quote

from support import Client, Hosts, run_tool, write_files

TREE = {
    "mac/patcher.json": b"{}",
    "mac/a b/#1 100% ü&é+(x)[y]'.bin.bz2": b"awkward",
    "mac/水/🏮.bz2": b"lantern",
    "mac/empty.bz2": b"",
    "mac/..two dots.bz2": b"dots",
    "mac/large.bz2": os.urandom(3_000_001),
    ".publish-state.json": b"private",
}


class ServingCase(unittest.TestCase):
    """Hosts with a tree for players and one for the environment qa."""

    @classmethod
    def setUpClass(cls) -> None:
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.root = Path(temporary.name)
        write_files(cls.root / "tree", TREE)
        write_files(cls.root / "qa", {"mac/patcher.json": b"qa"})
        write_files(cls.root, {"secret.txt": b"outside"})
        (cls.root / "tree/mac/door.bz2").symlink_to(cls.root / "secret.txt")
        (cls.root / "tree/mac/inside.bz2").symlink_to("patcher.json")
        os.mkfifo(cls.root / "tree/mac/pipe.bz2")
        cls.hosts = Hosts("--tree", cls.root / "tree", "--tree-for", f"qa={cls.root / 'qa'}",
                          "--tree-for", f"={cls.root / 'qa'}")
        cls.addClassCleanup(cls.hosts.stop)


class Certificates(ServingCase):

    def test_everyHostIsProvedByTheAuthorityOnBothAddresses(self) -> None:
        for host in ("localhost", "download.localhost", "download-qa.localhost",
                     "download-dev.localhost", "download-.localhost", "account.localhost",
                     "www.localhost", "forum.localhost", "wiki.localhost",
                     "control.localhost", "other.localhost"):
            for address in ("127.0.0.1", "::1"):
                with self.subTest(host=host, address=address):
                    client = Client(self.hosts, host, address)
                    self.addCleanup(client.close)
                    names = [value for _, value in client.socket.getpeercert()["subjectAltName"]]
                    self.assertIn(host, names)

    def test_otherNamesAndOtherAuthoritiesAreNotProved(self) -> None:
        with self.assertRaises(ssl.SSLCertVerificationError):
            Client(self.hosts, "download.example")
        with socket.create_connection(("127.0.0.1", self.hosts.port)) as plain, \
                self.assertRaises(ssl.SSLCertVerificationError):
            ssl.create_default_context().wrap_socket(plain, server_hostname="localhost")
        self.assertEqual(self.hosts.control("GET", "/health"), {"ok": True})

    def test_keysAreTheOwnersAlone(self) -> None:
        modes = {name: stat.S_IMODE((self.hosts.state / name).stat().st_mode)
                 for name in ("ca.key", "server.key", "ca.pem")}
        self.assertEqual(modes, {"ca.key": 0o600, "server.key": 0o600, "ca.pem": 0o644})

    def test_newNamesMakeANewCertificateUnderTheSameAuthority(self) -> None:
        state = self.root / "certificates"
        seen = []
        for names in (("qa",), ("qa",), ("qa", "staging")):
            options = [part for name in names for part in ("--environment", name)]
            done = run_tool("localhosts", "--prepare-only", "--state", state, *options)
            self.assertEqual(done.returncode, 0, done)
            seen.append([(state / name).read_bytes() for name in ("ca.pem", "server.pem")])
        authorities, servers = zip(*seen)
        self.assertEqual((len(set(authorities)), servers[0] == servers[1],
                          servers[1] == servers[2]), (1, True, False))


class Downloads(ServingCase):

    def test_filesComeWhole(self) -> None:
        for name, content in TREE.items():
            if name.startswith("mac/"):
                with self.subTest(name):
                    target = "/" + quote(name, safe="/!$&'()*+,-.:;=@_~")
                    reply = self.hosts.ask("GET", "download.localhost", target)
                    self.assertEqual((reply.status, reply.body, reply.ending),
                                     (200, content, "kept"))

    def test_headersOfAFile(self) -> None:
        reply = self.hosts.ask("HEAD", "download.localhost", "/mac/large.bz2")
        modified = (self.root / "tree/mac/large.bz2").stat().st_mtime
        self.assertEqual((reply.status, reply.body, reply.headers), (200, b"", {
            "content-type": "application/x-bzip2", "content-length": "3000001",
            "last-modified": email.utils.formatdate(modified, usegmt=True),
            "connection": "keep-alive"}))

    def test_eachEnvironmentHasItsTree(self) -> None:
        bodies = {host: self.hosts.ask("GET", host, "/mac/patcher.json")
                  for host in ("download.localhost", "download-qa.localhost",
                               "download-.localhost", "download-dev.localhost")}
        self.assertEqual([reply.status for reply in bodies.values()], [200, 200, 200, 404])
        self.assertEqual([reply.body for reply in bodies.values()][:3], [b"{}", b"qa", b"qa"])

    def test_nothingOutsideTheTree(self) -> None:
        for target in ("/../secret.txt", "/mac/../../secret.txt", "/%2e%2e/secret.txt",
                       "/mac/..%2f..%2fsecret.txt", "/mac/door.bz2", "//etc/passwd", "/mac",
                       "/mac/", "/", "/mac//patcher.json", "/mac/./patcher.json", "*",
                       "/mac/patcher.json%00", "/mac/pipe.bz2", "/.publish-state.json",
                       f"{self.root}/secret.txt", "/mac/" + "x" * 5000):
            with self.subTest(target[:40]):
                reply = self.hosts.ask("GET", "download.localhost", target)
                self.assertEqual((reply.status, b"outside" in reply.body), (404, False))

    def test_linksInsideTheTreeAndQueriesAreFine(self) -> None:
        for target in ("/mac/inside.bz2", "/mac/patcher.json?again=1", "/mac/%70atcher.json"):
            with self.subTest(target):
                self.assertEqual(self.hosts.ask("GET", "download.localhost", target).body, b"{}")

    def test_otherMethodsAreRefused(self) -> None:
        reply = self.hosts.ask("PUT", "download.localhost", "/mac/patcher.json", b"x")
        self.assertEqual((reply.status, reply.headers["allow"]), (405, "GET, HEAD"))

    def test_installers(self) -> None:
        target = "/VARNO_darwin_setup_1.5.dmg"
        self.assertIn(b"VARNO_darwin_setup_1.5.dmg",
                      self.hosts.ask("GET", "download.localhost", target).body)
        write_files(self.root, {"images/VARNO_darwin_setup_1.6.dmg": b"image"})
        hosts = Hosts("--quiet", "--installers", self.root / "images")
        self.addCleanup(hosts.stop)
        replies = [hosts.ask("GET", "download.localhost", target.replace("1.5", version))
                   for version in ("1.6", "1.5")]
        self.assertEqual([reply.status for reply in replies], [200, 404])
        self.assertEqual(replies[0].body, b"image")


class Connections(ServingCase):

    def test_oneConnectionServesManyRequestsToManyHosts(self) -> None:
        client = Client(self.hosts, "download.localhost")
        self.addCleanup(client.close)
        self.hosts.control("GET", "/requests?clear=1")
        replies = [client.ask(*asked) for asked in (
            ("GET", "/mac/patcher.json"), ("HEAD", "/mac/large.bz2"), ("GET", "/nothing"),
            ("POST", "/mac/patcher.json", b"ignored"), ("GET", "/mac/large.bz2"))]
        self.assertEqual([reply.status for reply in replies], [200, 200, 404, 405, 200])
        entries = self.hosts.control("GET", "/requests")
        self.assertEqual(len({entry["connection"] for entry in entries}), 1)

    def test_requestsSentAtOnceAreAnsweredInOrder(self) -> None:
        client = Client(self.hosts, "download.localhost")
        self.addCleanup(client.close)
        for target in ("/mac/empty.bz2", "/mac/patcher.json", "/nothing"):
            client.send("GET", target)
        replies = [client.reply() for _ in range(3)]
        self.assertEqual([(reply.status, reply.body) for reply in replies[:2]],
                         [(200, b""), (200, b"{}")])
        self.assertEqual(replies[2].status, 404)

    def test_requestsThatCannotBeTaken(self) -> None:
        for extra, status in (("Content-Length: x", 400), ("Content-Length: 99999999999", 413),
                              ("Transfer-Encoding: chunked", 411)):
            with self.subTest(extra):
                client = Client(self.hosts, "account.localhost")
                self.addCleanup(client.close)
                client.socket.sendall(f"POST /login/ HTTP/1.1\r\n{extra}\r\n\r\n".encode())
                self.assertEqual(client.reply().status, status)

    def test_garbageDoesNotHarm(self) -> None:
        with socket.create_connection(("127.0.0.1", self.hosts.port)) as plain:
            plain.sendall(b"GET / HTTP/1.0\r\n\r\n")
        client = Client(self.hosts, "www.localhost")
        self.addCleanup(client.close)
        client.socket.sendall(b"GET / HTTP/7.x\r\n\r\n")
        self.assertEqual(client.reply().status, 400)
        self.assertEqual(self.hosts.control("GET", "/health"), {"ok": True})


class Pages(ServingCase):

    def test_pagesThatTheLauncherOpens(self) -> None:
        for host, target, text in (
                ("www", "/", "Quellmoor"), ("www", "/resetpass/", "password"),
                ("www", "/help/faq/", "Questions"), ("www", "/account/", "account"),
                ("www", "/releases/", "Release notes"), ("www", "/register/", "New account"),
                ("www", "/play/", "launcher"), ("forum", "/", "Forum"),
                ("wiki", "/wiki/Main_Page", "Wiki"), ("account", "/launcher/", "News")):
            with self.subTest(host + target):
                reply = self.hosts.ask("GET", f"{host}.localhost", target)
                self.assertEqual((reply.status, reply.headers["content-type"]),
                                 (200, "text/html; charset=utf-8"))
                self.assertIn(text, reply.body.decode())

    def test_linksOfTheNewsLeadToPages(self) -> None:
        news = self.hosts.ask("GET", "account.localhost", "/launcher/").body.decode()
        links = re.findall(r'href="https://([a-z]+\.localhost):(\d+)(/[^"]*)"', news)
        self.assertEqual(len(links), news.count("href="))
        self.assertGreater(len(links), 3)
        for host, port, target in links:
            with self.subTest(host + target):
                self.assertEqual(int(port), self.hosts.port)
                self.assertEqual(self.hosts.ask("GET", host, target).status, 200)

    def test_newsNeedNothingFromElsewhere(self) -> None:
        news = self.hosts.ask("GET", "account.localhost", "/launcher/").body.decode()
        self.assertIsNone(re.search(r"src=|@import|url\(|<script|<link", news))
        self.assertEqual(news.count("<article"), 3)
        # A browser paints the canvas of a dark colour scheme, which hides the artwork.
        self.assertNotIn("color-scheme", news)

    def test_unknownPagesAndHosts(self) -> None:
        for host, target in (("www", "/nothing"), ("forum", "/releases/"), ("nobody", "/"),
                             ("account", "/"), ("www", "/<script>")):
            with self.subTest(host + target):
                reply = self.hosts.ask("GET", "localhost" if host == "nobody" else
                                       f"{host}.localhost", target)
                self.assertEqual((reply.status, b"<script>" in reply.body), (404, False))

    def test_anotherHostForRedirects(self) -> None:
        self.assertEqual(self.hosts.ask("GET", "other.localhost", "/x").body, b"Another host.\n")


class Journal(ServingCase):

    def test_eachRequestIsListedOnceItsAnswerArrives(self) -> None:
        self.hosts.control("GET", "/requests?clear=1")
        self.hosts.ask("GET", "download.localhost", "/mac/patcher.json?x=%20")
        self.hosts.ask("HEAD", "download-qa.localhost", "/nothing")
        wanted = {"host", "method", "path", "status", "bytes"}
        entries = [{name: entry[name] for name in wanted}
                   for entry in self.hosts.control("GET", "/requests")]
        self.assertEqual(entries, [
            {"host": "download.localhost", "method": "GET", "path": "/mac/patcher.json?x=%20",
             "status": 200, "bytes": 2},
            {"host": "download-qa.localhost", "method": "HEAD", "path": "/nothing",
             "status": 404, "bytes": 0}])

    def test_clearEmptiesTheListAndKeepsTheFile(self) -> None:
        client = Client(self.hosts, "download.localhost")
        self.addCleanup(client.close)
        client.ask("GET", "/mac/only-here")
        # The next answer on a connection starts after the last one is written down.
        client.ask("GET", "/mac/patcher.json")
        self.assertNotEqual(self.hosts.control("GET", "/requests?clear=1"), [])
        self.assertEqual(self.hosts.control("GET", "/requests"), [])
        lines = [json.loads(line) for line in self.hosts.log.read_text().splitlines()]
        self.assertIn("/mac/only-here", [line["path"] for line in lines])
        self.assertEqual({line["done"] for line in lines}, {True})

    def test_unknownControlRequests(self) -> None:
        self.assertEqual(self.hosts.ask("GET", "control.localhost", "/x").status, 404)
        self.assertEqual(self.hosts.ask("POST", "control.localhost", "/faults").status, 405)


class Process(unittest.TestCase):

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)

    def test_saysWhereItIsAndWritesTheReadyFile(self) -> None:
        ready = self.root / "ready"
        hosts = Hosts("--ready-file", ready)
        self.addCleanup(hosts.stop)
        said = "\n".join(hosts.introduction)
        for text in (f"https://download-qa.localhost:{hosts.port}/", str(hosts.authority),
                     "wren / moorland-7"):
            self.assertIn(text, said)
        # The file follows the line; an answer to a request says nothing about it.
        while not ready.exists():
            self.assertIsNone(hosts.process.poll())
            hosts.control("GET", "/health")
        self.assertEqual(ready.read_text(), f"{hosts.port}\n")

    def test_signalsEndItAtOnceAndTheStateCanBeUsedAgain(self) -> None:
        state = self.root / "state"
        for ending, code in ((signal.SIGTERM, 0), (signal.SIGINT, 0), (signal.SIGKILL, -9),
                             (signal.SIGTERM, 0)):
            hosts = Hosts("--quiet", state=state)
            hosts.control("PUT", "/faults", [{"fault": {"stall": 1}}])
            client = Client(hosts, "www.localhost")
            client.send("GET", "/")
            self.assertEqual(client.read(1), b"H")
            hosts.process.send_signal(ending)
            self.assertEqual((hosts.stop(), hosts.introduction), (code, []))
            client.close()

    def test_portInUse(self) -> None:
        with socket.create_server(("127.0.0.1", 0)) as other:
            port = other.getsockname()[1]
            done = run_tool("localhosts", "--port", port, "--state", self.root / "state")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn(f"port {port}: Address already in use", done.stderr)

    def test_stateFolderInUse(self) -> None:
        hosts = Hosts("--quiet")
        self.addCleanup(hosts.stop)
        done = run_tool("localhosts", "--port", 0, "--state", hosts.state)
        self.assertEqual(done.returncode, 2)
        self.assertIn("in use by other local hosts", done.stderr)

    def test_wrongUse(self) -> None:
        for options, code in ((("--port", "65536"), 2), (("--tree-for", "qa"), 2),
                              (("--environment", "a.b"), 2),
                              (("--accounts", "/nowhere", "--port", "0"), 1)):
            with self.subTest(options):
                done = run_tool("localhosts", "--state", self.root / "state", *options)
                self.assertEqual((done.returncode, done.stdout), (code, ""), done)


if __name__ == "__main__":
    unittest.main()
