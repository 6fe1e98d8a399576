"""Rules that make chosen answers go wrong in a chosen way."""

from __future__ import annotations

import fnmatch
import random
import threading
from dataclasses import dataclass, field
from http import HTTPStatus
from pathlib import Path
from typing import Any, Iterator, Mapping, Optional

from .messages import Body, BytesBody, FileBody, Request, Response


class BadRule(ValueError):
    """A rule that cannot be meant; the text says what is wrong with it."""


_NUMBER = (int, float)
_KINDS: dict[str, tuple[type, ...]] = {
    "delay": _NUMBER, "status": (int,), "body": (str,), "file": (str,), "empty": (bool,),
    "redirect": (str,), "code": (int,), "headers": (dict,),
    "length": (int, str), "no-length": (bool,), "bad-chunk": (int,), "damage": (dict,),
    "cut": (int,), "reset": (int,), "stall": (int,), "seconds": _NUMBER,
    "drip": (dict,), "rate": _NUMBER,
}
_RULE_KINDS: dict[str, tuple[type, ...]] = {
    "host": (str,), "path": (str,), "method": (str, type(None)),
    "times": (int, type(None)), "fault": (dict,),
}
_DAMAGE_KINDS: dict[str, tuple[type, ...]] = {"offsets": (list,), "count": (int,),
                                              "seed": (int, str)}
_DRIP_KINDS: dict[str, tuple[type, ...]] = {"bytes": (int,), "seconds": _NUMBER}


@dataclass(frozen=True)
class Fault:
    """What shall happen to an answer; an empty one changes nothing."""

    wishes: Mapping[str, Any] = field(default_factory=dict)

    def get(self, name: str) -> Any:
        return self.wishes.get(name)

    def apply(self, response: Response) -> Response:
        """The response with its status, headers and content changed."""
        if self.get("redirect") is not None:
            response = Response(self.get("code") or HTTPStatus.FOUND, BytesBody(b""),
                                {"Location": self.get("redirect")})
        body = self._content(response.body)
        headers = {**response.headers, **(self.get("headers") or {})}
        return Response(self.get("status") or response.status, body, headers)

    def declared_length(self, size: int) -> int:
        """The Content-Length to claim: as it is, by "+N" or "-N", or any number."""
        wish = self.get("length")
        if isinstance(wish, str):
            return max(0, size + int(wish))
        return size if wish is None else int(wish)

    def _content(self, body: Body) -> Body:
        replaced: Optional[Body] = None
        if self.get("empty"):
            replaced = BytesBody(b"")
        elif self.get("body") is not None:
            replaced = BytesBody(self.get("body").encode("utf-8", "surrogatepass"))
        elif self.get("file") is not None:
            replaced = FileBody(open(self.get("file"), "rb"))
        if replaced is not None:
            body.close()
            body = replaced
        damage = self.get("damage")
        return DamagedBody(body, _offsets(damage, body.size)) if damage else body


class DamagedBody:
    """Another body with the bytes at some offsets inverted."""

    def __init__(self, body: Body, offsets: list[int]) -> None:
        self.size = body.size
        self._body = body
        self._offsets = offsets

    def blocks(self) -> Iterator[bytes]:
        start = 0
        for block in self._body.blocks():
            changed = bytearray(block)
            for offset in self._offsets:
                if start <= offset < start + len(block):
                    changed[offset - start] ^= 0xFF
            start += len(block)
            yield bytes(changed)

    def close(self) -> None:
        self._body.close()


def _offsets(damage: Mapping[str, Any], size: int) -> list[int]:
    """Negative offsets count from the end, as a file's last bytes are often the target."""
    listed = [offset % size for offset in damage.get("offsets", ()) if -size <= offset < size]
    count = min(damage.get("count", 0), size)
    chosen = random.Random(damage.get("seed", 0)).sample(range(size), count)
    return sorted({*listed, *chosen})


@dataclass
class Rule:
    """Which answers a fault meets, and how often it still will."""

    host: str
    path: str
    method: Optional[str]
    times: Optional[int]
    fault: Fault
    hits: int = 0

    def meets(self, request: Request) -> bool:
        return (self.times != 0
                and self.method in (None, request.method)
                and fnmatch.fnmatchcase(request.host, self.host)
                and fnmatch.fnmatchcase(request.path, self.path))

    def described(self) -> dict[str, Any]:
        return {"host": self.host, "path": self.path, "method": self.method,
                "times": self.times, "fault": dict(self.fault.wishes), "hits": self.hits}


class FaultBook:
    """The rules in force, shared by all connections; the first that meets counts."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._rules: list[Rule] = []

    def replace(self, rules: list[Rule]) -> None:
        with self._lock:
            self._rules = rules

    def described(self) -> list[dict[str, Any]]:
        with self._lock:
            return [rule.described() for rule in self._rules]

    def take(self, request: Request) -> Fault:
        """The fault for this request; using it up is part of asking."""
        with self._lock:
            for rule in self._rules:
                if rule.meets(request):
                    rule.hits += 1
                    if rule.times is not None:
                        rule.times -= 1
                    return rule.fault
        return Fault()


def parse_rules(document: Any) -> list[Rule]:
    """Rules from JSON; raises BadRule."""
    if not isinstance(document, list):
        raise BadRule("the rules have to be a list")
    return [_parse_rule(entry) for entry in document]


def _parse_rule(entry: Any) -> Rule:
    _check("rule", entry, {**_RULE_KINDS, "hits": (int,)})
    if "fault" not in entry:
        raise BadRule('a rule needs a "fault"')
    wishes = entry["fault"]
    _check("fault", wishes, _KINDS)
    _check_wishes(wishes)
    method = entry.get("method")
    return Rule(entry.get("host", "*"), entry.get("path", "*"),
                method.upper() if method else None, entry.get("times"), Fault(wishes))


def _check(what: str, entry: Any, kinds: Mapping[str, tuple[type, ...]]) -> None:
    if not isinstance(entry, dict):
        raise BadRule(f"a {what} has to be an object")
    for name, value in entry.items():
        if name not in kinds:
            raise BadRule(f"{name!r} is not known in a {what}")
        unwanted_bool = isinstance(value, bool) and bool not in kinds[name]
        if unwanted_bool or not isinstance(value, kinds[name]):
            raise BadRule(f"{name!r} has the wrong type in a {what}")


def _check_wishes(wishes: Mapping[str, Any]) -> None:
    if sum(name in wishes for name in ("cut", "reset", "stall")) > 1:
        raise BadRule('only one of "cut", "reset" and "stall" can happen')
    _check("damage", wishes.get("damage", {}), _DAMAGE_KINDS)
    _check("drip", wishes.get("drip", {}), _DRIP_KINDS)
    if not all(isinstance(offset, int) for offset in wishes.get("damage", {}).get("offsets", ())):
        raise BadRule('the "offsets" of a damage have to be numbers')
    for name in ("delay", "seconds", "bad-chunk", "length"):
        if isinstance(wishes.get(name), _NUMBER) and wishes[name] < 0:
            raise BadRule(f"{name!r} must not be negative")
    if "rate" in wishes and wishes["rate"] <= 0:
        raise BadRule('"rate" has to be more than 0')
    if wishes.get("drip", {"bytes": 1}).get("bytes", 1) < 1:
        raise BadRule('a drip has to be at least 1 byte')
    if isinstance(wishes.get("length"), str) and not _is_signed(wishes["length"]):
        raise BadRule('"length" has to be a number, "+N" or "-N"')
    if "file" in wishes and not Path(wishes["file"]).is_file():
        raise BadRule(f"no file {wishes['file']!r}")


def _is_signed(text: str) -> bool:
    return text[:1] in ("+", "-") and text[1:].isdecimal()
