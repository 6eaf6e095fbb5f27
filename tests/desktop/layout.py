"""Whether all that stands in a window can be seen, by the places that the accessibility tree tells."""

from dataclasses import replace

import gi

gi.require_version("Pango", "1.0")
gi.require_version("PangoCairo", "1.0")
from gi.repository import Pango, PangoCairo  # noqa: E402

_ENDLESS = 1000000
_RESOLUTION = 96  # points to the inch, as the display has been started with
_SCROLLING = 2  # how deep in the tree the part of the window is that scrolls
_SEEN = ("check box", "label", "push button", "spin button", "text")


def _seen(nodes):
    return [node for node in nodes if node.role in _SEEN and node.width > 0 and node.height > 0]


def _cover(one, other):
    return (one.x < other.x + other.width and other.x < one.x + one.width
            and one.y < other.y + other.height and other.y < one.y + one.height)


def covered(nodes):
    """Pairs of names of what stands over each other."""
    seen = _seen(nodes)
    return [(one.name, other.name) for index, one in enumerate(seen) for other in seen[index + 1:]
            if _cover(one, other)]


def _is_within(inner, outer):
    return (outer.x <= inner.x and inner.x + inner.width <= outer.x + outer.width
            and outer.y <= inner.y and inner.y + inner.height <= outer.y + outer.height)


def _as_long(scrolling):
    return replace(scrolling, y=-_ENDLESS, height=2 * _ENDLESS)


def sticking_out(nodes):
    """What is not wholly within that in which it stands. What scrolls may be longer than the window."""
    found = []
    way = {}
    for node in nodes:
        way[node.depth] = node
        parent = way.get(node.depth - 1)
        if parent and not _is_within(node, _as_long(parent) if parent.depth == _SCROLLING else parent):
            found.append((node, parent))
    return found


def _height(text, font, width):
    fonts = PangoCairo.FontMap.new()
    fonts.set_resolution(_RESOLUTION)
    layout = Pango.Layout.new(fonts.create_context())
    layout.set_font_description(Pango.FontDescription(font))
    layout.set_text(text, -1)
    layout.set_width(width * Pango.SCALE)
    return layout.get_pixel_size()[1]


def cut(nodes, texts, font):
    """Those of the texts, which are in that font, that have less room than they take when they are wrapped."""
    # Measured by another library, which may round otherwise: what is cut lacks a line, or most of a word.
    return [node.name for node in _seen(nodes) if node.role == "label" and node.name in texts
            and node.height < 0.95 * _height(node.name, font, round(1.02 * node.width))]
