"""The tray as programs see it: StatusNotifierItem (freedesktop.org) and the menu that goes with it over D-Bus
(com.canonical.dbusmenu)."""

import time
from dataclasses import dataclass

import dbus

from polling import until

_PROPERTIES = "org.freedesktop.DBus.Properties"
_WATCHER = "org.kde.StatusNotifierWatcher"
_ITEM = "org.kde.StatusNotifierItem"
_MENU = "com.canonical.dbusmenu"


def _bus():
    return dbus.SessionBus()


def _watcher_property(name):
    # A watcher that is not there must not be started by asking for it.
    if not _bus().name_has_owner(_WATCHER):
        return None
    watcher = _bus().get_object(_WATCHER, "/StatusNotifierWatcher", introspect=False)
    return watcher.Get(_WATCHER, name, dbus_interface=_PROPERTIES)


def has_host():
    return bool(_watcher_property("IsStatusNotifierHostRegistered"))


def _places():
    """Bus name and path of every item that is registered."""
    for item in _watcher_property("RegisteredStatusNotifierItems") or []:
        name, slash, path = str(item).partition("/")
        yield name, (slash + path) if slash else "/StatusNotifierItem"


@dataclass(frozen=True)
class MenuItem:
    id: int
    label: str  # as sent, in which "_" marks a mnemonic
    is_separator: bool
    is_enabled: bool
    is_visible: bool
    shortcut: str

    @property
    def text(self):
        """The label as the interface defines it to be read: "__" is an underscore, a single one is none."""
        return self.label.replace("__", "\0").replace("_", "").replace("\0", "_")


class TrayItem:
    """The icon of one process."""

    def __init__(self, name, path):
        self._item = _bus().get_object(name, path, introspect=False)
        self._name = name

    @staticmethod
    def of(pid):
        """The item of the process, or None."""
        for name, path in _places():
            daemon = _bus().get_object("org.freedesktop.DBus", "/", introspect=False)
            owner = daemon.GetConnectionUnixProcessID(name, dbus_interface="org.freedesktop.DBus")
            if int(owner) == pid:
                return TrayItem(name, path)
        return None

    def property(self, name):
        return self._item.Get(_ITEM, name, dbus_interface=_PROPERTIES)

    def icon(self):
        """What can tell two icons apart: name and pixels of all sizes."""
        return (str(self.property("IconName")),
                tuple((int(w), int(h), bytes(data)) for w, h, data in self.property("IconPixmap")))

    def tool_tip(self):
        return str(self.property("ToolTip")[2])

    def activate(self):
        """What a panel calls when it is clicked."""
        self._item.Activate(0, 0, dbus_interface=_ITEM)

    def menu_place(self):
        """Bus name and path of the menu."""
        return self._name, str(self.property("Menu"))

    def _menu(self):
        return dbus.Interface(_bus().get_object(*self.menu_place(), introspect=False), _MENU)

    def menu(self):
        """The items of the menu from top to bottom."""
        menu = self._menu()
        menu.AboutToShow(0)
        _, (_, _, children) = menu.GetLayout(0, -1, dbus.Array([], signature="s"))
        return [self._menu_item(*child[:2]) for child in children]

    @staticmethod
    def _menu_item(number, properties):
        shortcut = "+".join("+".join(map(str, keys)) for keys in properties.get("shortcut", []))
        return MenuItem(
            id=int(number), label=str(properties.get("label", "")),
            is_separator=properties.get("type", "standard") == "separator",
            is_enabled=bool(properties.get("enabled", True)),
            is_visible=bool(properties.get("visible", True)), shortcut=shortcut)

    def texts(self):
        """What the menu reads, with "-" for a separator."""
        return ["-" if item.is_separator else item.text for item in self.menu() if item.is_visible]

    def find(self, text):
        found = [item for item in self.menu() if item.text == text and item.is_visible]
        return found[0] if len(found) == 1 else None

    def choose(self, text):
        """What a panel sends when the item is clicked."""
        item = until(lambda: self.find(text), f"the menu has {text!r}: {self.texts()}")
        if not item.is_enabled:
            raise AssertionError(f"{text!r} is disabled")
        self.click(item)

    def click(self, item):
        """What a panel may send also when the item is disabled by now."""
        self._menu().Event(item.id, "clicked", dbus.Int32(0, variant_level=1),
                           dbus.UInt32(int(time.monotonic())))
