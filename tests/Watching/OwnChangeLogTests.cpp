#include "OwnChangeLog.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <optional>

namespace tidemark {

namespace {

class OwnChangeLogTest : public testing::Test {
protected:
    DirectoryIdentity identity(std::string_view folder = "") const
    {
        struct stat status = {};
        EXPECT_EQ(::stat(m_folder.path(folder).c_str(), &status), 0);
        return {status.st_dev, status.st_ino};
    }

    static void drain(OwnChangeLog::Reader& reader)
    {
        reader.beginDrain();
        reader.endDrain();
    }

    TemporaryFolder m_folder;
    OwnChangeLog m_log;
};

}  // namespace

TEST_F(OwnChangeLogTest, KnowsAChangeUntilTheQueueWasEmptiedOnceAfterItsEnd)
{
    OwnChangeLog::Reader reader{m_log};
    auto change = m_log.begin({m_folder.url("a")});
    EXPECT_TRUE(reader.isOwn(identity(), "a"));
    EXPECT_FALSE(reader.isOwn(identity(), "b"));
    drain(reader);
    EXPECT_TRUE(reader.isOwn(identity(), "a"));
    change.reset();
    EXPECT_TRUE(reader.isOwn(identity(), "a"));
    drain(reader);
    EXPECT_FALSE(reader.isOwn(identity(), "a"));
    EXPECT_EQ(m_log.size(), 0U);
}

TEST_F(OwnChangeLogTest, AChangeThatEndsDuringALookIsKnownDuringTheNext)
{
    OwnChangeLog::Reader reader{m_log};
    auto change = m_log.begin({m_folder.url("a")});
    reader.beginDrain();
    change.reset();
    reader.endDrain();
    EXPECT_TRUE(reader.isOwn(identity(), "a"));
    drain(reader);
    EXPECT_FALSE(reader.isOwn(identity(), "a"));
}

TEST_F(OwnChangeLogTest, KnowsEveryEntryOfAMoveAndChangesOfTheSameEntryAtOnce)
{
    m_folder.makeFolder("in");
    OwnChangeLog::Reader reader{m_log};
    auto move = m_log.begin({m_folder.url("a"), m_folder.url("in/b")});
    auto again = m_log.begin({m_folder.url("a")});
    move.reset();
    drain(reader);
    EXPECT_TRUE(reader.isOwn(identity(), "a"));
    EXPECT_FALSE(reader.isOwn(identity("in"), "b"));
    again.reset();
    drain(reader);
    EXPECT_EQ(m_log.size(), 0U);
}

TEST_F(OwnChangeLogTest, KnowsAnEntryByWhicheverPathItWasReached)
{
    m_folder.makeFolder("in");
    m_folder.makeLink("link", "in");
    OwnChangeLog::Reader reader{m_log};
    const auto change = m_log.begin({m_folder.url("link/a")});
    std::filesystem::rename(m_folder.path("in"), m_folder.path("renamed"));
    EXPECT_TRUE(reader.isOwn(identity("renamed"), "a"));
}

TEST_F(OwnChangeLogTest, KeepsNothingWithoutAReader)
{
    auto change = m_log.begin({m_folder.url("a")});
    EXPECT_EQ(m_log.size(), 0U);
    OwnChangeLog::Reader reader{m_log};
    change.reset();
    EXPECT_EQ(m_log.size(), 0U);
}

TEST_F(OwnChangeLogTest, EveryReaderHasToSeeAChange)
{
    OwnChangeLog::Reader first{m_log};
    std::optional<OwnChangeLog::Reader> second{std::in_place, m_log};
    m_log.begin({m_folder.url("a")}).reset();
    drain(first);
    EXPECT_TRUE(first.isOwn(identity(), "a"));
    second.reset();
    EXPECT_EQ(m_log.size(), 0U);
}

TEST_F(OwnChangeLogTest, AnEntryWhoseFolderDoesNotExistIsLeftOut)
{
    const OwnChangeLog::Reader reader{m_log};
    const auto change = m_log.begin({m_folder.url("none/a"), m_folder.url("b")});
    EXPECT_EQ(m_log.size(), 1U);
}

TEST_F(OwnChangeLogTest, AChangeMayOutliveTheLog)
{
    std::optional<OwnChangeLog> log{std::in_place};
    const OwnChangeLog::Reader reader{*log};
    const auto change = log->begin({m_folder.url("a")});
    log.reset();
    EXPECT_TRUE(reader.isOwn(identity(), "a"));
}

}  // namespace tidemark
