"""The processes: a system bus, who may do what on it, and the fingerprint daemon."""

from __future__ import annotations

import contextlib
import ctypes
import os
import select
import shutil
import signal
import subprocess
import time
from pathlib import Path
from typing import Callable, Iterator, Mapping, Optional, Sequence

import dbus
import dbus.bus
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

PATIENCE = 20  # seconds until something that ought to happen counts as failed
MILLISECONDS_BETWEEN_LOOKS = 20
DIE_WITH_PARENT = 1
LONGEST_SOCKET_PATH = 107

DAEMON = "/usr/libexec/fprintd"
SERVICE = "net.reactivated.Fprint"
RIGHTS = "org.freedesktop.PolicyKit1"
RIGHTS_PATH = "/org/freedesktop/PolicyKit1/Authority"
MOCK = "org.freedesktop.DBus.Mock"
ALLOWED = [f"net.reactivated.fprint.device.{what}" for what in ("enroll", "verify", "setusername")]

BUS_CONFIGURATION = """<busconfig>
  <type>system</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def wait_until(is_true: Callable[[], bool], what: str) -> None:
    """Looks at each event of the main loop, and now and then without one."""
    end = time.monotonic() + PATIENCE
    again = GLib.timeout_add(MILLISECONDS_BETWEEN_LOOKS, lambda: True)
    try:
        while not is_true():
            if time.monotonic() > end:
                raise TimeoutError(f"{what} has not come true in {PATIENCE} seconds")
            GLib.MainContext.default().iteration(True)
    finally:
        GLib.source_remove(again)


class Services:
    """One of these owns `folder`. With `outlive` the processes stay when this program ends."""

    def __init__(self, folder: Path, outlive: bool = False) -> None:
        self.folder = folder.resolve()
        self.outlive = outlive
        self.address = f"unix:path={self.folder / 'bus'}"
        self._bus: Optional[dbus.bus.BusConnection] = None
        self._children: dict[str, subprocess.Popen[bytes]] = {}

    @property
    def bus(self) -> dbus.bus.BusConnection:
        if self._bus is None:
            try:
                self._bus = dbus.bus.BusConnection(self.address, mainloop=DBusGMainLoop())
            except dbus.DBusException as error:
                raise RuntimeError(f"no stand runs in {self.folder}") from error
            self._bus.set_exit_on_disconnect(False)
        return self._bus

    def start(self) -> None:
        """Afterwards everything answers; no finger is known."""
        if len(str(self.folder / "reader")) > LONGEST_SOCKET_PATH:
            raise RuntimeError(f"{self.folder} is too long a name for the sockets in it")
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "state").mkdir(parents=True, mode=0o700)
        self._start_bus()
        self._spawn("rights", ["/usr/bin/python3", "-m", "dbusmock", "--system",
                               "--template", "polkitd"], {})
        self._await_owner(RIGHTS)
        self.allow(ALLOWED)
        self.start_daemon()

    def allow(self, actions: Sequence[str]) -> None:
        """Everybody may do these, and nobody may do anything else."""
        rights = self.bus.get_object(RIGHTS, RIGHTS_PATH, introspect=False)
        rights.SetAllowed(dbus.Array(actions, signature="s"), dbus_interface=MOCK)

    def start_daemon(self) -> None:
        self._spawn("daemon", [DAEMON, "--no-timeout"],
                    {"STATE_DIRECTORY": str(self.folder / "state"),
                     "FP_VIRTUAL_DEVICE": str(self.folder / "reader"),
                     "FP_DRIVERS_WHITELIST": "virtual_device"})
        self._await_owner(SERVICE)

    def kill_daemon(self) -> None:
        """Afterwards it is gone from the bus, too."""
        self._kill("daemon")
        self._await_owner(SERVICE, is_there=False)

    @contextlib.contextmanager
    def frozen_daemon(self) -> Iterator[None]:
        """Meanwhile it takes every question and answers none."""
        daemon = self._children["daemon"]
        daemon.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            daemon.send_signal(signal.SIGCONT)

    def stop(self) -> None:
        if self._bus is not None:
            self._bus.close()
            self._bus = None
        for name in ("daemon", "rights", "bus"):
            self._kill(name)

    def _start_bus(self) -> None:
        configuration = self.folder / "bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(socket=self.folder / "bus"))
        ready, told = os.pipe()
        self._spawn("bus", ["dbus-daemon", f"--config-file={configuration}", "--nofork",
                            "--nopidfile", f"--print-address={told}"], {}, told)
        os.close(told)
        with os.fdopen(ready) as lines:
            if not lines.readline():
                raise RuntimeError(f"there is no bus: {(self.folder / 'bus.log').read_text()}")

    def _spawn(self, name: str, command: list[str], environment: Mapping[str, str],
               *inherited: int) -> None:
        with open(self.folder / f"{name}.log", "ab") as log:
            # pylint: disable=consider-using-with
            child = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, pass_fds=inherited,
                start_new_session=True, preexec_fn=None if self.outlive else _die_with_parent,
                env={**os.environ, **environment, "DBUS_SYSTEM_BUS_ADDRESS": self.address})
        self._children[name] = child
        start = _start_time(child.pid)
        (self.folder / f"{name}.pid").write_text(f"{child.pid} {start}")

    def _kill(self, name: str) -> None:
        """Only what was started here: a number may be another's by now, its start time not."""
        try:
            pid, start = (self.folder / f"{name}.pid").read_text().split()
            descriptor = os.pidfd_open(int(pid))
        except (FileNotFoundError, ProcessLookupError):
            return
        try:
            if _start_time(int(pid)) == start:
                signal.pidfd_send_signal(descriptor, signal.SIGKILL)
                _await_end(descriptor)
        except ProcessLookupError:
            pass
        finally:
            os.close(descriptor)
            if name in self._children:
                self._children.pop(name).wait()
            (self.folder / f"{name}.pid").unlink()

    def _await_owner(self, name: str, is_there: bool = True) -> None:
        watch = self.bus.watch_name_owner(name, lambda owner: None)
        try:
            wait_until(lambda: bool(self.bus.name_has_owner(name)) == is_there,
                       f"{name} {'coming to' if is_there else 'leaving'} the bus")
        finally:
            watch.cancel()


def _await_end(descriptor: int) -> None:
    """A descriptor of a process is readable once it has ended."""
    if not select.select([descriptor], [], [], PATIENCE)[0]:
        raise TimeoutError(f"a process has not ended in {PATIENCE} seconds")


def _start_time(pid: int) -> str:
    """In clock ticks since the machine started; the 22nd field, the 2nd may hold anything."""
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[19]
    except FileNotFoundError as error:
        raise ProcessLookupError(pid) from error


def _die_with_parent() -> None:
    ctypes.CDLL(None).prctl(DIE_WITH_PARENT, signal.SIGKILL)
