"""Running the tools, and talking to the local hosts byte by byte."""

from __future__ import annotations

import json
import os
import socket
import ssl
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Optional
from urllib.parse import urlencode

TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))

PATIENCE = 20.0


def run_tool(name: str, *arguments: object, **more: Any) -> subprocess.CompletedProcess[str]:
    """Runs a tool to its end and keeps what it said."""
    return subprocess.run([str(TOOLS / name), *map(str, arguments)], text=True,
                          capture_output=True, timeout=60, check=False, **more)


def write_files(folder: Path, contents: dict[str, bytes]) -> None:
    for name, content in contents.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


def snapshot(folder: Path) -> dict[str, tuple[int, bytes]]:
    """Everything below a folder: modes and contents by path."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in [*folders, *files]:
            path = Path(place, name)
            content = path.read_bytes() if path.is_file() else b""
            found[str(path.relative_to(folder))] = (path.lstat().st_mode, content)
    return found


@dataclass
class Reply:
    """What arrived, and how the connection ended: "kept", "closed", "reset" or "torn"."""

    status: int = 0
    headers: dict[str, str] = field(default_factory=dict)
    body: bytes = b""
    ending: str = "closed"
    seconds: float = 0.0

    def json(self) -> Any:
        return json.loads(self.body)


class Client:
    """One TLS connection to a host, checked against the hosts' own authority."""

    def __init__(self, hosts: "Hosts", host: str, address: str = "127.0.0.1") -> None:
        self._host = f"{host}:{hosts.port}"
        context = ssl.create_default_context(cafile=str(hosts.authority))
        plain = socket.create_connection((address, hosts.port), timeout=PATIENCE)
        self.socket = context.wrap_socket(plain, server_hostname=host,
                                          suppress_ragged_eofs=False)
        self._buffer = b""

    def send(self, method: str, target: str, body: Optional[bytes] = None) -> None:
        head = f"{method} {target} HTTP/1.1\r\nHost: {self._host}\r\n"
        if body is not None:
            head += f"Content-Length: {len(body)}\r\n"
        self.socket.sendall(head.encode("ascii") + b"\r\n" + (body or b""))

    def reply(self, head_only: bool = False) -> Reply:
        """Reads up to the promised length, or until the connection ends before that."""
        started = time.monotonic()
        reply = Reply(ending="kept")
        while b"\r\n\r\n" not in self._buffer and reply.ending == "kept":
            reply.ending = self._more()
        head, _, rest = self._buffer.partition(b"\r\n\r\n")
        if head:
            _parse_head(reply, head.decode())
        promised = int(reply.headers.get("content-length", 1 << 62))
        while len(rest) < promised and reply.ending == "kept" and not head_only:
            self._buffer = b""
            reply.ending = self._more()
            rest += self._buffer
        reply.body, self._buffer = rest[:promised], rest[promised:]
        reply.seconds = time.monotonic() - started
        return reply

    def read(self, count: int) -> bytes:
        """Exactly so many bytes of whatever comes, for answers that do not end."""
        while len(self._buffer) < count and self._more() == "kept":
            continue
        taken, self._buffer = self._buffer[:count], self._buffer[count:]
        return taken

    def ask(self, method: str, target: str, body: Optional[bytes] = None) -> Reply:
        self.send(method, target, body)
        return self.reply(head_only=method == "HEAD")

    def close(self) -> None:
        self.socket.close()

    def _more(self) -> str:
        try:
            block = self.socket.recv(1 << 16)
        except ssl.SSLEOFError:
            return "torn" if self._is_connected() else "reset"
        except ConnectionResetError:
            return "reset"
        self._buffer += block
        return "kept" if block else "closed"

    def _is_connected(self) -> bool:
        # Some versions of ssl report a reset as an end without the closing message.
        try:
            self.socket.getpeername()
        except OSError:
            return False
        return True


def _parse_head(reply: Reply, head: str) -> None:
    first, *lines = head.split("\r\n")
    reply.status = int(first.split(" ")[1])
    for line in lines:
        name, _, value = line.partition(": ")
        reply.headers[name.lower()] = value


class Hosts:
    """Local hosts on a free port, with a state folder of their own."""

    def __init__(self, *arguments: object, state: Optional[Path] = None) -> None:
        self._temporary = tempfile.TemporaryDirectory()
        self.state = state or Path(self._temporary.name, "state")
        self.authority = self.state / "ca.pem"
        self.log = self.state / "requests.log"
        self.process = subprocess.Popen(
            [str(TOOLS / "localhosts"), "--port", "0", "--state", str(self.state),
             *map(str, arguments)], stdout=subprocess.PIPE, text=True)
        self.introduction: list[str] = []
        self.port = self._ready()

    def ask(self, method: str, host: str, target: str, body: Optional[bytes] = None) -> Reply:
        """One request on a connection of its own."""
        client = Client(self, host)
        try:
            return client.ask(method, target, body)
        finally:
            client.close()

    def control(self, method: str, target: str, document: Any = None) -> Any:
        body = None if document is None else json.dumps(document).encode()
        return self.ask(method, "control.localhost", target, body).json()

    def login(self, username: str, password: str, token: str = "") -> dict[str, Any]:
        form = urlencode({"username": username, "password": password, "gtoken": token})
        reply = self.ask("POST", "account.localhost", "/login/", form.encode())
        return dict(reply.json())

    def stop(self) -> int:
        self.process.terminate()
        code = self.process.wait(PATIENCE)
        if self.process.stdout:
            self.process.stdout.close()
        self._temporary.cleanup()
        return code

    def _ready(self) -> int:
        assert self.process.stdout
        for line in self.process.stdout:
            if line.startswith("ready on "):
                return int(line.split()[-1])
            self.introduction.append(line.rstrip("\n"))
        raise AssertionError(f"the hosts ended with code {self.process.wait()}")
