"""An X11 desktop without a screen: an X server in memory, a window manager and a panel with a tray."""

import os
import re
import subprocess

from polling import until
from session import Session

# The panel of XFCE as it reads it from its settings: one panel with nothing but the tray.
_PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
"""


class X11Desktop(Session):
    """One per process, since the libraries that reach its buses connect once."""

    def __init__(self, size=(1280, 800), panel="xfce4-panel"):
        super().__init__()
        self.size = size
        self.panel = None
        self.environment |= {"XDG_SESSION_TYPE": "x11", "XDG_CURRENT_DESKTOP": "XFCE"}
        self.environment["DISPLAY"], self.display = self.start_display(size)
        self.start_bus()
        self.accessibility_address = self.start_accessibility()
        self.start("window-manager", ["openbox"])
        until(lambda: "window id" in self.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]),
              "the window manager is there")
        self.run(["xsetroot", "-solid", "#305070"])
        if panel == "xfce4-panel":
            self.start_panel()

    def start_display(self, size):
        """An X server that chooses its number by itself: what clients call it, and its process."""
        reading, writing = os.pipe()
        server = self.start(
            "display", ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{size[0]}x{size[1]}x24",
                        "-nolisten", "tcp", "-noreset", "-dpi", "96"], pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError(f"no X server: {self.log('display')}")
        return f":{number}", server

    def start_panel(self):
        settings = self.path("home/.config/xfce4/xfconf/xfce-perchannel-xml")
        os.makedirs(settings, exist_ok=True)
        with open(os.path.join(settings, "xfce4-panel.xml"), "w", encoding="utf-8") as file:
            file.write(_PANEL)
        self.panel = self.start("panel", ["xfce4-panel", "--disable-wm-check"])
        self.wait_for_tray()

    def wait_for_tray(self):
        import tray

        until(tray.has_host, f"a tray is there: {self.log('panel')}")

    def stop_panel(self):
        """As if it crashed: it cannot say good-bye to anybody."""
        import tray

        self.panel.kill()
        self.panel.wait()
        until(lambda: not tray.has_host(), "the tray is gone")

    def photograph(self, file):
        self.run(["import", "-silent", "-window", "root", file])

    def photograph_at_rest(self, file):
        """Once nothing moves any more, such as a menu that fades in."""
        def take():
            self.photograph(file)
            return self.run(["identify", "-format", "%#", file])

        until(lambda: take() == take(), "the screen is at rest")

    # Mouse and keyboard

    def click(self, x, y, button=1):
        # A way of its own for the pointer, so that windows see it come.
        self.run(["xdotool", "mousemove", str(x - 3), str(y + 3), "mousemove", str(x), str(y), "click",
                  str(button)])

    def move(self, x, y):
        self.run(["xdotool", "mousemove", str(x), str(y)])

    def scroll_down(self):
        self.run(["xdotool", "click", "--repeat", "10", "--delay", "5", "5"])

    def press(self, *keys):
        """Presses keys by their X names, such as Return or ctrl+comma."""
        self.run(["xdotool", "key", "--clearmodifiers", "--delay", "30", *keys])

    def type(self, text):
        self.run(["xdotool", "type", "--clearmodifiers", "--delay", "30", text])

    # Windows, as the window manager knows them

    def windows(self, title):
        """The ids of the windows on the screen with that title."""
        return self._search("--name", f"^{re.escape(title)}$")

    def windows_of(self, program):
        """The ids of the windows on the screen that say that they are of that program."""
        return self._search("--class", f"^{program}$")

    def _search(self, *wanted):
        done = subprocess.run(
            ["xdotool", "search", "--onlyvisible", *wanted], env=self.environment, capture_output=True,
            text=True, check=False)
        return [int(line) for line in done.stdout.split()]

    def wait_for_window(self, title):
        """The only window of that title, once it has the keyboard."""
        def find():
            found = self.windows(title)
            return found if len(found) == 1 and self.active_title() == title else None
        window = until(find, f"the window {title!r} is in front; in front is {self.active_title()!r}")[0]
        self._wait_until_painted(window)
        return window

    def _measure(self, window, what):
        return float(self.run(["import", "-silent", "-window", str(window), "-format", what, "info:"]))

    def _wait_until_painted(self, window):
        until(lambda: self._measure(window, "%k") > 1, "the window has more than one colour")

    def brightness(self, window):
        """From 0 for black to 1 for white."""
        return self._measure(window, "%[fx:mean]")

    def wait_for_popup(self, program):
        """A window of the program which is large enough to be a menu, and no icon."""
        def find():
            found = [each for each in self.windows_of(program) if min(self.geometry(each)[2:]) > 100]
            return found[0] if len(found) == 1 else None
        window = until(find, f"a menu of {program} is open")
        self._wait_until_painted(window)
        return window

    def active_title(self):
        done = subprocess.run(
            ["xdotool", "getactivewindow", "getwindowname"], env=self.environment, capture_output=True,
            text=True, check=False)
        return done.stdout.strip()

    def wait_until_closed(self, title):
        until(lambda: not self.windows(title), f"the window {title!r} is closed")

    def geometry(self, window):
        """Place on the screen and size of a window without its frame: x, y, width, height."""
        text = self.run(["xwininfo", "-id", str(window)])
        wanted = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        values = dict(line.strip().split(":", 1) for line in text.splitlines() if ":" in line)
        return tuple(int(values[name]) for name in wanted)

    def property(self, window, name):
        return self.run(["xprop", "-id", str(window), name])

    def close_by_button(self, window):
        """Clicks the cross that the window manager draws at the right end of the title bar."""
        x, y, width, _ = self.geometry(window)
        frame = self.property(window, "_NET_FRAME_EXTENTS").split("=")[1].split(",")
        top = int(frame[2])
        self.click(x + width - top // 2, y - top // 2)
