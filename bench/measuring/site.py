"""A local nginx over https, at the end of a line of any length."""

from __future__ import annotations

import select
import socket
import subprocess
import tempfile
import time
from contextlib import ExitStack, contextmanager
from dataclasses import dataclass
from pathlib import Path
from typing import Iterator, Optional

from harness import isolation, settings
from hosting import authority

from .bench import Bench
from .data import Game

HOST = "download.localhost"
BEHIND_RELAY = 8444
CONFIGURATION = """\
daemon off;
worker_processes 2;
pid {folder}/nginx.pid;
error_log stderr crit;
events {{ worker_connections 256; }}
http {{
    access_log off;
    sendfile on;
    keepalive_requests 1000000;
    client_body_temp_path {folder}/body;
    proxy_temp_path {folder}/proxy;
    fastcgi_temp_path {folder}/fastcgi;
    uwsgi_temp_path {folder}/uwsgi;
    scgi_temp_path {folder}/scgi;
    server {{
        listen 127.0.0.1:{port} ssl;
        server_name {host};
        ssl_certificate {chain};
        ssl_certificate_key {key};
        ssl_protocols TLSv1.3;
        root {root};
    }}
}}
"""


@dataclass(frozen=True)
class Line:
    """What lies between the server and the player."""

    title: str
    round_trip: float  # seconds
    megabits: float

    def transfer_seconds(self, size: int) -> float:
        return size * 8 / self.megabits / 1e6


@contextmanager
def serving(bench: Bench, game: Game, line: Optional[Line] = None) -> Iterator[str]:
    """The base URL of the game's tree while it is served."""
    port = settings.port()
    with ExitStack() as stack:
        folder = Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="quellmoor-nginx-")))
        certificates = authority.ensure(bench.authority.parent, [HOST])
        text = CONFIGURATION.format(folder=folder, port=BEHIND_RELAY if line else port, host=HOST,
                                    chain=certificates.chain, key=certificates.key,
                                    root=game.tree)
        configuration = folder / "nginx.conf"
        configuration.write_text(f"user root;\n{text}")
        _start(stack, ["nginx", "-p", str(folder), "-e", "stderr", "-c", str(configuration)])
        _wait_for(BEHIND_RELAY if line else port)
        if line:
            _start(stack, [str(bench.relay), str(port), str(BEHIND_RELAY),
                           str(line.round_trip * 1000), str(line.megabits)])
            _wait_for(port)
        yield f"https://{HOST}:{port}"


def _start(stack: ExitStack, words: list[str]) -> None:
    process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               preexec_fn=isolation.die_with_parent)

    def stop() -> None:
        process.terminate()
        process.wait(30)

    stack.callback(stop)


def _wait_for(port: int) -> None:
    """Until something listens there."""
    deadline = time.monotonic() + 30
    while True:
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return
        if time.monotonic() > deadline:
            raise RuntimeError(f"nothing listens on port {port}")
        select.select([], [], [], 0.02)
