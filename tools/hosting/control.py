"""The control host: how tests and people look at the hosts and make them fail."""

from __future__ import annotations

import json

from .accounts import Sessions
from .faults import BadRule, FaultBook, parse_rules
from .journal import Journal
from .messages import Request, Response, json_response


class Control:
    """Answers of the control host, which itself is neither logged nor made to fail."""

    def __init__(self, journal: Journal, faults: FaultBook, sessions: Sessions) -> None:
        self._journal = journal
        self._faults = faults
        self._sessions = sessions

    def answer(self, request: Request) -> Response:
        asked = ("GET" if request.method == "HEAD" else request.method, request.path)
        if asked == ("GET", "/health"):
            return json_response({"ok": True})
        if asked == ("GET", "/requests"):
            return json_response(self._journal.entries(request.query.get("clear") == "1"))
        if asked == ("GET", "/sessions"):
            return json_response(self._sessions.entries())
        if request.path == "/faults":
            return self._rules(asked[0], request.body)
        return json_response({"error": "not known: " + " ".join(asked)}, 404)

    def _rules(self, method: str, body: bytes) -> Response:
        try:
            if method == "PUT":
                self._faults.replace(parse_rules(json.loads(body)))
            elif method == "DELETE":
                self._faults.replace([])
            elif method != "GET":
                return json_response({"error": "only GET, PUT and DELETE"}, 405)
        except BadRule as error:
            return json_response({"error": str(error)}, 400)
        except (ValueError, RecursionError) as error:
            return json_response({"error": f"not JSON: {error}"}, 400)
        return json_response(self._faults.described())
