"""Processes that belong together, with a folder of their own, and end together."""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import uuid

from polling import until

MARK = "TIDEMARK_DESKTOP_SESSION"
LONGEST = 900  # seconds that any session may last

# What belongs to the desktop from which the tests are started, and must not be reached.
FOREIGN = (
    "AT_SPI_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS", "DBUS_STARTER_ADDRESS", "DISPLAY", "GDK_BACKEND",
    "GDK_SCALE", "GTK_THEME", "LANGUAGE", "LC_ALL", "NO_AT_BRIDGE", "QT_FONT_DPI", "QT_QPA_PLATFORM",
    "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR", "QT_STYLE_OVERRIDE", "SESSION_MANAGER", "SWAYSOCK", "TZ",
    "WAYLAND_DISPLAY", "XAUTHORITY", "XDG_ACTIVATION_TOKEN", "XDG_CONFIG_DIRS", "XDG_DATA_DIRS",
    "XDG_SEAT", "XDG_SESSION_ID", "XDG_VTNR",
)


def _members(mark):
    """The ids of all processes that were started in the session."""
    wanted = f"{MARK}={mark}".encode()
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) == os.getpid():
            continue
        try:
            with open(f"/proc/{entry}/environ", "rb") as file:
                if wanted in file.read().split(b"\0"):
                    yield int(entry)
        except OSError:
            pass  # it has ended, or belongs to somebody else


def _end_members(mark):
    for each_signal, seconds in ((signal.SIGTERM, 3), (signal.SIGKILL, 10)):
        end = time.monotonic() + seconds
        told = set()
        while members := set(_members(mark)):
            for pid in members - told:
                try:
                    os.kill(pid, each_signal)
                except ProcessLookupError:
                    pass
            told |= members
            if time.monotonic() > end:
                break
            time.sleep(0.02)


# Ends the session of a test that was killed. It is told by the end of its input.
_WATCHDOG = """
import select, shutil, sys
sys.path.insert(0, sys.argv[1])
import session
select.select([0], [], [], session.LONGEST)
session._end_members(sys.argv[2])
shutil.rmtree(sys.argv[3], ignore_errors=True)
"""


class Session:
    """Starts processes in an environment of their own and ends them all, with whatever they have started.

    `folder` is theirs and goes with them; `environment` is what they are started with.
    """

    def __init__(self):
        self.mark = str(uuid.uuid4())
        self.folder = tempfile.mkdtemp(prefix="tidemark-desktop-")
        self.environment = self._make_environment()
        self._children = []
        here = os.path.dirname(os.path.abspath(__file__))
        self._watchdog = subprocess.Popen(
            [sys.executable, "-B", "-c", _WATCHDOG, here, self.mark, self.folder],
            stdin=subprocess.PIPE, start_new_session=True)

    def _make_environment(self):
        environment = {name: value for name, value in os.environ.items() if name not in FOREIGN}
        folders = {
            "HOME": "home", "XDG_RUNTIME_DIR": "run", "XDG_CONFIG_HOME": "home/.config",
            "XDG_DATA_HOME": "home/.local/share", "XDG_CACHE_HOME": "home/.cache",
            "XDG_STATE_HOME": "home/.local/state", "TMPDIR": "tmp",
        }
        for name, folder in folders.items():
            environment[name] = self.path(folder)
            os.makedirs(self.path(folder), mode=0o700, exist_ok=True)
        os.makedirs(self.path("log"))
        environment.update({MARK: self.mark, "LANG": "C.UTF-8", "GSETTINGS_BACKEND": "memory", "TZ": "UTC"})
        return environment

    def path(self, name):
        return os.path.join(self.folder, name)

    def log(self, name):
        """What the program has written, as far as it can be read."""
        try:
            with open(self.path(f"log/{name}"), encoding="utf-8", errors="replace") as file:
                return file.read()
        except FileNotFoundError:
            return ""

    def start(self, name, command, environment=None, **options):
        """Starts a program whose output goes to the log of that name. Members of `environment` that are
        None are taken out of that of the session."""
        merged = self.environment | (environment or {})
        merged = {key: value for key, value in merged.items() if value is not None}
        with open(self.path(f"log/{name}"), "ab") as log:
            child = subprocess.Popen(
                command, env=merged, stdin=subprocess.DEVNULL, stdout=log, stderr=log, cwd=self.path("home"),
                start_new_session=True, **options)
        self._children.append(child)
        return child

    def run(self, command, environment=None, seconds=60, **options):
        """What a program writes that ends by itself. Fails when it does."""
        merged = self.environment | (environment or {})
        done = subprocess.run(
            command, env=merged, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=seconds,
            check=False, cwd=self.path("home"), **options)
        if done.returncode != 0:
            raise RuntimeError(f"{command} ended with {done.returncode}: {done.stdout}{done.stderr}")
        return done.stdout

    def end(self):
        _end_members(self.mark)
        for child in self._children:
            child.wait()
        self._watchdog.stdin.close()
        self._watchdog.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def processes(self, program):
        """The ids of all processes of the session that run that file."""
        found = []
        for pid in _members(self.mark):
            try:
                if os.readlink(f"/proc/{pid}/exe") == program:
                    found.append(pid)
            except OSError:
                pass  # it has ended
        return found

    def start_bus(self):
        """The session bus, also for the libraries that this very process uses."""
        address = f"unix:path={self.path('run/bus')}"
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.start("dbus", ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address={address}"])
        until(lambda: os.path.exists(self.path("run/bus")), "the session bus is there")
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = address
        os.environ["XDG_RUNTIME_DIR"] = self.environment["XDG_RUNTIME_DIR"]

    def start_accessibility(self):
        """Toolkits describe their windows only to those who ask for it."""
        import dbus

        self.start("accessibility", ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        def ask():
            status = dbus.SessionBus().get_object("org.a11y.Bus", "/org/a11y/bus", introspect=False)
            status.Set("org.a11y.Status", "IsEnabled", dbus.Boolean(True, variant_level=1),
                       dbus_interface="org.freedesktop.DBus.Properties")
            return str(status.GetAddress(dbus_interface="org.a11y.Bus"))
        # It takes its name a moment before it can be asked.
        return until(ask, "the accessibility bus is there")
