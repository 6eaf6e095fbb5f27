"""Makes the pictures of the manual, of the real program: photographs.py FOLDER light|dark

Menu, settings and welcome, cut out of a desktop without a screen.
"""

import os
import sys

import looks
from panel import Panel
from polling import until
from tidemark import Tidemark
from x11_desktop import X11Desktop

_FILES = {
    "Desktop/Screenshot from 2026-11-20 18-42-07.png": "",
    "Desktop/Screenshot from 2026-11-21 09-13-30.png": "",
    "Downloads/Screenshot_20261121-102355.png": "",
    "Desktop/Ideas for the garden.md": "---\ntitle: The garden in spring\ndate: 2026-11-18\n---\nTulips.\n",
    "Downloads/trip.md": "---\ntitle: A trip to the coast\ndate: 2026-11-19\n---\nBy train.\n",
}


class Photographer:
    def __init__(self, desktop, folder, look, environment_of):
        import accessibility

        accessibility.connect()
        self.desktop = desktop
        self.folder = folder
        self.look = look
        self.tidemark = Tidemark(desktop, look)
        self.environment = environment_of(self.tidemark)
        self.panel = Panel(desktop)

    def take_all(self):
        self.tidemark.start(environment=self.environment)
        window = self.desktop.wait_for_window("Welcome to Tidemark")
        self.tidemark.icon()
        self.take("onboarding", self.frame_of(window))
        self.desktop.press("Return")
        self.desktop.wait_until_closed("Welcome to Tidemark")
        self.take_settings()
        self.take_menu()
        self.tidemark.end()

    def take_settings(self):
        self.tidemark.run()
        window = self.desktop.wait_for_window("Tidemark Settings")
        self.desktop.click(*self.tidemark.find("Rules of Desktop").centre())
        self.tidemark.find("Sort Markdown files, Desktop")
        until(lambda: self.desktop.geometry(window)[3] > 600, "the window has grown")
        self.take("settings", self.frame_of(window))

    def take_menu(self):
        self.stop_waiting()
        icon = self.tidemark.icon()
        for name, content in _FILES.items():
            self.tidemark.write(name, content)
        until(lambda: sum("Filed" in text for text in icon.texts()) == len(_FILES), "all is filed")
        self.panel.click_icon(3)
        x, _, width, height = self.panel.wait_for_menu()
        self.take("menu", (x - 60, 0, width + 60, height + 60))
        self.desktop.press("Escape")
        self.panel.wait_until_closed()

    def stop_waiting(self):
        """Files are to be filed while the picture is being taken."""
        self.tidemark.end()
        settings = self.tidemark.settings()
        self.tidemark.write_settings(**settings | {"gracePeriod": 0})
        self.tidemark.start(environment=self.environment)

    def frame_of(self, window):
        """The window with what the window manager draws around it."""
        x, y, width, height = self.desktop.geometry(window)
        text = self.desktop.property(window, "_NET_FRAME_EXTENTS").split("=")[1]
        left, right, top, bottom = (int(number) for number in text.split(","))
        return x - left, y - top, width + left + right, height + top + bottom

    def take(self, what, place):
        x, y, width, height = place
        self.desktop.move(10, self.desktop.size[1] - 10)
        file = os.path.join(self.folder, f"{what}-{self.look}.png")
        whole = self.desktop.path("tmp/whole.png")
        self.desktop.photograph_at_rest(whole)
        self.desktop.run(["convert", whole, "-crop", f"{width}x{height}+{x}+{y}", "+repage", "-strip",
                          "-define", "png:exclude-chunks=date,time", file])
        self.desktop.run(["optipng", "-quiet", "-o2", file])
        print(f"{file}: {os.path.getsize(file) // 1024} KiB")


def main():
    folder = os.path.abspath(sys.argv[1])
    os.makedirs(folder, exist_ok=True)
    look = sys.argv[2]
    desktop = X11Desktop(size=(1280, 1000), panel=None)
    try:
        if look == "dark":
            desktop.environment["GTK_THEME"] = "Adwaita:dark"
        desktop.start_panel()
        Photographer(desktop, folder, look, looks.dark if look == "dark" else lambda _: {}).take_all()
    finally:
        desktop.end()


main()
