"""An answer of the wire, right or wrong, as the bytes that go over a connection."""

from __future__ import annotations

import enum
from dataclasses import dataclass
from typing import Callable, Optional, Union

Change = Callable[[bytes], bytes]


class Ending(enum.Enum):
    """What becomes of the connection behind the bytes."""

    KEEP = enum.auto()
    CLOSE = enum.auto()
    RESET = enum.auto()
    HOLD = enum.auto()


class Harm(enum.Enum):
    """What the line does to the answer below TLS."""

    CUT = enum.auto()
    RESET = enum.auto()
    FLIP = enum.auto()
    INJECT = enum.auto()
    SLICE = enum.auto()


def same(body: bytes) -> bytes:
    return body


@dataclass(frozen=True)
class Reply:
    """How an answer differs from a right one; `Reply()` is right.

    `length` is "right", None for no such header, "+N" or "-N" beside the right one, or any other
    text as it stands. `keep` is how much goes out, as a share of all bytes, before the ending. `more`
    zeroes follow, as they are taken; they may be without end. "{path}" in a header is that of the
    request.
    """

    status: str = "200 OK"
    version: str = "HTTP/1.1"
    body: Optional[bytes] = None
    change: Change = same
    frame: Change = same
    headers: tuple[str, ...] = ()
    length: Optional[str] = "right"
    before: bytes = b""
    after: bytes = b""
    raw: Optional[bytes] = None
    newline: bytes = b"\r\n"
    keep: float = 1.0
    less: int = 0
    ending: Ending = Ending.KEEP
    pieces: int = 1
    pause: float = 0.0
    harm: Optional[Harm] = None
    more: float = 0

    def on_the_wire(self, path: str, right: bytes) -> bytes:
        """All bytes of the answer; `right` is the body that was asked for with the path."""
        if self.raw is not None:
            return self.raw
        body = self.change(right if self.body is None else self.body)
        framed = self.frame(body)
        headers = [header.replace("{path}", path) for header in self.headers]
        lines = [f"{self.version} {self.status}", *self._length(len(framed)), *headers]
        head = self.newline.join(line.encode("latin-1") for line in lines) + self.newline * 2
        whole = self.before + head + framed + self.after
        kept = len(whole) - self.less if self.less else int(len(whole) * self.keep)
        return whole[:kept]

    def _length(self, size: int) -> list[str]:
        if self.length is None:
            return []
        if self.length == "right":
            return [f"Content-Length: {size}"]
        if self.length[:1] in "+-" and self.length[1:].isdecimal():
            return [f"Content-Length: {max(0, size + int(self.length))}"]
        return [f"Content-Length: {self.length}"]


@dataclass(frozen=True)
class Meeting:
    """What a client meets before anything of TLS is answered; `count` bytes come through first."""

    hello: bytes = b""
    count: int = 0
    ending: Ending = Ending.CLOSE


Certificate = str
Refusal = type(None)
Fault = Union[Reply, Meeting, Certificate, None]
