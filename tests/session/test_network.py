#!/usr/bin/python3
"""The launcher on a network that goes and comes back, without a manager that tells of it."""

from __future__ import annotations

import subprocess
import tempfile
from collections import Counter
from pathlib import Path
from typing import Callable, Sequence

import paths  # noqa: F401

from harness import case, hosts, isolation, remote
from harness.player import Player

from stage import children
from stage.waiting import until

MANIFEST, NEWS = f"download.localhost{hosts.MANIFEST}", "account.localhost/launcher/"
# Of the two fetches at the start, each of which is tried twice.
FAILED_CONNECTIONS = 4
NO_MANAGER = "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nowhere"


class NetworkComesAndGoes(case.SystemTest):

    @classmethod
    def setUpClass(cls) -> None:
        tables = tempfile.TemporaryDirectory(prefix="quellmoor-tables-")
        cls.addClassCleanup(tables.cleanup)
        cls.addClassCleanup(remote.RemoteHosts(Path(tables.name)).close)
        super().setUpClass()

    @classmethod
    def host_options(cls) -> Sequence[str]:
        return ("--also-on", remote.HOSTS)

    def setUp(self) -> None:
        super().setUp()
        self.network = self._new_network(1)

    def test_started_without_a_network_it_catches_up_at_each_return(self) -> None:
        self.network.unplug()
        launcher = self._start_offline(self.player, self.network)
        for returns in (1, 2):
            self.network.plug_in()
            self._fetched(returns)
            self._tell(self.network, self.network.unplug)
        self._ends_well(launcher)

    def test_a_link_that_comes_up_counts_as_well(self) -> None:
        self.network.take_link_down()
        launcher = self._start_offline(self.player, self.network)
        for returns in (1, 2):
            self.network.bring_link_up()
            self._fetched(returns)
            self._tell(self.network, self.network.take_link_down)
        self._ends_well(launcher)

    def test_started_with_a_network_it_never_fetches_again(self) -> None:
        """After each change, one that started without has caught up before the next."""
        online = self._start(self.player, self.network)
        self._fetched(1)
        other = self._new_network(2)
        other.unplug()
        offline = self._start_offline(Player(self.player.root / "other"), other)
        changes = (self.network.unplug, self.network.plug_in) * 2
        for returns, change in enumerate(changes, 1):
            self._tell(self.network, change)
            other.plug_in()
            self._fetched(1 + returns)
            self._tell(other, other.unplug)
        self._ends_well(online)
        self._ends_well(offline)
        self.assertEqual(self._asked_for(), {MANIFEST: 5, NEWS: 5})

    def _new_network(self, number: int) -> remote.RemoteNetwork:
        network = remote.RemoteNetwork(number)
        self.addCleanup(network.close)
        return network

    def _start_offline(self, player: Player,
                       network: remote.RemoteNetwork) -> subprocess.Popen[str]:
        """What the launcher asks for at its start has failed then, too."""
        launcher = self._start(player, network)
        until("the first fetches to fail", lambda: network.unroutable() >= FAILED_CONNECTIONS)
        return launcher

    def _start(self, player: Player, network: remote.RemoteNetwork) -> subprocess.Popen[str]:
        """Starts a launcher and waits until it has read the state of the network.

        After that it removes old installers.
        """
        installer = player.data / "old.dmg"
        player.data.mkdir()
        installer.touch()
        launcher = player.start(
            wrapper=(*network.inside, "env", "QT_QPA_PLATFORM=offscreen", NO_MANAGER))
        self.addCleanup(self._close, launcher)
        until("the end of an old installer", lambda: not installer.exists())
        return launcher

    @staticmethod
    def _tell(network: remote.RemoteNetwork, change: Callable[[], None]) -> None:
        """The launcher knows of the change: two at once that cancel each other are none."""
        change()
        until("a launcher that has heard of it", network.has_been_heard)

    def _fetched(self, count: int) -> None:
        """Manifest and news come this often, and nothing else."""
        expected = {MANIFEST: count, NEWS: count}
        until(f"{count} fetches", lambda: self._asked_for() == expected)

    def _asked_for(self) -> dict[str, int]:
        return dict(Counter(f"{entry['host']}{entry['path']}" for entry in self.hosts.requests()))

    def _ends_well(self, launcher: subprocess.Popen[str]) -> None:
        self.assertIsNone(launcher.poll())
        self._close(launcher)

    @staticmethod
    def _close(launcher: subprocess.Popen[str]) -> None:
        children.end(launcher)
        for stream in (launcher.stdout, launcher.stderr):
            if stream:
                stream.close()


if __name__ == "__main__":
    isolation.enter()
    case.main()
