#!/usr/bin/python3
"""Runs a test of built programs, and fails it when a sanitizer found something in any of them.

under_sanitizer.py COMMAND...
"""

from __future__ import annotations

import os
import subprocess
import sys
import tempfile
from pathlib import Path

SANITIZERS = ("ASAN", "TSAN", "UBSAN")
# Programs of other users write there, too.
FOR_EVERYBODY = 0o1777


def main() -> int:
    with tempfile.TemporaryDirectory(prefix="quellmoor-findings-", dir="/tmp") as name:
        folder = Path(name)
        folder.chmod(FOR_EVERYBODY)
        code = subprocess.run(sys.argv[1:], env=environment(folder), check=False).returncode
        findings = sorted(folder.iterdir())
        for finding in findings:
            print(f"\n{finding.name}:\n{finding.read_text(errors='replace')}", file=sys.stderr)
    return code or bool(findings)


def environment(folder: Path) -> dict[str, str]:
    """Findings go to files: a test may expect any exit code and read any output, or kill."""
    changed = {}
    for sanitizer in SANITIZERS:
        name = f"{sanitizer}_OPTIONS"
        given = [os.environ[name]] if os.environ.get(name) else []
        changed[name] = ":".join([*given, f"log_path={folder / sanitizer.lower()}"])
    return {**os.environ, **changed}


if __name__ == "__main__":
    sys.exit(main())
