#include "RuleText.h"

#include "DisplayText.h"
#include "Overloaded.h"

namespace tidemark {

static std::string destination(const SweepAction& action, const PeopleText& people)
{
    return std::visit(
        Overloaded{
            [&](const SweepAction::Move& move) { return people.path(move.to.path()); },
            [&](const SweepAction::Archive& archive) { return people.path(archive.to.path()); },
            [](const SweepAction::Trash&) { return std::string{"Trash"}; },
            [](const SweepAction::Rename& rename) { return displayText(rename.to); },
            [&](const SweepAction::FileInto& into) {
                return people.path(into.folder.appending(into.renamedTo).path());
            },
        },
        action.value);
}

std::string ruleDestination(const RuleAction& action, const PeopleText& people)
{
    return "-> "
        + std::visit(
            Overloaded{
                [&](const RuleAction::Fixed& fixed) { return destination(fixed.action, people); },
                [&](const RuleAction::FileScreenshot& screenshot) {
                    return people.path(screenshot.into.path()) + ", named by time";
                },
                [&](const RuleAction::ArchiveByMonth& archive) {
                    return people.path(archive.into.path()) + ", by month";
                },
                [&](const RuleAction::FileMarkdown& note) {
                    return people.path(note.into.path()) + ", by month";
                },
            },
            action.value);
}

}  // namespace tidemark
