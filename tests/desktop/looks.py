"""How desktops tell programs what to look like."""

# Colours as KDE keeps them, which Qt knows how to read without KDE.
_DARK = """[General]
ColorScheme=Dark

[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177

[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
ForegroundLink=29,153,243
ForegroundVisited=155,89,182

[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252

[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252

[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
"""

LARGE_FONT = "DejaVu Sans 20"
_LARGE_TEXT = "[General]\nfont=DejaVu Sans,20,-1,5,50,0,0,0,0,0\n"

_KDE = {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": "5"}


def _kde(tidemark, settings):
    tidemark.write(".config/kdeglobals", settings)
    return _KDE


def dark(tidemark):
    """The environment in which the program is dark."""
    return _kde(tidemark, _DARK)


def large_text(tidemark):
    """The environment in which text is twice as large as usual."""
    return _kde(tidemark, _LARGE_TEXT)
