"""The settings window."""

import os
import unittest

import accessibility
import texts
from desktop_case import DesktopCase
from polling import until
from x11_desktop import X11Desktop

SETTINGS = "Tidemark Settings"
BRANDING = os.environ["TIDEMARK_BRANDING"]


class SettingsWindow(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(size=(1280, 1280))

    def open(self, **settings):
        self.tidemark.write_settings(**settings)
        self.tidemark.start()
        self.tidemark.icon()
        self.tidemark.run()
        self.window = self.desktop.wait_for_window(SETTINGS)

    def click(self, name, role=None):
        self.desktop.click(*self.tidemark.find(name, role).centre())

    def labels(self):
        """What stands in the window from top to bottom, without what stands on buttons."""
        found = [node for node in self.tidemark.nodes(SETTINGS) if node.role == "label" and node.name]
        return [node.name for node in sorted(found, key=lambda node: (node.y, node.x))]

    def folder(self, name):
        return next(each for each in self.tidemark.settings()["folders"] if each["path"].endswith(name))

    def wait_for_folders(self, *names):
        def read():
            return [os.path.basename(each["path"]) for each in self.tidemark.settings()["folders"]]
        until(lambda: read() == list(names), f"the folders are {names}")

    def test_reads_exactly(self):
        self.open()
        self.photograph("closed")
        self.click("Rules of Desktop")
        self.click("Rules of Downloads")
        expected = texts.settings(BRANDING)

        until(lambda: len(self.labels()) == len(expected), "everything is disclosed")
        self.photograph("disclosed")

        self.assertEqual(self.labels(), expected)
        buttons = [node for node in self.tidemark.nodes(SETTINGS) if node.role == "push button"]
        self.assertEqual({node.name for node in buttons}, {
            "Add folder…", "Send feedback", "Website", "Stop watching Desktop", "Stop watching Downloads"})
        tips = {node.name: node.description for node in buttons}
        self.assertEqual(tips["Stop watching Desktop"], "Stop watching this folder")

    def test_everything_that_can_be_used_has_a_name_of_its_own(self):
        self.open()
        self.click("Rules of Desktop")
        self.click("Rules of Downloads")
        self.tidemark.find("Sort Markdown files, Downloads")

        names = [node.name for node in self.tidemark.nodes(SETTINGS) if node.has("focusable")]

        self.assertEqual(len(names), len(set(names)), names)
        self.assertNotIn("", names)

    def test_is_480_wide_and_keeps_its_size(self):
        self.open()

        x, _, width, height = self.desktop.geometry(self.window)
        hints = self.desktop.property(self.window, "WM_NORMAL_HINTS")

        self.assertEqual(width, 480)
        self.assertAlmostEqual(x + width / 2, self.desktop.size[0] / 2, delta=2)
        self.assertIn(f"minimum size: {width} by {height}", hints)
        self.assertIn(f"maximum size: {width} by {height}", hints)

    def test_a_closed_window_comes_back_as_it_was(self):
        self.open()
        self.click("Rules of Desktop")
        self.tidemark.find("File screenshots, Desktop")

        self.desktop.close_by_button(self.window)
        self.desktop.wait_until_closed(SETTINGS)
        self.tidemark.run()
        self.desktop.wait_for_window(SETTINGS)

        self.tidemark.find("File screenshots, Desktop")
        self.assertEqual(len(self.desktop.windows(SETTINGS)), 1)

    def test_toggles_reach_the_file(self):
        self.open()
        self.click("Rules of Downloads")
        for rule in ("File screenshots", "Clean up installers", "Archive old downloads"):
            self.click(f"{rule}, Downloads")
        self.click("Sort Markdown files, Downloads")

        until(lambda: not self.folder("Downloads")["sortsMarkdown"], "nothing is on")
        self.photograph("all-off")
        self.assertEqual([rule["isEnabled"] for rule in self.folder("Downloads")["rules"]], [False] * 3)
        self.assertEqual([rule["isEnabled"] for rule in self.folder("Desktop")["rules"]], [True] * 3)
        self.assertTrue(self.folder("Desktop")["sortsMarkdown"])
        self.click("Clean up installers, Downloads")
        until(lambda: self.folder("Downloads")["rules"][1]["isEnabled"], "it is on again")

    def test_the_grace_period_reaches_the_file(self):
        self.open(gracePeriod=30)
        self.click("Wait 30s before touching a new file", "spin button")

        self.desktop.press("Up")

        self.tidemark.wait_for_setting("gracePeriod", 45)
        self.tidemark.find("Wait 45s before touching a new file", "label")
        self.photograph("45-seconds")

    def test_the_grace_period_stays_between_nothing_and_ten_minutes(self):
        self.open(gracePeriod=15)
        self.click("Wait 15s before touching a new file", "spin button")
        self.desktop.press("Down", "Down", "Up")
        self.tidemark.wait_for_setting("gracePeriod", 15)
        self.desktop.press(*["Up"] * 40)
        self.tidemark.wait_for_setting("gracePeriod", 600)
        self.desktop.press("Up", "Down")
        self.tidemark.wait_for_setting("gracePeriod", 585)

    def test_the_subfolder_reaches_the_file_as_it_is_typed(self):
        self.open()
        self.click("Subfolder name", "text")
        self.desktop.press("End")

        self.desktop.type(" & more")

        self.tidemark.wait_for_setting("markdownSubfolder", "Notes & more")
        self.desktop.press("Home")
        self.desktop.type("My ")
        self.tidemark.wait_for_setting("markdownSubfolder", "My Notes & more")
        self.photograph("typed")
        self.desktop.press("ctrl+a", "Delete")
        self.tidemark.wait_for_setting("markdownSubfolder", "")

    def test_the_keyboard_reaches_everything_from_top_to_bottom(self):
        self.open()
        seen = []
        for _ in range(12):
            self.desktop.press("Tab")
            focused = until(self.focused, "something has the focus")
            until(lambda: self.focused().name not in seen[-1:], "the focus moves on")
            seen.append(self.focused().name)
            if len(seen) > 1 and seen[-1] == seen[0]:
                break

        wanted = ["Rules of Desktop", "Stop watching Desktop", "Rules of Downloads", "Stop watching Downloads",
                  "Add folder…", "Subfolder name", "Wait 0s before touching a new file", "Send feedback",
                  "Website"]
        start = seen.index(wanted[0])
        self.assertEqual((seen[start:-1] + seen[:start])[:len(wanted)], wanted)
        self.assertIsNotNone(focused)

    def focused(self):
        found = [node for node in self.tidemark.nodes(SETTINGS) if node.has("focused")]
        return found[-1] if found else None

    def test_a_folder_is_no_longer_watched_after_a_click(self):
        self.open()
        # The lower one first: a second click at the same place may be half of a double click, which removes nothing more.
        self.click("Stop watching Downloads")
        self.wait_for_folders("Desktop")
        self.click("Stop watching Desktop")
        self.wait_for_folders()

        self.tidemark.find("No folders yet — add one below.", "label")
        self.photograph("no-folders")
        self.assertEqual(self.labels()[:2], ["Folders", "No folders yet — add one below."])

    def test_a_folder_is_added_by_the_chooser(self):
        os.makedirs(self.tidemark.path("Papers"))
        self.open()
        self.click("Add folder…")
        self.desktop.wait_for_window("Choose folders for Tidemark to keep tidy.")
        self.desktop.type(self.tidemark.path("Papers"))
        self.photograph("chooser")
        self.desktop.press("Return")

        self.wait_for_folders("Desktop", "Downloads", "Papers")
        self.tidemark.find("~/Papers", "label")

    def test_shows_at_once_what_others_change(self):
        os.makedirs(self.tidemark.path("Papers"))
        self.open()

        self.tidemark.control("folders", "add", self.tidemark.path("Papers"))
        self.tidemark.find("~/Papers", "label")
        self.tidemark.control("folders", "remove", self.tidemark.path("Desktop"))
        until(lambda: "~/Desktop" not in self.labels(), "the folder is gone")
        self.tidemark.control("pause")
        self.tidemark.wait_for_menu("Resume sweeping")
        self.photograph("changed")

        self.assertEqual(self.labels()[:7], [
            "Folders", "Downloads", "Access granted", "~/Downloads", "Papers", "Access granted", "~/Papers"])

    def test_tells_which_folder_cannot_be_read(self):
        self.tidemark.write_settings(folders=[{"path": self.tidemark.path("Gone")}])
        self.tidemark.start()
        self.tidemark.icon()
        self.tidemark.run()
        self.desktop.wait_for_window(SETTINGS)

        self.tidemark.find("Needs access — Tidemark asks when it first sweeps this folder", "label")
        self.photograph("no-access")

    def test_its_shortcuts_work_in_the_window(self):
        self.open()

        self.desktop.press("ctrl+q")

        self.assertEqual(self.tidemark.process.wait(60), 0)


if __name__ == "__main__":
    unittest.main()
