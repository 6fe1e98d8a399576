"""Time-based tokens: SHA-1, six digits, thirty seconds (RFC 6238)."""

from __future__ import annotations

import base64
import binascii
import hashlib
import hmac
import struct

STEP_SECONDS = 30
DIGITS = 6
TOLERATED_STEPS = (0, -1, 1)


def decode_secret(text: str) -> bytes:
    """The key behind base32 text as people type it; raises ValueError."""
    compact = "".join(text.split()).upper().rstrip("=")
    try:
        return base64.b32decode(compact + "=" * (-len(compact) % 8))
    except binascii.Error as error:
        raise ValueError(f"not base32: {error}") from None


def token(key: bytes, moment: float, digits: int = DIGITS) -> str:
    """The token for a Unix time."""
    counter = struct.pack(">Q", int(moment) // STEP_SECONDS)
    digest = hmac.new(key, counter, hashlib.sha1).digest()
    offset = digest[-1] & 0x0F
    number = struct.unpack_from(">I", digest, offset)[0] & 0x7FFFFFFF
    return str(number % 10 ** digits).zfill(digits)


def accepts(key: bytes, typed: str, moment: float) -> bool:
    """One step early or late still counts, as clocks differ and people type slowly."""
    compact = "".join(typed.split()).encode()
    wanted = [token(key, max(0.0, moment + step * STEP_SECONDS)).encode()
              for step in TOLERATED_STEPS]
    return any([hmac.compare_digest(each, compact) for each in wanted])
