"""A TCP proxy in front of the wire: what can happen to bytes below TLS."""

from __future__ import annotations

import contextlib
import select
import socket
import struct
import threading
from typing import Callable, Optional

from .reply import Ending, Harm, Meeting

HOST = "127.0.0.1"
LISTEN = 64
BLOCK = 65536
SLICE = 7
ALERT_OF_NOBODY = b"\x15\x03\x03\x00\x02\x02\x28"


class Line:
    """Passes connections on to the wire's port; `meeting` and `harm` are what happens to them."""

    def __init__(self, port: int, wire_port: int) -> None:
        self._port, self._wire_port = port, wire_port
        self._lock = threading.Lock()
        self._harms: dict[int, Harm] = {}
        self._meeting: Optional[Meeting] = None
        self._times: Optional[int] = None
        self._held: list[socket.socket] = []
        self._listener: Optional[socket.socket] = None
        self.listen()

    def listen(self) -> None:
        """People can connect; the opposite of `refuse`."""
        if self._listener:
            return
        self._listener = listener = socket.create_server((HOST, self._port), backlog=LISTEN)
        threading.Thread(target=self._accept, args=(listener,), daemon=True).start()

    def refuse(self) -> None:
        """Nobody listens any more; connections that are there go on."""
        listener, self._listener = self._listener, None
        if listener:
            # A thread that waits in accept holds the socket open; this wakes it.
            listener.shutdown(socket.SHUT_RDWR)
            listener.close()

    def meet(self, meeting: Optional[Meeting], times: Optional[int] = None) -> None:
        """What new connections meet from now on, or only so many; None passes them on."""
        with self._lock:
            self._meeting, self._times = meeting, times

    def arm(self, wire_side: int, harm: Harm) -> None:
        """The next bytes from the wire on the connection with that port are harmed."""
        with self._lock:
            self._harms[wire_side] = harm

    def stop(self) -> None:
        self.refuse()
        for held in self._held:
            held.close()

    def _accept(self, listener: socket.socket) -> None:
        with contextlib.suppress(OSError):
            while True:
                client, _ = listener.accept()
                threading.Thread(target=self._serve, args=(client,), daemon=True).start()

    def _serve(self, client: socket.socket) -> None:
        meeting = self._take_meeting()
        if meeting and not meeting.count:
            # The client has spoken first, as TLS wants it.
            with contextlib.suppress(OSError):
                client.recv(BLOCK)
                client.sendall(meeting.hello)
            self._end(client, meeting.ending)
            return
        server = socket.create_connection((HOST, self._wire_port))
        try:
            self._pump(client, server, meeting)
        except OSError:
            with contextlib.suppress(OSError):
                self._end(client, Ending.RESET)
        finally:
            server.close()

    def _take_meeting(self) -> Optional[Meeting]:
        with self._lock:
            if self._times == 0:
                return None
            if self._times is not None:
                self._times -= 1
            return self._meeting

    def _pump(self, client: socket.socket, server: socket.socket,
              meeting: Optional[Meeting]) -> None:
        """Until one side ends. The side that ends first is the side that the other hears of."""
        number = server.getsockname()[1]
        passed = 0
        while True:
            for side in select.select([client, server], [], [])[0]:
                data = side.recv(BLOCK)
                if not data:
                    self._end(client, Ending.CLOSE)
                    return
                if side is client:
                    server.sendall(data)
                    continue
                if meeting and passed + len(data) >= meeting.count:
                    client.sendall(data[:meeting.count - passed])
                    self._end(client, meeting.ending)
                    return
                passed += len(data)
                if self._deliver(client, data, number):
                    return

    def _deliver(self, client: socket.socket, data: bytes, number: int) -> bool:
        """True when the client's connection has ended with it."""
        with self._lock:
            harm = self._harms.get(number)
            if harm is not Harm.SLICE:
                self._harms.pop(number, None)
        if harm is None:
            client.sendall(data)
            return False
        return HARMS[harm](self, client, data)

    def _cut(self, client: socket.socket, data: bytes) -> bool:
        client.sendall(data[:len(data) // 2])
        self._end(client, Ending.CLOSE)
        return True

    def _reset(self, client: socket.socket, data: bytes) -> bool:
        client.sendall(data[:len(data) // 2])
        self._end(client, Ending.RESET)
        return True

    def _flip(self, client: socket.socket, data: bytes) -> bool:
        at = len(data) // 2
        client.sendall(data[:at] + bytes([data[at] ^ 1]) + data[at + 1:])
        return False

    def _inject(self, client: socket.socket, data: bytes) -> bool:
        client.sendall(ALERT_OF_NOBODY + data)
        return False

    def _slice(self, client: socket.socket, data: bytes) -> bool:
        client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        for start in range(0, len(data), SLICE):
            client.sendall(data[start:start + SLICE])
        return False

    def _end(self, client: socket.socket, ending: Ending) -> None:
        if ending is Ending.HOLD:
            self._held.append(client)
            return
        if ending is Ending.RESET:
            reset(client)
        client.close()


def reset(connection: socket.socket) -> None:
    """The next close throws everything away and says so to the peer."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


HARMS: dict[Harm, Callable[[Line, socket.socket, bytes], bool]] = {
    Harm.CUT: Line._cut, Harm.RESET: Line._reset, Harm.FLIP: Line._flip,
    Harm.INJECT: Line._inject, Harm.SLICE: Line._slice}
