#include "EventLoop.h"
#include "ModelFixture.h"
#include "ProcessUpdateFinder.h"
#include "TemporaryFolder.h"

#include <QSocketNotifier>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemark {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ProcessUpdateFinderTest : public testing::Test {
protected:
    ProcessUpdateFinderTest() { requireApplication(); }

    std::unique_ptr<UpdateFinder::Search> begin(const std::string& script)
    {
        m_calls = 0;
        ProcessUpdateFinder finder{QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), QString::fromStdString(script), QStringLiteral("sh")}, m_limits,
            m_log};
        return finder.find("1.2", [this](std::optional<UpdateInfo> update) {
            ++m_calls;
            m_found = update ? update->version : "none";
        });
    }

    /// The version found by a process that runs this script.
    std::string find(const std::string& script)
    {
        const auto search = begin(script);
        EXPECT_EQ(m_calls, 0);
        EXPECT_TRUE(runUntil([this] { return m_calls > 0; }));
        runPending();
        EXPECT_EQ(m_calls, 1);
        return m_found;
    }

    ProcessUpdateFinder::Limits m_limits;
    RememberingLog m_log;
    std::string m_found;
    int m_calls = 0;
};

TEST_F(ProcessUpdateFinderTest, ReadsWhatTheProcessPrints)
{
    EXPECT_EQ(
        find(R"(printf '%s' '{"version": "1.3", "url": "https://example.org/u.zip"}')"), "1.3");
}

TEST_F(ProcessUpdateFinderTest, TellsTheProcessWhichVersionRuns)
{
    EXPECT_EQ(
        find(R"(printf '{"version": "%s.9", "url": "https://example.org/u.zip"}' "$1")"), "1.2.9");
}

TEST_F(ProcessUpdateFinderTest, WhatIsNoNewerVersionIsNone)
{
    for (const char* script : {"true", "echo nonsense",
             R"(printf '%s' '{"version": "1.2", "url": "https://example.org/u.zip"}')",
             R"(printf '%s' '{"version": "1.3", "url": "http://example.org/u.zip"}')",
             R"(printf '%s' '{"version": "1.3", "url": "https://example.org/u.zip"}'; exit 1)",
             R"(printf '%s' '{"version": "1.3", "url": "https://example.org/u.zip"}'; kill -9 $$)"})
        EXPECT_EQ(find(script), "none") << script;
}

TEST_F(ProcessUpdateFinderTest, AProcessThatCannotBeStartedFindsNothing)
{
    ProcessUpdateFinder finder{QStringLiteral("/does/not/exist"), {}, {}, m_log};
    const auto search = finder.find("1.2", [this](const auto& update) {
        ++m_calls;
        EXPECT_FALSE(update);
    });
    EXPECT_EQ(m_calls, 0);
    EXPECT_TRUE(runUntil([this] { return m_calls == 1; }));
    EXPECT_THAT(m_log.lines, ElementsAre(HasSubstr("it cannot be started: ")));
}

TEST_F(ProcessUpdateFinderTest, AFailureIsLogged)
{
    m_limits.output = 10;
    const struct {
        const char* script;
        const char* line;
        std::chrono::milliseconds whole = ProcessUpdateFinder::Limits{}.whole;
    } examples[] = {
        {"exit 127", "it ended with status 127"},
        {"kill -9 $$", "it was ended"},
        {"exec sleep 600", "it takes too long", 50ms},
        {"exec yes", "it tells too much"},
    };
    for (const auto& example : examples) {
        m_log.lines.clear();
        m_limits.whole = example.whole;
        find(example.script);
        EXPECT_THAT(m_log.lines,
            ElementsAre(std::string{"the updater found out nothing: "} + example.line));
    }
    m_log.lines.clear();
    m_limits = {};
    find("true");
    EXPECT_THAT(m_log.lines, IsEmpty());
}

TEST_F(ProcessUpdateFinderTest, RestsBeforeTheFirstSearchOnly)
{
    m_limits.restAtFirst = 1h;
    ProcessUpdateFinder finder{QStringLiteral("/bin/true"), {}, m_limits, m_log};
    const auto find = [&] {
        m_calls = 0;
        return finder.find("1.2", [this](const auto& /*update*/) { ++m_calls; });
    };
    const auto first = find();
    const auto second = find();
    EXPECT_TRUE(runUntil([this] { return m_calls == 1; }));
    runPending();
    EXPECT_EQ(m_calls, 1) << "the first would have been told before";
}

TEST_F(ProcessUpdateFinderTest, OneThatNeverEndsIsGivenUp)
{
    m_limits.whole = 50ms;
    EXPECT_EQ(find("exec sleep 600"), "none");
}

TEST_F(ProcessUpdateFinderTest, OneThatPrintsWithoutEndIsGivenUp)
{
    EXPECT_EQ(find("exec yes"), "none");
}

TEST_F(ProcessUpdateFinderTest, EndsTheProcessAndSaysNothingWhenItIsDestroyed)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    auto search = begin("exec >'" + pipe + "'; echo here; exec sleep 600");
    // It holds the pipe open for as long as it lives.
    QSocketNotifier notifier{reader, QSocketNotifier::Read};
    char text[16];
    EXPECT_TRUE(runUntil([&] { return ::read(reader, text, sizeof text) > 0; }));
    search.reset();
    EXPECT_EQ(::read(reader, text, sizeof text), 0);
    runPending();
    EXPECT_EQ(m_calls, 0);
    ::close(reader);
}

}  // namespace tidemark
