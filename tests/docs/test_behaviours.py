#!/usr/bin/python3
"""The table of behaviours names what is there: every file, every name in it and every test."""

from __future__ import annotations

import re
import unittest
from pathlib import Path
from typing import Iterator, NamedTuple

REPOSITORY = Path(__file__).resolve().parents[2]
TABLE = REPOSITORY / "docs" / "behaviours.md"
ROW = re.compile(r"\| (?P<behaviour>.+) \| `(?P<file>[^`]+)` `(?P<name>\w+)` "
                 r"\| `(?P<test_file>[^`]+)` `(?P<test>\w+)` \|")
NO_ROWS = ("| behaviour | place | test |", "| --- | --- | --- |")
FEWEST_ROWS = 200


class Row(NamedTuple):
    behaviour: str
    file: str
    name: str
    test_file: str
    test: str


def lines() -> list[str]:
    return [line for line in TABLE.read_text().splitlines()
            if line.startswith("|") and line not in NO_ROWS]


def rows() -> Iterator[Row]:
    for line in lines():
        if found := ROW.fullmatch(line):
            yield Row(**found.groupdict())


def has(file: str, pattern: str) -> bool:
    path = REPOSITORY / file
    return path.is_file() and re.search(pattern, path.read_text()) is not None


def is_test(file: str, name: str) -> bool:
    """A test function of Qt Test, one of unittest, or an act of a session and what it looks at."""
    if file.endswith(".cpp"):
        return has(file, rf"(?m)^void \w+::{name}\(\)")
    return has(file, rf"(?m)^ *def {name}\(")


class Behaviours(unittest.TestCase):

    def test_every_line_is_a_row_of_the_table(self) -> None:
        self.assertEqual([line for line in lines() if not ROW.fullmatch(line)], [])
        self.assertGreaterEqual(len(list(rows())), FEWEST_ROWS)

    def test_every_place_is_there(self) -> None:
        self.assertEqual([row for row in rows() if not has(row.file, rf"\b{row.name}\b")], [])

    def test_every_test_is_there(self) -> None:
        self.assertEqual([row for row in rows() if not is_test(row.test_file, row.test)], [])

    def test_no_behaviour_stands_there_twice(self) -> None:
        whole = [f"{row.behaviour} {row.name} {row.test}" for row in rows()]
        self.assertEqual(sorted(whole), sorted(set(whole)))


if __name__ == "__main__":
    unittest.main()
