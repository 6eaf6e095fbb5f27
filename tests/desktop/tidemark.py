"""The program under test, with a home folder of its own."""

import json
import os
import signal
import subprocess

import accessibility
import tray
from polling import until

PROGRAM = os.environ["TIDEMARK"]
CONTROL = os.environ["TIDEMARKCTL"]
_HERE = os.path.dirname(os.path.abspath(__file__))

# No report of a sanitizer is overlooked: it ends the process with a status that nothing else has.
SANITIZER_STATUS = 97
_SANITIZERS = {
    "ASAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:detect_leaks=1:fast_unwind_on_malloc=0",
    "LSAN_OPTIONS": f"suppressions={_HERE}/leaks.supp:print_suppressions=0:exitcode={SANITIZER_STATUS}",
    "UBSAN_OPTIONS": f"halt_on_error=1:print_stacktrace=1:exitcode={SANITIZER_STATUS}",
}


class Tidemark:
    """Home folder and program of one user. The program can be started again and again."""

    def __init__(self, desktop, name):
        self.desktop = desktop
        self.name = name
        self.program = PROGRAM
        self.launcher = []  # the command, if any, that becomes the program
        self.home = desktop.path(f"homes/{name}")
        self.support = os.path.join(self.home, ".local/share/Tidemark")
        self.environment = _SANITIZERS | {
            "HOME": self.home, "XDG_CONFIG_HOME": self.path(".config"),
            "XDG_DATA_HOME": self.path(".local/share"), "XDG_CACHE_HOME": self.path(".cache"),
            "XDG_STATE_HOME": self.path(".local/state"),
        }
        self.processes = []
        for folder in ("Desktop", "Downloads", ".config", ".local/share", ".cache", ".local/state"):
            os.makedirs(self.path(folder))
        self.write(".config/user-dirs.dirs",
                   'XDG_DESKTOP_DIR="$HOME/Desktop"\nXDG_DOWNLOAD_DIR="$HOME/Downloads"\n')

    # Files

    def path(self, name):
        return os.path.join(self.home, name)

    def write(self, name, content=""):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(content)

    def exists(self, name):
        return os.path.lexists(self.path(name))

    def files(self, folder):
        """The names of all files below a folder."""
        found = []
        for parent, _, names in os.walk(self.path(folder)):
            found += [os.path.relpath(os.path.join(parent, name), self.path(folder)) for name in names]
        return sorted(found)

    def settings(self):
        with open(os.path.join(self.support, "settings.json"), encoding="utf-8") as file:
            return json.load(file)

    def write_settings(self, **members):
        """Before the start. Whoever is there already has been welcomed, and does not wait for new files."""
        os.makedirs(self.support, mode=0o700, exist_ok=True)
        with open(os.path.join(self.support, "settings.json"), "w", encoding="utf-8") as file:
            json.dump({"hasOnboarded": True, "gracePeriod": 0} | members, file)

    def wait_for_setting(self, name, value):
        until(lambda: self.settings()[name] == value, f"{name} is {value!r} in settings.json")

    def journal(self):
        with open(os.path.join(self.support, "journal.json"), encoding="utf-8") as file:
            return json.load(file)

    # Processes

    def start(self, *arguments, environment=None):
        """Starts the program, and does not wait for anything."""
        process = self.desktop.start(
            self.name, [*self.launcher, self.program, *arguments], self.environment | (environment or {}))
        self.processes.append(process)
        return process

    @property
    def process(self):
        return self.processes[-1]

    @property
    def pid(self):
        return self.process.pid

    def run(self, *arguments, environment=None):
        """Starts the program once more, which hands over to the one that runs."""
        return self._run_to_end([self.program, *arguments], environment)

    def control(self, *arguments):
        """What tidemarkctl answers."""
        done = self._run_to_end([CONTROL, *arguments])
        if done.returncode != 0:
            raise AssertionError(f"tidemarkctl {arguments}: {done.stdout}{done.stderr}")
        return done.stdout

    def _run_to_end(self, command, environment=None):
        merged = self.desktop.environment | self.environment | (environment or {})
        return subprocess.run(
            command, env={key: value for key, value in merged.items() if value is not None},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60, check=False, cwd=self.home)

    def end(self):
        """Ends the program as a session does, and says how it ended."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        return self.process.wait(60)

    def output(self):
        return self.desktop.log(self.name)

    # What is seen of it

    def icon(self):
        """Its icon in the tray, once it is there."""
        def find():
            if self.process.poll() is not None:
                raise AssertionError(f"tidemark has ended: {self.output()}")
            return tray.TrayItem.of(self.pid)
        return until(find, "the icon is in the tray")

    def wait_for_menu(self, text):
        until(lambda: text in self.icon().texts(), f"the menu has {text!r}")

    def nodes(self, window=None):
        return accessibility.nodes(self.pid, window)

    def find(self, name, role=None, window=None):
        return accessibility.find(self.pid, name, role, window)
