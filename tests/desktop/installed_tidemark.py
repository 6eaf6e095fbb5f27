"""The program in a bundle in its user's home, from where it replaces itself."""

import os
import select
import shutil

from polling import until
from release import snapshot
from tidemark import Tidemark


class RelaunchedProcess:
    """A process that somebody else has started. How it ended is known to its parent only."""

    def __init__(self, pid):
        self.pid = pid
        self._handle = os.pidfd_open(pid)

    def _has_ended(self, seconds):
        return bool(select.select([self._handle], [], [], seconds)[0])

    def poll(self):
        return 0 if self._has_ended(0) else None

    def send_signal(self, number):
        os.kill(self.pid, number)

    def terminate(self):
        os.kill(self.pid, 15)

    def wait(self, seconds):
        if not self._has_ended(seconds):
            raise AssertionError(f"process {self.pid} has not ended within {seconds} s")
        return 0


class InstalledTidemark(Tidemark):
    """Trusts the servers of `trusted`, a folder of certificates, and no others."""

    def __init__(self, desktop, name, bundle):
        super().__init__(desktop, name)
        self.bundle = self.path("Applications/Tidemark.app")
        shutil.copytree(bundle, self.bundle, symlinks=True)
        self.program = os.path.join(self.bundle, "bin/tidemark")
        self.original = snapshot(self.bundle)
        # The new version writes to nowhere else.
        self.reports = desktop.path(f"log/{name}-report")
        for tool in ("ASAN_OPTIONS", "UBSAN_OPTIONS"):
            self.environment[tool] += f":log_path={self.reports}"

    def output(self):
        folder, name = os.path.split(self.reports)
        reports = [each for each in os.listdir(folder) if each.startswith(name)]
        return "".join([super().output(), *map(self.desktop.log, reports)])

    def work_files(self):
        """What an update keeps while it is under way, on the disks that the program sees."""
        temporary = self.desktop.environment["TMPDIR"]
        folder = f"/proc/{self.pid}/root{temporary}/tidemark-{os.geteuid()}"
        names = os.listdir(folder) if os.path.isdir(folder) else []
        return [name for name in names if name.startswith("qrv-update-")]

    def follow_relaunch(self):
        """Waits until the program has ended well and runs again, which is what this is of from then on."""
        before = self.process
        status = before.wait(60)
        if status != 0:
            raise AssertionError(f"tidemark has ended with {status}: {self.output()}")

        def find():
            found = self.desktop.processes(self.program)
            return RelaunchedProcess(found[0]) if len(found) == 1 else None
        self.processes.append(until(find, "it runs again"))
        self.icon()
