"""What the desktop tests have in common: one desktop per file, one home folder per test."""

import os
import unittest

from tidemark import Tidemark

PHOTOS = os.environ.get("DESKTOP_PHOTOS", "desktop-photos")


class DesktopCase(unittest.TestCase):
    """Starts the desktop that `make_desktop` makes before the first test, and ends it after the last.

    A test that fails leaves a photograph of what was to be seen then, and tells what the program has written.
    """

    desktop = None

    @classmethod
    def make_desktop(cls):
        raise NotImplementedError

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.make_desktop()
        cls.addClassCleanup(cls.desktop.end)
        import accessibility

        accessibility.connect()

    def run(self, result=None):
        self._result = result
        return super().run(result)

    def _has_failed(self):
        return any(getattr(test, "test_case", test) is self for test, _ in self._result.failures + self._result.errors)

    def setUp(self):
        self._photos = 0
        self._tidemarks = []
        self.addCleanup(self._end_programs)
        self.addCleanup(self._document_failure)
        self.tidemark = self.make_tidemark()

    def make_tidemark(self):
        """A home folder, from which nothing is started yet."""
        made = Tidemark(self.desktop, f"{self._testMethodName}-{len(self._tidemarks)}")
        self._tidemarks.append(made)
        return made

    def photograph(self, what):
        """Keeps a picture of the screen with the build."""
        self._photos += 1
        folder = os.path.join(PHOTOS, type(self).__name__)
        os.makedirs(folder, exist_ok=True)
        file = os.path.join(folder, f"{self._testMethodName}-{self._photos}-{what}.png")
        self.desktop.photograph(os.path.abspath(file))
        return file

    def _document_failure(self):
        if not self._has_failed():
            return
        try:
            self.photograph("failed")
        except Exception as error:  # the desktop itself may have gone
            print(f"no photograph: {error}")
        for each in self._tidemarks:
            print(f"--- what {each.name} has written:\n{each.output()}")

    def _end_programs(self):
        for each in self._tidemarks:
            for process in each.processes:
                if process.poll() is None:
                    process.terminate()
                    self.assertEqual(process.wait(60), 0, f"ended by SIGTERM: {each.output()}")
            self.assertNotIn("Sanitizer", each.output())
            self.assertNotIn("runtime error", each.output())
