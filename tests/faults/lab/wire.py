"""A TLS server on raw sockets that answers byte by byte what a fault wants."""

from __future__ import annotations

import contextlib
import fnmatch
import select
import socket
import ssl
import threading
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from typing import Callable, Optional
from urllib.parse import unquote

from harness import settings

from . import certificates
from .line import HOST, LISTEN, Line, reset
from .reply import Ending, Fault, Meeting, Reply

HEAD_END = b"\r\n\r\n"
MOST_REMEMBERED = 1000
LONGEST_PATH = 2000
WATCH_SECONDS = 0.2
LARGEST_REQUEST = 1024 * 1024
PIECE = bytes(256 * 1024)
MANIFEST = "/mac/patcher.json"
# Another origin. Behind the word, it has what the first one has when all is right.
ELSEWHERE_PORT = settings.port() + 1
ELSEWHERE = f"https://www.localhost:{ELSEWHERE_PORT}"
RIGHT = "/right"


@dataclass(frozen=True)
class Request:
    """What was asked for."""

    method: str
    host: str
    path: str
    body: bytes


@dataclass
class Rule:
    """Which answers are how wrong, and how often still."""

    path: str
    reply: Reply
    times: Optional[int]


Page = Callable[[Request], Optional[bytes]]


class Wire:
    """Serves the tree of a game and the pages; everything is right until `fail` says otherwise."""

    def __init__(self, folder: Path, tree: Path) -> None:
        self._contexts = certificates.contexts(folder / "certificates")
        self._certificate = certificates.RIGHT
        self._lock = threading.Lock()
        self._rules: list[Rule] = []
        self._next: dict[str, tuple[str, Fault, Optional[int]]] = {}
        self._unknown: Optional[bytes] = None
        self._connections: set[ssl.SSLSocket] = set()
        self._requests: list[Request] = []
        self._counts: Counter[str] = Counter()
        self._stopping = threading.Event()
        self._listener = socket.create_server((HOST, 0), backlog=LISTEN)
        self._elsewhere = socket.create_server((HOST, ELSEWHERE_PORT), backlog=LISTEN)
        self.tree = tree
        self.pages: dict[str, Page] = {}
        self.line = Line(settings.port(), self._listener.getsockname()[1])
        for listener in (self._listener, self._elsewhere):
            threading.Thread(target=self._accept, args=(listener,), daemon=True).start()

    def stop(self) -> None:
        self._stopping.set()
        self.line.stop()
        for listener in (self._listener, self._elsewhere):
            listener.shutdown(socket.SHUT_RDWR)
            listener.close()

    def fail(self, path: str, fault: Fault, times: Optional[int] = None) -> None:
        """What goes wrong with the answers for a path, a shell pattern. Faults that are no answers
        meet all connections from now on; None is that nobody listens.
        """
        if isinstance(fault, Reply):
            with self._lock:
                self._rules.append(Rule(path, fault, times))
        elif isinstance(fault, Meeting):
            self.line.meet(fault, times)
        elif fault is None:
            self.line.refuse()
        else:
            self._certificate = fault

    def fail_after(self, earlier: str, path: str, fault: Fault,
                   times: Optional[int] = None) -> None:
        """Fails only once the earlier path was asked for, and so spares that answer."""
        with self._lock:
            self._next[earlier] = (path, fault, times)

    def fail_unknown(self, body: bytes) -> None:
        """Has this body for every path that is not there."""
        self._unknown = body

    def drop(self) -> None:
        """Ends the connections that are there, so that the next request makes a new one."""
        with self._lock:
            connections = list(self._connections)
        for connection in connections:
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)

    def heal(self) -> None:
        """Everything is right again, and nothing was asked for yet."""
        self.line.listen()
        self.line.meet(None)
        self._unknown = None
        self._certificate = certificates.RIGHT
        with self._lock:
            self._rules.clear()
            self._next.clear()
            self._requests.clear()

    def asked_for(self) -> list[str]:
        """The paths so far."""
        with self._lock:
            return [request.path for request in self._requests]

    def count(self, path: str) -> int:
        """How often the path was asked for, also before the last `heal`."""
        with self._lock:
            return self._counts[path]

    def asked_elsewhere(self) -> list[str]:
        """The paths that the other origin was asked for, by whatever name."""
        with self._lock:
            return [request.path for request in self._requests
                    if request.host.endswith(f":{ELSEWHERE_PORT}")]

    def _accept(self, listener: socket.socket) -> None:
        with contextlib.suppress(OSError):
            while True:
                client, _ = listener.accept()
                threading.Thread(target=self._serve, args=(client,), daemon=True).start()

    def _serve(self, client: socket.socket) -> None:
        number = client.getpeername()[1]
        client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        try:
            secure = self._contexts[self._certificate].wrap_socket(client, server_side=True)
        except OSError:
            client.close()
            return
        with self._lock:
            self._connections.add(secure)
        try:
            while (request := _read(secure)) and self._answer(secure, request, number):
                pass
        except OSError:
            pass  # the client went away, which is its right
        finally:
            with self._lock:
                self._connections.discard(secure)
            secure.close()

    def _answer(self, client: ssl.SSLSocket, request: Request, number: int) -> bool:
        """True when the connection goes on."""
        with self._lock:
            coming = self._next.pop(request.path, None)
        if coming:
            self.fail(*coming)
        reply = self._reply_to(request)
        right = self._right(request)
        if right is None and reply.body is None:
            right, reply = b"Not here.", Reply(status="404 Not Found")
        whole = reply.on_the_wire(request.path, right or b"")
        if reply.harm:
            self.line.arm(number, reply.harm)
        size = -(-len(whole) // reply.pieces) or 1
        for start in range(0, len(whole), size):
            client.sendall(whole[start:start + size])
            if reply.pause and start + size < len(whole):
                self._stopping.wait(reply.pause)
        left = reply.more
        while left > 0 and not self._stopping.is_set():
            client.sendall(PIECE[:int(min(left, len(PIECE)))])
            left -= len(PIECE)
        if reply.ending is Ending.HOLD:
            self._hold(client)
        elif reply.ending is Ending.RESET:
            reset(client)
        elif reply.ending is Ending.CLOSE:
            with contextlib.suppress(OSError):
                client.settimeout(0)
                client.unwrap()
        return reply.ending is Ending.KEEP

    def _hold(self, client: ssl.SSLSocket) -> None:
        """Until the client gives up."""
        while not self._stopping.is_set():
            if select.select([client], [], [], WATCH_SECONDS)[0]:
                return

    def _reply_to(self, request: Request) -> Reply:
        with self._lock:
            self._counts[request.path] += 1
            if len(self._requests) < MOST_REMEMBERED:
                self._requests.append(request)
            for rule in self._rules:
                if rule.times != 0 and fnmatch.fnmatchcase(request.path, rule.path):
                    if rule.times is not None:
                        rule.times -= 1
                    return rule.reply
        return Reply()

    def _right(self, request: Request) -> Optional[bytes]:
        """The body of the right answer; None when there is no such page."""
        asked_for = request.path.removeprefix(RIGHT)
        page = self.pages.get(asked_for)
        if page:
            return page(request)
        path = unquote(asked_for).lstrip("/")
        if "\0" in path or len(path) > LONGEST_PATH:
            return self._unknown
        file = self.tree / path
        return file.read_bytes() if file.is_file() else self._unknown


def _read(client: ssl.SSLSocket) -> Optional[Request]:
    """The next request; None at the end of the connection."""
    data = b""
    while HEAD_END not in data:
        piece = client.recv(65536)
        if not piece or len(data) > LARGEST_REQUEST:
            return None
        data += piece
    head, _, body = data.partition(HEAD_END)
    first, *lines = head.decode("latin-1").split("\r\n")
    headers = {name.strip().lower(): value.strip()
               for name, _, value in (line.partition(":") for line in lines)}
    length = min(int(headers.get("content-length", "0")), LARGEST_REQUEST)
    while len(body) < length:
        piece = client.recv(65536)
        if not piece:
            return None
        body += piece
    method, path, _ = first.split(" ", 2)
    return Request(method, headers.get("host", ""), path, body)
