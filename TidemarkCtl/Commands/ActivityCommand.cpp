#include "Commands.h"
#include "FileTable.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "JournalText.h"
#include "LocalWorkspace.h"
#include "SupportFolder.h"
#include "TextPrinter.h"

#include <algorithm>

namespace tidemark {

namespace {

struct ItemDocument {
    const ActivityItem& item;

    void encode(JSONEncoder& encoder) const
    {
        encoder.object([&] {
            encoder.member("date", item.date);
            encoder.member("fromPath", item.fromPath);
            encoder.member("op", rawValue(item.op));
            encoder.member("toPath", item.toPath);
        });
    }
};

struct ActivityDocument {
    const std::vector<ActivityItem>& items;

    void encode(JSONEncoder& encoder) const
    {
        encoder.array([&] {
            for (const ActivityItem& item : items)
                encoder.element(ItemDocument{item});
        });
    }
};

FileRow rowFor(const ActivityItem& item, const PeopleText& people)
{
    constexpr std::size_t longestVerb = 7;
    std::string verb{JournalText::verb(item.op)};
    verb.resize(std::max(longestVerb, verb.size()), ' ');
    return {.folder = {},
        .lead = people.date(item.date) + "  " + verb,
        .name = JournalText::name(item.fromPath),
        .detail = JournalText::destination(item.op, item.toPath, people)};
}

void print(const std::vector<ActivityItem>& items, int limit)
{
    TextPrinter printer;
    if (items.empty() && limit > 0)
        printer.printLine("Nothing done yet. " + std::string{hints::preview});
    printFileTable(
        items.size(), [&](std::size_t index) { return rowFor(items[index], printer.people()); },
        printer);
    printer.flush();
}

}  // namespace

ExitStatus runActivity(const Invocation& invocation)
{
    LocalWorkspace workspace{supportFolder(invocation)};
    const auto items = workspace.controller().recentActivity(invocation.limit);
    if (invocation.json)
        printJSON(ActivityDocument{items});
    else
        print(items, invocation.limit);
    return exitDone;
}

}  // namespace tidemark
