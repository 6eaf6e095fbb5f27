"""A Wayland desktop without a screen: sway with a bar that has a tray."""

import json
import os
import shutil
import subprocess

from polling import until
from session import Session

POINTER = os.environ.get("VIRTUAL_POINTER")

_CONFIGURATION = """
xwayland disable
default_border normal
for_window [app_id=".*"] floating enable
"""

_BAR = {
    "layer": "top", "position": "top", "height": 28, "modules-left": [], "modules-right": ["tray"],
    "tray": {"icon-size": 22, "spacing": 8},
}
_BAR_STYLE = 'window#waybar { background: #eeeeee; } * { font-family: "DejaVu Sans"; font-size: 12px; }\n'


class WaylandDesktop(Session):
    """One per process, as X11Desktop."""

    size = (1280, 800)

    def __init__(self, panel="waybar"):
        super().__init__()
        self.panel = None
        self._reach = self.size  # of the mouse
        self.environment |= {"XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": "sway",
                             "QT_QPA_PLATFORM": "wayland"}
        self.start_bus()
        self.accessibility_address = self.start_accessibility()
        self._start_compositor()
        self._pointer = self._start_pointer()
        # A keyboard that nobody touches: while there is none, programs are told of no keys.
        self.start("keyboard", ["wtype", "-s", "100000000"])
        if panel == "waybar":
            self.start_panel()

    def _start_compositor(self):
        """sway refuses to run as root. Then it alone runs as nobody, with a folder that is its own."""
        folder = self.path("sway")
        os.mkdir(folder, mode=0o700)
        options = {}
        if os.getuid() == 0:
            options = {"user": "nobody", "group": "nogroup", "extra_groups": []}
            os.chmod(self.folder, 0o711)
            shutil.chown(folder, "nobody", "nogroup")
        with open(os.path.join(folder, "config"), "w", encoding="utf-8") as file:
            file.write(_CONFIGURATION)
            file.write(f"output HEADLESS-1 resolution {self.size[0]}x{self.size[1]} position 0 0\n")
            file.write("output * bg #305070 solid_color\n")
        os.chmod(os.path.join(folder, "config"), 0o644)
        socket = os.path.join(folder, "sway.sock")
        self.start("compositor", ["sway", "-c", os.path.join(folder, "config")], {
            "HOME": folder, "XDG_RUNTIME_DIR": folder, "XDG_CONFIG_HOME": folder, "XDG_CACHE_HOME": folder,
            "XDG_DATA_HOME": folder, "SWAYSOCK": socket, "WLR_BACKENDS": "headless",
            "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman", "DBUS_SESSION_BUS_ADDRESS": None,
        }, **options)
        self.environment["SWAYSOCK"] = socket
        until(lambda: self.command("get_outputs"), f"sway is there: {self.log('compositor')}")
        displays = [name for name in os.listdir(folder)
                    if name.startswith("wayland-") and not name.endswith(".lock")]
        self.environment["WAYLAND_DISPLAY"] = os.path.join(folder, displays[0])

    def _start_pointer(self):
        pointer = subprocess.Popen(
            [POINTER], env=self.environment, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        if pointer.stdout.readline() != "done\n":
            raise RuntimeError("no pointer")
        return pointer

    def start_panel(self):
        import tray

        self._write_configuration("waybar/config", json.dumps(_BAR))
        self._write_configuration("waybar/style.css", _BAR_STYLE)
        self.panel = self.start("panel", ["waybar"])
        until(tray.has_host, f"a tray is there: {self.log('panel')}")

    def stop_panel(self):
        import tray

        self.panel.kill()
        self.panel.wait()
        until(lambda: not tray.has_host(), "the tray is gone")

    def _write_configuration(self, name, content):
        file_name = os.path.join(self.environment["XDG_CONFIG_HOME"], name)
        os.makedirs(os.path.dirname(file_name), exist_ok=True)
        with open(file_name, "w", encoding="utf-8") as file:
            file.write(content)

    def end(self):
        self._pointer.stdin.close()
        self._pointer.wait()
        self._pointer.stdout.close()
        super().end()

    def command(self, kind):
        """What sway answers to a question."""
        return json.loads(self.run(["swaymsg", "--raw", "--type", kind]))

    def order(self, *words):
        self.run(["swaymsg", *words])

    def add_display(self, scale):
        """A display right of the first, as large to the eye. The mouse is on both."""
        self.order("create_output")
        width, height = self.size[0] * scale, self.size[1] * scale
        self.order("output", "HEADLESS-2", "enable", "resolution", f"{width}x{height}", "scale", str(scale),
                   "position", str(self.size[0]), "0")
        self._reach = (2 * self.size[0], self.size[1])

    def photograph(self, file):
        self.run(["grim", file])

    # Mouse and keyboard

    def _tell_pointer(self, line):
        self._pointer.stdin.write(line + "\n")
        self._pointer.stdin.flush()
        if self._pointer.stdout.readline() != "done\n":
            raise RuntimeError("the pointer has gone")

    def move(self, x, y):
        self._tell_pointer(f"move {x} {y} {self._reach[0]} {self._reach[1]}")

    def click(self, x, y, button=1):
        number = {1: 272, 3: 273}[button]
        self.move(x - 3, y + 3)
        self.move(x, y)
        self._tell_pointer(f"press {number}")
        self._tell_pointer(f"release {number}")

    def press(self, *keys):
        """Presses keys by their X names, such as Return or ctrl+comma."""
        arguments = []
        for key in keys:
            *modifiers, name = key.split("+")
            for modifier in modifiers:
                arguments += ["-M", modifier]
            arguments += ["-k", name]
            for modifier in modifiers:
                arguments += ["-m", modifier]
        self.run(["wtype", "-d", "20", *arguments])

    def type(self, text):
        self.run(["wtype", "-d", "20", text])

    # Windows

    def _windows(self):
        def walk(node):
            if node.get("pid") and node.get("app_id"):
                yield node
            for child in node.get("nodes", []) + node.get("floating_nodes", []):
                yield from walk(child)
        return walk(self.command("get_tree"))

    def windows(self, title):
        return [node for node in self._windows() if node["name"] == title and node["visible"]]

    def windows_from_bottom(self):
        """The titles of all windows on the screen, the one above all others last."""
        return [node["name"] for node in self._windows() if node["visible"]]

    def wait_for_window(self, title):
        """The only window of that title, once it has the keyboard."""
        def find():
            found = self.windows(title)
            return found[0] if len(found) == 1 and found[0]["focused"] else None
        return until(find, f"the window {title!r} is in front")

    def wait_until_closed(self, title):
        until(lambda: not self.windows(title), f"the window {title!r} is closed")

    def place_in(self, title, frame, node):
        """Where on the screen the middle of something in the window is, of which `frame` is the outermost node:
        programs do not know where their windows are."""
        window = self.windows(title)[0]
        x, y = node.centre()
        return (window["rect"]["x"] + window["window_rect"]["x"] + x - frame.x,
                window["rect"]["y"] + window["window_rect"]["y"] + y - frame.y)
