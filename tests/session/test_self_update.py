#!/usr/bin/python3
"""A launcher that is out of date, and what it asks the desktop to open before it ends."""

from __future__ import annotations

import json
import shutil
import tempfile
import unittest
from pathlib import Path
from typing import Any, ClassVar, Sequence

import paths  # noqa: F401

from harness import hosts, isolation, settings

from acts.out_of_date import MOUNTER, NEXT_VERSION, REASON, TITLE
from player.album import Album
from player.person import Player
from stage.accounts import PASSWORDS
from stage.whole import Stage

PAGE = f"https://www.localhost:{settings.port()}/play/?update=1"
DOWNLOAD = "download.localhost"
NO_FILE_NAMES = ("../x", "a/b", "2.1\0.0")
NO_URLS = ("2.1\u00e9",)
LOGGED = "+[ErrorHandler log:] [line 14]: "


def installer(version: str) -> str:
    return f"VARNO_darwin_setup_{version}.dmg"


class SelfUpdate(unittest.TestCase):
    """Each test begins with no launcher and nothing opened."""

    stage: ClassVar[Stage]
    player: ClassVar[Player]

    @classmethod
    def setUpClass(cls) -> None:
        cls.stage = cls.enterClassContext(Stage())
        folder = tempfile.TemporaryDirectory(prefix="quellmoor-pictures-")
        cls.player = Player(cls.stage, Album(Path(cls.enterClassContext(folder))))

    def setUp(self) -> None:
        self.stage.hosts.forget()
        self.stage.desktop.forget()

    def test_update_hands_the_image_on(self) -> None:
        self.is_asked_to_update(NEXT_VERSION)
        self.player.presses("Return")
        self.ends_and_opens(images=[NEXT_VERSION])
        image = self.image(NEXT_VERSION)
        served = [entry["bytes"] for entry in self.stage.hosts.requests()
                  if entry["path"] == f"/{image.name}"]
        self.assertEqual(served, [image.stat().st_size])

    def test_exit_opens_nothing_and_old_images_are_gone(self) -> None:
        self.stage.home.data.mkdir(exist_ok=True)
        self.image("1.0").write_bytes(b"old")
        self.is_asked_to_update(NEXT_VERSION)
        self.player.clicks_button("Exit Launcher")
        self.ends_and_opens()
        self.assertEqual(self.installers_asked_for(), [])
        self.assertEqual(list(self.stage.home.data.glob("*.dmg")), [])

    def test_a_page_of_errors_is_an_image_like_any_other(self) -> None:
        self.is_asked_to_update(NEXT_VERSION, {"path": f"/{installer(NEXT_VERSION)}",
                                               "fault": {"status": 404, "body": "no such file"}})
        self.player.clicks_button("Update")
        self.ends_and_opens(images=[NEXT_VERSION])
        self.assertEqual(self.image(NEXT_VERSION).read_text(), "no such file")

    def test_without_an_answer_the_page_is_opened_beside_the_absent_image(self) -> None:
        self.is_asked_to_update(NEXT_VERSION, {"path": f"/{installer(NEXT_VERSION)}",
                                               "fault": {"reset": 0}})
        self.player.clicks_button("Update")
        self.ends_and_opens(pages=[PAGE], images=[NEXT_VERSION])
        self.assertFalse(self.image(NEXT_VERSION).exists())
        self.assertNotIn(LOGGED, self.player.launcher.errors())
        self.assertEqual(len(self.installers_asked_for()), 1)

    def test_a_folder_that_cannot_be_written_is_logged_and_leads_to_the_page(self) -> None:
        self.is_asked_to_update(NEXT_VERSION)
        self.may_only_read(self.stage.home.data)
        self.player.clicks_button("Update")
        self.ends_and_opens(pages=[PAGE])
        self.assertIn(LOGGED, self.player.launcher.errors())

    def test_an_empty_version_names_an_image_all_the_same(self) -> None:
        self.is_asked_to_update("")
        self.player.clicks_button("Update")
        self.ends_and_opens(images=[""])

    def test_a_version_too_long_for_a_file_leads_to_the_page(self) -> None:
        self.is_asked_to_update("9" * 300)
        self.player.clicks_button("Update")
        self.ends_and_opens(pages=[PAGE])
        self.assertIn(LOGGED, self.player.launcher.errors())

    def test_a_version_that_names_no_file_leads_to_the_page_only(self) -> None:
        for version in NO_FILE_NAMES:
            with self.subTest(version=version):
                self.setUp()
                around = sorted(self.stage.home.root.rglob("*.dmg"))
                self.is_asked_to_update(version)
                self.player.clicks_button("Update")
                self.ends_and_opens(pages=[PAGE])
                self.assertEqual(self.installers_asked_for(), [])
                self.assertEqual(sorted(self.stage.home.root.rglob("*.dmg")), around)

    def test_a_version_that_fits_no_url_is_not_asked_for(self) -> None:
        for version in NO_URLS:
            with self.subTest(version=version):
                self.setUp()
                self.is_asked_to_update(version)
                self.player.clicks_button("Update")
                self.ends_and_opens(pages=[PAGE], images=[version])
                self.assertEqual(self.installers_asked_for(), [])

    def test_an_environment_may_want_another_launcher(self) -> None:
        shutil.copytree(self.stage.game.source, self.stage.home.game, dirs_exist_ok=True)
        self.addCleanup(shutil.rmtree, self.stage.home.game)
        self.stage.hosts.fail(manifest(NEXT_VERSION, "download-qa.localhost"))
        self.player.starts_launcher()
        self.player.logs_in("plover@qa", PASSWORDS["plover"])
        self.stage.game_run.report()
        self.player.sees_status("Launching the game(qa)...")
        self.assertIsNone(self.player.launcher.find("dialog", TITLE))
        self.player.clicks_button("Close")
        self.assertEqual(self.player.launcher.ended(), 0)
        self.stage.game_run.end()
        self.player.sees_nothing_left_running()
        self.assertEqual(self.opened(), ([], []))
        self.assertEqual(self.installers_asked_for(), [])

    def is_asked_to_update(self, version: str, *rules: hosts.Rule) -> None:
        self.stage.hosts.fail(manifest(version, DOWNLOAD), *rules)
        self.stage.start_launcher()
        self.addCleanup(self.player.launcher.end)
        self.player.sees("dialog", TITLE)
        self.player.sees("label", REASON)
        self.player.sees_no_login_form()

    def ends_and_opens(self, pages: Sequence[str] = (), images: Sequence[str] = ()) -> None:
        """The launcher ends by itself, and only then is all opened that ever will be."""
        self.assertEqual(self.player.launcher.ended(), 0)
        self.player.sees_nothing_left_running()
        self.assertEqual(self.opened(), (list(pages), [str(self.image(one)) for one in images]))

    def opened(self) -> tuple[list[str], list[str]]:
        """By the browser and by the program that mounts images."""
        desktop = self.stage.desktop
        return desktop.handed_to("xdg-open"), desktop.handed_to(MOUNTER)

    def image(self, version: str) -> Path:
        return self.stage.home.data / installer(version)

    def installers_asked_for(self) -> list[str]:
        return [path for path in self.stage.hosts.asked_for() if ".dmg" in path]

    def may_only_read(self, folder: Path) -> None:
        isolation.mount("--bind", str(folder), str(folder))
        self.addCleanup(isolation.unmount, str(folder))
        isolation.mount("-o", "remount,bind,ro", str(folder))


def manifest(version: str, host: str) -> dict[str, Any]:
    """The rule that a host names this launcher version, for a game without files."""
    document = {"server-version": "7.3.0", "mac-launcher-version": version,
                "exec": "Quellmoor", "files": {}}
    return {"host": host, "path": hosts.MANIFEST, "fault": {"body": json.dumps(document)}}


if __name__ == "__main__":
    isolation.enter()
    unittest.main(verbosity=2)
