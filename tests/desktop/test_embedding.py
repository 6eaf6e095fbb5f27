"""A tray of the older kind, into which programs put a window of their own (System Tray Protocol, freedesktop.org)."""

import unittest

from desktop_case import DesktopCase
from polling import until
from x11_desktop import X11Desktop


class Embedding(DesktopCase):
    @classmethod
    def make_desktop(cls):
        desktop = X11Desktop(panel=None)
        desktop.start("tray", ["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                               "--height", "28", "--SetPartialStrut", "true"])
        return desktop

    def setUp(self):
        super().setUp()
        self.tidemark.write_settings()
        self.tidemark.start()
        self.icon = until(self.find_icon, "the icon is in the tray")

    def find_icon(self):
        """The place of the window in the tray, once that has been taken into it."""
        for window in self.desktop.windows_of("tidemark"):
            x, y, width, height = self.desktop.geometry(window)
            if 12 < width < 40 and 12 < height < 40 and y < 28:
                return x + width // 2, y + height // 2
        return None

    def test_the_icon_is_there_and_a_right_click_opens_the_menu(self):
        self.check_that_a_click_opens_the_menu(3)

    def test_a_left_click_opens_the_menu_too(self):
        self.check_that_a_click_opens_the_menu(1)

    def check_that_a_click_opens_the_menu(self, button):
        self.photograph("icon")
        self.desktop.click(*self.icon, button)
        self.desktop.wait_for_popup("tidemark")
        self.photograph("menu")

        self.desktop.press("Down", "Down", "Return")

        self.tidemark.wait_for_setting("isPaused", True)
        self.photograph("paused")


if __name__ == "__main__":
    unittest.main()
