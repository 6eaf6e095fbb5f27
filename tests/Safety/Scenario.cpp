#include "Scenario.h"

#include <fcntl.h>

#include <cerrno>
#include <ostream>

namespace tidemark {

namespace {

FileURL folder(const std::string& place, const char* relative)
{
    return FileURL::directory(place + '/' + relative);
}

std::vector<Rule> only(std::string type, RuleAction action)
{
    return {
        {.name = "Rule", .match = {.fileTypes = {std::move(type)}}, .action = std::move(action)}};
}

std::vector<Rule> filing(const std::string& place)
{
    return only("pdf", RuleAction::fixed(SweepAction::move(folder(place, "home/Filed"))));
}

std::vector<Rule> filingOnDisk(const std::string& place)
{
    return only("pdf", RuleAction::fixed(SweepAction::move(folder(place, "disk/Filed/Papers"))));
}

std::vector<Rule> renaming(const std::string&)
{
    return only("txt", RuleAction::fixed(SweepAction::rename("final.txt")));
}

std::vector<Rule> archiving(const std::string& place)
{
    return only("zip", RuleAction::archiveByMonth(folder(place, "home/Archive")));
}

std::vector<Rule> filingScreenshots(const std::string& place)
{
    return only("png", RuleAction::fileScreenshot(folder(place, "home/Screenshots")));
}

std::vector<Rule> trashing(const std::string&)
{
    return only("dmg", RuleAction::fixed(SweepAction::trash()));
}

std::vector<Rule> none(const std::string&)
{
    return {};
}

int withoutRenameFlag(const TracedCall& call)
{
    return call.name == "renameat2" ? EINVAL : 0;
}

int withoutRenameFlagAndLinks(const TracedCall& call)
{
    return call.name == "linkat" ? EPERM : withoutRenameFlag(call);
}

int withoutUnnamedFiles(const TracedCall& call)
{
    return (call.flags & O_TMPFILE) == O_TMPFILE ? EOPNOTSUPP : 0;
}

const std::vector<std::string> twoPapers = {"home/in/a.pdf", "home/in/b.pdf"};

std::vector<Scenario> sweeps()
{
    return {
        {.name = "Moves", .files = twoPapers, .rules = filing},
        {.name = "NamesTaken",
            .files = {"home/in/a.pdf", "home/more/a.pdf"},
            .bystanders = {"home/Filed/a.pdf"},
            .rules = filing},
        {.name = "Renames", .files = {"home/in/a.txt", "home/in/b.txt"}, .rules = renaming},
        {.name = "Screenshots",
            .files = {"home/in/Screenshot a.png", "home/in/Screenshot b.png"},
            .rules = filingScreenshots},
        {.name = "Archives", .files = {"home/in/a.zip", "home/more/a.zip"}, .rules = archiving},
        {.name = "Notes",
            .files = {"home/in/a.md", "home/in/b.md"},
            .rules = none,
            .sortsMarkdown = true},
        {.name = "HomeTrash", .files = {"home/in/a.dmg", "home/more/a.dmg"}, .rules = trashing},
        {.name = "TrashOnDisk",
            .files = {"disk/in/a.dmg", "disk/in/b.dmg"},
            .rules = trashing,
            .needsDisk = true},
        {.name = "TrashAcrossFileSystems",
            .files = {"disk/in/a.dmg", "disk/in/b.dmg"},
            .rules = trashing,
            .needsDisk = true,
            .hasNoTrashOnDisk = true},
        {.name = "AcrossFileSystems",
            .files = {"home/in/a.pdf", "home/in/hollow.pdf"},
            .rules = filingOnDisk,
            .needsDisk = true},
        {.name = "AcrossByNamedTemporaries",
            .files = twoPapers,
            .rules = filingOnDisk,
            .needsDisk = true,
            .refuses = withoutUnnamedFiles},
        {.name = "ByLinks", .files = twoPapers, .rules = filing, .refuses = withoutRenameFlag},
        {.name = "ByPlaceholders",
            .files = twoPapers,
            .rules = filing,
            .refuses = withoutRenameFlagAndLinks},
    };
}

}  // namespace

Scenario Scenario::undone() const
{
    Scenario undo = *this;
    undo.name = "UndoOf" + name;
    undo.command = "undo";
    undo.startsSwept = true;
    return undo;
}

std::vector<Scenario> everyScenario()
{
    std::vector<Scenario> scenarios = sweeps();
    const std::size_t count = scenarios.size();
    for (std::size_t index = 0; index < count; ++index)
        scenarios.push_back(scenarios[index].undone());
    scenarios.push_back(
        {.name = "SettingsSave", .files = twoPapers, .rules = filing, .command = "pause"});
    return scenarios;
}

std::ostream& operator<<(std::ostream& stream, const Scenario& scenario)
{
    return stream << scenario.name;
}

}  // namespace tidemark
