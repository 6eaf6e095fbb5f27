#include "ActivityItem.h"

#include <gtest/gtest.h>

using namespace tidemark;
using Op = JournalEntry::Op;

static ActivityItem item(Op op, std::string from, double seconds = 0)
{
    return {.op = op,
        .fromPath = std::move(from),
        .toPath = "/to/elsewhere",
        .date = Date(Seconds(seconds))};
}

TEST(ActivityItem, CopiesItsJournalEntry)
{
    const JournalEntry entry{
        .op = Op::rename, .from = "/a", .to = "/b", .at = Date(Seconds(1741944413))};

    const ActivityItem copy = ActivityItem::of(entry);

    EXPECT_EQ(copy.op, Op::rename);
    EXPECT_EQ(copy.fromPath, "/a");
    EXPECT_EQ(copy.toPath, "/b");
    EXPECT_EQ(copy.date, entry.at);
}

TEST(ActivityItem, SumsUpByVerbAndOldName)
{
    struct Row {
        Op op;
        const char* summary;
    };
    for (const Row& row : {Row{Op::move, "Filed old.zip"}, Row{Op::archive, "Filed old.zip"},
             Row{Op::trash, "Trashed old.zip"}, Row{Op::rename, "Renamed old.zip"}})
        EXPECT_EQ(item(row.op, "/Users/a/Downloads/old.zip").summary(), row.summary);
}

TEST(ActivityItem, IsIdentifiedByOldPathAndSeconds)
{
    struct Row {
        double seconds;
        const char* id;
    };
    for (const Row& row : {Row{1741944413, "/a|1741944413.0"}, Row{0, "/a|0.0"}, Row{-1, "/a|-1.0"},
             Row{1741944413.5, "/a|1741944413.5"}, Row{0.1, "/a|0.1"},
             Row{1e15, "/a|1000000000000000.0"}})
        EXPECT_EQ(item(Op::move, "/a", row.seconds).id(), row.id);
}

TEST(ActivityItem, HasTheLastComponentAsFileName)
{
    EXPECT_EQ(item(Op::move, "/a/b c.txt").fileName(), "b c.txt");
    EXPECT_EQ(item(Op::move, "plain").fileName(), "plain");
}
