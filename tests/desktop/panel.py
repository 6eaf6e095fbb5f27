"""The XFCE panel as a person uses it: with the eyes on the screen, and the hand on the mouse.

The tray is a window of its own in the panel, and so is the open menu. What stands in them is in no accessibility tree; so
places are found by the sizes of these windows.
"""

from polling import NotInTime, PATIENCE, until

_TRAY = "wrapper-2.0"  # the program that XFCE runs a panel's plugins in


class Panel:
    def __init__(self, desktop):
        self._desktop = desktop

    def _windows(self):
        return [self._desktop.geometry(window) for window in self._desktop.windows_of(_TRAY)]

    def icon_place(self):
        """The middle of the tray, once there is an icon in it, the only one."""
        def look():
            found = [window for window in self._windows() if 16 < window[2] < 60 and window[3] < 60]
            return found[0] if found else None
        x, y, width, height = until(look, "an icon is in the tray")
        return x + width // 2, y + height // 2

    def click_icon(self, button):
        self._desktop.click(*self.icon_place(), button)

    def _menu_window(self):
        found = [window for window in self._windows() if window[2] > 100 and window[3] > 100]
        return found[0] if found else None

    def wait_for_menu(self):
        """Of a right click. A panel that is still placing its icons lets a click pass; that one is made again."""
        try:
            return until(self._menu_window, "the panel's menu is open", 10)
        except NotInTime:
            self.click_icon(3)
            return until(self._menu_window, "the panel's menu is open")

    def wait_until_closed(self, seconds=PATIENCE):
        until(lambda: self._menu_window() is None, "the panel's menu is closed", seconds)

    def press_until_closed(self, *keys):
        """Presses keys of which the last closes the menu. Those that come before it has the keyboard reach nobody."""
        self._desktop.press(*keys)
        try:
            self.wait_until_closed(10)
        except NotInTime:
            self._desktop.press(*keys)
            self.wait_until_closed()

    def click(self, texts, text):
        """Clicks an item of the open menu, which has these texts, "-" for a separator.

        A menu that has only just come may let a click pass; it stays open then, and the click is made again.
        """
        self.wait_for_menu()
        self._click_item(texts, text)
        try:
            self.wait_until_closed(10)
        except NotInTime:
            self._click_item(texts, text)
            self.wait_until_closed()

    def _click_item(self, texts, text):
        place = self._menu_window()
        if place is None:
            return
        x, y, width, height = place
        # Separators are thin lines; everything else is of one height.
        heights = [0.05 if each == "-" else 1 for each in texts]
        row = texts.index(text)
        middle = (sum(heights[:row]) + heights[row] / 2) / sum(heights)
        self._desktop.click(x + width // 3, y + round(height * middle))

    def choose(self, item, text):
        """Right click on the icon, left click on the item of that text."""
        self.click_icon(3)
        self.wait_for_menu()
        self.click(item.texts(), text)
