"""Host names of the local hosts."""

from __future__ import annotations

import re
from typing import Iterable, Optional

DOMAIN = "localhost"
DOWNLOAD = f"download.{DOMAIN}"
ACCOUNT = f"account.{DOMAIN}"
WWW = f"www.{DOMAIN}"
FORUM = f"forum.{DOMAIN}"
WIKI = f"wiki.{DOMAIN}"
CONTROL = f"control.{DOMAIN}"
OTHER = f"other.{DOMAIN}"
DEFAULT_ENVIRONMENTS = ("qa", "dev")

_ENVIRONMENT = re.compile(r"[A-Za-z0-9_-]{0,40}")


def is_environment(name: str) -> bool:
    """May this stand in a host name? The empty environment may, too."""
    return _ENVIRONMENT.fullmatch(name) is not None


def download_host(environment: str) -> str:
    return f"download-{environment}.{DOMAIN}".lower()


def game_server(environment: Optional[str]) -> str:
    first = f"game-{environment}" if environment else "game"
    return f"{first}.{DOMAIN}:7777"


def environment_of(username: str) -> Optional[str]:
    """The environment behind a single "@", without white space around it."""
    parts = username.split("@")
    return parts[1].strip() if len(parts) == 2 else None


def all_hosts(environments: Iterable[str]) -> list[str]:
    """Every name of the certificate.

    Some TLS libraries take no wildcard directly under a top-level name, so each host
    is listed as well.
    """
    fixed = [DOMAIN, f"*.{DOMAIN}", DOWNLOAD, ACCOUNT, WWW, FORUM, WIKI, CONTROL, OTHER]
    return fixed + sorted({download_host(name) for name in environments})
