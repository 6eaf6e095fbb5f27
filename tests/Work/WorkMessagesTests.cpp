#include "CommandFailure.h"
#include "DecodingError.h"
#include "FolderChanges.h"
#include "JSONCoders.h"
#include "PauseChange.h"
#include "SweepReport.h"
#include "UndoReport.h"
#include "WorkMessages.h"

#include <gtest/gtest.h>

namespace tidemark {

namespace {

const Date someDate{Seconds{1'741'944'412}};
const std::string oddName = "/a/\u201cquoted\u201d \\ \"back\"\n\t.pdf";

JournalEntry someEntry()
{
    return {.op = JournalEntry::Op::trash, .from = oddName, .to = "/trash/x", .at = someDate};
}

SweepRecord someRecord()
{
    return {.startedAt = someDate, .entries = {someEntry(), someEntry()}};
}

template <typename Result>
void expectToArriveUnchanged(const Result& result)
{
    EXPECT_TRUE(WorkAnswer::decoded<Result>(WorkAnswer::of(result)) == result);
}

}  // namespace

TEST(WorkMessages, EveryRequestArrivesUnchanged)
{
    const WorkRequest requests[] = {
        {.kind = WorkRequest::Kind::sweep},
        {.kind = WorkRequest::Kind::sweep, .now = someDate},
        {.kind = WorkRequest::Kind::undo, .now = someDate},
        {.kind = WorkRequest::Kind::pause},
        {.kind = WorkRequest::Kind::resume},
        {.kind = WorkRequest::Kind::addFolders, .paths = {{"x", "/a/x"}, {oddName, oddName}}},
        {.kind = WorkRequest::Kind::removeFolders, .paths = {{"..", "/"}}},
        {.kind = WorkRequest::Kind::bringForward, .activationToken = "sway-12 \"x\""},
    };
    for (const WorkRequest& request : requests)
        EXPECT_TRUE(
            JSONCoders::decode<WorkRequest>(JSONCoders::encode(request), "request") == request);
}

TEST(WorkMessages, EveryResultArrivesUnchanged)
{
    expectToArriveUnchanged(SweepReport{.wasPaused = true, .record = {.startedAt = someDate}});
    expectToArriveUnchanged(SweepReport{.watchesFolders = true,
        .wasStopped = true,
        .couldSaveJournal = false,
        .record = someRecord(),
        .failures = {{oddName, "cannot move it"}}});
    expectToArriveUnchanged(UndoReport{});
    expectToArriveUnchanged(UndoReport{.record = someRecord(),
        .didPause = true,
        .restored = {{someEntry(), "/a/b 2"}},
        .gone = {someEntry()},
        .failure = "no space"});
    expectToArriveUnchanged(PauseChange{.wasSoAlready = true});
    expectToArriveUnchanged(PauseChange{.replaced = ReplacedSettings{"bad", "/a/settings"}});
    expectToArriveUnchanged(FolderChanges{.changed = {"/a"},
        .alreadyWatched = {"/b", oddName},
        .folders = {{.path = "/a"}, {.path = oddName, .sortsMarkdown = false}},
        .replaced = ReplacedSettings{"bad", "/a/settings"}});
}

TEST(WorkMessages, ProgressArrivesUnchanged)
{
    const WorkProgress messages[] = {
        {.scanning = oddName}, {.performing = WorkProgress::Position{3, 100'000}}};
    for (const WorkProgress& progress : messages)
        EXPECT_TRUE(
            JSONCoders::decode<WorkProgress>(JSONCoders::encode(progress), "progress") == progress);
}

TEST(WorkMessages, AFailureIsThrownWithItsReasonEvenIfThatIsNotText)
{
    try {
        WorkAnswer::decoded<PauseChange>(WorkAnswer::ofFailure("cannot read /a/\xff"));
        FAIL();
    } catch (const CommandFailure& failure) {
        EXPECT_STREQ(failure.what(), "cannot read /a/\uFFFD");
    }
}

TEST(WorkMessages, NonsenseIsADecodingError)
{
    const char* const texts[] = {"", "{", "[]", "{}", R"({"kind": "format", "paths": []})",
        R"({"kind": "sweep"})", R"({"kind": "sweep", "now": "soon", "paths": []})",
        R"({"kind": "addFolders", "paths": [1]})", "\xff"};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        EXPECT_THROW(JSONCoders::decode<WorkRequest>(text, "request"), DecodingError);
    }
    EXPECT_THROW(WorkAnswer::decoded<PauseChange>("{}"), DecodingError);
    EXPECT_THROW(JSONCoders::decode<WorkProgress>(R"({"index": -1, "count": 2})", "progress"),
        DecodingError);
}

}  // namespace tidemark
