#include "CommandLineFixture.h"
#include "PseudoTerminal.h"
#include "SupportLock.h"

#include <gmock/gmock.h>

namespace tidemark {
namespace {

class Locking : public CommandLineFixture {
protected:
    SupportLock lock() const { return SupportLock::acquire(FileURL::directory(supportPath())); }
};

TEST_F(Locking, AChangingCommandWaitsForAnotherAndSaysSo)
{
    home().makeFolder("in");
    const std::vector<std::vector<std::string>> commands{{"sweep"}, {"undo"}, {"pause"}, {"resume"},
        {"folders", "add", "in"}, {"folders", "remove", "in"}};
    for (const std::vector<std::string>& command : commands) {
        SCOPED_TRACE(command.back());
        PseudoTerminal terminal;
        ProgramStart how = start(command);
        how.errorFile = terminal.path();
        std::optional<SupportLock> held = lock();

        ProgramProcess process{how};
        terminal.readUntil("waiting for another tidemarkctl to finish");
        held.reset();

        EXPECT_EQ(process.wait(), 0);
        EXPECT_TRUE(terminal.readAll().ends_with("\r\x1b[K")) << "the notice stays behind";
    }
}

TEST_F(Locking, AReadingCommandDoesNotWait)
{
    const SupportLock held = lock();

    for (const char* command : {"status", "preview", "activity", "folders"})
        EXPECT_EQ(run({command}).status, 0) << command;
}

TEST_F(Locking, WorksOnWhatTheOtherLeft)
{
    PseudoTerminal terminal;
    ProgramStart how = start({"pause"});
    how.errorFile = terminal.path();
    std::optional<SupportLock> held = lock();
    ProgramProcess process{how};
    terminal.readUntil("waiting");

    writeSettings(watching({"in"}, {}));
    held.reset();
    ASSERT_EQ(process.wait(), 0);

    const QJsonObject status = json({"status"}).object();
    EXPECT_TRUE(status["isPaused"].toBool());
    EXPECT_EQ(status["folders"].toArray().size(), 1);
}

}  // namespace
}  // namespace tidemark
