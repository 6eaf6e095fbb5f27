"""The icon in the panel and the menu under it."""

import json
import os
import unittest

import dbus

import texts
from desktop_case import DesktopCase
from panel import Panel
from polling import until
from x11_desktop import X11Desktop

ABOUT = os.environ["TIDEMARK_ABOUT"]
APPLICATION = "org.freedesktop.Application"
SETTINGS = "Tidemark Settings"


class Menu(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop()

    def setUp(self):
        super().setUp()
        self.panel = Panel(self.desktop)
        self.tidemark.write_settings()

    def start(self):
        self.tidemark.start()
        self.icon = self.tidemark.icon()
        self.sparkles = self.icon.icon()

    def file_screenshot(self, name="Screenshot.png"):
        self.tidemark.write(f"Desktop/{name}", name)
        self.tidemark.wait_for_menu(f"Filed {name}")

    def read_by_gtk(self, texts_of_menu):
        """What a panel shows of the menu, for which it needs the number of items."""
        place = self.icon.menu_place()
        reader = os.path.join(os.path.dirname(os.path.abspath(__file__)), "gtk_menu.py")
        return json.loads(self.desktop.run(
            ["/usr/bin/python3", "-B", "-W", "ignore", reader, *place, str(len(texts_of_menu))]))

    def test_reads_exactly_before_anything_was_done(self):
        self.start()

        self.assertEqual(self.icon.texts(), texts.menu(ABOUT))
        self.panel.click_icon(3)
        self.panel.wait_for_menu()
        self.photograph("menu")

        for line in ("Watching 2 folders", "No recent activity", ABOUT, "Undo last sweep"):
            self.assertFalse(self.icon.find(line).is_enabled, line)
        for item in ("Sweep now", "Pause sweeping", "Settings…", "Quit Tidemark"):
            self.assertTrue(self.icon.find(item).is_enabled, item)
        self.assertEqual(self.icon.find("Settings…").shortcut, "Control+,")
        self.assertEqual(self.icon.find("Quit Tidemark").shortcut, "Control+Q")
        self.assertEqual(self.icon.tool_tip(), "Tidemark: Watching 2 folders")

    def test_pausing_changes_icon_and_texts(self):
        self.start()

        self.panel.choose(self.icon, "Pause sweeping")

        until(lambda: self.icon.texts() == texts.menu(ABOUT, "Paused", paused=True), "the menu tells it")
        until(lambda: self.icon.icon() != self.sparkles, "the icon tells it")
        self.assertEqual(self.icon.tool_tip(), "Tidemark: Paused")
        self.tidemark.wait_for_setting("isPaused", True)
        self.panel.click_icon(3)
        self.panel.wait_for_menu()
        self.photograph("paused")
        self.panel.click(self.icon.texts(), "Resume sweeping")
        until(lambda: self.icon.texts() == texts.menu(ABOUT), "the menu tells it")
        until(lambda: self.icon.icon() == self.sparkles, "the icon tells it")
        self.tidemark.wait_for_setting("isPaused", False)

    def test_tells_how_many_folders_are_watched(self):
        self.start()
        self.tidemark.control("folders", "remove", self.tidemark.path("Desktop"))
        self.tidemark.wait_for_menu("Watching 1 folder")
        self.tidemark.control("folders", "remove", self.tidemark.path("Downloads"))
        self.tidemark.wait_for_menu("No folders watched")

    def test_shows_the_ten_newest_activities(self):
        self.start()
        for number in range(12):
            self.tidemark.write(f"Desktop/Screenshot {number}.png", str(number))
        until(lambda: len(self.tidemark.files("Desktop/Screenshots")) == 12, "all are filed")

        newest = [f"Filed {os.path.basename(row['fromPath'])}"
                  for row in json.loads(self.tidemark.control("activity", "--json"))][:10]
        until(lambda: self.icon.texts() == texts.menu(ABOUT, activity=newest),
              f"the menu has {newest}: {self.icon.texts()}")
        self.assertTrue(self.icon.find("Undo last sweep").is_enabled)
        for line in newest:
            self.assertFalse(self.icon.find(line).is_enabled)
        self.panel.click_icon(3)
        self.panel.wait_for_menu()
        self.photograph("ten-lines")

    def read_names(self, names):
        """What the panel shows when files with these names have been filed."""
        self.start()
        for name in names:
            self.tidemark.write(f"Desktop/Screenshot {name}.png", name)
        lines = 12 + len(names) - 1
        until(lambda: len(self.icon.texts()) == lines, f"{len(names)} lines of activity are in the menu")
        return self.read_by_gtk(self.icon.texts())[6:6 + len(names)]

    def test_names_of_files_are_shown_as_they_are(self):
        names = ["my_note", "a__b", "a___b", "_first", "last_", "a&b", "a&&b", "a<b>c", "50%20", "tab\tbed"]

        shown = self.read_names(names)

        self.panel.click_icon(3)
        self.panel.wait_for_menu()
        self.photograph("names")
        expected = [f"Filed Screenshot {name}.png".replace("\t", "\ufffd") for name in names]
        self.assertEqual(sorted(shown), sorted(expected))

    # GTK takes the marks out of such a text twice; where that cannot be helped, something like an underscore is shown.
    def test_names_with_ampersands_and_underscores_lose_neither(self):
        shown_as = {"a&b_c": "a&bˍc", "a_b&c": "a_b&c", "a_b&c_d&e": "a_b&c_d&e", "a&&b_": "a&&bˍ"}

        shown = self.read_names(list(shown_as))

        self.assertEqual(
            sorted(shown), sorted(f"Filed Screenshot {name}.png" for name in shown_as.values()))

    def test_keys_choose_an_item(self):
        self.start()
        self.panel.click_icon(3)
        self.panel.wait_for_menu()

        self.panel.press_until_closed("Down", "Down", "Return")

        self.tidemark.wait_for_setting("isPaused", True)

    def test_a_left_click_opens_the_menu_too(self):
        self.start()

        self.panel.click_icon(1)

        self.desktop.wait_for_popup("tidemark")
        self.photograph("menu")
        self.desktop.press("Down", "Down", "Return")
        self.tidemark.wait_for_setting("isPaused", True)
        until(lambda: not self.desktop.windows_of("tidemark"), "the menu is closed")

    def test_sweeps_again_what_was_taken_back(self):
        self.start()
        self.file_screenshot()
        self.panel.choose(self.icon, "Undo last sweep")
        self.tidemark.wait_for_menu("Resume sweeping")
        until(lambda: self.tidemark.files("Desktop") == ["Screenshot.png"], "it is back")
        self.panel.choose(self.icon, "Resume sweeping")
        self.tidemark.wait_for_menu("Pause sweeping")

        self.panel.choose(self.icon, "Sweep now")

        until(lambda: len(self.tidemark.files("Desktop/Screenshots")) == 1, "it is filed")

    def test_undo_puts_everything_back(self):
        self.start()
        self.file_screenshot()

        self.panel.choose(self.icon, "Undo last sweep")

        until(lambda: self.tidemark.files("Desktop") == ["Screenshot.png"], "it is back")
        until(lambda: self.icon.texts() == texts.menu(ABOUT, "Paused", paused=True), "the menu tells it")
        self.assertFalse(self.icon.find("Undo last sweep").is_enabled)

    def test_quits(self):
        self.start()

        self.panel.choose(self.icon, "Quit Tidemark")

        self.assertEqual(self.tidemark.process.wait(60), 0)

    # From outside

    def test_a_second_start_opens_the_settings_of_the_first(self):
        self.start()

        for _ in range(2):
            self.assertEqual(self.tidemark.run().returncode, 0)
            self.desktop.wait_for_window(SETTINGS)

        self.assertIsNone(self.tidemark.process.poll())
        self.assertEqual(len(self.desktop.windows_of("tidemark")), 1)

    def application(self):
        bus = dbus.SessionBus()
        until(lambda: bus.name_has_owner("io.tidemark.Tidemark"), "the application is on the bus")
        return bus.get_object("io.tidemark.Tidemark", "/io/tidemark/Tidemark", introspect=False)

    def test_the_session_bus_activates_it(self):
        self.start()
        application = self.application()

        application.Activate(dbus.Dictionary({}, signature="sv"), dbus_interface=APPLICATION)

        self.desktop.wait_for_window(SETTINGS)

    def activate_by_bus(self, action):
        self.application().ActivateAction(
            action, dbus.Array([], signature="v"), dbus.Dictionary({}, signature="sv"),
            dbus_interface=APPLICATION)

    def activate_by_start(self, action):
        option = {"sweep-now": "--sweep", "pause-or-resume": "--toggle-pause", "undo-last-sweep": "--undo"}
        done = self.tidemark.run(option[action])
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_the_actions_of_the_desktop_file_work_by_the_bus(self):
        self.perform_all_actions(self.activate_by_bus)

    def test_the_actions_of_the_desktop_file_work_by_a_start(self):
        self.perform_all_actions(self.activate_by_start)

    def perform_all_actions(self, activate):
        self.start()
        activate("pause-or-resume")
        self.tidemark.wait_for_setting("isPaused", True)
        # Nothing is swept while paused, so the file waits for the action after that.
        self.tidemark.write("Desktop/Screenshot.png", "x")
        activate("pause-or-resume")
        self.tidemark.wait_for_setting("isPaused", False)
        activate("sweep-now")
        self.tidemark.wait_for_menu("Filed Screenshot.png")
        activate("undo-last-sweep")
        until(lambda: self.tidemark.files("Desktop") == ["Screenshot.png"], "it is back")
        self.tidemark.wait_for_setting("isPaused", True)
        self.assertEqual(self.desktop.windows_of("tidemark"), [])


if __name__ == "__main__":
    unittest.main()
