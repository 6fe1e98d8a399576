"""Where the built launcher is and what was compiled into it."""

from __future__ import annotations

import os
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[3]
TOOLS = REPOSITORY / "tools"


def launcher() -> Path:
    """The launcher under test."""
    default = REPOSITORY / "build" / "dev" / "app" / "quellmoor-launcher"
    return Path(os.environ.get("QUELLMOOR_LAUNCHER", default))


def slowness() -> float:
    """How many times as long as usual all may take, as under a sanitizer."""
    return float(os.environ.get("QUELLMOOR_SLOWNESS", "1"))


def authority() -> Path:
    """The certificate authority that the launcher trusts."""
    default = REPOSITORY / "build" / "localhosts" / "ca.pem"
    return Path(os.environ.get("QUELLMOOR_EXTRA_CA_FILE", default))


def port() -> int:
    """The port of the hosts that the launcher asks."""
    host = os.environ.get("QUELLMOOR_DOWNLOAD_HOST", "download.localhost:8443")
    return int(host.rpartition(":")[2])
