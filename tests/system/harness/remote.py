"""A network from which the hosts can be reached over a default route only."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path
from typing import Sequence

from . import isolation

HOSTS = "10.98.0.1"
NAMES = ("download", "account", "www", "forum", "wiki")


class RemoteHosts:
    """Gives the hosts an address far away, which their names mean for every program of the test.

    The hosts have to be told of it. Use it only in isolation: it mounts over the system's tables.
    """

    def __init__(self, folder: Path) -> None:
        _run("ip", "address", "add", f"{HOSTS}/32", "dev", "lo")
        names = " ".join(f"{name}.localhost" for name in NAMES)
        for target, text in (("hosts", f"127.0.0.1 localhost\n{HOSTS} {names}\n"),
                             ("nsswitch.conf", "hosts: files\n")):
            table = folder / target
            table.write_text(text)
            isolation.mount("--bind", str(table), os.path.join("/etc", target))

    @staticmethod
    def close() -> None:
        isolation.unmount("/etc/nsswitch.conf")
        isolation.unmount("/etc/hosts")


class RemoteNetwork:
    """Another namespace at the far end of a cable; `inside` starts programs there."""

    def __init__(self, number: int) -> None:
        self._gateway, self._here = (f"10.99.{number}.{end}" for end in (1, 2))
        self._link = f"moor{number}"
        self._keeper = subprocess.Popen(
            ["unshare", "--net", "--", "sh", "-c", "echo ready; exec cat"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, preexec_fn=isolation.die_with_parent)
        assert self._keeper.stdout is not None
        if self._keeper.stdout.readline() != b"ready\n":
            raise RuntimeError("no second network namespace can be had")
        self.inside: Sequence[str] = ("nsenter", f"--net=/proc/{self._keeper.pid}/ns/net", "--")
        self._lay_cable()
        self.plug_in()

    def close(self) -> None:
        _run("ip", "link", "del", f"{self._link}-far")
        self._keeper.communicate()

    def plug_in(self) -> None:
        """There is a route to everything."""
        self._ip("route", "replace", "default", "via", self._gateway)

    def unplug(self) -> None:
        """There is none any more, but to the neighbour."""
        self._ip("route", "del", "default")

    def take_link_down(self) -> None:
        """The route goes with the link."""
        self._ip("link", "set", self._link, "down")

    def bring_link_up(self) -> None:
        self._ip("link", "set", self._link, "up")
        self.plug_in()

    def unroutable(self) -> int:
        """How many connections had no route so far."""
        table = Path(f"/proc/{self._keeper.pid}/net/snmp").read_text().splitlines()
        names, numbers = (line.split() for line in table if line.startswith("Ip:"))
        return int(numbers[names.index("OutNoRoutes")])

    def has_been_heard(self) -> bool:
        """Nobody inside has unread news of routes and links."""
        lines = Path(f"/proc/{self._keeper.pid}/net/netlink").read_text().splitlines()[1:]
        sockets = [line.split() for line in lines]
        return all(int(unread) == 0 for _, _, _, groups, unread, *_ in sockets if int(groups, 16))

    def _lay_cable(self) -> None:
        far = f"{self._link}-far"
        _run("ip", "link", "add", far, "type", "veth",
             "peer", "name", self._link, "netns", str(self._keeper.pid))
        _run("ip", "address", "add", f"{self._gateway}/24", "dev", far)
        _run("ip", "link", "set", far, "up")
        self._ip("link", "set", "lo", "up")
        self._ip("address", "add", f"{self._here}/24", "dev", self._link)
        self._ip("link", "set", self._link, "up")

    def _ip(self, *words: str) -> None:
        _run(*self.inside, "ip", *words)


def _run(*words: str) -> None:
    done = subprocess.run(words, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(words)}: {done.stderr}")
