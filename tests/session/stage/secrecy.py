"""Where a secret can be read that nobody should have written down."""

from __future__ import annotations

import base64
import os
import re
from pathlib import Path
from typing import Iterable, Iterator
from urllib.parse import quote, quote_plus

from . import children


def forms(secret: str) -> set[bytes]:
    """A secret as it is, and as forms, headers, archives and the toolkit write it."""
    plain = secret.encode()
    return {plain, quote(secret, safe="").encode(), quote_plus(secret).encode(),
            quote(secret, safe="!$&'()*+,/:;=?@").encode(), base64.b64encode(plain),
            secret.encode("utf-16-le"), secret.encode("utf-16-be")}


def is_in(data: bytes, secrets: Iterable[str]) -> bool:
    return any(_is_form_in(form, data) for secret in secrets for form in forms(secret))


def told_to_processes(secrets: Iterable[str]) -> list[str]:
    """The processes of the session that have a secret among their words or their environment."""
    wanted = list(secrets)
    return [children.described(pid) for pid in _family(os.getpid())
            if is_in(_told(pid), wanted)]


def _is_form_in(form: bytes, data: bytes) -> bool:
    """Six digits are a token only when they stand alone, not as a part of some longer number."""
    if not form.isdigit():
        return form in data
    return form in data and bool(re.search(rb"(?<![\d.])" + form + rb"(?!\d)", data))


def _family(pid: int) -> Iterator[int]:
    for child in children.children(pid):
        yield child
        yield from _family(child)


def _told(pid: int) -> bytes:
    """Nothing for a process that has gone meanwhile."""
    try:
        return b"\0".join(Path(f"/proc/{pid}/{name}").read_bytes()
                          for name in ("cmdline", "environ"))
    except OSError:
        return b""
