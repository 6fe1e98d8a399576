"""The https server: one thread for each connection, on both loopback addresses."""

from __future__ import annotations

import errno
import itertools
import socket
import ssl
import sys
import threading
from http.server import BaseHTTPRequestHandler
from socketserver import TCPServer, ThreadingMixIn
from typing import Any, Optional, Sequence, cast

from .faults import Fault
from .messages import Request, Response, text_response
from .names import CONTROL
from .sending import Ending, Sender, close
from .site import Site

HANDSHAKE_SECONDS = 20
IDLE_SECONDS = 600
LARGEST_BODY = 4 << 20
PORT_TRIES = 20


class Refusal(Exception):
    """The request cannot be taken; the connection ends with this answer."""

    def __init__(self, response: Response) -> None:
        super().__init__(response.status)
        self.response = response


class Connection(BaseHTTPRequestHandler):
    """One client connection and its requests, one after the other."""

    protocol_version = "HTTP/1.1"
    # So that the answer to a broken request line has a status line.
    default_request_version = "HTTP/1.0"
    timeout = IDLE_SECONDS
    disable_nagle_algorithm = True

    def setup(self) -> None:
        super().setup()
        self.ending = Ending.CLOSE
        self.number = next(self._server.connections)

    @property
    def _server(self) -> "LocalServer":
        return cast(LocalServer, self.server)

    def _serve(self) -> None:
        try:
            request = self._request()
        except Refusal as refusal:
            self._send_refusal(refusal.response)
            return
        if request.host == CONTROL:
            self._answer(request, None)
            return
        entry = self._server.site.journal.open_entry(
            request, self.number, self.client_address[1])
        try:
            self._answer(request, entry)
        finally:
            self._server.site.journal.close_entry(entry)

    do_GET = do_HEAD = do_POST = do_PUT = do_DELETE = do_OPTIONS = do_PATCH = _serve

    def _request(self) -> Request:
        host = self.headers.get("Host", "").rpartition("@")[2]
        name = host.partition(":")[0].lower().rstrip(".")
        headers = {field.lower(): value for field, value in self.headers.items()}
        return Request(name, self.command, self.path, headers, self._body())

    def _body(self) -> bytes:
        if "Transfer-Encoding" in self.headers:
            raise Refusal(text_response(411, "A body needs a length.\n", "text/plain"))
        length = self.headers.get("Content-Length", "0")
        if not length.isdecimal():
            raise Refusal(text_response(400, "That is no length.\n", "text/plain"))
        if int(length) > LARGEST_BODY:
            raise Refusal(text_response(413, "That is too much.\n", "text/plain"))
        return self.rfile.read(int(length))

    def _answer(self, request: Request, entry: Optional[Any]) -> None:
        site = self._server.site
        response = site.answer(request)
        sender = Sender(cast(ssl.SSLSocket, self.connection), self._server.stopping,
                        entry.wrote if entry else _not_counted)
        try:
            fault = site.faults.take(request) if entry else Fault()
            response = fault.apply(response)
            if entry:
                entry.answered(response.status)
            self.ending = sender.send(response, fault, request.method == "HEAD",
                                      not self.close_connection)
        except OSError:
            # The client left in the middle; the journal shows how far it got.
            self.ending = Ending.CLOSE
        finally:
            response.body.close()
        self.close_connection = self.ending is not Ending.KEEP

    def _send_refusal(self, response: Response) -> None:
        self.close_connection = True
        Sender(cast(ssl.SSLSocket, self.connection), self._server.stopping,
               _not_counted).send(response, Fault(), False, False)

    def log_message(self, *_: Any) -> None:
        """The journal says it all, and says nothing secret."""


def _not_counted(_: int) -> None:
    """For answers that the journal does not hold."""


class LocalServer(ThreadingMixIn, TCPServer):
    """Accepts on one address; the handshake is left to the thread of the connection."""

    allow_reuse_address = True
    daemon_threads = True
    block_on_close = False
    request_queue_size = 256

    def __init__(self, family: socket.AddressFamily, address: str, port: int,
                 context: ssl.SSLContext, site: Site, stopping: threading.Event,
                 connections: "itertools.count[int]") -> None:
        self.address_family = family
        self.context = context
        self.site = site
        self.stopping = stopping
        self.connections = connections
        super().__init__((address, port), Connection)

    def server_bind(self) -> None:
        if self.address_family == socket.AF_INET6:
            self.socket.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
        super().server_bind()

    def finish_request(self, request: Any, client_address: Any) -> None:
        request.settimeout(HANDSHAKE_SECONDS)
        try:
            secured = self.context.wrap_socket(request, server_side=True)
        except (OSError, ValueError):
            # A client that does not trust us, or a port scan: nothing to answer.
            return
        handler: Optional[Connection] = None
        try:
            handler = Connection(secured, client_address, self)
        finally:
            close(secured, handler.ending if handler else Ending.CLOSE)

    def handle_error(self, request: Any, client_address: Any) -> None:
        # Clients may leave at any moment; anything else is a fault of ours.
        if not isinstance(sys.exc_info()[1], (ConnectionError, TimeoutError, ssl.SSLError)):
            super().handle_error(request, client_address)


class LocalHosts:
    """The servers of all addresses on one port; ends with `stop`."""

    def __init__(self, port: int, context: ssl.SSLContext, site: Site,
                 more_addresses: Sequence[str] = ()) -> None:
        self._stopping = threading.Event()
        self._shared = (context, site, self._stopping, itertools.count(1))
        self._servers = self._bound_to_loopback(port)
        self.port = int(self._servers[0].server_address[1])
        for address in more_addresses:
            self._servers.append(
                LocalServer(socket.AF_INET, address, self.port, *self._shared))

    def start(self) -> None:
        for server in self._servers:
            threading.Thread(target=server.serve_forever, args=(0.1,), daemon=True).start()

    def stop(self) -> None:
        """Ends held answers at once and gives the port back."""
        self._stopping.set()
        for server in self._servers:
            server.shutdown()
            server.server_close()

    def _bound_to_loopback(self, port: int) -> list[LocalServer]:
        for _ in range(PORT_TRIES):
            first = LocalServer(socket.AF_INET, "127.0.0.1", port, *self._shared)
            chosen = int(first.server_address[1])
            try:
                return [first, LocalServer(socket.AF_INET6, "::1", chosen, *self._shared)]
            except OSError as error:
                if error.errno in (errno.EADDRNOTAVAIL, errno.EAFNOSUPPORT):
                    return [first]
                first.server_close()
                # Any port would do, and this one is free on one address only.
                if port != 0 or error.errno != errno.EADDRINUSE:
                    raise
        raise OSError(errno.EADDRINUSE, "no port is free on both loopback addresses")


def tls_context(chain: str, key: str) -> ssl.SSLContext:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.minimum_version = ssl.TLSVersion.TLSv1_2
    context.load_cert_chain(chain, key)
    context.set_alpn_protocols(["http/1.1"])
    return context
