#include "OtherProcess.h"
#include "PrivateMounts.h"
#include "SystemCall.h"
#include "WatchFixture.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// Two folders are watched, "in" and "late", and papers in both are filed at once.
class WatchCommandTrouble : public WatchOnBackend {
protected:
    WatchCommandTrouble()
    {
        Settings settings = watching({"in", "late"}, {filingPapers()});
        settings.gracePeriod = Seconds{0};
        writeSettings(settings);
    }

    /// The status's line on the last sweep, if that failed.
    std::string lastFailure() const
    {
        const std::string status = run({"status"}).output;
        const auto start = status.find("The last sweep failed");
        return start == std::string::npos ? "" : status.substr(start);
    }

    /// Expects the line on a sweep that failed because of "late", once, and the same from the status.
    void expectFailure(WatchProcess& process, const std::string& reason) const
    {
        const std::string line = process.readUntil("  Failed  ");
        EXPECT_THAT(line, HasSubstr(home().path("late")));
        EXPECT_THAT(line, HasSubstr(reason));
        EXPECT_THAT(lastFailure(), HasSubstr(home().path("late") + ": " + reason));
    }
};

INSTANTIATE_TEST_SUITE_P(Backends, WatchCommandTrouble, bothBackends(), backendName);

TEST_P(WatchCommandTrouble, AMissingFolderIsToldOnceAndSweptWhenItIsThere)
{
    fs::remove(home().path("late"));
    home().makeFolder("data/Tidemark");
    FileEvents notes{supportPath()};
    WatchProcess process{watch()};
    expectFailure(process, "No such file or directory");

    home().write("in/a.pdf", "A");
    notes.waitFor("last-failure.json", 2);
    EXPECT_TRUE(home().holds("in/a.pdf"));
    home().write("late/b.pdf", "B");
    process.readUntil("b.pdf -> ~/Filed/b.pdf");

    EXPECT_THAT(process.linesWith("  Failed  "), SizeIs(1));
    EXPECT_THAT(home().names("Filed"), ElementsAre("a.pdf", "b.pdf"));
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(lastFailure(), "");
}

TEST_P(WatchCommandTrouble, AFolderThatGoesAwayIsToldAndSweptWhenItIsBack)
{
    home().write("late/a.pdf", "A");
    WatchProcess process{watch()};
    process.readUntil("a.pdf -> ");

    otherProcess("mv " + home().path("late") + ' ' + home().path("away"));
    expectFailure(process, "No such file or directory");
    otherProcess("echo B > " + home().path("away/b.pdf") + "; mv " + home().path("away") + ' '
        + home().path("late"));
    process.readUntil("b.pdf -> ~/Filed/b.pdf");

    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(lastFailure(), "");
}

TEST_P(WatchCommandTrouble, AFolderThatCannotBeReadIsToldAndSweptWhenItCan)
{
    home().write("late/b.pdf", "B");
    fs::permissions(home().path("late"), fs::perms::none);
    WatchProcess process{asOrdinaryUser(watch())};
    expectFailure(process, "Permission denied");
    EXPECT_THAT(process.linesWith("~/late"), ElementsAre("  ~/late  cannot be read now"));

    fs::permissions(home().path("late"), fs::perms::owner_all);
    process.readUntil("b.pdf -> ~/Filed/b.pdf");

    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(lastFailure(), "");
}

TEST_P(WatchCommandTrouble, AFileSystemThatIsTakenAwayIsSweptWhenItIsBack)
{
    testWithPrivateMounts([this] {
        mountMemory(home().path("late"));
        home().write("in/a.pdf", "A");
        WatchProcess process{watch()};
        process.readUntil("a.pdf -> ");

        // Its answer comes when no folder is in use by the sweep any more.
        EXPECT_EQ(run({"sweep"}).status, 0);
        ASSERT_EQ(::umount2(home().path("late").c_str(), 0), 0) << std::strerror(errno);
        home().write("in/b.pdf", "B");
        process.readUntil("b.pdf -> ~/Filed/b.pdf");
        home().makeFolder("other");
        mountMemory(home().path("other"));
        home().write("other/c.pdf", "C");
        mountAgain(home().path("other"), home().path("late"));
        process.readUntil("c.pdf -> ~/Filed/c.pdf");
        home().write("late/d.pdf", "D");
        process.readUntil("d.pdf -> ~/Filed/d.pdf");

        EXPECT_THAT(process.linesWith("  Failed  "), IsEmpty());
        EXPECT_EQ(process.end(), 0);
    });
}

class WatchCommandFailure : public WatchFixture { };

TEST_F(WatchCommandFailure, ASupportFolderThatCannotBeWrittenLeavesEveryFileAloneUntilItCan)
{
    fileMyPapers();
    home().write("in/a.pdf", "A");
    WatchProcess process{asOrdinaryUser(watch())};
    process.readUntil("a.pdf -> ");
    fs::permissions(supportPath(), fs::perms::owner_read | fs::perms::owner_exec);

    home().write("in/b.pdf", "B");
    const std::string line = process.readUntil("  Failed  ");
    EXPECT_THAT(line, HasSubstr("~/in/b.pdf"));
    EXPECT_THAT(line, HasSubstr("Permission denied"));
    EXPECT_THAT(contents({"in"}), ElementsAre("B"));
    EXPECT_THAT(journaledNames(), ElementsAre("a.pdf"));

    fs::permissions(supportPath(), fs::perms::owner_all);
    home().write("in/c.pdf", "C");
    process.readUntil("c.pdf -> ~/Filed/c.pdf");

    EXPECT_THAT(journaledNames(), ElementsAre("a.pdf", "b.pdf", "c.pdf"));
    EXPECT_THAT(contents({"in"}), IsEmpty());
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandFailure, AFileThatCannotBeMovedIsToldOnceAndHoldsNoOtherUp)
{
    Settings settings = watching({"in"},
        {{.name = "Blocked",
             .match = {.fileTypes = {"txt"}},
             .action =
                 RuleAction::fixed(SweepAction::move(FileURL::directory(home().path("blocked"))))},
            filingPapers()});
    writeSettings(settings);
    home().write("blocked", "no folder");
    home().write("in/a.txt", "A");
    home().write("in/b.pdf", "B");
    WatchProcess process{watch()};
    process.readUntil("b.pdf -> ~/Filed/b.pdf");
    EXPECT_THAT(process.readUntil("  Failed  "),
        testing::AllOf(HasSubstr("  Failed    ~/in/a.txt: "), HasSubstr(home().path("blocked"))));

    home().write("in/c.pdf", "C");
    process.readUntil("c.pdf -> ~/Filed/c.pdf");
    fs::remove(home().path("blocked"));
    home().write("in/d.pdf", "D");
    process.readUntil("d.pdf -> ");

    EXPECT_EQ(process.end(), 0);
    EXPECT_THAT(process.linesWith("  Failed  "), SizeIs(1));
    EXPECT_EQ(home().read("blocked/a.txt"), "A");
}

/// The system's log, as long as the test's own mounts last.
class PrivateLog {
public:
    explicit PrivateLog(const TemporaryFolder& folder)
        : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        folder.write("null", "");
        mountAgain("/dev/null", folder.path("null"));
        mountWithChildren(folder.path(), "/dev");
        struct sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = "/dev/log"};
        EXPECT_EQ(::bind(m_socket.get(), reinterpret_cast<const struct sockaddr*>(&address),
                      sizeof address),
            0)
            << std::strerror(errno);
    }

    /// What has been logged so far.
    std::vector<std::string> lines() const
    {
        std::vector<std::string> lines;
        std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t length =
                ::recv(m_socket.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (length < 0)
                return lines;
            lines.emplace_back(buffer.data(), static_cast<std::size_t>(length));
        }
    }

private:
    static void mountWithChildren(const std::string& folder, const char* at)
    {
        EXPECT_EQ(::mount(folder.c_str(), at, nullptr, MS_BIND | MS_REC, nullptr), 0)
            << std::strerror(errno);
    }

    FileDescriptor m_socket;
};

class WatchCommandLog : public WatchFixture { };

TEST_F(WatchCommandLog, NamesAFolderThatCannotBeReadOnce)
{
    const TemporaryFolder devices;
    testWithPrivateMounts([&] {
        Settings settings = watching({"in"}, {filingPapers()});
        settings.folders.push_back({.path = home().path("late"), .rules = {}});
        settings.gracePeriod = Seconds{0};
        writeSettings(settings);
        const PrivateLog log{devices};
        FileEvents notes{supportPath()};
        ProgramStart how = watch();
        how.environment["JOURNAL_STREAM"] = "none";
        WatchProcess process{how};
        process.readUntil("  Failed  ");
        home().write("in/a.pdf", "A");
        notes.waitFor("last-failure.json", 2);

        EXPECT_EQ(process.end(), 0);

        const std::vector<std::string> lines = log.lines();
        ASSERT_THAT(lines, SizeIs(1));
        EXPECT_THAT(lines.front(), HasSubstr("Tidemark: the sweep failed: "));
        EXPECT_THAT(lines.front(), HasSubstr(home().path("late")));
        EXPECT_THAT(lines.front(), HasSubstr("No such file or directory"));
    });
}

/// Tidemark's own folder, in which somebody interferes.
class WatchCommandOwnFolder : public WatchFixture {
protected:
    WatchCommandOwnFolder() { writeSettings(watching({"in"}, {filingPapers()})); }

    /// Expects that no second one can run beside the first.
    void expectToBeRefused() const
    {
        const Outcome second = run({"watch"});
        EXPECT_EQ(second.status, 1);
        EXPECT_THAT(second.error, HasSubstr("Tidemark is running already"));
    }
};

TEST_F(WatchCommandOwnFolder, ASocketThatIsRemovedIsServedAgain)
{
    WatchProcess process{watch()};
    process.readStart();
    fs::remove(supportPath("socket"));
    EXPECT_THAT(run({"pause"}).output, HasSubstr("paused"));
    expectToBeRefused();
    EXPECT_EQ(process.end(), 0);
    EXPECT_FALSE(fs::exists(supportPath("socket")));
}

TEST_F(WatchCommandOwnFolder, WhatIsNoSocketIsToldAndLeftAlone)
{
    WatchProcess process{watch()};
    process.readStart();
    fs::rename(supportPath("socket"), supportPath("away"));
    home().write("data/Tidemark/socket", "not ours");
    const Outcome outcome = run({"pause"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("not a socket"));
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(home().read("data/Tidemark/socket"), "not ours");
}

TEST_F(WatchCommandOwnFolder, ALockThatIsRemovedIsTakenAgain)
{
    WatchProcess process{watch()};
    process.readStart();
    FileEvents arrivals{supportPath()};
    fs::remove(supportPath("lock"));
    arrivals.waitFor("socket");
    expectToBeRefused();
    EXPECT_THAT(run({"pause"}).output, HasSubstr("paused"));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandOwnFolder, AFolderThatIsRenamedIsMadeAgain)
{
    WatchProcess process{watch()};
    process.readStart();
    FileEvents arrivals{home().path("data")};
    fs::rename(supportPath(), home().path("data/away"));
    arrivals.waitFor("Tidemark");
    EXPECT_THAT(run({"pause"}).output, HasSubstr("paused"));
    expectToBeRefused();
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandOwnFolder, WhereAnotherHasTakenOverItEnds)
{
    WatchProcess first{watch()};
    first.readStart();
    first.signal(SIGSTOP);
    fs::remove(supportPath("lock"));
    fs::remove(supportPath("socket"));
    {
        ProgramStart how = watch();
        WatchProcess second{how};
        second.readStart();
        first.signal(SIGCONT);
        EXPECT_EQ(first.wait(), 1);
        EXPECT_EQ(second.end(), 0);
    }
    EXPECT_THAT(complaints(), HasSubstr("another Tidemark has taken over"));
}

}  // namespace
}  // namespace tidemark
