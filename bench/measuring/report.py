"""The report: one chapter a section, so that each can be measured by itself."""

from __future__ import annotations

import os
import platform
import re
import subprocess
from pathlib import Path
from typing import Iterable, Mapping, Sequence

HEAD = """\
# Performance

Written by `bench/run`; `bench/run SECTION` measures a section anew. What counts are the ratios: in
each round every tool runs once, and medians are compared. The other tools are those of Debian's
packages. Data are real bytes of this machine's programs, the server is a local nginx over https.

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


def write(path: Path, chapters: Mapping[str, str], order: Sequence[str], rounds: int) -> None:
    """Keeps the chapters of earlier runs that were not measured now."""
    old = path.read_text() if path.exists() else ""
    known = {found[1]: found[2].strip() for found in CHAPTER.finditer(old)}
    known.update({name: f"{text.strip()}\n\nMedian of {rounds}." for name, text in chapters.items()})
    texts = [f"<!-- {name} -->\n{known[name]}\n" for name in order if name in known]
    path.write_text("\n".join([HEAD.format(machine=_machine()), *texts]))


def _machine() -> str:
    cpu = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    gigabytes = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    system = re.search('PRETTY_NAME="(.*)"', Path("/etc/os-release").read_text())
    commit = subprocess.run(["git", "rev-parse", "--short", "HEAD"], capture_output=True, text=True,
                            check=False, cwd=Path(__file__).parent).stdout.strip()
    return (f"Machine: {cpu[1] if cpu else platform.machine()}, {os.cpu_count()} cores, "
            f"{gigabytes:.0f} GB, {system[1] if system else platform.system()}, "
            f"Linux {platform.release()}, commit {commit}.")
