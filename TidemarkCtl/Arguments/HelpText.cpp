#include "HelpText.h"

#include "Version.h"

#include <string_view>

namespace tidemark {

namespace {

constexpr std::string_view overview =
    R"(tidemarkctl keeps chosen folders tidy: it files, renames and trashes files by rules,
writes down every move before it happens, and can take the last sweep back.

Usage: tidemarkctl [--support DIR] COMMAND [--json]

Look
  status                      whether sweeping is paused, and each watched folder
  preview [--now DATE]        what a sweep would do; changes nothing
  activity [--limit N]        what was done lately, newest first
  folders [list]              the watched folders and their rules

Change
  sweep [--now DATE]          tidy the watched folders now
  undo [--now DATE]           take the last sweep back, and pause sweeping
  pause, resume               stop sweeping, or go on
  folders add PATH...         watch folders
  folders remove PATH...      stop watching folders; their files stay where they are
  watch                       keep them tidy until you press Ctrl-C

Options
  --support DIR               use DIR for settings and journal
  --json                      print one JSON document in place of text
  --help, --version           "tidemarkctl COMMAND --help" tells more of a command

Exit status: 0 done, 1 failed (standard error tells why), 2 wrong usage.

First steps:
  tidemarkctl folders add ~/Downloads
  tidemarkctl preview
)";

constexpr std::string_view statusHelp = R"(Usage: tidemarkctl status [--json]

Shows whether sweeping is paused, each watched folder and whether it can be read, whether the
last sweep can be undone, and why it failed if it did.
)";

constexpr std::string_view previewHelp = R"(Usage: tidemarkctl preview [--now DATE] [--json]

Shows what a sweep would do, to the exact name each file would get. Nothing is changed.

  --now DATE   as if it were that time, such as 2024-05-03T14:05:00Z or 2024-05-03T14:05:00+02:00
)";

constexpr std::string_view sweepHelp = R"(Usage: tidemarkctl sweep [--now DATE] [--json]

Tidies the watched folders by their rules. Every move is in the journal before it happens, no
file is ever overwritten or deleted, and "tidemarkctl undo" takes the whole sweep back.
"tidemarkctl preview" shows beforehand what would be done. While paused nothing is touched.

  --now DATE   as if it were that time, such as 2024-05-03T14:05:00Z or 2024-05-03T14:05:00+02:00
)";

constexpr std::string_view undoHelp = R"(Usage: tidemarkctl undo [--now DATE] [--json]

Moves the files of the last sweep back to where they were, never over another file: where the
old name is taken, a new one is found. Sweeping is paused first, so that the files stay there;
go on with "tidemarkctl resume". Called again, it takes back the sweep before.

  --now DATE   as if it were that time, such as 2024-05-03T14:05:00Z or 2024-05-03T14:05:00+02:00
)";

constexpr std::string_view activityHelp = R"(Usage: tidemarkctl activity [--limit N] [--json]

Shows what was done lately, newest first.

  --limit N    at most so many files (20 if not given)
)";

constexpr std::string_view pauseHelp = R"(Usage: tidemarkctl pause [--json]

Stops sweeping until "tidemarkctl resume". With --json the new status is printed.
)";

constexpr std::string_view resumeHelp = R"(Usage: tidemarkctl resume [--json]

Goes on sweeping after "tidemarkctl pause" or "tidemarkctl undo". With --json the new status is
printed.
)";

constexpr std::string_view foldersHelp = R"(Usage: tidemarkctl folders [list] [--json]
       tidemarkctl folders add PATH... [--json]
       tidemarkctl folders remove PATH... [--json]

Shows the watched folders with their rules, adds some, or removes some. A new folder gets the
default rules: screenshots are filed by their time, installers unopened for 30 days are trashed,
downloads older than 30 days are archived by month, and Markdown notes are filed. Removing a
folder touches none of its files. A path that starts with "-" stands behind "--".
)";

constexpr std::string_view watchHelp = R"(Usage: tidemarkctl watch [--backend NAME]

Keeps the watched folders tidy without being asked, and prints each file that it moves, until it
is ended by Ctrl-C (SIGINT, SIGTERM, SIGHUP). A file that is being moved then is moved first.
A new file is swept when it has rested for the grace period, an older one when a rule says so.
When no folder is configured, the Desktop and Downloads folders are, with the default rules.

While it runs, the other commands do their work through it. There can be only one of it for a
user. To have it started at every login:
  systemctl --user enable --now tidemark-watch

  --backend NAME   watch by this interface of the kernel only: fanotify or inotify
)";

std::string_view helpOn(Command command)
{
    switch (command) {
    case Command::status:
        return statusHelp;
    case Command::preview:
        return previewHelp;
    case Command::sweep:
        return sweepHelp;
    case Command::undo:
        return undoHelp;
    case Command::activity:
        return activityHelp;
    case Command::pause:
        return pauseHelp;
    case Command::resume:
        return resumeHelp;
    case Command::listFolders:
    case Command::addFolders:
    case Command::removeFolders:
        return foldersHelp;
    case Command::watch:
        return watchHelp;
    }
    return overview;
}

}  // namespace

std::string helpText(std::optional<Command> command)
{
    return std::string{command ? helpOn(*command) : overview};
}

std::string versionText()
{
    return std::string{"tidemarkctl "} + projectVersion + '\n';
}

}  // namespace tidemark
