"""What can happen to any answer on its way, and what the receiver may make of it."""

from __future__ import annotations

import enum
import gzip
import zlib
from dataclasses import dataclass
from typing import Any, Optional

from lab.reply import Change, Ending, Fault, Harm, Meeting, Reply
from lab.wire import ELSEWHERE, ELSEWHERE_PORT, RIGHT


class Effect(enum.Enum):
    """What arrives."""

    NOTHING = "an error, and no answer"
    WHOLE = "the right answer"
    OTHER = "an answer, but not the right one"
    STATUS = "the right answer under a status of failure"


NOTHING, WHOLE, OTHER, STATUS = Effect.NOTHING, Effect.WHOLE, Effect.OTHER, Effect.STATUS


@dataclass(frozen=True)
class Row:
    """One fault of the way. `is_slow` ones take the launcher's own time-out of a minute. A login,
    which stays with its origin, may make less of it.
    """

    name: str
    fault: Fault
    effect: Effect
    is_slow: bool = False
    at_login: Optional[Effect] = None


PORTAL = (b"<!DOCTYPE html><html><head><title>Hotel</title><meta http-equiv=refresh content='0;"
          b"url=http://portal.localhost/'></head><body>Sign in to this network.</body></html>")
CLOSED = "Connection: close"
CHUNKED = "Transfer-Encoding: chunked"


def chunks(size: int, extension: bytes = b"", end: bytes = b"0\r\n\r\n") -> Change:
    def frame(body: bytes) -> bytes:
        pieces = (body[start:start + size] for start in range(0, len(body), size))
        return b"".join(b"%X%s\r\n%s\r\n" % (len(piece), extension, piece)
                        for piece in pieces) + end
    return frame


def _chunked(frame: Change = chunks(500), **others: Any) -> Reply:
    return Reply(length=None, headers=(CHUNKED,), frame=frame, **others)


def _raw(text: bytes, ending: Ending = Ending.CLOSE) -> Reply:
    return Reply(raw=text, ending=ending)


def _coded(name: str, change: Change = bytes) -> Reply:
    return Reply(headers=(f"Content-Encoding: {name}",), change=change)


def _to(place: str, status: str = "302 Found") -> Reply:
    return Reply(status=status, body=b"", headers=(f"Location: {place}",))


def _closing(**others: Any) -> Reply:
    return Reply(ending=Ending.CLOSE, **others)


CONNECTION = (
    Row("nobody listens", None, NOTHING),
    Row("closed at once", Meeting(), NOTHING),
    Row("reset at once", Meeting(ending=Ending.RESET), NOTHING),
    Row("an answer without TLS", Meeting(b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"),
        NOTHING),
    Row("another protocol", Meeting(b"SSH-2.0-OpenSSH_9.2\r\n"), NOTHING),
    Row("noise", Meeting(bytes(range(256)) * 8), NOTHING),
    Row("a TLS alert", Meeting(b"\x15\x03\x03\x00\x02\x02\x28"), NOTHING),
    Row("a TLS record longer than allowed", Meeting(b"\x16\x03\x03\xff\xff" + bytes(70000)),
        NOTHING),
    Row("a cut in the first TLS record", Meeting(count=3), NOTHING),
    Row("a cut within the handshake", Meeting(count=400), NOTHING),
    Row("a reset within the handshake", Meeting(count=400, ending=Ending.RESET), NOTHING),
    Row("a stall within the handshake", Meeting(count=400, ending=Ending.HOLD), NOTHING, True),
    Row("a cut below TLS", Reply(harm=Harm.CUT), NOTHING),
    Row("a reset below TLS", Reply(harm=Harm.RESET), NOTHING),
    Row("a flipped bit below TLS", Reply(harm=Harm.FLIP), NOTHING),
    Row("a strange record below TLS", Reply(harm=Harm.INJECT), NOTHING),
    Row("slices of seven bytes below TLS", Reply(harm=Harm.SLICE), WHOLE),
)

CERTIFICATES = tuple(Row(f"a certificate {name}", name, NOTHING) for name in (
    "expired", "not yet valid", "for another host", "without a name", "for clients only",
    "of an unknown authority", "signed by itself", "right, and TLS 1.1"))

PACE = (
    Row("no answer and an end", Reply(keep=0, ending=Ending.CLOSE), NOTHING),
    Row("no answer and a reset", Reply(keep=0, ending=Ending.RESET), NOTHING),
    Row("no answer for ever", Reply(keep=0, ending=Ending.HOLD), NOTHING, True),
    Row("a cut in the status line", _raw(b"HTTP/1.1 20"), NOTHING),
    Row("a cut in the head", _raw(b"HTTP/1.1 200 OK\r\nContent-Le"), NOTHING),
    Row("a cut in the middle", Reply(keep=0.5, ending=Ending.CLOSE), NOTHING),
    Row("a cut of the last byte", Reply(less=1, ending=Ending.CLOSE), NOTHING),
    Row("a reset in the middle", Reply(keep=0.5, ending=Ending.RESET), NOTHING),
    Row("a stall in the middle", Reply(keep=0.5, ending=Ending.HOLD), NOTHING, True),
    Row("an end behind the answer", _closing(headers=(CLOSED,)), WHOLE),
    Row("an unannounced end behind the answer", _closing(), WHOLE),
    Row("drops", Reply(pieces=8, pause=0.05), WHOLE),
    Row("fifty pieces", Reply(pieces=50), WHOLE),
)

LENGTHS = (
    Row("a length too long by 100", _closing(length="+100"), NOTHING),
    Row("a length too short by 10", _closing(length="-10"), OTHER),
    Row("a length of 0", _closing(length="0"), OTHER),
    Row("a length below 0", _closing(length="-5x"), WHOLE),
    Row("a length in words", _closing(length="many"), WHOLE),
    Row("a length beyond 64 bits", _closing(length="99999999999999999999999"), WHOLE),
    Row("a length of 8 EB", _closing(length=str(2**63 - 1)), NOTHING),
    Row("no length and an end", _closing(length=None, headers=(CLOSED,)), WHOLE),
    Row("no length and a cut", _closing(length=None, headers=(CLOSED,), keep=0.7), OTHER),
    Row("two lengths, the right one first", _closing(headers=("Content-Length: 0",)), WHOLE),
)

CHUNKS = (
    Row("chunks", _chunked(), WHOLE),
    Row("chunks of one byte", _chunked(chunks(1)), WHOLE),
    Row("chunks with extensions and trailers",
        _chunked(chunks(99, b";a=b", b"0\r\nX-Sum: 1\r\n\r\n")), WHOLE),
    Row("chunks beside a length", Reply(headers=(CHUNKED,), frame=chunks(500), length="7"), WHOLE),
    Row("a cut in a chunk", _chunked(keep=0.6, ending=Ending.CLOSE), NOTHING),
    Row("chunks without the last", _chunked(chunks(500, end=b""), ending=Ending.CLOSE), NOTHING),
    Row("a cut in the last chunk", _chunked(chunks(500, end=b"0\r"), ending=Ending.CLOSE), NOTHING),
    Row("a chunk size in words", _chunked(lambda body: b"no size\r\nno chunk\r\n",
                                          ending=Ending.CLOSE), OTHER),
    Row("a chunk size below 0", _chunked(lambda body: b"-5\r\n" + body, ending=Ending.CLOSE),
        NOTHING),
    Row("a chunk size beyond 64 bits", _chunked(
        lambda body: b"fffffffffffffffffffff\r\n" + body, ending=Ending.CLOSE), OTHER),
    Row("a chunk longer than said", _chunked(
        lambda body: b"%x\r\n%s\r\n0\r\n\r\n" % (max(1, len(body) - 9), body),
        ending=Ending.CLOSE), OTHER),
    Row("chunks said, none sent", _chunked(bytes, ending=Ending.CLOSE), NOTHING),
    Row("an unknown transfer coding", _closing(length=None, headers=("Transfer-Encoding: moor",)),
        WHOLE),
)

CODINGS = (
    Row("gzip said, not done", _coded("gzip"), WHOLE),
    Row("gzip said and done", _coded("gzip", gzip.compress), OTHER),
    Row("gzip said, and cut", _coded("gzip", lambda body: gzip.compress(body)[:-5]), OTHER),
    Row("deflate said and done", _coded("deflate", zlib.compress), OTHER),
    Row("br said, not done", _coded("br"), WHOLE),
    Row("gzip twice", _coded("gzip, gzip", lambda body: gzip.compress(gzip.compress(body))), OTHER),
    Row("an unknown content coding", _coded("moor"), WHOLE),
)

HEADS = (
    Row("HTTP/1.0", _closing(version="HTTP/1.0"), WHOLE),
    Row("no reason phrase", Reply(status="200"), WHOLE),
    Row("a status in words", _closing(status="fine"), NOTHING),
    Row("a status of 0", _closing(status="000 Nothing"), NOTHING),
    Row("a status of 999", Reply(status="999 Odd"), STATUS),
    Row("another protocol's status line", _closing(version="ICY"), NOTHING),
    Row("100 Continue first", Reply(before=b"HTTP/1.1 100 Continue\r\n\r\n"), WHOLE),
    Row("lines that end in LF", Reply(newline=b"\n"), WHOLE),
    Row("a folded header", Reply(headers=("X-Long: one\r\n two",)), WHOLE),
    Row("a header without a colon", _closing(headers=("nonsense",)), WHOLE),
    Row("a header without a colon, and no end", Reply(headers=("nonsense",)), NOTHING, True),
    Row("a header with a NUL", _closing(headers=("X-Odd: a\0b",)), WHOLE),
    Row("a thousand headers", _closing(headers=tuple(f"X-{n}: {n}" for n in range(1000))), WHOLE),
    Row("bytes behind the answer", _closing(after=b"HTTP/1.1 200 OK\r\n\r\nmore"), WHOLE),
    Row("204 with a body", _closing(status="204 No Content"), NOTHING),
    Row("304 Not Modified", Reply(status="304 Not Modified", body=b""), OTHER),
)

STATUSES = tuple(Row(f"status {text}", Reply(status=text), STATUS) for text in (
    "400 Bad Request", "401 Unauthorized", "403 Forbidden", "404 Not Found",
    "408 Request Timeout", "410 Gone", "418 I'm a teapot", "429 Too Many Requests",
    "451 Unavailable", "500 Internal Server Error", "502 Bad Gateway", "503 Service Unavailable",
    "504 Gateway Timeout", "511 Network Authentication Required"))

PORTALS = (
    Row("a captive portal's page", Reply(body=PORTAL, headers=("Content-Type: text/html",)), OTHER),
    Row("a captive portal's 511", Reply(status="511 Sign in", body=PORTAL), OTHER),
    Row("a captive portal's redirect", _to("http://portal.localhost/"), NOTHING),
    Row("nothing at all", Reply(body=b""), OTHER),
    Row("zeroes", Reply(change=lambda body: bytes(len(body))), OTHER),
    Row("the first half, as if whole", Reply(change=lambda body: body[:len(body) // 2]), OTHER),
)

REDIRECTS = (
    Row("a redirect to plain HTTP", _to("http://download.localhost:8443/other"), NOTHING),
    Row("a redirect to a file", _to("file:///etc/hostname"), NOTHING),
    Row("a redirect to data", _to("data:text/plain,other"), NOTHING),
    Row("a redirect to an empty place", _to(""), NOTHING),
    Row("a redirect to itself", _to("/loop/self"), NOTHING),
    Row("a redirect to a loop", _to("/loop/one"), NOTHING),
    Row("a redirect to nobody", _to("https://nobody.localhost:1/"), NOTHING),
    Row("a redirect to no host", _to("https://"), NOTHING),
    Row("a redirect that is no address", _to("ht!tp://[:"), NOTHING),
    Row("a redirect without a place", Reply(status="302 Found", body=b""), NOTHING),
    Row("a redirect to another answer", _to("/other"), OTHER),
)

_THERE = f"{ELSEWHERE}{RIGHT}{{path}}"
ORIGINS = (
    *(Row(f"a redirect by {status} to another origin, which has the right answer",
          _to(_THERE, status), WHOLE, at_login=NOTHING)
      for status in ("302 Found", "307 Temporary Redirect", "308 Permanent Redirect")),
    Row("a redirect to another origin, which has another answer", _to(f"{ELSEWHERE}/other"), OTHER,
        at_login=NOTHING),
    Row("a redirect to another origin, whose certificate is for others",
        _to(f"https://elsewhere.localhost:{ELSEWHERE_PORT}{RIGHT}{{path}}"), NOTHING),
)

# Other places that redirects lead to.
PLACES = {"/loop/self": _to("/loop/self"), "/loop/one": _to("/loop/two"),
          "/loop/two": _to("/loop/one"), "/other": Reply(body=b"another answer")}

ALL: tuple[Row, ...] = (*CONNECTION, *CERTIFICATES, *PACE, *LENGTHS, *CHUNKS, *CODINGS, *HEADS,
                        *STATUSES, *PORTALS, *REDIRECTS, *ORIGINS)

QUICK = tuple(row for row in ALL if not row.is_slow)
SLOW = tuple(row for row in ALL if row.is_slow)


def some(stride: int) -> tuple[Row, ...]:
    """Each so many-th of the quick ones, and all that lead to other origins."""
    return (*(row for row in QUICK[::stride] if row not in ORIGINS), *ORIGINS)
