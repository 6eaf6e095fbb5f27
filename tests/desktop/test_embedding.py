"""A tray of the older kind, into which programs put a window of their own (System Tray Protocol, freedesktop.org), and
panels that start when nobody waits for them any more."""

import unittest

from desktop_case import DesktopCase
from panel import Panel
from polling import until
from x11_desktop import X11Desktop

MENU = "Tidemark"


class Embedding(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(panel=None)

    def setUp(self):
        super().setUp()
        if self.desktop.panel and self.desktop.panel.poll() is None:
            self.desktop.stop_panel()
        self.tidemark.write_settings()

    def start_tray(self):
        process = self.desktop.start(
            "tray", ["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                     "--height", "28", "--SetPartialStrut", "true"])

        def end():
            process.kill()
            process.wait()
        self.addCleanup(end)

    def start_with_tray(self):
        self.start_tray()
        self.tidemark.start()
        self.icon = until(self.find_icon, "the icon is in the tray")

    def start_without_tray(self):
        """Until it waits for none any more."""
        self.tidemark.start()
        self.desktop.wait_for_window(MENU)

    def find_icon(self):
        """The place of the window in the tray, once that has been taken into it."""
        for window in self.desktop.windows_of("tidemark"):
            x, y, width, height = self.desktop.geometry(window)
            if 12 < width < 40 and 12 < height < 40 and y < 28:
                return x + width // 2, y + height // 2
        return None

    def test_the_icon_is_there_and_a_right_click_opens_the_menu(self):
        self.start_with_tray()
        self.check_that_a_click_opens_the_menu(3)

    def test_a_left_click_opens_the_menu_too(self):
        self.start_with_tray()
        self.check_that_a_click_opens_the_menu(1)

    def test_a_tray_that_starts_late_takes_the_icon_in(self):
        self.start_without_tray()
        self.desktop.press("Escape")
        self.desktop.wait_until_closed(MENU)

        self.start_tray()

        self.icon = until(self.find_icon, "the icon is in the tray")
        self.check_that_a_click_opens_the_menu(3)

    def check_that_a_click_opens_the_menu(self, button):
        self.photograph("icon")
        self.desktop.click(*self.icon, button)
        self.desktop.wait_for_popup("tidemark")
        self.photograph("menu")
        self.desktop.press("Down", "Down", "Return")
        self.tidemark.wait_for_setting("isPaused", True)
        self.photograph("paused")

    def test_a_panel_of_both_kinds_that_starts_late_draws_icon_and_menu_itself(self):
        self.start_without_tray()

        self.desktop.start_panel()

        icon = self.tidemark.icon()
        Panel(self.desktop).icon_place()
        icon.choose("Pause sweeping")
        self.tidemark.wait_for_setting("isPaused", True)
        self.photograph("paused")


if __name__ == "__main__":
    unittest.main()
