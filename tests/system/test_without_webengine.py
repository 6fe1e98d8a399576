#!/usr/bin/python3
"""A launcher built without the web engine shows its form and fetches the news as text."""

from __future__ import annotations

import subprocess

from harness import case, settings
from harness.firstframe import FirstFrame, comes_true

BUILD = settings.REPOSITORY / "build" / "no-webengine"
WINDOW = BUILD / "app" / "quellmoor-launcher-window"


class WithoutWebEngine(case.SystemTest):

    @classmethod
    def setUpClass(cls) -> None:
        subprocess.run(["cmake", "--preset", "dev", "-B", str(BUILD), "-DQUELLMOOR_TESTS=OFF",
                        "-DQUELLMOOR_TOOLS=OFF", "-DQUELLMOOR_WITH_WEBENGINE=OFF"],
                       cwd=settings.REPOSITORY, check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["cmake", "--build", str(BUILD), "--target", WINDOW.name],
                       cwd=settings.REPOSITORY, check=True, stdout=subprocess.DEVNULL)
        super().setUpClass()

    def test_it_shows_the_form_and_then_fetches_the_news(self) -> None:
        frame = FirstFrame(WINDOW, self.player)
        self.addCleanup(frame.close)
        self.assertRegex(frame.told, r"^\d+ \d+\n$")
        frame.go_on()
        self.assertTrue(comes_true(self._news_were_fetched))
        self.assertNotIn("WebEngine", frame.loaded())
        self.assertFalse(WINDOW.with_name("quellmoor-web-news.so").exists())

    def _news_were_fetched(self) -> bool:
        return any(entry["path"] == "/launcher/" and entry["status"] == 200 and entry["done"]
                   for entry in self.hosts.requests())


if __name__ == "__main__":
    case.main()
