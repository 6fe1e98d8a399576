"""The accounts of the session: names as in the sample accounts, passwords of its own."""

from __future__ import annotations

import json
import subprocess
import sys
from pathlib import Path
from typing import Any

from harness import settings
from hosting.accounts import stored_password

# Spaces and signs, but no "&", "=" or "+": the launcher sends these unescaped.
PASSWORDS = {"wren": "moorland-8", "robin": "gorse, peat / 100%", "plover": "mist on water"}
SECRET = "KF2WK3DMNVXW64SUN5VWK3RB"


def write(file: Path) -> None:
    entries: list[dict[str, Any]] = [
        {"name": "wren", "display": "Wren"},
        {"name": "robin", "display": "Robin", "secret": SECRET},
        {"name": "plover", "display": "Plover", "environments": ["qa"]}]
    for entry in entries:
        entry["password"] = stored_password(PASSWORDS[entry["name"]])
    file.write_text(json.dumps({"accounts": entries}))


def token() -> str:
    """Robin's two-step token of this moment."""
    done = subprocess.run([sys.executable, str(settings.TOOLS / "totp"), SECRET], text=True,
                          capture_output=True, check=True)
    return done.stdout.strip()
