"""Activated by the session bus while another process already serves the folders."""

import os
import shlex
import signal
import unittest

import dbus

import accessibility
import tray
from desktop_case import DesktopCase
from polling import NotInTime, until
from tidemark import CONTROL
from x11_desktop import X11Desktop

BUS_NAME = "io.tidemark.Tidemark"
APPLICATION = "org.freedesktop.Application"
SETTINGS = "Tidemark Settings"
MESSAGE = "Tidemark"  # the title of what is told
WATCH_RUNS = 'Tidemark is running already as "tidemarkctl watch", which has no windows'


class Activation(DesktopCase):
    @classmethod
    def make_desktop(cls):
        return X11Desktop(size=(1024, 768))

    def setUp(self):
        super().setUp()
        self.tidemark.write_settings()
        self.make_activatable()

    def make_activatable(self):
        """Has the session bus start the program when somebody asks for its name, as if it were installed."""
        settings = " ".join(f"{name}={shlex.quote(value)}" for name, value in self.tidemark.environment.items())
        log = self.desktop.path(f"log/{self.tidemark.name}")
        self.tidemark.write("activate", f"exec env {settings} {shlex.quote(self.tidemark.program)} --service"
                                        f" >>{shlex.quote(log)} 2>&1\n")
        service = os.path.join(
            self.desktop.environment["XDG_DATA_HOME"], "dbus-1/services", f"{BUS_NAME}.service")
        os.makedirs(os.path.dirname(service), exist_ok=True)
        with open(service, "w", encoding="utf-8") as file:
            file.write(f"[D-BUS Service]\nName={BUS_NAME}\nExec=/bin/sh {self.tidemark.path('activate')}\n")
        self.addCleanup(os.remove, service)
        self.addCleanup(self.end_activated)
        self.daemon().ReloadConfig(dbus_interface="org.freedesktop.DBus")
        until(lambda: BUS_NAME in self.daemon().ListActivatableNames(dbus_interface="org.freedesktop.DBus"),
              "the bus can start it")

    @staticmethod
    def daemon():
        return dbus.SessionBus().get_object("org.freedesktop.DBus", "/org/freedesktop/DBus", introspect=False)

    def end_activated(self):
        for pid in self.activated():
            os.kill(pid, signal.SIGTERM)
        self.wait_until_activated_has_ended()

    def activated(self):
        """The processes that the bus has started."""
        own = [process.pid for process in self.tidemark.processes]
        return [pid for pid in self.desktop.processes(self.tidemark.program) if pid not in own]

    def wait_until_activated_has_ended(self):
        until(lambda: not self.activated(), "what the bus has started has ended")

    @staticmethod
    def call(method, *arguments):
        """What a desktop calls when the launcher of the application is clicked."""
        application = dbus.SessionBus().get_object(BUS_NAME, "/io/tidemark/Tidemark", introspect=False)
        application.get_dbus_method(method, APPLICATION)(
            *arguments, dbus.Dictionary({}, signature="sv"), timeout=20)

    def activate(self):
        self.call("Activate")

    def perform(self, action):
        self.call("ActivateAction", action, dbus.Array([], signature="v"))

    def serves(self):
        return os.path.exists(os.path.join(self.tidemark.support, "socket"))

    def start_watch(self):
        watch = self.desktop.start("watch", [CONTROL, "watch"], self.tidemark.environment)
        self.addCleanup(self.end_watch, watch)
        until(self.serves, f"it watches: {self.desktop.log('watch')}")
        return watch

    def end_watch(self, watch):
        watch.terminate()
        self.assertEqual(watch.wait(60), 0, self.desktop.log("watch"))

    def start_without_bus(self):
        self.tidemark.start(environment={
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
            "AT_SPI_BUS_ADDRESS": self.desktop.accessibility_address})
        until(lambda: self.desktop.windows_of("tidemark"), "the icon is embedded")

    def test_the_bus_starts_the_application(self):
        self.activate()

        self.desktop.wait_for_window(SETTINGS)
        pid, = self.activated()
        until(lambda: tray.TrayItem.of(pid), "the icon is in the tray")

    def test_actions_reach_the_watch_command(self):
        watch = self.start_watch()

        self.check_all_actions()

        self.wait_until_activated_has_ended()
        self.assertIsNone(watch.poll())

    def test_actions_reach_an_application_that_is_not_on_the_bus(self):
        self.start_without_bus()

        self.check_all_actions()

        self.wait_until_activated_has_ended()
        self.assertIsNone(self.tidemark.process.poll())

    def check_all_actions(self):
        self.perform("pause-or-resume")
        self.tidemark.wait_for_setting("isPaused", True)
        self.tidemark.write("Desktop/Screenshot.png", "x")
        self.perform("pause-or-resume")
        self.tidemark.wait_for_setting("isPaused", False)
        self.perform("sweep-now")
        until(lambda: len(self.tidemark.files("Desktop/Screenshots")) == 1, "it is filed")
        self.perform("undo-last-sweep")
        until(lambda: self.tidemark.files("Desktop") == ["Screenshot.png"], "it is back")
        self.tidemark.wait_for_setting("isPaused", True)

    def test_an_application_that_is_not_on_the_bus_comes_to_the_front(self):
        self.start_without_bus()

        self.activate()

        self.wait_until_activated_has_ended()
        self.desktop.wait_for_window(SETTINGS)

    def test_the_watch_command_has_no_window_and_that_is_told(self):
        self.start_watch()

        self.activate()

        self.wait_for_message(WATCH_RUNS)
        self.wait_until_activated_has_ended()
        self.assertEqual(self.tidemark.output(), f"tidemark: {WATCH_RUNS}\n")

    def test_a_message_stays_while_something_else_is_passed_on(self):
        self.start_watch()
        self.activate()
        pid, = self.activated()
        accessibility.find(pid, WATCH_RUNS)

        self.perform("pause-or-resume")
        self.tidemark.wait_for_setting("isPaused", True)

        # Longer than it stays when nobody asks it for anything.
        with self.assertRaises(NotInTime):
            until(lambda: not self.activated(), "it has ended", 5)
        self.desktop.press("Return")
        self.wait_until_activated_has_ended()

    def wait_for_message(self, part):
        """Reads and closes what is told, of which `part` is known."""
        self.desktop.wait_for_window(MESSAGE)
        pid, = self.activated()
        until(lambda: [node for node in accessibility.nodes(pid) if part in node.name], f"{part!r} is told")
        self.photograph("told")
        self.desktop.press("Return")
        self.desktop.wait_until_closed(MESSAGE)

    def test_a_sweep_that_fails_is_told(self):
        gone = self.tidemark.path("Gone")
        self.tidemark.write_settings(folders=[{"path": gone}])
        self.start_watch()

        self.perform("sweep-now")

        self.wait_for_message(f"cannot list {gone}")

    def test_files_that_cannot_be_moved_are_told(self):
        self.start_watch()
        # A file where the folder for screenshots would be.
        self.tidemark.write("Desktop/Screenshots")
        self.tidemark.write("Downloads/Screenshot.png", "x")

        self.perform("sweep-now")

        self.wait_for_message("1 file")
        self.assertEqual(self.tidemark.files("Downloads"), ["Screenshot.png"])

    def test_an_undo_that_fails_is_told(self):
        self.start_watch()
        self.tidemark.write("Downloads/Screenshot.png", "x")
        until(lambda: len(self.tidemark.files("Desktop/Screenshots")) == 1, "it is filed")
        os.rmdir(self.tidemark.path("Downloads"))
        self.tidemark.write("Downloads")

        self.perform("undo-last-sweep")

        self.wait_for_message(self.tidemark.path("Downloads"))
        self.assertEqual(len(self.tidemark.files("Desktop/Screenshots")), 1)


if __name__ == "__main__":
    unittest.main()
