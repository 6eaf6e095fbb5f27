"""Desktops that lack something, or lose it."""

import os
import signal
import unittest

import accessibility
import texts
from desktop_case import DesktopCase
from panel import Panel
from polling import until
from tidemark import SANITIZER_STATUS
from x11_desktop import X11Desktop

ABOUT = os.environ["TIDEMARK_ABOUT"]
SETTINGS = "Tidemark Settings"
WELCOME = "Welcome to Tidemark"


class Trouble(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(size=(1024, 768))

    def setUp(self):
        super().setUp()
        if self.desktop.panel.poll() is not None:
            self.desktop.start_panel()
        self.panel = Panel(self.desktop)

    def start(self, **options):
        self.tidemark.write_settings(**options.pop("settings", {}))
        self.tidemark.start(**options)

    def wait_for_menu_window(self):
        return self.desktop.wait_for_window("Tidemark")

    # The panel

    def test_a_panel_that_crashes_and_returns_shows_the_icon_again(self):
        self.start()
        self.tidemark.icon()

        self.desktop.stop_panel()
        self.desktop.start_panel()

        self.assertEqual(self.tidemark.icon().texts(), texts.menu(ABOUT))
        self.panel.choose(self.tidemark.icon(), "Pause sweeping")
        self.tidemark.wait_for_setting("isPaused", True)
        self.photograph("returned")

    def test_a_panel_that_starts_later_shows_the_icon(self):
        self.desktop.stop_panel()
        # At login everything starts at once, and the panel takes its time.
        self.start_at_login()

        self.desktop.start_panel()

        self.assertEqual(self.tidemark.icon().texts(), texts.menu(ABOUT))
        self.assertEqual(self.desktop.windows_of("tidemark"), [])

    def start_at_login(self):
        self.tidemark.write_settings()
        self.tidemark.start("--autostart")
        until(lambda: os.path.exists(os.path.join(self.tidemark.support, "socket")), "it has started")

    def test_without_a_panel_the_menu_stands_in_a_window(self):
        self.desktop.stop_panel()
        self.start()

        self.wait_for_menu_window()
        self.photograph("menu-window")

        shown = accessibility.texts(self.tidemark.nodes("Tidemark"))
        self.assertEqual(shown, [text for text in texts.menu(ABOUT) if text != "-"])
        self.desktop.click(*self.tidemark.find("Pause sweeping").centre())
        self.tidemark.wait_for_setting("isPaused", True)
        self.tidemark.find("Resume sweeping")
        self.photograph("paused")

    def test_without_a_panel_the_keyboard_uses_the_menu_window(self):
        self.desktop.stop_panel()
        self.start()
        self.wait_for_menu_window()
        until(lambda: self.focused() == "Sweep now" or self.desktop.press("Down"), "the first item has the focus")

        self.desktop.press("Down", "Return")

        self.tidemark.wait_for_setting("isPaused", True)

    def focused(self):
        found = [node.name for node in self.tidemark.nodes("Tidemark") if node.has("focused")]
        return found[-1] if found else None

    def test_without_a_panel_another_start_brings_the_menu_window_back(self):
        self.desktop.stop_panel()
        self.start()
        self.desktop.close_by_button(self.wait_for_menu_window())
        self.desktop.wait_until_closed("Tidemark")

        self.tidemark.run()

        self.wait_for_menu_window()
        self.desktop.click(*self.tidemark.find("Settings…").centre())
        self.desktop.wait_for_window(SETTINGS)

    # The session bus

    def start_without_bus(self, **settings):
        self.tidemark.write_settings(**settings)
        self.tidemark.start(environment={
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
            "AT_SPI_BUS_ADDRESS": self.desktop.accessibility_address})

    def test_without_a_session_bus_the_icon_is_embedded(self):
        self.start_without_bus()

        self.panel.click_icon(3)

        self.desktop.wait_for_popup("tidemark")
        self.photograph("menu")
        self.desktop.press("Down", "Down", "Return")
        self.tidemark.wait_for_setting("isPaused", True)

    def test_without_a_session_bus_it_welcomes_and_starts(self):
        self.start_without_bus(hasOnboarded=False)
        self.desktop.wait_for_window(WELCOME)

        self.desktop.press("Return")

        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.wait_for_setting("hasOnboarded", True)

    def test_without_a_session_bus_and_a_panel_the_menu_stands_in_a_window(self):
        self.desktop.stop_panel()
        self.start_without_bus()
        self.wait_for_menu_window()

        self.desktop.press("Down", "Return")

        until(lambda: self.tidemark.settings()["isPaused"], "the second item is chosen")

    # The end

    def test_a_display_server_that_goes_away_ends_it_with_its_files_whole(self):
        display, server = self.desktop.start_display((800, 600))
        self.start(environment={"DISPLAY": display})
        self.tidemark.icon()
        names = [f"Screenshot {number}.png" for number in range(300)]
        for name in names:
            self.tidemark.write(f"Desktop/{name}", name)
        until(lambda: self.tidemark.files("Desktop/Screenshots"), "the sweep has begun")

        server.kill()

        self.assertEqual(self.tidemark.process.wait(60), 1)
        self.assertTrue(self.tidemark.settings()["hasOnboarded"])
        self.check_that_nothing_is_lost(names)

    def test_killed_in_a_sweep_it_leaves_its_files_whole(self):
        self.start()
        self.tidemark.icon()
        names = [f"Screenshot {number}.png" for number in range(300)]
        for name in names:
            self.tidemark.write(f"Desktop/{name}", name)
        until(lambda: self.tidemark.files("Desktop/Screenshots"), "the sweep has begun")

        self.tidemark.process.kill()

        self.assertEqual(self.tidemark.process.wait(60), -signal.SIGKILL)
        self.check_that_nothing_is_lost(names)

    def check_that_nothing_is_lost(self, contents):
        found = []
        for name in self.tidemark.files("Desktop"):
            with open(self.tidemark.path(f"Desktop/{name}"), encoding="utf-8") as file:
                found.append(file.read())
        # A kill between the two steps of a move may leave one file with two names.
        self.assertEqual(sorted(set(found)), sorted(contents))
        self.assertLessEqual(len(found), len(contents) + 1)
        told = {entry["to"] for sweep in self.tidemark.journal()["sweeps"] for entry in sweep["entries"]}
        for name in self.tidemark.files("Desktop/Screenshots"):
            self.assertIn(self.tidemark.path(f"Desktop/Screenshots/{name}"), told)

    def test_every_signal_that_asks_for_the_end_is_followed(self):
        for each in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(each.name):
                self.start()
                self.tidemark.icon()
                self.tidemark.process.send_signal(each)
                self.assertEqual(self.tidemark.process.wait(60), 0)

    def test_without_a_display_it_says_so(self):
        done = self.tidemark.run(environment={"DISPLAY": None})

        self.assertNotIn(done.returncode, (0, SANITIZER_STATUS))
        self.assertTrue(done.stderr.startswith("tidemark: "), done.stderr)
        self.assertEqual(done.stderr.count("\n"), 1)

    def test_with_a_display_that_nobody_serves_it_says_so(self):
        done = self.tidemark.run(environment={"DISPLAY": ":97531"})

        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn("could not connect to display :97531", done.stderr)


if __name__ == "__main__":
    unittest.main()
