"""Windows on a small screen: large text, dark colours, and more folders and rules than there is room for."""

import os
import unittest

import layout
import looks
import texts
from desktop_case import DesktopCase
from polling import until
from x11_desktop import X11Desktop

BRANDING = os.environ["TIDEMARK_BRANDING"]
SETTINGS = "Tidemark Settings"
WELCOME = "Welcome to Tidemark"


class SmallScreen(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(size=(1024, 768))

    def start(self, environment=None, **settings):
        self.tidemark.write_settings(**settings)
        self.tidemark.start(environment=environment)

    def open_settings(self, folders):
        self.start(folders=folders)
        self.tidemark.icon()
        self.tidemark.run()
        return self.desktop.wait_for_window(SETTINGS)

    def check_that_it_is_on_the_screen(self, window):
        x, y, width, height = self.desktop.geometry(window)
        self.assertGreaterEqual(x, 0)
        self.assertGreaterEqual(y, 0)
        self.assertLessEqual(x + width, self.desktop.size[0])
        self.assertLessEqual(y + height, self.desktop.size[1])

    def test_two_hundred_folders_fit_the_screen(self):
        paths = [self.tidemark.path(f"Folders/Number {number}") for number in range(200)]
        for path in paths:
            os.makedirs(path)

        window = self.open_settings([{"path": path} for path in paths])

        self.tidemark.find("Number 199", "label")
        self.photograph("folders")
        self.check_that_it_is_on_the_screen(window)
        self.assertEqual(self.desktop.geometry(window)[2], 480)
        self.assertIn("Watching 200 folders", self.tidemark.icon().texts())

    def test_the_longest_folder_name_leaves_the_window_as_wide_as_it_is(self):
        name = "n" * 255
        os.makedirs(self.tidemark.path(name))

        window = self.open_settings([{"path": self.tidemark.path(name)}])

        self.tidemark.find(name, "label")
        self.photograph("name")
        self.assertEqual(self.desktop.geometry(window)[2], 480)
        button = self.tidemark.find(f"Stop watching {name}")
        self.assertLess(button.x + button.width, self.desktop.geometry(window)[0] + 480)

    def test_very_many_rules_scroll(self):
        rules = [self.rule(number) for number in range(60)]
        window = self.open_settings([{"path": self.tidemark.path("Desktop"), "rules": rules}])
        self.desktop.click(*self.tidemark.find("Rules of Desktop").centre())

        last = self.tidemark.find("Rule 59 with a name that is a good deal longer than there is room for it, Desktop")
        self.photograph("rules")

        self.assertEqual(self.desktop.geometry(window)[2], 480)
        self.desktop.move(*self.tidemark.find("Rules of Desktop").centre())
        until(lambda: self.is_on_the_screen(last.name) or self.desktop.scroll_down(),
              "the last rule has come into view")
        self.photograph("last-rule")
        self.desktop.click(*self.tidemark.find(last.name).centre())
        until(lambda: not self.tidemark.settings()["folders"][0]["rules"][59]["isEnabled"], "it is off")

    def is_on_the_screen(self, name):
        node = self.tidemark.find(name)
        return 0 < node.y < self.desktop.size[1] - node.height

    @staticmethod
    def rule(number):
        return {
            "id": f"00000000-0000-4000-8000-{number:012}", "isEnabled": True,
            "name": f"Rule {number} with a name that is a good deal longer than there is room for it",
            "match": {"ageBasis": "modified", "fileTypes": [f"x{number}"], "minAge": 86400},
            "action": {"fixed": {"_0": {"trash": {}}}},
        }

    def test_a_scale_of_two_fits_the_screen(self):
        window = self.start_large(environment={"QT_SCALE_FACTOR": "2"})
        self.check_that_it_is_on_the_screen(window)
        self.check_that_large_settings_fit()

    def test_text_of_twice_the_size_fits_the_screen_at_the_first_start(self):
        window = self.start_with_large_text()
        self.check_that_it_is_on_the_screen(window)
        self.check_that_everything_has_room(WELCOME, texts.ONBOARDING[1:])

    def test_text_of_twice_the_size_fits_the_screen_in_the_settings(self):
        self.start_with_large_text()
        self.check_that_large_settings_fit()
        for folder in ("Downloads", "Desktop"):
            self.desktop.click(*self.tidemark.find(f"Rules of {folder}").centre())
            self.tidemark.find(f"Sort Markdown files, {folder}")
        lines = texts.settings(BRANDING)
        self.photograph("disclosed")
        self.check_that_everything_has_room(
            SETTINGS, set(lines) - {"Folders", "Markdown", "General", "About", "Access granted", BRANDING})

    def check_that_everything_has_room(self, window, ordinary_texts):
        """Headings and small print are in other fonts than the ordinary texts."""
        def look():
            nodes = self.tidemark.nodes(window)
            return (layout.covered(nodes), layout.sticking_out(nodes),
                    layout.cut(nodes, ordinary_texts, looks.LARGE_FONT))
        shown = {node.name for node in self.tidemark.nodes(window)}
        self.assertLessEqual(set(ordinary_texts), shown)
        # What was disclosed is laid out a moment later.
        until(lambda: look() == ([], [], []), f"everything has room: {look()}")

    def start_with_large_text(self):
        return self.start_large(environment=looks.large_text(self.tidemark))

    def start_large(self, environment):
        self.start(environment, hasOnboarded=False)
        window = self.desktop.wait_for_window(WELCOME)
        self.photograph("onboarding")
        return window

    def check_that_large_settings_fit(self):
        self.desktop.press("Return")
        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.run()
        window = self.desktop.wait_for_window(SETTINGS)
        self.photograph("settings")
        self.check_that_it_is_on_the_screen(window)

    def test_follows_dark_colours(self):
        self.start(looks.dark(self.tidemark), hasOnboarded=False)
        window = self.desktop.wait_for_window(WELCOME)
        self.photograph("onboarding")
        self.assertLess(self.desktop.brightness(window), 0.4)
        self.desktop.press("Return")
        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.run()
        window = self.desktop.wait_for_window(SETTINGS)
        self.desktop.click(*self.tidemark.find("Rules of Desktop").centre())
        self.tidemark.find("Sort Markdown files, Desktop")
        self.photograph("settings")
        self.assertLess(self.desktop.brightness(window), 0.4)

    def test_what_is_disclosed_stays_on_the_screen(self):
        self.start()
        self.tidemark.icon()
        self.tidemark.run()
        window = self.desktop.wait_for_window(SETTINGS)

        for folder in ("Desktop", "Downloads"):
            self.desktop.click(*self.tidemark.find(f"Rules of {folder}").centre())
            self.tidemark.find(f"Sort Markdown files, {folder}")
        until(lambda: self.desktop.geometry(window)[3] > 600, "the window has grown")
        self.photograph("disclosed")

        self.check_that_it_is_on_the_screen(window)


if __name__ == "__main__":
    unittest.main()
