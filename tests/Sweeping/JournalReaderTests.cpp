#include "JournalReader.h"

#include "DecodingError.h"
#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <thread>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const FileURL journalURL{"/support/journal.json"};

/// With one entry for each name.
SweepRecord recordOf(const std::vector<std::string>& names)
{
    SweepRecord record{.startedAt = {}, .entries = {}};
    for (const std::string& name : names)
        record.entries.push_back(
            {.op = JournalEntry::Op::move, .from = "/from/" + name, .to = "/to/" + name, .at = {}});
    return record;
}

std::vector<std::string> newest(JournalReader& reader, std::size_t limit)
{
    std::vector<std::string> names;
    for (const ActivityItem& item : reader.newest(limit))
        names.emplace_back(item.fileName());
    return names;
}

/// Holds the first thread that reads a file until it is released.
class HoldingFileManager final : public FaultInjectingFileManager {
public:
    using FaultInjectingFileManager::FaultInjectingFileManager;

    std::string readFile(const FileURL& url, std::size_t maxBytes) override
    {
        if (m_isFirst.exchange(false)) {
            m_reached.set_value();
            m_released.get_future().wait();
        }
        return FaultInjectingFileManager::readFile(url, maxBytes);
    }

    void waitUntilHeld() { m_reached.get_future().wait(); }
    void release() { m_released.set_value(); }

private:
    std::atomic<bool> m_isFirst = true;
    std::promise<void> m_reached;
    std::promise<void> m_released;
};

}  // namespace

class JournalReaderTest : public testing::Test {
protected:
    int reads() const { return m_files.callCount(FileCall::readFile); }
    void write(const Journal& journal) { JournalStore(journalURL, m_disk).save(journal); }
    void replace(std::string content)
    {
        if (m_disk.fileExists(journalURL))
            m_disk.remove(journalURL.path());
        m_disk.addFile(journalURL.path(), std::move(content));
    }

    InMemoryFileManager m_disk;
    FaultInjectingFileManager m_files{m_disk};
    JournalReader m_reader{JournalStore(journalURL, m_files), m_files, 3};
};

TEST_F(JournalReaderTest, TellsTheNewestEntriesAcrossSweepsAndWhetherThereIsASweep)
{
    struct Row {
        const char* name;
        std::vector<SweepRecord> sweeps;
        bool hasSweep;
        std::array<std::vector<std::string>, 3> newest;  // 0, 2 and 100 of them
    };
    for (const Row& row : {
             Row{"no sweep", {}, false, {}},
             Row{"a sweep without entries", {recordOf({})}, true, {}},
             Row{"fewer than are asked for", {recordOf({"a"})}, true, {{{}, {"a"}, {"a"}}}},
             Row{"more than are kept", {recordOf({"a", "b", "c"}), recordOf({}), recordOf({"d"})},
                 true, {{{}, {"d", "c"}, {"d", "c", "b", "a"}}}},
         }) {
        write({row.sweeps});
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(m_reader.hasSweep(), row.hasSweep) << row.name;
            EXPECT_EQ(newest(m_reader, 0), row.newest[0]) << row.name;
            EXPECT_EQ(newest(m_reader, 2), row.newest[1]) << row.name;
            EXPECT_EQ(newest(m_reader, 100), row.newest[2]) << row.name;
        }
    }
}

TEST_F(JournalReaderTest, DecodesAgainOnlyWhenTheFileHasChanged)
{
    EXPECT_FALSE(m_reader.hasSweep());
    EXPECT_EQ(reads(), 0);
    write({{recordOf({"a"})}});
    EXPECT_TRUE(m_reader.hasSweep());
    EXPECT_TRUE(m_reader.hasSweep());
    EXPECT_THAT(newest(m_reader, 3), ElementsAre("a"));
    EXPECT_EQ(reads(), 1);

    write({});
    EXPECT_FALSE(m_reader.hasSweep());
    EXPECT_EQ(reads(), 2);
    m_disk.remove(journalURL.path());
    EXPECT_FALSE(m_reader.hasSweep());
    EXPECT_THAT(newest(m_reader, 3), IsEmpty());
}

TEST_F(JournalReaderTest, DecodesForMoreEntriesThanItKeepsUnlessThereAreNoMore)
{
    write({{recordOf({"a", "b", "c", "d"})}});
    EXPECT_THAT(newest(m_reader, 3), ElementsAre("d", "c", "b"));
    EXPECT_EQ(reads(), 1);
    EXPECT_EQ(newest(m_reader, 4).size(), 4U);
    EXPECT_EQ(newest(m_reader, 4).size(), 4U);
    EXPECT_EQ(reads(), 3);
    EXPECT_THAT(newest(m_reader, 3), ElementsAre("d", "c", "b"));
    EXPECT_EQ(reads(), 3);

    write({{recordOf({"a", "b", "c"})}});
    EXPECT_EQ(newest(m_reader, 100).size(), 3U);
    EXPECT_EQ(newest(m_reader, 100).size(), 3U);
    EXPECT_EQ(reads(), 4);
}

TEST_F(JournalReaderTest, IsCurrentOnceTheFileWasReadAsItIs)
{
    EXPECT_FALSE(m_reader.isCurrent());
    EXPECT_FALSE(m_reader.hasSweep());
    EXPECT_TRUE(m_reader.isCurrent());

    write({{recordOf({"a", "b", "c", "d"})}});
    EXPECT_FALSE(m_reader.isCurrent());
    EXPECT_EQ(reads(), 0);
    EXPECT_EQ(newest(m_reader, 4).size(), 4U);
    EXPECT_TRUE(m_reader.isCurrent());
    EXPECT_EQ(reads(), 1);

    replace("{torn");
    EXPECT_FALSE(m_reader.isCurrent());
    EXPECT_THROW(m_reader.hasSweep(), DecodingError);
    EXPECT_TRUE(m_reader.isCurrent());
}

TEST_F(JournalReaderTest, FailsOnADamagedFileWithoutDecodingItAgainUntilItIsMended)
{
    replace(R"({"sweeps":[]})");
    EXPECT_FALSE(m_reader.hasSweep());

    replace("{torn");
    EXPECT_THROW(m_reader.hasSweep(), DecodingError);
    EXPECT_THROW(m_reader.hasSweep(), DecodingError);
    EXPECT_THROW(m_reader.newest(3), DecodingError);
    EXPECT_THROW(m_reader.newest(100), DecodingError);
    EXPECT_EQ(reads(), 2);

    write({{recordOf({"a"})}});
    EXPECT_TRUE(m_reader.hasSweep());
    m_disk.remove(journalURL.path());
    EXPECT_FALSE(m_reader.hasSweep());
}

TEST_F(JournalReaderTest, DoesNotReadAFileThatIsTooLargeAgain)
{
    write({{recordOf({"a"})}});
    m_files.setFaults({failEvery(FileCall::readFile, std::errc::file_too_large)});

    EXPECT_THROW(m_reader.hasSweep(), std::filesystem::filesystem_error);
    EXPECT_THROW(m_reader.hasSweep(), std::filesystem::filesystem_error);
    EXPECT_EQ(reads(), 1);
}

TEST_F(JournalReaderTest, TriesAFileAgainThatCouldNotBeRead)
{
    // Being out of descriptors, say, leaves no trace on the file.
    write({{recordOf({"a"})}});
    m_files.setFaults({failEvery(FileCall::readFile, std::errc::too_many_files_open)});
    EXPECT_THROW(m_reader.hasSweep(), std::filesystem::filesystem_error);
    EXPECT_TRUE(m_reader.isCurrent());
    EXPECT_THROW(m_reader.newest(3), std::filesystem::filesystem_error);

    m_files.setFaults({});
    EXPECT_TRUE(m_reader.hasSweep());
    EXPECT_THAT(newest(m_reader, 3), ElementsAre("a"));
}

TEST_F(JournalReaderTest, FailsWithoutReadingWhereTheFileCannotEvenBeLookedAt)
{
    write({{recordOf({"a"})}});
    m_files.setFaults({failEvery(FileCall::identity, std::errc::permission_denied)});

    EXPECT_TRUE(m_reader.isCurrent());
    EXPECT_THROW(m_reader.hasSweep(), std::filesystem::filesystem_error);
    EXPECT_THROW(m_reader.newest(3), std::filesystem::filesystem_error);
    EXPECT_EQ(reads(), 0);
}

TEST_F(JournalReaderTest, AnswersOtherThreadsWhileOneDecodes)
{
    write({{recordOf({"a"})}});
    HoldingFileManager files(m_disk);
    JournalReader reader(JournalStore(journalURL, files), files);
    bool hasSweep = false;
    bool hasSweepToo = false;
    std::thread decoding([&] { hasSweep = reader.hasSweep(); });
    files.waitUntilHeld();

    // Were this to wait for the other thread, the test would never end.
    EXPECT_FALSE(reader.isCurrent());

    std::thread waiting([&] { hasSweepToo = reader.hasSweep(); });
    files.release();
    decoding.join();
    waiting.join();
    EXPECT_TRUE(hasSweep);
    EXPECT_TRUE(hasSweepToo);
    EXPECT_TRUE(reader.isCurrent());
    EXPECT_EQ(files.callCount(FileCall::readFile), 1);
}

TEST_F(JournalReaderTest, ReadsTheFileAgainThatChangedWhileItWasRead)
{
    write({});
    HoldingFileManager files(m_disk);
    JournalReader reader(JournalStore(journalURL, files), files);
    std::thread decoding([&] { reader.hasSweep(); });
    files.waitUntilHeld();
    write({{recordOf({"a"})}});
    files.release();
    decoding.join();

    EXPECT_FALSE(reader.isCurrent());
    EXPECT_TRUE(reader.hasSweep());
    EXPECT_THAT(newest(reader, 3), ElementsAre("a"));
    EXPECT_TRUE(reader.isCurrent());
}

TEST_F(JournalReaderTest, GivesManyThreadsOneFailureOfOneDecoding)
{
    replace("{torn");
    std::array<int, 4> failures{};
    std::vector<std::thread> threads;
    threads.reserve(failures.size());
    for (int& failed : failures) {
        threads.emplace_back([this, &failed] {
            for (int round = 0; round < 50; ++round) {
                try {
                    m_reader.newest(3);
                } catch (const DecodingError& error) {
                    failed += error.file() == journalURL.path() ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_THAT(failures, testing::Each(50));
    EXPECT_EQ(reads(), 1);
}
