"""What the tests of an update have in common: a maker who publishes, and a user who sees what comes of it."""

import os
import unittest

import accessibility
import private_mounts
import release
import texts
from desktop_case import DesktopCase
from installed_tidemark import InstalledTidemark
from polling import until
from release import VERSION_A, VERSION_B
from update_server import Authority, UpdateServer
from x11_desktop import X11Desktop

ALERT = "Tidemark"
ARCHIVE = "/update.zip"
CERTIFICATES = "/etc/ssl/certs"
CHECK = "Check for Updates…"


class UpdateCase(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(size=(1024, 768))

    @classmethod
    def setUpClass(cls):
        if not private_mounts.are_possible():
            raise unittest.SkipTest("no mounts of one's own, with which a test authority would be trusted")
        super().setUpClass()
        cls.place = cls.desktop.path("maker")
        os.makedirs(cls.place)
        cls.authority = Authority(cls.place)
        cls.bundles = {}
        for version in (VERSION_A, VERSION_B):
            release.make_tree(os.path.join(cls.place, f"tree-{version}"), version)
            cls.bundles[version] = os.path.join(cls.make_release(version), "Tidemark.app")
        cls.archive = release.read(os.path.join(cls.place, f"release-{VERSION_B}/update.zip"))

    @classmethod
    def make_release(cls, version, name="release", **maker):
        output = os.path.join(cls.place, f"{name}-{version}")
        release.make_bundle(os.path.join(cls.place, f"tree-{version}"), output, **maker)
        return output

    def setUp(self):
        super().setUp()
        self.server = self.start_server(self.authority)
        self.tidemark.write_settings()

    def start_server(self, authority):
        server = UpdateServer(authority)
        self.addCleanup(server.end)
        return server

    def make_tidemark(self):
        made = InstalledTidemark(
            self.desktop, f"{self._testMethodName}-{len(self._tidemarks)}", self.bundles[VERSION_A])
        self._tidemarks.append(made)
        return made

    # What a user does and sees

    def publish(self, archive, version=VERSION_B):
        self.server.answer(ARCHIVE, archive)
        self.server.announce(version, self.server.url(ARCHIVE))

    def start(self, mounts=(), trusted=None, command=(), **environment):
        mounts = [(trusted or self.authority.folder, CERTIFICATES), *mounts]
        self.tidemark.launcher = [*private_mounts.launcher(mounts), *command]
        feed = self.server.url(UpdateServer.FEED)
        self.tidemark.start(environment={"TIDEMARK_TEST_FEED": feed} | environment)

    def wait_for_alert(self, expected, photo):
        """All that is written in the alert that is up, as a screen reader reads it."""
        self.desktop.wait_for_window(ALERT)
        until(lambda: sorted(self.shown()) == sorted(expected), f"the alert reads {expected}")
        self.photograph(photo)

    def shown(self):
        return accessibility.texts(self.tidemark.nodes(ALERT))

    def click(self, button):
        self.desktop.click(*self.tidemark.find(button, "push button", ALERT).centre())

    def accept(self, version=VERSION_B):
        self.wait_for_alert(texts.new_version(version, VERSION_A), "new-version")
        self.click("Install")

    def close_alert(self):
        self.click("OK")
        self.desktop.wait_until_closed(ALERT)

    def wait_for_version(self, version):
        until(lambda: any(f" {version} " in text for text in self.tidemark.icon().texts()),
              f"the menu tells version {version}")

    # What has to be so in the end

    def check_that_nothing_has_changed(self):
        """It runs as before, of the bundle that was installed."""
        self.assertEqual(release.snapshot(self.tidemark.bundle), self.tidemark.original)
        self.assertEqual(os.listdir(os.path.dirname(self.tidemark.bundle)), ["Tidemark.app"])
        self.assertEqual(self.tidemark.work_files(), [])
        self.wait_for_version(VERSION_A)
        self.assertEqual(self.desktop.processes(self.tidemark.program), [self.tidemark.pid])

    def check_refusal(self, archive, version=VERSION_B):
        """The update is offered and downloaded, and fails."""
        self.publish(archive, version)
        self.start()
        self.accept(version)
        self.wait_for_failure()
        self.assertEqual(self.server.requests, [UpdateServer.FEED, ARCHIVE])

    def check_refusals(self, archives):
        """The same of one archive after the other, which have names."""
        self.start()
        until(lambda: self.server.requests, "there was nothing new at first")
        for name, archive in archives:
            with self.subTest(name):
                self.server.requests.clear()
                self.publish(archive)
                self.tidemark.icon().choose(CHECK)
                self.accept()
                self.wait_for_failure()
                self.assertEqual(self.server.requests, [UpdateServer.FEED, ARCHIVE])

    def wait_for_failure(self):
        self.wait_for_alert(texts.UPDATE_FAILED, "update-failed")
        self.close_alert()
        self.check_that_nothing_has_changed()

    def check_that_nothing_is_found(self):
        """Silence at the start, and an answer to who asks."""
        icon = self.tidemark.icon()
        icon.choose(CHECK)
        self.wait_for_alert(texts.up_to_date(VERSION_A), "up-to-date")
        self.close_alert()
        self.check_that_nothing_has_changed()

    def check_that_it_is_new(self):
        expected = release.contents(self.bundles[VERSION_B])
        self.assertEqual(release.contents(self.tidemark.bundle), expected)
        self.assertEqual(os.listdir(os.path.dirname(self.tidemark.bundle)), ["Tidemark.app"])
        until(lambda: self.tidemark.work_files() == [], "nothing is left of the update")
        self.wait_for_version(VERSION_B)
