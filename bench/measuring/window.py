"""What the launcher's window costs: its first frame, and the launcher while nobody does anything."""

from __future__ import annotations

import os
import shutil
import signal
import subprocess
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path
from typing import Iterable, Iterator, Mapping

from player.album import Album
from player.person import Player
from stage import accounts, children
from stage.children import Services
from stage.display import Display
from stage.waiting import until
from stage.whole import Stage

from .bench import Bench, Times
from .report import at_most, seconds, table

EMPTY, LAUNCHER, TEXTS = "empty window", "launcher", "launcher, with its texts"
FOCUS = {"FIRST_FRAME_FOCUS": "accountIDField"}
NEWS = "/launcher/"
WEB_NEWS = "quellmoor-web-news.so"
MEBIBYTE_IN_KIB = 1024
STILL = 1.0  # seconds
AT_REST = 0.002  # of a core, a launcher that has nothing to do any more
QUIET = 0.01  # seconds without work, a desktop that has put a window away
WATCHED = 20.0  # seconds


def first_frame(bench: Bench) -> str:
    """From the start of the process until the window is painted and has the keyboard, with a fresh
    home on a display of its own, with a session bus as on every desktop. The programs take turns,
    each on a desktop at rest: putting the window before it away would slow it down otherwise.
    """
    turns = bench.sized(100 * bench.rounds, 2)
    probes = bench.build / "bench" / "firstframe"
    clock, processor = Times(), Times()
    with tempfile.TemporaryDirectory() as folder:
        home = {"HOME": folder, "XDG_RUNTIME_DIR": folder, "LANG": "C.UTF-8",
                "PATH": os.environ["PATH"], "QTWEBENGINE_DISABLE_SANDBOX": "1"}
        services = Services(Path(folder), home)
        try:
            bus = Path(folder) / "bus"
            services.start("bus", ["dbus-daemon", "--session", "--nofork", "--nopidfile",
                                   f"--address=unix:path={bus}"])
            until("the message bus", bus.is_socket)
            environment = {**home, **Display(services, Path(folder)).environment,
                           "DBUS_SESSION_BUS_ADDRESS": f"unix:path={bus}",
                           "LD_PRELOAD": str(probes / "libquellmoor_first_frame.so")}
            for turn in range(turns + 1):
                for name, program, awaited in (
                        (EMPTY, probes / "quellmoor-empty-window", {}),
                        (LAUNCHER, bench.window, FOCUS),
                        (TEXTS, bench.window, {**FOCUS, "FIRST_FRAME_TEXTS": "playButton"})):
                    until("a desktop at rest", lambda: _work_of(services.pids, QUIET) == 0)
                    by_clock, by_processor = _first_frame(program, {**environment, **awaited})
                    if turn > 0:  # before that the system had to read the program from the disk
                        clock.add(name, by_clock)
                        processor.add(name, by_processor)
        finally:
            services.stop()
    rows = [(name, seconds(clock.median(name)), seconds(processor.median(name)))
            for name in (EMPTY, LAUNCHER, TEXTS)]
    aim = at_most("Times an empty window of the same library", 1.3, clock.ratio(LAUNCHER, EMPTY))
    texts = f"{clock.ratio(TEXTS, EMPTY):.3g}"
    return (f"## First frame\n\n{aim}\nFrom the start of the process until the window is painted and "
            "the account field has the keyboard, on a desktop at rest. Texts are drawn right after the first "
            f"frame; with them it is {texts} times an empty window, which has none.\n\n"
            f"{table(('', 'time', 'processor time'), rows)}\n{clock.rounds()}\n")


def _first_frame(program: Path, environment: Mapping[str, str]) -> tuple[float, float]:
    """Seconds by the clock and of processor time."""
    reading, writing = os.pipe()
    started = time.monotonic_ns()
    process = subprocess.Popen(
        [str(program)], pass_fds=[writing], start_new_session=True, stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
        env={**environment, "FIRST_FRAME_FD": str(writing)})
    os.close(writing)
    with open(reading, encoding="ascii") as told:
        words = told.readline().split()
    os.killpg(process.pid, signal.SIGKILL)
    process.wait()
    return (int(words[0]) - started) / 1e9, int(words[1]) / 1e9


def idle(bench: Bench) -> str:
    """Memory while the login form waits, and processor time while the game runs."""
    watched = bench.sized(int(WATCHED), 1)
    rows = []
    with _player() as player:
        rows.append(("with Qt WebEngine", *_memory_at_rest(player)))
        player.logs_in("wren", accounts.PASSWORDS["wren"])
        game = player.stage.game_run.report()["pid"]
        until("a launcher out of sight", lambda: not player.launcher.windows())
        _comes_to_rest(player.launcher.pid)
        hidden = _work_of(_family(player.launcher.pid), watched)
        rows.append(("the same, hidden while the game runs", *_memory(player.launcher.pid)))
        player.stage.game_run.end()
        until("the end of the game", lambda: not children.is_running(game))
    with _without_web_engine(bench), _player() as player:
        rows.append(("without it", *_memory_at_rest(player)))
    aim = at_most(f"Hidden launcher, % of a core over {watched} s", 0.049, 100 * hidden)
    return (f"## Idle\n\n{aim}\nMemory of the launcher and the processes that it has started, without "
            "the game: what they share is counted once (PSS). A screen reader's bus is there.\n\n"
            f"{table(('launcher at rest', 'memory', 'processes'), rows)}\nMeasured once.\n")


@contextmanager
def _player() -> Iterator[Player]:
    """One with a whole game that is known to be valid, and the launcher at its login form."""
    with Stage() as stage, tempfile.TemporaryDirectory() as pictures:
        shutil.copytree(stage.game.source, stage.home.game)
        stage.home.verify()
        player = Player(stage, Album(Path(pictures)))
        player.starts_launcher()
        until("a launcher that fetches its news",
              lambda: any(one.endswith(NEWS) for one in stage.hosts.asked_for()))
        yield player


@contextmanager
def _without_web_engine(bench: Bench) -> Iterator[None]:
    """The launcher without the plugin for its news, which it can do without."""
    before = os.environ["QUELLMOOR_LAUNCHER"]
    with tempfile.TemporaryDirectory() as folder:
        for part in (bench.launcher, bench.window, *bench.launcher.parent.glob("*.so")):
            if part.name != WEB_NEWS:
                shutil.copy(part, folder)
        os.environ["QUELLMOOR_LAUNCHER"] = str(Path(folder) / bench.launcher.name)
        try:
            yield
        finally:
            os.environ["QUELLMOOR_LAUNCHER"] = before


def _memory_at_rest(player: Player) -> tuple[str, str]:
    _comes_to_rest(player.launcher.pid)
    return _memory(player.launcher.pid)


def _memory(launcher: int) -> tuple[str, str]:
    """Memory and number of the processes, as cells of a table."""
    family = _family(launcher)
    kibibytes = sum(_proportional(pid) for pid in family)
    return f"{kibibytes / MEBIBYTE_IN_KIB:.0f} MiB", str(len(family))


def _proportional(pid: int) -> int:
    for line in Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Pss:"):
            return int(line.split()[1])
    raise RuntimeError(f"the system does not tell the memory of {pid}")


def _comes_to_rest(launcher: int) -> None:
    until("a launcher at rest", lambda: _work_of(_family(launcher), STILL) < AT_REST)


def _work_of(processes: Iterable[int], span: float) -> float:
    """The part of a core that they use meanwhile."""
    before = _processor_time(processes)
    time.sleep(span)  # what is measured is this span
    return (_processor_time(processes) - before) / span


def _processor_time(processes: Iterable[int]) -> float:
    """In seconds, of the threads that they have now."""
    return sum(int(thread.read_text().split()[0]) for pid in processes
               for thread in Path(f"/proc/{pid}/task").glob("*/schedstat")) / 1e9


def _family(launcher: int) -> list[int]:
    """The launcher and what it has started, except the game, which begins with a shell."""
    family = [launcher]
    for pid in family:
        family += [child for child, state in children.children(pid).items()
                   if state != "Z" and not _is_shell(child)]
    return family


def _is_shell(pid: int) -> bool:
    return Path(f"/proc/{pid}/comm").read_text().strip() in ("sh", "bash", "dash")
