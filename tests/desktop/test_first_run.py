"""From the first start to the first undo, as a new user comes along it."""

import unittest

import accessibility
import texts
from desktop_case import DesktopCase
from panel import Panel
from polling import until
from x11_desktop import X11Desktop

WELCOME = "Welcome to Tidemark"


class FirstRun(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop()

    def start(self):
        self.tidemark.start()
        window = self.desktop.wait_for_window(WELCOME)
        self.tidemark.icon()
        return window

    def test_the_first_start_shows_what_it_will_do(self):
        self.start()

        shown = accessibility.texts(self.tidemark.nodes(WELCOME))
        self.photograph("onboarding")

        self.assertEqual(shown, texts.ONBOARDING)

    def test_return_starts_and_the_window_never_comes_back(self):
        self.start()

        self.desktop.press("Return")

        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.wait_for_setting("hasOnboarded", True)
        self.assertEqual(self.tidemark.end(), 0)
        self.tidemark.start()
        self.tidemark.icon()
        self.assertEqual(self.tidemark.nodes(), [])

    def test_a_click_on_start_sweeping_starts(self):
        self.start()

        button = self.tidemark.find("Start sweeping", "push button")
        self.desktop.click(*button.centre())

        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.wait_for_setting("hasOnboarded", True)

    def test_closed_by_its_button_it_comes_again_at_the_next_start(self):
        window = self.start()

        self.desktop.close_by_button(window)

        self.desktop.wait_until_closed(WELCOME)
        self.assertEqual(self.tidemark.end(), 0)
        self.assertFalse(self.tidemark.settings()["hasOnboarded"])
        self.start()

    def test_from_the_first_start_to_the_first_undo(self):
        self.start()
        self.photograph("onboarding")
        self.desktop.press("Return")
        self.desktop.wait_until_closed(WELCOME)
        self.tidemark.control("status")
        panel = Panel(self.desktop)
        icon = self.tidemark.icon()
        sparkles = icon.icon()

        self.wait_no_longer_for_new_files(panel, icon)
        self.tidemark.write("Desktop/Screenshot 2024-05-03 at 14.05.09.png", "a screen")
        self.tidemark.wait_for_menu("Filed Screenshot 2024-05-03 at 14.05.09.png")
        self.assertEqual(len(self.tidemark.files("Desktop/Screenshots")), 1)
        panel.click_icon(3)
        panel.wait_for_menu()
        self.photograph("activity")
        panel.click(icon.texts(), "Undo last sweep")

        until(lambda: self.tidemark.exists("Desktop/Screenshot 2024-05-03 at 14.05.09.png"), "it is back")
        self.tidemark.wait_for_menu("Resume sweeping")
        self.tidemark.wait_for_setting("isPaused", True)
        until(lambda: icon.icon() != sparkles, "the icon tells that sweeping is paused")
        self.assertIn("Paused", icon.texts())
        self.assertEqual(self.tidemark.files("Desktop/Screenshots"), [])
        panel.click_icon(3)
        panel.wait_for_menu()
        self.photograph("paused")

    def wait_no_longer_for_new_files(self, panel, icon):
        """Turns the grace period from a minute to nothing, in the settings window."""
        panel.choose(icon, "Settings…")
        self.desktop.wait_for_window("Tidemark Settings")
        stepper = self.tidemark.find("Wait 60s before touching a new file", "spin button")
        self.desktop.click(*stepper.centre())
        self.desktop.press("Down", "Down", "Down", "Down")
        self.tidemark.wait_for_setting("gracePeriod", 0)
        self.photograph("settings")


if __name__ == "__main__":
    unittest.main()
