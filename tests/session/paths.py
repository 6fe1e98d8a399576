"""Importing this lets a program of the session find what it shares with the other tests."""

from __future__ import annotations

import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[1:1] = [str(HERE.parent / "system"), str(HERE.parent / "fingerprint"),
                 str(HERE.parents[1] / "tools")]
