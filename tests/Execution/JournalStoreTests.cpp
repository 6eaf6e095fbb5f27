#include "JournalStore.h"

#include "DecodingError.h"
#include "ExecutionFixture.h"
#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"
#include "JSONCoders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::HasSubstr;
using Op = JournalEntry::Op;

namespace {

const char* const example = R"({
  "sweeps" : [
    {
      "entries" : [
        {
          "at" : "2025-03-14T09:26:53Z",
          "from" : "/Users/me/Downloads/report.pdf",
          "op" : "archive",
          "to" : "/Users/me/Documents/Filed/report.pdf"
        },
        {
          "at" : "2025-03-14T09:26:53Z",
          "from" : "/Users/me/Downloads/setup.dmg",
          "op" : "trash",
          "to" : "/Users/me/.Trash/setup.dmg"
        }
      ],
      "id" : "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0",
      "startedAt" : "2025-03-14T09:26:52Z"
    }
  ]
})";

Journal exampleJournal()
{
    const Date at{Seconds(1741944413)};
    return {{{.id = QUuid::fromString(QStringLiteral("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0")),
        .startedAt = Date(Seconds(1741944412)),
        .entries = {{.op = Op::archive,
                        .from = "/Users/me/Downloads/report.pdf",
                        .to = "/Users/me/Documents/Filed/report.pdf",
                        .at = at},
            {.op = Op::trash,
                .from = "/Users/me/Downloads/setup.dmg",
                .to = "/Users/me/.Trash/setup.dmg",
                .at = at}}}}};
}

Journal loaded(std::string text)
{
    InMemoryFileManager disk{{journalURL.path(), std::move(text)}};
    return journalOn(disk).load();
}

std::string errorOf(const std::string& text)
{
    try {
        loaded(text);
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "no error";
}

/// What `read` makes of a journal with this text, or what it says of it.
template <typename Read>
std::string outcome(const std::string& text, Read read)
{
    InMemoryFileManager disk{{journalURL.path(), text}};
    try {
        return read(journalOn(disk));
    } catch (const DecodingError& error) {
        return error.what();
    }
}

/// That the short way to a journal's text comes to the same as reading it and writing it again.
void expectSameText(const std::string& text)
{
    EXPECT_EQ(outcome(text, [](const JournalStore& store) { return store.loadText(); }),
        outcome(text, [](const JournalStore& store) { return JSONCoders::encode(store.load()); }))
        << text;
}

/// With everything in it that is written in a way of its own.
Journal journalOfEveryKind()
{
    Journal journal = exampleJournal();
    journal.sweeps[0].entries[0].from = "/\"q\"\\\b\f\n\r\t\x7f";
    journal.sweeps[0].entries[1].to = "/Grüße 🌊/\u2028";
    journal.sweeps.push_back({.startedAt = sweepTime, .entries = {}});
    journal.sweeps.push_back({.startedAt = sweepTime,
        .entries = {entry(Op::rename, "/a", "/b"), entry(Op::move, "", "/")}});
    return journal;
}

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    return text.replace(text.find(what), what.size(), by);
}

}  // namespace

TEST(JournalStore, LoadsNoSweepsWithoutAFileAndThenMakesFolderAndFile)
{
    InMemoryFileManager disk;
    const JournalStore store = journalOn(disk);

    EXPECT_TRUE(store.load().sweeps.empty());
    EXPECT_TRUE(disk.tree().empty());

    store.save({});
    EXPECT_EQ(disk.content(journalURL.path()), "{\n  \"sweeps\" : [\n\n  ]\n}");
    EXPECT_TRUE(store.load().sweeps.empty());
}

TEST(JournalStore, WritesAndReadsTheDocumentedForm)
{
    InMemoryFileManager disk;
    journalOn(disk).save(exampleJournal());

    EXPECT_EQ(disk.content(journalURL.path()), example);
    EXPECT_EQ(loaded(example), exampleJournal());
}

TEST(JournalStore, KeepsDatesToWholeSeconds)
{
    InMemoryFileManager disk;
    Journal journal = exampleJournal();
    journal.sweeps[0].startedAt += Seconds(0.75);
    journalOn(disk).save(journal);

    EXPECT_EQ(journalOn(disk).load(), exampleJournal());
}

TEST(JournalStore, ReadsBackPathsOfEveryKind)
{
    Journal journal = exampleJournal();
    journal.sweeps[0].entries.clear();
    for (const char* path : {"/a b", R"(/"quoted"\)", "/new\nline\ttab", "/Grüße 🌊/\u2028", "/%20",
             "/\x01\x7f", "/.hidden", "/"})
        journal.sweeps[0].entries.push_back(entry(Op::rename, path, path));
    InMemoryFileManager disk;
    journalOn(disk).save(journal);

    EXPECT_EQ(journalOn(disk).load(), journal);
}

TEST(JournalStore, RefusesAFileThatIsWrongInAnyPlace)
{
    struct Row {
        const char* name;
        std::string text;
        const char* error;
    };
    for (const Row& row : {
             Row{"unknown op", replaced(example, "\"trash\"", "\"delete\""),
                 "/support/journal.json: sweeps[0].entries[1].op: Cannot initialize Op from "
                 "invalid String value delete"},
             Row{"no sweeps", "{}", "the key \"sweeps\" is missing"},
             Row{"sweeps of another type", R"({"sweeps": {}})", "sweeps: expected an array"},
             Row{"no entries", replaced(example, "\"entries\"", "\"x\""),
                 "sweeps[0]: the key \"entries\" is missing"},
             Row{"no id", replaced(example, "\"id\"", "\"x\""), "the key \"id\" is missing"},
             Row{"no start", replaced(example, "\"startedAt\"", "\"x\""),
                 "the key \"startedAt\" is missing"},
             Row{"no at", replaced(example, "\"at\"", "\"x\""),
                 "sweeps[0].entries[0]: the key \"at\" is missing"},
             Row{"no from", replaced(example, "\"from\"", "\"x\""), "the key \"from\" is missing"},
             Row{"no op", replaced(example, "\"op\"", "\"x\""), "the key \"op\" is missing"},
             Row{"no to", replaced(example, "\"to\"", "\"x\""), "the key \"to\" is missing"},
             Row{"null", replaced(example, "\"archive\"", "null"), "expected a string, found null"},
             Row{"a date without zone", replaced(example, "53Z", "53"),
                 "sweeps[0].entries[0].at: expected an ISO 8601 date"},
             Row{"no UUID", replaced(example, "0F1E2D3C", "x"), "sweeps[0].id: expected a UUID"},
             Row{"an array", "[]", "expected an object, found an array"},
             Row{"empty", "", "the file is empty"},
             Row{"binary", std::string("\0\1\2\3", 4), "not valid"},
         }) {
        EXPECT_THAT(errorOf(row.text), HasSubstr(row.error)) << row.name;
    }
}

TEST(JournalStore, RefusesAFileCutAtAnyByteAndLeavesItAsItIs)
{
    const std::string whole = example;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        InMemoryFileManager disk{{journalURL.path(), whole.substr(0, length)}};
        EXPECT_THROW(journalOn(disk).load(), DecodingError) << length << " bytes";
        EXPECT_EQ(disk.content(journalURL.path()), whole.substr(0, length));
    }
}

TEST(JournalStore, PassesOnThatTheFileCannotBeRead)
{
    InMemoryFileManager disk{{journalURL.path(), example}};
    disk.makeUnreadable(journalURL.path());

    EXPECT_THROW(journalOn(disk).load(), std::filesystem::filesystem_error);
}

TEST(JournalStore, KeepsTheOldFileWhenSavingFails)
{
    InMemoryFileManager disk{{journalURL.path(), example}};
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)};

    EXPECT_THROW(journalOn(files).save({}), std::filesystem::filesystem_error);
    EXPECT_EQ(disk.content(journalURL.path()), example);
}

TEST(JournalStore, KeepsHundredsOfSweepsWhole)
{
    Journal journal;
    for (int sweep = 0; sweep < 500; ++sweep)
        journal.sweeps.push_back({.startedAt = sweepTime + Seconds(sweep),
            .entries = {entry(Op::move, "/in/" + std::to_string(sweep), "/out")}});
    InMemoryFileManager disk;
    journalOn(disk).save(journal);
    EXPECT_EQ(journalOn(disk).load(), journal);

    journal.sweeps.push_back({.startedAt = sweepTime, .entries = {}});
    journalOn(disk).save(journal);
    EXPECT_EQ(journalOn(disk).load(), journal);
}

TEST(JournalStore, TakesATextThatItWroteAsItIs)
{
    for (const Journal& journal : {Journal(), exampleJournal(), journalOfEveryKind()}) {
        const std::string text = JSONCoders::encode(journal);
        EXPECT_TRUE(JSONCoders::isEncoded<Journal>(text)) << text;
        expectSameText(text);
    }
    InMemoryFileManager disk;
    EXPECT_EQ(journalOn(disk).loadText(), JSONCoders::encode(Journal()));
}

TEST(JournalStore, LoadsTheTextOfAFileWithAnyByteChangedAsIfItHadBeenReadAndWritten)
{
    const std::string text = JSONCoders::encode(journalOfEveryKind());
    for (std::size_t at = 0; at < text.size(); ++at) {
        for (const char other : {'\n', ' ', '"', '0', 'A', '\\', ',', '\xC3'}) {
            std::string changed = text;
            changed[at] = other;
            expectSameText(changed);
        }
        expectSameText(std::string(text).erase(at, 1));
        expectSameText(std::string(text).insert(at, 1, text[at]));
        expectSameText(text.substr(0, at));
    }
}

TEST(JournalStore, LoadsTheTextOfAFileThatAnotherProgramLaidOut)
{
    struct Row {
        const char* name;
        std::string text;
    };
    for (const Row& row : {
             Row{"in one line",
                 R"({"sweeps":[{"id":"0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0",)"
                 R"("startedAt":"2025-03-14T10:26:52+01:00","entries":[]}]})"},
             Row{"a byte-order mark", "\xEF\xBB\xBF" + std::string(example)},
             Row{"a newline at the end", std::string(example) + '\n'},
             Row{"more at the end", std::string(example) + "\n}"},
             Row{"a member of nobody's",
                 replaced(example, "\"id\"", "\"extra\" : 1,\n      \"id\"")},
             Row{"a member twice",
                 replaced(example, "\"op\" : \"archive\"",
                     "\"op\" : \"move\",\n          \"op\" : \"archive\"")},
             Row{"an escaped slash", replaced(example, "/Users", R"(\/Users)")},
             Row{"an escaped letter", replaced(example, "/Users", "/\\u0055sers")},
             Row{"an escaped control character", replaced(example, "/Users", "/\\u0001Users")},
             Row{"a small UUID", replaced(example, "0F1E2D3C", "0f1e2d3c")},
             Row{"a date of another zone", replaced(example, "53Z", "53+02:00")},
             Row{"an impossible date", replaced(example, "03-14", "02-30")},
             Row{"an empty list in one line", "{\n  \"sweeps\" : []\n}"},
         }) {
        SCOPED_TRACE(row.name);
        expectSameText(row.text);
        EXPECT_FALSE(JSONCoders::isEncoded<Journal>(row.text));
    }
}
