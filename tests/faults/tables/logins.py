"""Whole answers to a login whose content is odd, and the status line they lead to."""

from __future__ import annotations

import json
from typing import Any

STAYS = "Contacting account server..."


def _json(value: Any) -> bytes:
    return json.dumps(value).encode()


REPLIES: tuple[tuple[str, bytes, str], ...] = (
    ("an empty object", b"{}", STAYS),
    ("an array", b"[7]", STAYS),
    ("a number", b"7", STAYS),
    ("null", b"null", STAYS),
    ("not UTF-8", b'{"status": 4, "message": "\xff\xfe"}', STAYS),
    ("a hundred thousand brackets", b"[" * 100_000, STAYS),
    ("two objects", b'{"status":4}{"status":7}', STAYS),
    ("a status of null", _json({"status": None, "message": "x"}), STAYS),
    ("a status that is a list", _json({"status": [7], "message": "x"}), STAYS),
    ("a status that is an object", _json({"status": {}, "message": "x"}), STAYS),
    ("a status in words", _json({"status": "seven", "message": "x"}), "500: x"),
    ("a status as text", _json({"status": "4", "message": "x"}), "504: x"),
    ("a status with a fraction", b'{"status": 4.9, "message": "x"}', "504: x"),
    ("a status of true", b'{"status": true, "message": "x"}', "501: x"),
    ("a status below 0", _json({"status": -1, "message": "x"}), "50-1: x"),
    ("a status beyond 64 bits", b'{"status": 1e30, "message": "x"}', "500: x"),
    ("no message", _json({"status": 4}), "504: (null)"),
    ("a message that is a list", _json({"status": 4, "message": ["x"]}), "504: (null)"),
    ("a message that is a number", _json({"status": 4, "message": 12}), "504: 12"),
    ("a message of markup", _json({"status": 4, "message": "<b>x</b><img src=x>"}),
     "504: <b>x</b><img src=x>"),
    ("a message with percent signs", _json({"status": 4, "message": "%1%s%n"}), "504: %1%s%n"),
    ("a message in every direction", _json({"status": 4, "message": "\u202emoor\u2066\u200f"}),
     "504: \u202emoor\u2066\u200f"),
    ("a message of 10,000 letters", _json({"status": 4, "message": "m" * 10_000}),
     "504: " + "m" * 10_000),
    ("a message of 2,000 lines", _json({"status": 4, "message": "m\n" * 2_000}),
     "504: " + "m\n" * 2_000),
)
