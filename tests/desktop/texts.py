"""Every text of the interface, to the character."""

ONBOARDING = [
    "Welcome to Tidemark",
    "Your Desktop and Downloads, under control.",
    "Screenshots get named and filed automatically.",
    "Old installers are cleaned up once you're done with them.",
    "Downloads older than 30 days are tucked into a dated archive.",
    "All three are on. Nothing is ever deleted \u2014 everything moves, and \u201cUndo last sweep\u201d puts it right back.",
    "Turn on Markdown sorting for a folder and notes file themselves by their front-matter.",
    "Add folder\u2026",
    "Start sweeping",
]


def menu(about, status="Watching 2 folders", paused=False, activity=("No recent activity",)):
    """The menu from top to bottom, with "-" for a separator."""
    return [
        status,
        "-",
        "Sweep now",
        "Resume sweeping" if paused else "Pause sweeping",
        "Undo last sweep",
        "-",
        *activity,
        "-",
        "Check for Updates\u2026",
        about,
        "Settings\u2026",
        "Quit Tidemark",
    ]

_RULES = [
    "File screenshots", "Renamed and filed into a Screenshots folder",
    "Clean up installers", "Moved to the Trash", "Trash after 30 days",
    "Archive old downloads", "Moved into a dated Archive folder", "Archive after 30 days",
    "Sort Markdown files", "Organize .md by front-matter",
]


def settings(branding, seconds=0):
    """The labels of the settings window from top to bottom, both standard folders disclosed."""
    return [
        "Folders",
        "Desktop", "Access granted", "~/Desktop", *_RULES,
        "Downloads", "Access granted", "~/Downloads", *_RULES,
        "Markdown",
        "Subfolder name",
        "In each folder above (when its toggle is on), .md files are moved into a subfolder with this name "
        "\u2014 renamed to their title and grouped by month. Leave empty to turn Markdown sorting off.",
        "General",
        f"Wait {seconds}s before touching a new file",
        "About",
        branding,
    ]


def new_version(version, running):
    return [
        "A new version of Tidemark is available",
        f"Tidemark {version} is ready to install \u2014 you have {running}. "
        "The app will update itself and relaunch.",
        "Install", "Later",
    ]


def up_to_date(running):
    return ["You're up to date", f"Tidemark {running} is the latest version.", "OK"]


UPDATE_FAILED = [
    "Update failed",
    "Couldn't install the update. Please try again later, or download it from tidemark.example/download.",
    "OK",
]

READ_ONLY_LOCATION = [
    "Move Tidemark to Applications",
    "Tidemark is running from a read-only location (like a disk image or the Downloads folder). "
    "Drag it to your Applications folder, reopen it, then check for updates again.",
    "OK",
]
