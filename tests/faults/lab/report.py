"""The report of a whole run as a page."""

from __future__ import annotations

from .book import Case


def written(cases: list[Case], facts: dict[str, str]) -> str:
    return "\n".join(f"| {c.area} | {c.name} | {c.saw} | {c.files} | {c.settings} | {c.after} |" for c in cases)
