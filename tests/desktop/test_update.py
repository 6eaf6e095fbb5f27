"""An update from the alert to the new version, and everything that has to keep it from happening."""

import os
import shutil
import stat
import tempfile
import unittest

import accessibility
import private_mounts
import release
import texts
from desktop_case import DesktopCase
from installed_tidemark import InstalledTidemark
from polling import until
from release import MANIFEST, VERSION_A, VERSION_B
from update_server import Authority, UpdateServer
from x11_desktop import X11Desktop

ALERT = "Tidemark"
ARCHIVE = "/update.zip"
CERTIFICATES = "/etc/ssl/certs"
CHECK = "Check for Updates…"


class Update(DesktopCase):
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

    # The update

    def test_the_new_version_runs_with_the_settings_and_the_journal_of_the_old_one(self):
        self.tidemark.write_settings(markdownSubfolder="Meine Notizen")
        self.publish(self.archive)
        self.start()
        self.wait_for_alert(texts.new_version(VERSION_B, VERSION_A), "new-version")
        self.tidemark.write("Desktop/Screenshot.png", "kept")
        self.tidemark.wait_for_menu("Filed Screenshot.png")
        settings, journal = self.tidemark.settings(), self.tidemark.journal()

        self.click("Install")

        self.tidemark.follow_relaunch()
        self.check_that_it_is_new()
        self.assertEqual(self.server.requests[:2], [UpdateServer.FEED, ARCHIVE])
        self.assertEqual(settings["markdownSubfolder"], "Meine Notizen")
        self.assertEqual((self.tidemark.settings(), self.tidemark.journal()), (settings, journal))
        self.tidemark.wait_for_menu("Filed Screenshot.png")
        self.tidemark.icon().choose("Undo last sweep")
        until(lambda: self.tidemark.exists("Desktop/Screenshot.png"), "the new version takes the sweep back")
        self.tidemark.icon().choose(CHECK)
        self.wait_for_alert(texts.up_to_date(VERSION_B), "up-to-date")

    def test_what_the_maker_signs_and_packs_by_hand_is_installed_too(self):
        """All that is done to the archives below, but nothing wrong."""
        with release.copied(self.bundles[VERSION_B]) as bundle:
            release.edit_manifest(bundle, lambda manifest: None)
            archive = release.with_entry(release.zip_folder(os.path.dirname(bundle)), "README")
            expected = release.contents(bundle)
        self.publish(archive)
        self.start()
        self.accept()
        self.tidemark.follow_relaunch()
        self.wait_for_version(VERSION_B)
        self.assertEqual(release.contents(self.tidemark.bundle), expected)

    def test_a_sweep_that_is_running_ends_first(self):
        self.publish(self.archive)
        self.start()
        self.wait_for_alert(texts.new_version(VERSION_B, VERSION_A), "new-version")
        self.server.may_answer.clear()
        self.click("Install")
        until(lambda: ARCHIVE in self.server.requests, "the download has begun")
        names = [f"Screenshot {number}.png" for number in range(400)]
        for name in names:
            self.tidemark.write(f"Desktop/{name}", name)
        until(lambda: self.tidemark.files("Desktop/Screenshots"), "the sweep has begun")

        self.server.may_answer.set()
        until(lambda: f"qrv-update-{self.tidemark.pid}.sh" in self.tidemark.work_files(), "the new version waits")

        filed = len(self.tidemark.files("Desktop/Screenshots"))
        self.assertLess(filed, len(names), "the sweep was over too soon to see anything")
        self.tidemark.follow_relaunch()
        self.check_that_it_is_new()
        self.assertEqual(len(self.tidemark.files("Desktop/Screenshots")), len(names))
        sweeps = self.tidemark.journal()["sweeps"]
        self.assertEqual([len(sweep["entries"]) for sweep in sweeps], [len(names)])

    def test_later_leaves_everything_as_it_is(self):
        self.publish(self.archive)
        self.start()
        self.wait_for_alert(texts.new_version(VERSION_B, VERSION_A), "new-version")

        self.click("Later")

        self.desktop.wait_until_closed(ALERT)
        self.check_that_nothing_has_changed()
        self.assertEqual(self.server.requests, [UpdateServer.FEED])

    # Who has made it. All that is refused was downloaded, and looks the same to the user.

    def test_another_key_is_refused(self):
        made = self.make_release(VERSION_B, "other-key", key=release.make_key(self.place))
        self.check_refusal(release.read(os.path.join(made, "update.zip")))

    def test_another_team_identifier_is_refused(self):
        made = self.make_release(VERSION_B, "other-team", team="OTHERTEAM0")
        self.check_refusal(release.read(os.path.join(made, "update.zip")))

    def test_another_version_than_announced_is_refused(self):
        self.check_refusal(self.archive, version="1.11")

    def test_the_old_version_under_a_new_name_is_refused(self):
        archive = os.path.join(self.place, f"release-{VERSION_A}/update.zip")
        self.check_refusal(release.read(archive))

    # What is in the bundle

    def check_changed_bundle(self, change):
        with release.copied(self.bundles[VERSION_B]) as bundle:
            change(bundle)
            self.check_refusal(release.zip_folder(os.path.dirname(bundle)))

    def test_a_changed_file_is_refused(self):
        def change(bundle):
            with open(os.path.join(bundle, "bin/tidemark"), "r+b") as program:
                program.seek(-1, os.SEEK_END)
                last = program.read(1)
                program.seek(-1, os.SEEK_END)
                program.write(bytes([last[0] ^ 1]))
        self.check_changed_bundle(change)

    def test_a_changed_mode_is_refused(self):
        self.check_changed_bundle(lambda bundle: os.chmod(os.path.join(bundle, "bin/tidemarkctl"), 0o777))

    def test_a_missing_file_is_refused(self):
        self.check_changed_bundle(lambda bundle: os.remove(os.path.join(bundle, "bin/tidemarkctl")))

    def test_an_additional_file_is_refused(self):
        def change(bundle):
            with open(os.path.join(bundle, "bin/more"), "w", encoding="ascii") as file:
                file.write("#!/bin/sh\n")
        self.check_changed_bundle(change)

    def test_an_additional_link_is_refused(self):
        self.check_changed_bundle(lambda bundle: os.symlink("../bin", os.path.join(bundle, "share/more")))

    def test_a_link_that_leads_out_is_refused(self):
        self.check_changed_bundle(lambda bundle: os.symlink("../../../..", os.path.join(bundle, "share/out")))

    def test_a_torn_manifest_is_refused(self):
        self.check_changed_bundle(self.tear_manifest)

    def test_a_torn_manifest_is_refused_also_if_it_is_signed(self):
        def change(bundle):
            self.tear_manifest(bundle)
            release.sign(bundle)
        self.check_changed_bundle(change)

    @staticmethod
    def tear_manifest(bundle):
        manifest = os.path.join(bundle, MANIFEST)
        os.truncate(manifest, os.path.getsize(manifest) // 2)

    def test_a_manifest_that_names_what_lies_outside_is_refused(self):
        def name_outside(manifest):
            manifest["files"][0]["path"] = "../outside"
        self.check_changed_bundle(lambda bundle: release.edit_manifest(bundle, name_outside))

    # What is in the archive

    def test_an_archive_without_a_bundle_at_its_top_level_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copytree(self.bundles[VERSION_B], os.path.join(folder, "release/Tidemark.app"), symlinks=True)
            self.check_refusal(release.zip_folder(folder))

    def test_an_archive_that_leads_out_of_its_folder_is_refused(self):
        self.check_refusal(release.with_entry(self.archive, "../planted"))
        self.assertFalse(self.was_planted())

    def test_an_archive_with_an_absolute_path_is_refused(self):
        self.check_refusal(release.with_entry(self.archive, self.tidemark.path("planted")))
        self.assertFalse(self.was_planted())

    def test_an_archive_that_writes_through_a_link_is_refused(self):
        link = release.with_entry(
            self.archive, "out", content=self.tidemark.home.encode(), mode=stat.S_IFLNK | 0o777)
        self.check_refusal(release.with_entry(link, "out/planted"))
        self.assertFalse(self.was_planted())

    def was_planted(self):
        """Anywhere below the session's folder, which holds the homes and the temporary directory."""
        return any("planted" in files for _, _, files in os.walk(self.desktop.folder))

    def test_an_archive_that_is_cut_off_is_refused(self):
        self.check_refusal(self.archive[:len(self.archive) // 2])

    # What the server does

    def test_an_archive_that_is_not_there_fails(self):
        self.publish(self.archive)
        self.server.answer(ARCHIVE, self.archive, status=404)
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(self.server.requests, [UpdateServer.FEED, ARCHIVE])

    def test_an_archive_that_moved_to_http_fails(self):
        plain = self.start_server(None)
        plain.answer(ARCHIVE, self.archive)
        self.publish(self.archive)
        self.server.answer(ARCHIVE, b"", status=302, Location=plain.url(ARCHIVE))
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(plain.requests, [])

    def test_an_archive_on_a_server_that_is_not_trusted_fails(self):
        os.makedirs(self.tidemark.path("stranger"))
        stranger = self.start_server(Authority(self.tidemark.path("stranger")))
        stranger.answer(ARCHIVE, self.archive)
        self.server.announce(VERSION_B, stranger.url(ARCHIVE))
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(stranger.requests, [])

    def test_a_feed_on_a_server_that_is_not_trusted_is_not_believed(self):
        self.publish(self.archive)
        os.makedirs(self.tidemark.path("stranger"))
        self.start(trusted=Authority(self.tidemark.path("stranger")).folder)
        self.check_that_nothing_is_found()
        self.assertEqual(self.server.requests, [])

    def test_a_feed_that_leads_to_http_announces_nothing(self):
        plain = self.start_server(None)
        plain.answer(ARCHIVE, self.archive)
        self.server.announce(VERSION_B, plain.url(ARCHIVE))
        self.start()
        self.check_that_nothing_is_found()
        self.assertEqual(self.server.requests, [UpdateServer.FEED] * 2)

    def test_a_server_that_is_not_there_announces_nothing(self):
        self.publish(self.archive)
        self.server.end()
        self.start()
        self.check_that_nothing_is_found()

    # Where it is installed

    def check_read_only_location(self, **start):
        self.publish(self.archive)
        self.start(**start)
        self.accept()
        self.wait_for_alert(texts.READ_ONLY_LOCATION, "read-only-location")
        self.close_alert()
        self.check_that_nothing_has_changed()
        self.assertEqual(self.server.requests, [UpdateServer.FEED])

    def test_a_folder_that_cannot_be_written_to_is_told_of(self):
        folder = os.path.dirname(self.tidemark.bundle)
        os.chmod(folder, 0o555)
        self.addCleanup(os.chmod, folder, 0o755)
        # Modes do not bind the superuser while it has this right.
        command = ["setpriv", "--bounding-set=-dac_override"] if os.geteuid() == 0 else []
        self.check_read_only_location(command=command)

    def test_a_read_only_disk_is_told_of(self):
        self.check_read_only_location(mounts=[(None, os.path.dirname(self.tidemark.bundle))])

    # The temporary directory

    def test_a_temporary_directory_that_somebody_else_prepared_is_not_used(self):
        prepared, victim = self.tidemark.path("prepared"), self.tidemark.path("victim")
        os.makedirs(victim)
        os.makedirs(prepared)
        os.symlink(victim, os.path.join(prepared, f"tidemark-{os.geteuid()}"))
        self.publish(self.archive)
        # The only other place is taken away.
        self.start(mounts=[(self.desktop.folder, self.desktop.folder), (None, "/tmp")],
                   TMPDIR=prepared, XDG_RUNTIME_DIR=prepared)
        self.accept()
        self.wait_for_failure()
        self.assertEqual(os.listdir(victim), [])
        self.assertEqual(self.server.requests, [UpdateServer.FEED])


if __name__ == "__main__":
    unittest.main()
