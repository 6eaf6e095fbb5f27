"""An update from the alert to the new version, and everything that has to keep it from happening."""

import os
import shutil
import stat
import tempfile
import unittest

import release
import texts
from polling import until
from release import MANIFEST, VERSION_A, VERSION_B
from update_case import ALERT, ARCHIVE, CHECK, UpdateCase
from update_server import UpdateServer


class Update(UpdateCase):
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

    def check_that_it_is_installed_once(self, begin):
        """While a panel's menu, which may be an old one, and the user try to begin it again."""
        self.publish(self.archive)
        self.start()
        self.wait_for_alert(texts.new_version(VERSION_B, VERSION_A), "new-version")
        self.server.may_answer.clear()

        begin()

        until(lambda: ARCHIVE in self.server.requests, "the download has begun")
        icon = self.tidemark.icon()
        until(lambda: icon.find("Installing update…"), "the menu tells of it")
        for text in ("Installing update…", CHECK):
            self.assertFalse(icon.find(text).is_enabled, text)
            icon.click(icon.find(text))
        self.assertEqual(self.desktop.windows(ALERT), [])
        self.server.may_answer.set()
        self.tidemark.follow_relaunch()
        self.check_that_it_is_new()
        self.assertEqual(self.server.requests[:2], [UpdateServer.FEED, ARCHIVE])
        self.assertEqual(self.server.requests.count(ARCHIVE), 1)

    def test_an_update_that_is_accepted_twice_is_installed_once(self):
        def click_twice():
            place = self.tidemark.find("Install", "push button", ALERT).centre()
            self.desktop.click(*place)
            self.desktop.click(*place)
        self.check_that_it_is_installed_once(click_twice)

    def test_an_update_that_is_chosen_in_the_menu_is_not_offered_any_more(self):
        self.check_that_it_is_installed_once(lambda: self.tidemark.icon().choose(f"Update to {VERSION_B}"))

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

    def test_a_manifest_that_is_huge_is_refused_also_if_it_is_signed(self):
        largest = 4 << 20
        self.check_changed_bundle(lambda bundle: release.edit_manifest(
            bundle, lambda manifest: manifest.update(more=" " * largest)))

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

    def test_an_archive_with_what_is_no_file_is_refused(self):
        # What says that it is a pipe is taken for a file, also when it is unpacked.
        kinds = {"a socket": stat.S_IFSOCK, "a device": stat.S_IFCHR, "a disk": stat.S_IFBLK}
        self.check_refusals(
            (name, release.with_entry(self.archive, "special", content=b"", mode=kind | 0o644))
            for name, kind in kinds.items())

    def test_an_archive_that_is_small_until_it_is_unpacked_is_refused(self):
        largest = 1 << 30
        archive = release.with_zeros(self.archive, "zeros", largest)
        self.assertLess(len(archive), len(self.archive) + largest // 500)
        self.check_refusal(archive)

    def test_an_archive_that_is_cut_off_is_refused(self):
        self.check_refusal(self.archive[:len(self.archive) // 2])

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

    def test_a_place_that_a_package_manager_keeps_is_told_of(self):
        managed = "/usr/games"  # any folder that is there
        self.tidemark.program = os.path.join(managed, "Tidemark.app/bin/tidemark")
        self.check_read_only_location(mounts=[(os.path.dirname(self.tidemark.bundle), managed)])

    def test_a_folder_that_is_no_bundle_is_told_of(self):
        """Such as that of a build."""
        tree = os.path.join(self.place, f"tree-{VERSION_A}")
        before = release.snapshot(tree)
        self.tidemark.program = os.path.join(tree, "bin/tidemark")
        self.check_read_only_location()
        self.assertEqual(release.snapshot(tree), before)

    # The temporary directory

    def check_full_disk(self, size):
        self.publish(self.archive)
        self.start(mounts=[(size, self.desktop.environment["TMPDIR"])])
        self.accept()
        self.wait_for_failure()
        self.assertEqual(self.server.requests, [UpdateServer.FEED, ARCHIVE])

    def test_a_disk_that_is_full_before_everything_is_downloaded_fails(self):
        self.check_full_disk(len(self.archive) // 2)

    def test_a_disk_that_is_full_before_everything_is_unpacked_fails(self):
        unpacked = sum(os.path.getsize(os.path.join(parent, name))
                       for parent, _, names in os.walk(self.bundles[VERSION_B]) for name in names)
        self.check_full_disk(len(self.archive) + unpacked // 2)

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
