"""From the first start to the first undo on a Wayland desktop."""

import os
import subprocess
import unittest

import accessibility
import texts
from polling import until
from wayland_case import WaylandCase

ABOUT = os.environ["TIDEMARK_ABOUT"]
SETTINGS = "Tidemark Settings"
WELCOME = "Welcome to Tidemark"
MENU = "Tidemark"


class Wayland(WaylandCase):
    def setUp(self):
        super().setUp()
        if self.desktop.panel.poll() is not None:
            self.desktop.start_panel()

    def icon_place(self):
        """At the right end of the bar is the tray, with one icon."""
        return self.desktop.size[0] - 19, 14

    def test_the_first_start_shows_what_it_will_do(self):
        self.tidemark.start()
        self.desktop.wait_for_window(WELCOME)

        self.assertEqual(accessibility.texts(self.tidemark.nodes(WELCOME)), texts.ONBOARDING)

    def test_from_the_first_start_to_the_first_undo(self):
        name = "Screenshot 2024-05-03 at 14.05.09.png"
        self.tidemark.start()
        self.desktop.wait_for_window(WELCOME)
        self.photograph("onboarding")
        self.desktop.press("Return")
        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.wait_for_setting("hasOnboarded", True)
        icon = self.tidemark.icon()
        sparkles = icon.icon()
        self.assertEqual(icon.texts(), texts.menu(ABOUT))

        icon.choose("Settings…")
        self.desktop.wait_for_window(SETTINGS)
        self.click(SETTINGS, "Wait 60s before touching a new file", "spin button")
        self.desktop.press("Down", "Down", "Down", "Down")
        self.tidemark.wait_for_setting("gracePeriod", 0)
        self.photograph("settings")
        self.tidemark.write(f"Desktop/{name}", "a screen")
        self.tidemark.wait_for_menu(f"Filed {name}")
        self.assertEqual(len(self.tidemark.files("Desktop/Screenshots")), 1)
        icon.choose("Undo last sweep")

        until(lambda: self.tidemark.files("Desktop") == [name], "it is back")
        self.tidemark.wait_for_setting("isPaused", True)
        until(lambda: icon.texts() == texts.menu(ABOUT, "Paused", paused=True), "the menu tells it")
        until(lambda: icon.icon() != sparkles, "the icon tells it")
        self.photograph("paused")

    def test_settings_reach_the_file(self):
        self.start()
        self.tidemark.run()
        self.desktop.wait_for_window(SETTINGS)

        self.click(SETTINGS, "Rules of Downloads")
        self.click(SETTINGS, "File screenshots, Downloads")
        self.click(SETTINGS, "Subfolder name", "text")
        self.desktop.press("End")
        self.desktop.type(" & more")

        self.tidemark.wait_for_setting("markdownSubfolder", "Notes & more")
        folders = self.tidemark.settings()["folders"]
        self.assertFalse(folders[1]["rules"][0]["isEnabled"])
        self.assertTrue(folders[0]["rules"][0]["isEnabled"])
        self.photograph("settings")

    def test_a_left_click_on_the_icon_opens_the_menu_window(self):
        self.start()

        until(lambda: self.desktop.windows(MENU) or self.desktop.click(*self.icon_place()), "the menu is open")

        self.desktop.wait_for_window(MENU)
        self.photograph("menu")
        shown = accessibility.texts(self.tidemark.nodes(MENU))
        self.assertEqual(shown, [text for text in texts.menu(ABOUT) if text != "-"])
        self.click(MENU, "Pause sweeping")
        self.tidemark.wait_for_setting("isPaused", True)

    def test_a_right_click_on_the_icon_opens_the_menu_of_the_bar(self):
        self.start()
        closed = self.photograph("closed")

        until(lambda: self.is_changed_since(closed) or self.desktop.click(*self.icon_place(), 3),
              "the menu is open")
        self.photograph("menu")
        # It opens at the pointer; in the third row there is "Pause sweeping".
        row = 24
        self.desktop.click(self.desktop.size[0] - 150, self.icon_place()[1] + 6 + round(2.5 * row))

        self.tidemark.wait_for_setting("isPaused", True)

    def is_changed_since(self, picture):
        """Whether much more than an icon is different now."""
        now = self.desktop.path("tmp/now.png")
        self.desktop.photograph(now)
        return self.difference(picture, now) > 10000

    @staticmethod
    def difference(before, now):
        """How many points of two pictures differ."""
        # Pictures that differ make it fail, and their difference goes to the other stream.
        done = subprocess.run(["compare", "-metric", "AE", before, now, "null:"], capture_output=True, text=True,
                              check=False)
        return float(done.stderr)

    def test_without_a_tray_the_menu_stands_in_a_window(self):
        self.desktop.stop_panel()
        self.tidemark.write_settings()
        self.tidemark.start()

        self.desktop.wait_for_window(MENU)
        self.photograph("menu")
        self.click(MENU, "Pause sweeping")

        self.tidemark.wait_for_setting("isPaused", True)

    def test_another_start_opens_the_settings_of_the_first(self):
        self.start()

        for _ in range(2):
            self.assertEqual(self.tidemark.run().returncode, 0)
            self.desktop.wait_for_window(SETTINGS)

        self.assertEqual(len(self.desktop.windows(SETTINGS)), 1)

    def test_another_start_brings_covered_settings_to_the_front(self):
        self.start()
        self.tidemark.run()
        place = self.desktop.wait_for_window(SETTINGS)["rect"]
        self.desktop.move(0, self.desktop.size[1] - 1)
        seen = self.photograph("in-front")
        self.cover(place)
        until(lambda: self.difference(seen, self.photograph("covered")) > 50000, "it is covered")

        # As from a shell: nobody gives it the right to take the focus.
        self.assertEqual(self.tidemark.run(environment={"XDG_ACTIVATION_TOKEN": None}).returncode, 0)

        self.desktop.wait_for_window(SETTINGS)
        self.assertEqual(self.desktop.windows_from_bottom()[-1], SETTINGS)
        until(lambda: self.difference(seen, self.photograph("in-front-again")) < 10000, "all of it is seen again")
        self.assertEqual(len(self.desktop.windows(SETTINGS)), 1)

    def cover(self, place):
        """Opens a window of another program that lies over that place, and has the keyboard."""
        other = self.make_tidemark()
        other.start()
        self.desktop.wait_for_window(WELCOME)
        window = f'[title="{WELCOME}"]'
        self.desktop.order(window, "move", "absolute", "position", str(place["x"]), str(place["y"]))

    # The menu window, by the keyboard

    def open_menu_window(self):
        self.desktop.stop_panel()
        self.tidemark.write_settings()
        self.tidemark.start()
        self.desktop.wait_for_window(MENU)
        until(lambda: self.focused() == "Sweep now" or self.desktop.press("Home"), "the first item has the focus")

    def focused(self):
        found = [node.name for node in self.tidemark.nodes(MENU) if node.has("focused")]
        return found[-1] if found else None

    def press_until_focused(self, key, name):
        self.desktop.press(key)
        until(lambda: self.focused() == name, f"{name!r} has the focus: {self.focused()!r}")

    def test_arrow_keys_go_through_the_items_of_the_menu_window(self):
        self.open_menu_window()
        items = ["Pause sweeping", "Check for Updates…", "Settings…", "Quit Tidemark"]
        for name in items:
            self.press_until_focused("Down", name)
        for name in ["Settings…", "Check for Updates…", "Pause sweeping", "Sweep now"]:
            self.press_until_focused("Up", name)
        self.photograph("focus")

    def test_return_and_enter_choose_an_item_of_the_menu_window(self):
        self.open_menu_window()
        self.press_until_focused("Down", "Pause sweeping")
        self.desktop.press("Return")
        self.tidemark.wait_for_setting("isPaused", True)
        self.tidemark.find("Resume sweeping")
        self.assertEqual(self.focused(), "Resume sweeping")

        self.desktop.press("KP_Enter")

        self.tidemark.wait_for_setting("isPaused", False)


if __name__ == "__main__":
    unittest.main()
