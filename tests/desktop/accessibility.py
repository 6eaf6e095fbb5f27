"""Windows as a screen reader finds them, by the Assistive Technology Service Provider Interface."""

from dataclasses import dataclass

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from polling import until  # noqa: E402


def connect():
    """Call it once the accessibility bus is there."""
    Atspi.init()
    Atspi.set_timeout(5000, 15000)


@dataclass
class Node:
    """What was shown at the time of asking. Places are on the screen, or within the window under Wayland."""

    role: str
    name: str
    description: str
    states: frozenset
    x: int
    y: int
    width: int
    height: int
    depth: int

    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def has(self, state):
        return state in self.states


_STATES = {
    "checked": Atspi.StateType.CHECKED, "enabled": Atspi.StateType.ENABLED,
    "focused": Atspi.StateType.FOCUSED, "focusable": Atspi.StateType.FOCUSABLE,
    "showing": Atspi.StateType.SHOWING, "visible": Atspi.StateType.VISIBLE,
    "active": Atspi.StateType.ACTIVE,
}


def _node(accessible, depth):
    states = accessible.get_state_set()
    component = accessible.get_component_iface()
    place = Atspi.Component.get_extents(component, Atspi.CoordType.SCREEN) if component else None
    return Node(
        role=accessible.get_role_name(), name=accessible.get_name() or "",
        description=accessible.get_description() or "",
        states=frozenset(name for name, state in _STATES.items() if states.contains(state)),
        x=place.x if place else 0, y=place.y if place else 0, width=place.width if place else 0,
        height=place.height if place else 0, depth=depth)


def _walk(accessible, depth):
    for index in range(accessible.get_child_count()):
        try:
            child = accessible.get_child_at_index(index)
            if child is None:
                continue
            yield _node(child, depth)
            yield from _walk(child, depth + 1)
        except GLib.Error:
            continue  # it has gone while it was read


def application(pid):
    """The root of what a process shows, or None."""
    desktop = Atspi.get_desktop(0)
    desktop.clear_cache()
    for index in range(desktop.get_child_count()):
        try:
            child = desktop.get_child_at_index(index)
            if child is not None and child.get_process_id() == pid:
                return child
        except GLib.Error:
            continue
    return None


def nodes(pid, window=None):
    """All that the process shows, from top to bottom; of the window with that title only, if one is given."""
    root = application(pid)
    if root is None:
        return []
    # Without an event loop nobody tells the library what has changed.
    root.clear_cache()
    found = [node for node in _walk(root, 0) if node.has("showing")]
    if window is None:
        return found
    inside = False
    result = []
    for node in found:
        if node.depth == 0:
            inside = node.name == window
        if inside:
            result.append(node)
    return result


def find(pid, name, role=None, window=None):
    """The only node that is shown with that name, once it is there."""
    def look():
        found = [node for node in nodes(pid, window)
                 if node.name == name and (role is None or node.role == role)]
        return found[0] if len(found) == 1 else None
    return until(look, f"there is one {role or 'node'} {name!r} in {window or 'any window'}")


def texts(nodes_of_window):
    """What can be read in a window, in its order. Pictures without a meaning have no name."""
    return [node.name for node in nodes_of_window if node.depth > 0 and node.name]
