"""The report: one chapter a section, so that each can be measured by itself."""

from __future__ import annotations

import os
import platform
import re
import subprocess
from pathlib import Path
from typing import Iterable, Sequence

HEAD = """\
# Performance

Written by `bench/run`, section by section; `bench/run SECTION` measures a section anew. What counts
are the ratios: in each round every tool runs once, and medians are compared. The other tools are those
of Debian's packages. Data are real bytes of this machine's programs, the server is a local nginx over
https. Below each chapter stands when it was measured, and how busy the machine was just before: a load
of more than about 0.3 means that something else ran beside it.

{machine}
"""
CHAPTER = re.compile(r"<!-- (\w+) -->\n(.*?)(?=<!-- \w+ -->|\Z)", re.DOTALL)


def table(head: Sequence[str], rows: Iterable[Sequence[str]]) -> str:
    lines = [head, ["---"] + ["---:"] * (len(head) - 1), *rows]
    return "".join(f"| {' | '.join(line)} |\n" for line in lines)


def seconds(value: float) -> str:
    """With three digits that count."""
    if value < 1e-3:
        return f"{value * 1e6:.3g} us"
    if value < 1:
        return f"{value * 1e3:.3g} ms"
    return f"{value:.3g} s" if value < 1000 else f"{value:.0f} s"


def at_least(what: str, limit: float, value: float) -> str:
    return _aim(what, f"at least {limit:g}", value, value >= limit)


def at_most(what: str, limit: float, value: float) -> str:
    return _aim(what, f"at most {limit:g}", value, value <= limit)


def _aim(what: str, limit: str, value: float, is_reached: bool) -> str:
    return f"- {what}: **{value:.3g}** (aim: {limit}{'' if is_reached else '; MISSED'})\n"


def add(path: Path, name: str, chapter: str, order: Sequence[str]) -> None:
    """Puts a chapter in its place; those of other sections stay as they are."""
    old = path.read_text() if path.exists() else ""
    known = {found[1]: found[2].strip() for found in CHAPTER.finditer(old)}
    known[name] = chapter.strip()
    texts = [f"<!-- {name} -->\n{known[name]}\n" for name in order if name in known]
    path.write_text("\n".join([HEAD.format(machine=_machine()), *texts]))


def _machine() -> str:
    cpu = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    gigabytes = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    system = re.search('PRETTY_NAME="(.*)"', Path("/etc/os-release").read_text())
    return (f"Machine: {cpu[1] if cpu else platform.machine()}, {os.cpu_count()} cores, "
            f"{gigabytes:.0f} GB, {system[1] if system else platform.system()}, "
            f"Linux {platform.release()}.")


def commit() -> str:
    return subprocess.run(["git", "rev-parse", "--short", "HEAD"], capture_output=True, text=True,
                          check=False, cwd=Path(__file__).parent).stdout.strip()
