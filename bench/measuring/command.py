"""The command line of bench/run."""

from __future__ import annotations

import argparse
import os
import shutil
import subprocess
import sys
import time
import traceback
from pathlib import Path
from typing import Optional, Sequence

from harness import isolation

from . import data, report
from .bench import Bench
from .sections import SECTIONS

REPOSITORY = Path(__file__).resolve().parents[2]
AUTHORITY = REPOSITORY / "build" / "localhosts" / "ca.pem"
TARGETS = ("quellmoor-launcher", "quellmoor-microbench", "quellmoor-relay", "quellmoor-sample-game",
           "quellmoor-empty-window", "quellmoor_first_frame")
TOOLS = ("bzip2", "lbzip2", "pbzip2", "sha256sum", "openssl", "wget", "aria2c", "curl", "nginx",
         "Xvfb")
PROXIES = ("http_proxy", "https_proxy", "all_proxy", "no_proxy")


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Runs the sections asked for and returns the exit code."""
    given = _parser().parse_args(arguments)
    os.environ["PATH"] += ":/usr/sbin"
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    if missing:
        print(f"bench: {', '.join(missing)} missing; scripts/setup --bench installs them",
              file=sys.stderr)
        return 1
    if not given.no_build and not os.environ.get(isolation.ENTERED):
        _build(given.build_folder)
    isolation.enter()
    for name in list(os.environ):
        if name.lower() in PROXIES:
            del os.environ[name]
    given.data.mkdir(parents=True, exist_ok=True)
    bench = Bench(given.build_folder, given.data, AUTHORITY, given.quick,
                  1 if given.quick else given.rounds)
    os.environ.update({"QUELLMOOR_LAUNCHER": str(bench.launcher),
                       "QUELLMOOR_SAMPLE_GAME": str(bench.sample_game),
                       "QUELLMOOR_EXTRA_CA_FILE": str(bench.authority)})
    target = given.report or (None if given.quick else REPOSITORY / "docs" / "performance.md")
    if given.prepare:
        data.make_all(bench)
        return 0
    failed = [name for name in given.sections or SECTIONS if not _measure(bench, name, target)]
    if failed:
        print(f"bench: {', '.join(failed)} failed", file=sys.stderr)
    return 1 if failed else 0


def _measure(bench: Bench, name: str, target: Optional[Path]) -> bool:
    """Adds the section's chapter to the report at once: what fails later does not lose it."""
    load, began, started = os.getloadavg()[0], time.strftime("%F %H:%M"), time.monotonic()
    print(f"bench: {name}, load {load:.1f}", flush=True)
    try:
        chapter = SECTIONS[name](bench)
    except Exception:  # whatever it is, the other sections can be measured
        traceback.print_exc()
        return False
    took = time.monotonic() - started
    chapter = (f"{chapter.strip()}\n\nMeasured {began} at commit {report.commit()} in {took:.0f} s; "
               f"load before: {load:.1f}.\n")
    print(f"{chapter}\nbench: {name} took {took:.0f} s", flush=True)
    if target:
        report.add(target, name, chapter, list(SECTIONS))
    return True


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(description=__doc__, epilog="Rounds are interleaved: each "
                                     "tool runs once a round, and medians are compared.")
    parser.add_argument("sections", nargs="*", metavar="SECTION", choices=[*SECTIONS, []],
                        help=f"what to measure: {', '.join(SECTIONS)}; default: everything. Other "
                        "sections of the report stay as they are")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--quick", action="store_true",
                        help="only prove that everything runs: small data, one round, no report")
    parser.add_argument("--prepare", action="store_true", help="only build and make the data")
    parser.add_argument("--no-build", action="store_true", help="measure what is built")
    parser.add_argument("--build-folder", type=Path, default=REPOSITORY / "build" / "bench")
    parser.add_argument("--data", type=Path, default=REPOSITORY / "build" / "bench-data",
                        help="where games are made and kept for the next run")
    parser.add_argument("--report", type=Path, help="another file than docs/performance.md")
    return parser


def _build(folder: Path) -> None:
    """The release preset, except that it trusts the local hosts."""
    subprocess.run([REPOSITORY / "tools" / "localhosts", "--state", AUTHORITY.parent,
                    "--prepare-only", "--quiet"], check=True)
    subprocess.run(["cmake", "--preset", "release", "-B", folder,
                    f"-DQUELLMOOR_EXTRA_CA_FILE={AUTHORITY}", "-DQUELLMOOR_BENCH=ON",
                    "-DQUELLMOOR_TOOLS=ON"],
                   cwd=REPOSITORY, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", folder, "--target", *TARGETS], check=True)
