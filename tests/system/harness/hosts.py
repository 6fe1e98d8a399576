"""The local hosts as a process that the tests start, ask and make fail."""

from __future__ import annotations

import http.client
import json
import shutil
import ssl
import subprocess
import sys
from pathlib import Path
from typing import Any, Mapping, Optional, Sequence

from . import isolation, settings

Rule = dict[str, Any]
MANIFEST = "/mac/patcher.json"


class Hosts:
    """One run of the local hosts; `trees` names the tree of each environment."""

    def __init__(self, folder: Path, trees: Mapping[Optional[str], Path],
                 is_trusted: bool = True, options: Sequence[str] = ()) -> None:
        self._state = folder / ("hosts" if is_trusted else "strange-hosts")
        self._state.mkdir()
        if is_trusted:
            _copy_authority(self._state)
        self._command = [sys.executable, str(settings.TOOLS / "localhosts"), "--quiet",
                         "--port", str(settings.port()), "--state", str(self._state), *options]
        for environment, tree in trees.items():
            self._command += (["--tree", str(tree)] if environment is None
                              else ["--tree-for", f"{environment}={tree}"])
        self._process = self._started()
        self._context = ssl.create_default_context(cafile=str(self._state / "ca.pem"))

    def _started(self) -> subprocess.Popen[str]:
        process = subprocess.Popen(self._command, stdout=subprocess.PIPE, text=True,
                                   preexec_fn=isolation.die_with_parent)
        assert process.stdout is not None
        line = process.stdout.readline()
        if not line.startswith("ready on"):
            process.kill()
            raise RuntimeError(f"the hosts do not start: {line!r}")
        return process

    def stop(self) -> None:
        self._process.terminate()
        self._process.wait(30)
        assert self._process.stdout is not None
        self._process.stdout.close()

    def fail(self, *rules: Rule) -> None:
        """Sets the rules that answers meet from now on, and forgets the earlier ones."""
        self._ask("PUT", "/faults", list(rules))

    def fail_manifest(self, **fault: Any) -> None:
        self.fail({"path": MANIFEST, "fault": fault})

    def forget(self) -> None:
        """No faults and no requests any more."""
        self._ask("DELETE", "/faults")
        self._ask("GET", "/requests?clear=1")

    def requests(self) -> list[dict[str, Any]]:
        answer: list[dict[str, Any]] = self._ask("GET", "/requests")
        return answer

    def file_requests(self) -> list[dict[str, Any]]:
        return [entry for entry in self.requests() if entry["path"].endswith(".bz2")]

    def _ask(self, method: str, path: str, document: Any = None) -> Any:
        connection = http.client.HTTPSConnection("127.0.0.1", settings.port(), timeout=30,
                                                 context=self._context)
        body = None if document is None else json.dumps(document)
        headers = {"Host": f"control.localhost:{settings.port()}"}
        try:
            connection.request(method, path, body, headers)
            answer = connection.getresponse()
            text = answer.read()
        finally:
            connection.close()
        if answer.status != 200:
            raise RuntimeError(f"{method} {path}: {answer.status} {text!r}")
        return json.loads(text)


def _copy_authority(state: Path) -> None:
    """Each test runs hosts of its own, all with the authority that the launcher trusts."""
    authority = settings.authority()
    if not authority.exists():
        subprocess.run([sys.executable, str(settings.TOOLS / "localhosts"), "--prepare-only",
                        "--state", str(authority.parent)], check=True, capture_output=True)
    shutil.copy2(authority, state / "ca.pem")
    shutil.copy2(authority.with_suffix(".key"), state / "ca.key")
