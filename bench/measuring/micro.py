"""Runs the micro benchmarks and reads what they say."""

from __future__ import annotations

import json
import os
import subprocess
from pathlib import Path
from typing import Any, Optional

from .bench import Bench

SECONDS_IN = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def run(bench: Bench, pattern: str, rounds: int,
        archive: Optional[Path] = None) -> dict[str, dict[str, Any]]:
    """The median of each benchmark that matches, by name; rounds are interleaved.

    "seconds" is what one iteration took by the clock, "processor" the time of all processors,
    "rate" the bytes or items a second.
    What is decompressed is the stream in `archive`.
    """
    environment = {**os.environ, "TMPDIR": str(bench.data)}
    if archive:
        environment["QUELLMOOR_BENCH_ARCHIVE"] = str(archive)
    if bench.quick:
        environment["QUELLMOOR_BENCH_QUICK"] = "1"
    results = bench.data / "micro.json"  # the engine logs to standard output
    subprocess.run(
        [bench.micro, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={rounds}",
         f"--benchmark_min_time={0.001 if bench.quick else 0.5}",
         "--benchmark_enable_random_interleaving=true", f"--benchmark_out={results}"],
        env=environment, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    values: dict[str, list[dict[str, Any]]] = {}
    for entry in json.loads(results.read_text())["benchmarks"]:
        if entry["run_type"] == "iteration":
            name = entry["run_name"].removesuffix("/real_time").removesuffix("/process_time")
            values.setdefault(name, []).append(entry)
    return {name: _median(entries) for name, entries in values.items()}


def _median(entries: list[dict[str, Any]]) -> dict[str, Any]:
    middle = sorted(entries, key=lambda entry: float(entry["real_time"]))[len(entries) // 2]
    unit = SECONDS_IN[middle["time_unit"]]
    return {"seconds": middle["real_time"] * unit, "processor": middle["cpu_time"] * unit,
            "rate": middle.get("bytes_per_second", middle.get("items_per_second"))}
