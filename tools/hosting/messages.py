"""Requests and responses as the hosts see them."""

from __future__ import annotations

import json
import os
from dataclasses import dataclass, field
from typing import Any, BinaryIO, Iterator, Mapping, Optional, Protocol
from urllib.parse import parse_qsl

BLOCK = 256 * 1024
HTML = "text/html; charset=utf-8"


@dataclass(frozen=True)
class Request:
    """One request.

    `target` is the path and query exactly as sent; header names are in lower case.
    """

    host: str
    method: str
    target: str
    headers: Mapping[str, str]
    body: bytes

    @property
    def path(self) -> str:
        return self.target.partition("?")[0]

    @property
    def query(self) -> dict[str, str]:
        return dict(parse_qsl(self.target.partition("?")[2], keep_blank_values=True))

    def form(self) -> dict[str, str]:
        """The fields of a form body; a body that is none has no fields."""
        text = self.body.decode("utf-8", "replace")
        try:
            return dict(parse_qsl(text, keep_blank_values=True, max_num_fields=100))
        except ValueError:
            return {}


class Body(Protocol):
    """Content of a known size that is read once."""

    size: int

    def blocks(self) -> Iterator[bytes]:
        """The content in pieces that fit into memory."""

    def close(self) -> None:
        """Gives back what the body holds open."""


class BytesBody:
    """Content that lies in memory."""

    def __init__(self, content: bytes) -> None:
        self.size = len(content)
        self._content = content

    def blocks(self) -> Iterator[bytes]:
        for start in range(0, self.size, BLOCK):
            yield self._content[start:start + BLOCK]

    def close(self) -> None:
        """Holds nothing open."""


class FileBody:
    """Content of an open file, as long as it was when it was opened."""

    def __init__(self, stream: BinaryIO) -> None:
        self.size = os.fstat(stream.fileno()).st_size
        self._stream = stream

    def blocks(self) -> Iterator[bytes]:
        left = self.size
        while left > 0 and (block := self._stream.read(min(BLOCK, left))):
            left -= len(block)
            yield block

    def close(self) -> None:
        self._stream.close()


@dataclass
class Response:
    """An answer whose Content-Length follows from its body."""

    status: int
    body: Body
    headers: dict[str, str] = field(default_factory=dict)


def text_response(status: int, text: str, kind: str = HTML,
                  headers: Optional[Mapping[str, str]] = None) -> Response:
    return Response(status, BytesBody(text.encode("utf-8")),
                    {"Content-Type": kind, "Cache-Control": "no-store", **(headers or {})})


def json_response(document: Any, status: int = 200) -> Response:
    text = json.dumps(document, ensure_ascii=False) + "\n"
    return text_response(status, text, "application/json")
