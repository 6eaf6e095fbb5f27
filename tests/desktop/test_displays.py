"""Two displays, one of which has twice as many points to the inch."""

import unittest

from polling import until
from wayland_case import WaylandCase

SETTINGS = "Tidemark Settings"


class Displays(WaylandCase):
    def test_of_different_scale_show_the_window_equally_large(self):
        self.start()
        self.tidemark.run()
        here = self.desktop.wait_for_window(SETTINGS)["rect"]
        self.photograph("here")

        self.desktop.add_display(scale=2)
        window = f'[title="{SETTINGS}"]'
        self.desktop.order(window, "move", "container", "to", "output", "HEADLESS-2")
        self.desktop.order(window, "focus")
        until(lambda: self.desktop.windows(SETTINGS)[0]["rect"]["x"] >= self.desktop.size[0],
              "the window is on the other display")
        there = self.desktop.wait_for_window(SETTINGS)["rect"]
        self.photograph("there")

        self.assertEqual((there["width"], there["height"]), (here["width"], here["height"]))
        self.click(SETTINGS, "Wait 0s before touching a new file", "spin button")
        self.desktop.press("Up")
        self.tidemark.wait_for_setting("gracePeriod", 15)


if __name__ == "__main__":
    unittest.main()
