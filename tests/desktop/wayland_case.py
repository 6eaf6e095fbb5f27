"""What the tests on Wayland desktops have in common."""

from desktop_case import DesktopCase
from wayland_desktop import WaylandDesktop


class WaylandCase(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return WaylandDesktop()

    def start(self):
        """Returns the icon of a program that has been welcomed before."""
        self.tidemark.write_settings()
        self.tidemark.start()
        return self.tidemark.icon()

    def click(self, window, name, role=None):
        node = self.tidemark.find(name, role, window)
        frame = self.tidemark.nodes(window)[0]
        self.desktop.click(*self.desktop.place_in(window, frame, node))
