"""The login conversation: three form fields in, a numbered answer out."""

from __future__ import annotations

import time
from typing import Any, Callable, Mapping

from . import totp
from .accounts import NOBODY, Account, Sessions
from .names import environment_of, game_server, is_environment

LOGGED_IN = 7
TOKEN_WANTED = 3
WRONG = 4
MISSING = 5
BANNED = 12


class Login:
    """Checks logins against the accounts and hands out play cookies."""

    def __init__(self, accounts: Mapping[str, Account], sessions: Sessions,
                 clock: Callable[[], float] = time.time) -> None:
        self._accounts = accounts
        self._sessions = sessions
        self._clock = clock

    def answer(self, form: Mapping[str, str]) -> dict[str, Any]:
        """The reply to a login form, as it goes out."""
        username, password = form.get("username", ""), form.get("password", "")
        if not username or not password or "gtoken" not in form:
            return _refusal(MISSING, "Enter your user name and your password.")
        environment = environment_of(username)
        name = username if environment is None else username.split("@")[0]
        account = self._accounts.get(name.strip(), NOBODY)
        if not account.has_password(password):
            return _refusal(WRONG, "The user name or the password is wrong.")
        if account.banned:
            return _refusal(BANNED, account.banned)
        if not _may_enter(account, environment):
            return _refusal(WRONG, "This account has no access to this environment.")
        if account.secret and not form["gtoken"].strip():
            return _refusal(TOKEN_WANTED, "Enter your two-step token.")
        if account.secret and not self._token_fits(account.secret, form["gtoken"]):
            return _refusal(TOKEN_WANTED, "That token is not valid. Enter the current one.")
        return {"status": LOGGED_IN, "message": f"Welcome back, {account.display}.",
                "token": self._sessions.open(account.name, environment),
                "gameserver": game_server(environment)}

    def _token_fits(self, secret: str, typed: str) -> bool:
        return totp.accepts(totp.decode_secret(secret), typed, self._clock())


def _may_enter(account: Account, environment: str | None) -> bool:
    if environment is not None and not is_environment(environment):
        return False
    return account.environments is None or environment in account.environments


def _refusal(status: int, message: str) -> dict[str, Any]:
    return {"status": status, "message": message}
