"""A server without TLS that counts who comes."""

from __future__ import annotations

import http.server
import threading
from types import TracebackType
from typing import Optional


class PlainHttp:
    """Answers every request with the same bytes; use it in a `with` statement."""

    def __init__(self, answer: bytes) -> None:
        self.requests: list[str] = []
        requests = self.requests

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self) -> None:
                requests.append(self.path)
                self.send_response(200)
                self.send_header("Content-Length", str(len(answer)))
                self.end_headers()
                self.wfile.write(answer)

            def log_message(self, *_arguments: object) -> None:
                """Says nothing."""

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://download.localhost:{self._server.server_port}"

    def __enter__(self) -> PlainHttp:
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, _kind: Optional[type[BaseException]], _error: Optional[BaseException],
                 _trace: Optional[TracebackType]) -> None:
        self._server.shutdown()
        self._server.server_close()
