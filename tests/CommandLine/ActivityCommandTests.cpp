#include "CommandLineFixture.h"

#include <gmock/gmock.h>

namespace tidemark {
namespace {

class ActivityCommand : public CommandLineFixture {
protected:
    void sweepPapers(int count) const
    {
        writeSettings(watching({"in"}, {filingPapers()}));
        for (int number = 10; number < 10 + count; ++number)
            home().write("in/" + std::to_string(number) + ".pdf", "");
        ASSERT_EQ(run({"sweep", "--now", "2030-01-02T03:04:05Z"}).status, 0);
    }
};

TEST_F(ActivityCommand, TellsTheNewestFirst)
{
    sweepPapers(2);

    EXPECT_EQ(run({"activity"}).output,
        "  2030-01-02 03:04  Filed    11.pdf  -> ~/Filed/11.pdf\n"
        "  2030-01-02 03:04  Filed    10.pdf  -> ~/Filed/10.pdf\n");
}

TEST_F(ActivityCommand, ShowsLocalTimeToPeopleOnly)
{
    sweepPapers(1);
    ProgramStart how = start({"activity"});
    how.environment["TZ"] = "Asia/Tokyo";
    how.outputFile = home().path("out");
    ProgramProcess process{how};
    ASSERT_EQ(process.wait(), 0);

    EXPECT_THAT(home().read("out"), testing::HasSubstr("2030-01-02 12:04"));
    EXPECT_EQ(text(json({"activity"}).array()[0].toObject()["date"]), "2030-01-02T03:04:05Z");
}

TEST_F(ActivityCommand, HasExactlyTheDocumentedMembers)
{
    sweepPapers(1);

    const QJsonArray rows = json({"activity"}).array();

    ASSERT_EQ(rows.size(), 1);
    const QJsonObject row = rows[0].toObject();
    EXPECT_EQ(row.keys(), (QStringList{u"date"_qs, u"fromPath"_qs, u"op"_qs, u"toPath"_qs}));
    EXPECT_EQ(text(row["op"]), "move");
    EXPECT_EQ(text(row["fromPath"]), home().path("in/10.pdf"));
    EXPECT_EQ(text(row["toPath"]), home().path("Filed/10.pdf"));
}

TEST_F(ActivityCommand, ShowsTwentyUnlessToldOtherwise)
{
    sweepPapers(25);

    EXPECT_EQ(json({"activity"}).array().size(), 20);
    EXPECT_EQ(json({"activity", "--limit", "3"}).array().size(), 3);
    EXPECT_EQ(json({"activity", "--limit", "1000"}).array().size(), 25);
    EXPECT_EQ(json({"activity", "--limit", "99999999999999999999"}).array().size(), 25);
    EXPECT_EQ(json({"activity", "--limit", "0"}).array().size(), 0);
    EXPECT_EQ(run({"activity", "--limit", "0"}).output, "");
}

TEST_F(ActivityCommand, OfNothingSaysWhatToDoAndMakesNothing)
{
    const Outcome outcome = run({"activity"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        outcome.output, "Nothing done yet. See what a sweep would do with: tidemarkctl preview\n");
    EXPECT_TRUE(json({"activity"}).array().isEmpty());
    EXPECT_THAT(everything(), testing::IsEmpty());
}

}  // namespace
}  // namespace tidemark
