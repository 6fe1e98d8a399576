"""Which host answers what."""

from __future__ import annotations

from dataclasses import dataclass

from .control import Control
from .downloads import Downloads
from .faults import FaultBook
from .journal import Journal
from .login import Login
from .messages import Request, Response, json_response, text_response
from .names import ACCOUNT, CONTROL, DOMAIN, DOWNLOAD, OTHER
from .pages import has_page, not_found, page


@dataclass(frozen=True)
class Site:
    """Everything behind the connections; its parts are safe to use from any thread."""

    downloads: Downloads
    login: Login
    control: Control
    journal: Journal
    faults: FaultBook

    def answer(self, request: Request) -> Response:
        """The answer as it should be, before any fault."""
        if request.host == CONTROL:
            return self.control.answer(request)
        if request.host == DOWNLOAD or _is_environment_host(request.host):
            return self.downloads.answer(request)
        if request.host == ACCOUNT and request.path == "/login/":
            return self._login(request)
        if has_page(request):
            return page(request)
        if request.host == OTHER:
            return text_response(200, "Another host.\n", "text/plain")
        return not_found(request)

    def _login(self, request: Request) -> Response:
        if request.method != "POST":
            return text_response(405, "Only POST.\n", "text/plain", {"Allow": "POST"})
        return json_response(self.login.answer(request.form()))


def _is_environment_host(host: str) -> bool:
    return host.startswith("download-") and host.endswith("." + DOMAIN)
