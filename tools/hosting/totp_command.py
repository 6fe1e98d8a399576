"""The command line that prints two-step tokens."""

from __future__ import annotations

import argparse
import sys
import time
from pathlib import Path
from typing import Optional, Sequence

from .accounts import DEFAULT_ACCOUNTS, AccountsError, load_accounts
from .totp import decode_secret, token


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Prints a token and returns the exit code."""
    parser = argparse.ArgumentParser(
        prog="totp", description="Prints the two-step token of an account or a secret.")
    parser.add_argument("source", metavar="ACCOUNT|SECRET",
                        help="an account of the accounts file, or a secret in base32")
    parser.add_argument("--accounts", type=Path, default=DEFAULT_ACCOUNTS, metavar="FILE",
                        help="the accounts file (default: the sample accounts)")
    parser.add_argument("--at", type=float, metavar="TIME",
                        help="a Unix time (default: now)")
    given = parser.parse_args(arguments)
    try:
        account = load_accounts(given.accounts).get(given.source)
        secret = account.secret if account else given.source
        if not secret:
            raise ValueError(f"{given.source!r} has no two-step secret")
        print(token(decode_secret(secret), time.time() if given.at is None else given.at))
    except (AccountsError, ValueError) as error:
        print(f"totp: {error}", file=sys.stderr)
        return 1
    return 0
