"""Sends a response over a connection, whole or with what a fault does to it."""

from __future__ import annotations

import enum
import fcntl
import select
import socket
import ssl
import struct
import termios
import threading
import time
from http import HTTPStatus
from typing import Callable, Iterator, Optional

from .faults import Fault
from .messages import Response

SLICES_PER_SECOND = 20
DRAIN_SECONDS = 5.0
WATCH_SECONDS = 0.2
NO_ANSWER = -1


class Ending(enum.Enum):
    """What becomes of the connection after a response."""

    KEEP = enum.auto()
    CLOSE = enum.auto()
    RESET = enum.auto()


class Sender:
    """Sends one response on one connection, on the thread of the connection.

    `wrote` is told of body bytes before they leave, so that whoever has received
    them finds them counted.
    """

    def __init__(self, connection: ssl.SSLSocket, stopping: threading.Event,
                 wrote: Callable[[int], None]) -> None:
        self._connection = connection
        self._stopping = stopping
        self._wrote = wrote

    def send(self, response: Response, fault: Fault, head_only: bool, keep: bool) -> Ending:
        """Returns what to do with the connection; raises OSError when the peer is gone."""
        limit, at_limit = self._limit(fault)
        if fault.get("delay"):
            self._stopping.wait(fault.get("delay"))
        if limit == NO_ANSWER:
            return at_limit() or Ending.CLOSE
        keep = keep and not _spoils_framing(fault, limit)
        head = _head(response, fault, keep)
        if head_only:
            self._connection.sendall(head)
            return Ending.KEEP if keep else Ending.CLOSE
        ending = self._send_body(head, response, fault, limit, at_limit)
        return ending or (Ending.KEEP if keep else Ending.CLOSE)

    def _send_body(self, head: bytes, response: Response, fault: Fault, limit: Optional[int],
                   at_limit: Callable[[], Optional[Ending]]) -> Optional[Ending]:
        step, pause = _pace(fault)
        sent = 0
        for piece in _pieces(_framed(response, fault), step, limit):
            if sent == limit:
                self._connection.sendall(head)
                head, limit = b"", None
                if ending := at_limit():
                    return ending
            self._wrote(len(piece))
            self._connection.sendall(head + piece if head else piece)
            head = b""
            sent += len(piece)
            if pause:
                self._stopping.wait(pause)
        self._connection.sendall(head)
        return at_limit() if limit is not None else None

    def _limit(self, fault: Fault) -> tuple[Optional[int], Callable[[], Optional[Ending]]]:
        if fault.get("reset") is not None:
            return fault.get("reset"), self._reset
        if fault.get("stall") is not None:
            return fault.get("stall"), lambda: self._hold(fault.get("seconds"))
        return fault.get("cut"), lambda: Ending.CLOSE

    def _reset(self) -> Ending:
        # A reset throws away what still waits to be sent, so let that leave first.
        self._drain()
        return Ending.RESET

    def _drain(self) -> None:
        give_up = time.monotonic() + DRAIN_SECONDS
        while _unsent(self._connection) and time.monotonic() < give_up:
            if self._stopping.wait(0.001):
                return

    def _hold(self, seconds: Optional[float]) -> Optional[Ending]:
        """Sends nothing until the time is over, the peer leaves or the server ends."""
        end = None if seconds is None else time.monotonic() + seconds
        while not self._stopping.is_set():
            left = WATCH_SECONDS if end is None else min(WATCH_SECONDS, end - time.monotonic())
            if left <= 0:
                return None
            readable, _, _ = select.select([self._connection], [], [], left)
            if readable and peer_is_gone(self._connection):
                return Ending.CLOSE
        return Ending.CLOSE


def peer_is_gone(connection: ssl.SSLSocket) -> bool:
    """Has the peer closed? Only for a connection that is closed afterwards."""
    before = connection.gettimeout()
    connection.settimeout(0)
    try:
        return connection.recv(1) == b""
    except (ssl.SSLWantReadError, BlockingIOError):
        return False
    except OSError:
        return True
    finally:
        connection.settimeout(before)


def close(connection: ssl.SSLSocket, ending: Ending) -> None:
    """Ends the connection with a reset, or cleanly down to the TLS closing message."""
    try:
        if ending is Ending.RESET:
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        else:
            connection.settimeout(0)
            # Its closing message goes out before this waits for that of the peer.
            connection.unwrap()
    except (OSError, ValueError):
        # The peer was faster, or the wait for its message is not worth it.
        pass
    finally:
        connection.close()


def _unsent(connection: socket.socket) -> int:
    answer = fcntl.ioctl(connection.fileno(), termios.TIOCOUTQ, bytes(4))
    return int(struct.unpack("i", answer)[0])


def _spoils_framing(fault: Fault, limit: Optional[int]) -> bool:
    return (limit is not None or fault.get("length") is not None
            or bool(fault.get("no-length")) or fault.get("bad-chunk") is not None)


def _head(response: Response, fault: Fault, keep: bool) -> bytes:
    try:
        reason = HTTPStatus(response.status).phrase
    except ValueError:
        reason = "Unknown"
    headers = dict(response.headers)
    if fault.get("bad-chunk") is not None:
        headers["Transfer-Encoding"] = "chunked"
    elif not fault.get("no-length"):
        headers["Content-Length"] = str(fault.declared_length(response.body.size))
    headers["Connection"] = "keep-alive" if keep else "close"
    lines = [f"HTTP/1.1 {response.status} {reason}"]
    lines += [f"{name}: {value}" for name, value in headers.items()]
    return ("\r\n".join(lines) + "\r\n\r\n").encode("utf-8")


def _framed(response: Response, fault: Fault) -> Iterator[bytes]:
    """The body as it goes over the wire."""
    good = fault.get("bad-chunk")
    if good is None:
        return response.body.blocks()
    return _badly_chunked(response.body.blocks(), good)


def _badly_chunked(blocks: Iterator[bytes], good: int) -> Iterator[bytes]:
    for piece in _pieces(blocks, None, good):
        if good > 0:
            yield b"%x\r\n%s\r\n" % (len(piece), piece)
            good -= len(piece)
        else:
            break
    yield b"no size\r\nno chunk\r\n"


def _pieces(blocks: Iterator[bytes], step: Optional[int],
            limit: Optional[int]) -> Iterator[bytes]:
    """The same bytes in pieces of at most `step`, with a boundary at `limit`."""
    sent = 0
    for block in blocks:
        start = 0
        while start < len(block):
            end = len(block) if step is None else min(len(block), start + step)
            if limit is not None and sent < limit:
                end = min(end, start + limit - sent)
            yield block[start:end]
            sent += end - start
            start = end


def _pace(fault: Fault) -> tuple[Optional[int], float]:
    """Bytes at a time, and the pause after each."""
    drip = fault.get("drip")
    if drip is not None:
        return drip.get("bytes", 1), drip.get("seconds", 1.0)
    rate = fault.get("rate")
    if rate is not None:
        step = max(1, int(rate / SLICES_PER_SECOND))
        return step, step / rate
    return None, 0.0
