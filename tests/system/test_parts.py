#!/usr/bin/python3
"""The window's library and the plugin behind it are made of the same static libraries. What were in
both would be there twice at run time: two logs, two main queues.
"""

from __future__ import annotations

import subprocess
import unittest
from pathlib import Path

from harness import case, settings

LIBRARY = settings.launcher().with_name("libquellmoor-window.so")
ENGINE = settings.launcher().with_name("quellmoor-engine.so")
LINKERS_OWN = {"__bss_start", "_edata", "_end"}
OWN = "TDBR"  # kinds of symbols that a file has for good; weak ones are made one by the loader


def symbols(file: Path) -> set[str]:
    listing = subprocess.run(["nm", "--dynamic", "--defined-only", "--demangle", str(file)],
                             check=True, capture_output=True, text=True).stdout
    lines = (line.split(" ", 2) for line in listing.splitlines())
    return {name for _, kind, name in lines if kind in OWN}


class Parts(unittest.TestCase):

    def test_nothing_is_in_both(self) -> None:
        library, engine = symbols(LIBRARY), symbols(ENGINE)
        self.assertIn("DispatchQueue::main()", library)
        self.assertIn("ViewController::setup()", engine)
        self.assertEqual(sorted(library & engine - LINKERS_OWN), [])


if __name__ == "__main__":
    case.main()
