"""Prints what a panel that is built on GTK shows of a menu: gtk_menu.py BUS-NAME PATH COUNT

Uses the library that the panels of XFCE, MATE and sway draw such menus with, and reads the labels that it makes. A program of
its own, since a menu needs the event loop of GTK. Ends when there are COUNT items.
"""

import json
import sys

import gi

gi.require_version("DbusmenuGtk3", "0.4")
gi.require_version("Gtk", "3.0")
from gi.repository import DbusmenuGtk3, GLib, Gtk  # noqa: E402


def label_of(widget):
    if isinstance(widget, Gtk.Label):
        return widget.get_text()
    if isinstance(widget, Gtk.Container):
        for child in widget.get_children():
            text = label_of(child)
            if text is not None:
                return text
    return None


def main():
    name, path, count = sys.argv[1:]
    menu = DbusmenuGtk3.Menu.new(name, path)

    def look():
        items = menu.get_children()
        texts = ["-" if isinstance(item, Gtk.SeparatorMenuItem) else label_of(item) for item in items]
        if len(texts) != int(count) or None in texts:
            return GLib.SOURCE_CONTINUE
        print(json.dumps(texts))
        Gtk.main_quit()
        return GLib.SOURCE_REMOVE

    GLib.timeout_add(20, look)
    Gtk.main()


main()
