"""Versions of the launcher that name no installer."""

from __future__ import annotations

VERSIONS: tuple[tuple[str, str], ...] = (
    ("a version that leads upwards", "../../../../evil"),
    ("a version with a slash", "1/2"),
    ("a version with a NUL", "1\x002"),
    ("a version with blanks", "1 2"),
    ("a version of other letters", "v\u00e4\u6cbc"),
    ("a version with a line break", "1\n2"),
    ("a version that begins with a dot", "./1"),
    ("a version with a percent sign", "1%zz"),
    ("a version of 5,000 letters", "9" * 5000),
)
