"""More than one process for the same folders: who waits, and who gives way."""

import fcntl
import os
import signal
import unittest

import accessibility
import tray
from desktop_case import DesktopCase
from polling import until
from x11_desktop import X11Desktop

SETTINGS = "Tidemark Settings"
MESSAGE = "Tidemark"  # the title of what is told
WAITS = "Tidemark starts as soon as a tidemarkctl command has finished that is at work on your folders."
REPLACED = "another Tidemark has taken over, since the lock of this one was removed"


class Processes(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(size=(1024, 768))

    def setUp(self):
        super().setUp()
        self.tidemark.write_settings()

    # A command is at work

    def hold_lock(self):
        """As a command does that is at work. Returns what gives the lock back."""
        file = open(os.path.join(self.tidemark.support, "lock"), "a", encoding="utf-8")
        self.addCleanup(file.close)
        fcntl.flock(file, fcntl.LOCK_EX)
        return file.close

    def start_waiting(self):
        self.tidemark.start()
        self.desktop.wait_for_window(MESSAGE)
        self.tidemark.find(WAITS)
        self.photograph("waits")

    def test_a_start_goes_on_when_the_command_is_done(self):
        give_back = self.hold_lock()
        self.start_waiting()

        give_back()

        self.tidemark.icon()
        self.assertEqual(self.desktop.windows_of("tidemark"), [])

    def check_that_it_ends_without_another_word(self):
        self.assertEqual(self.tidemark.process.wait(20), 1)
        self.assertEqual(self.tidemark.output().count("\n"), 1, self.tidemark.output())

    def test_a_start_that_waits_can_be_given_up(self):
        self.hold_lock()
        self.start_waiting()

        self.desktop.click(*self.tidemark.find("Cancel").centre())

        self.check_that_it_ends_without_another_word()

    def test_a_start_that_waits_is_given_up_by_closing_the_message(self):
        self.hold_lock()
        self.start_waiting()

        self.desktop.press("Escape")

        self.check_that_it_ends_without_another_word()

    def test_a_start_that_waits_follows_a_signal(self):
        self.hold_lock()
        self.start_waiting()

        self.tidemark.process.terminate()

        self.check_that_it_ends_without_another_word()

    # The lock is removed by hand

    def start_another_without_the_lock(self):
        """Returns the process that had the lock; it learns later what has happened."""
        first = self.tidemark.process
        first.send_signal(signal.SIGSTOP)
        try:
            os.remove(os.path.join(self.tidemark.support, "lock"))
            self.tidemark.start()
            self.tidemark.icon()
        finally:
            first.send_signal(signal.SIGCONT)
        return first

    def test_who_was_replaced_says_so_and_ends(self):
        self.tidemark.start()
        self.tidemark.icon()

        first = self.start_another_without_the_lock()

        accessibility.find(first.pid, REPLACED)
        self.desktop.wait_for_window(MESSAGE)
        self.photograph("replaced")
        self.assertIsNone(tray.TrayItem.of(first.pid))
        self.desktop.press("Return")
        self.assertEqual(first.wait(20), 1)
        self.check_that_the_other_works()

    def check_that_the_other_works(self):
        self.tidemark.write("Desktop/Screenshot.png", "x")
        self.tidemark.wait_for_menu("Filed Screenshot.png")
        self.tidemark.run()
        self.desktop.wait_for_window(SETTINGS)

    def test_replaced_in_a_sweep_it_leaves_its_files_whole(self):
        self.tidemark.start()
        self.tidemark.icon()
        names = [f"Screenshot {number}.png" for number in range(300)]
        for name in names:
            self.tidemark.write(f"Desktop/{name}", name)
        until(lambda: self.tidemark.files("Desktop/Screenshots"), "the sweep has begun")

        first = self.start_another_without_the_lock()

        accessibility.find(first.pid, REPLACED)
        self.desktop.wait_for_window(MESSAGE)
        self.desktop.press("Return")
        self.assertEqual(first.wait(20), 1)
        until(lambda: len(self.tidemark.files("Desktop/Screenshots")) == len(names), "all are filed")
        found = []
        for name in self.tidemark.files("Desktop"):
            with open(self.tidemark.path(f"Desktop/{name}"), encoding="utf-8") as file:
                found.append(file.read())
        self.assertEqual(sorted(found), sorted(names))
        told = {entry["to"] for sweep in self.tidemark.journal()["sweeps"] for entry in sweep["entries"]}
        self.assertEqual(told, {self.tidemark.path(f"Desktop/Screenshots/{name}")
                                for name in self.tidemark.files("Desktop/Screenshots")})


if __name__ == "__main__":
    unittest.main()
