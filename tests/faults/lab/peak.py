#!/usr/bin/python3
"""Runs a command and writes the most memory that it held, in kilobytes: peak.py FILE COMMAND..."""

from __future__ import annotations

import os
import subprocess
import sys
from pathlib import Path
from typing import Sequence

sys.path.insert(1, str(Path(__file__).resolve().parents[2] / "system"))

from harness import isolation  # noqa: E402

SIGNALLED = 128


def around(result: Path, wrapper: Sequence[str] = ()) -> Sequence[str]:
    """A wrapper that measures what runs in it."""
    return (sys.executable, __file__, str(result), *wrapper)


def of_process(pid: int) -> int:
    """The most so far, in kilobytes."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1])
    return 0


def main() -> int:
    result, *command = sys.argv[1:]
    child = subprocess.Popen(command, preexec_fn=isolation.die_with_parent)
    _, status, usage = os.wait4(child.pid, 0)
    Path(result).write_text(str(usage.ru_maxrss))
    code = os.waitstatus_to_exitcode(status)
    return code if code >= 0 else SIGNALLED - code


if __name__ == "__main__":
    sys.exit(main())
