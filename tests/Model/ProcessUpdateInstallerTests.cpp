#include "EventLoop.h"
#include "ProcessUpdateInstaller.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemark {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const UpdateInfo update{.version = "1.3", .downloadURL = QUrl{"https://example.org/u%20.zip"}};

}  // namespace

class ProcessUpdateInstallerTest : public testing::Test {
protected:
    ProcessUpdateInstallerTest() { requireApplication(); }

    /// An installer whose process runs this script, which may read what is to be installed.
    static std::unique_ptr<ProcessUpdateInstaller> installer(const std::string& script)
    {
        return std::make_unique<ProcessUpdateInstaller>(QStringLiteral("/bin/sh"),
            QStringList{
                QStringLiteral("-c"), QString::fromStdString(script), QStringLiteral("sh")});
    }

    void begin(UpdateInstaller& installer)
    {
        installer.install(
            update,
            [this](std::int64_t received, std::optional<std::int64_t> total) {
                m_progress.push_back(std::to_string(received) + " of "
                    + (total ? std::to_string(*total) : "unknown"));
            },
            [this](const std::exception_ptr& failure) {
                m_ends.push_back(InstallReport::Failure{});
                if (failure)
                    m_ends.back() = InstallReport::Failure::of(failure);
                m_hasFailed = failure != nullptr;
            });
    }

    /// How an installation by this script ends: "waits", or a case and a reason.
    std::string end(const std::string& script)
    {
        m_ends.clear();
        const auto one = installer(script);
        begin(*one);
        EXPECT_TRUE(m_ends.empty()) << "told before it began";
        EXPECT_TRUE(runUntil([this] { return !m_ends.empty(); }));
        runPending();
        EXPECT_EQ(m_ends.size(), 1U);
        return m_hasFailed ? InstallReport{m_ends[0]}.line() : "waits\n";
    }

    std::vector<std::string> m_progress;
    std::vector<InstallReport::Failure> m_ends;
    bool m_hasFailed = false;
};

TEST_F(ProcessUpdateInstallerTest, EndsAsTheProcessReports)
{
    const struct {
        const char* script;
        const char* end;
    } examples[] = {
        {"echo waits", "waits\n"},
        {"echo nonsense; echo progress 1; printf 'wa'; printf 'its\\n'; exit 3", "waits\n"},
        {"echo 'failed badSignature by another key'", "failed badSignature by another key\n"},
        {"echo 'failed other disk full'; exit 1", "failed other disk full\n"},
        {"echo \"failed download $(tr -d '\\n ')\"",
            "failed download "
            "{\"notes\":\"\",\"url\":\"https://example.org/u%20.zip\",\"version\":\"1.3\"}\n"},
    };
    for (const auto& example : examples)
        EXPECT_EQ(end(example.script), example.end) << example.script;
}

TEST_F(ProcessUpdateInstallerTest, AProcessThatEndsWithoutAReportHasFailed)
{
    for (const char* script : {"true", "echo progress 1", "exit 1", "kill -9 $$", "printf waits",
             "head -c 100000 /dev/zero; exec sleep 600"})
        EXPECT_EQ(end(script), "failed other the updater ended before it was done\n") << script;
}

TEST_F(ProcessUpdateInstallerTest, AProcessThatCannotBeStartedHasFailed)
{
    ProcessUpdateInstaller one{QStringLiteral("/does/not/exist"), {}};
    for (int time = 1; time <= 2; ++time) {
        m_ends.clear();
        begin(one);
        ASSERT_TRUE(m_ends.empty());
        ASSERT_TRUE(runUntil([this] { return !m_ends.empty(); }));
        EXPECT_THAT(m_ends[0].reason, HasSubstr("cannot start the updater: "));
    }
}

TEST_F(ProcessUpdateInstallerTest, TellsHowFarTheDownloadIs)
{
    EXPECT_EQ(end("echo progress 1; echo progress 2 3; echo waits"), "waits\n");
    EXPECT_THAT(m_progress, ElementsAre("1 of unknown", "2 of 3"));
}

TEST_F(ProcessUpdateInstallerTest, OneUpdateAtATime)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto one = installer("read line <'" + pipe + "'; echo waits");
    begin(*one);
    begin(*one);
    ASSERT_TRUE(runUntil([this] { return m_ends.size() == 1; }));
    EXPECT_EQ(m_ends[0].reason, "an update is being installed already");

    const int writer = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::write(writer, "go\n", 3), 3);
    ASSERT_TRUE(runUntil([this] { return m_ends.size() == 2; }));
    EXPECT_FALSE(m_hasFailed);
    ::close(writer);

    begin(*one);
    ASSERT_TRUE(runUntil([this] { return m_ends.size() == 3; }));
    EXPECT_TRUE(m_hasFailed) << "two swaps would wait";
}

TEST_F(ProcessUpdateInstallerTest, AfterAFailureItCanBeTriedAgain)
{
    const TemporaryFolder folder;
    const std::string file = folder.path("tried");
    const auto one = installer("[ -e '" + file + "' ] && echo waits; touch '" + file + "'; exit 1");
    begin(*one);
    ASSERT_TRUE(runUntil([this] { return m_ends.size() == 1; }));
    EXPECT_TRUE(m_hasFailed);
    begin(*one);
    ASSERT_TRUE(runUntil([this] { return m_ends.size() == 2; }));
    EXPECT_FALSE(m_hasFailed);
}

TEST_F(ProcessUpdateInstallerTest, LetsTheProcessTidyUpWhenItIsDestroyed)
{
    const TemporaryFolder folder;
    const std::string tidy = folder.path("tidy");
    auto one = installer(
        "trap 'echo >\"" + tidy + "\"; exit' TERM; echo progress 1; while :; do sleep 0.01; done");
    begin(*one);
    ASSERT_TRUE(runUntil([this] { return !m_progress.empty(); }));
    one.reset();
    EXPECT_EQ(::access(tidy.c_str(), F_OK), 0);
    runPending();
    EXPECT_TRUE(m_ends.empty());
}

}  // namespace tidemark
