#include "ScopedEnvironment.h"
#include "Subprocess.h"
#include "TemporaryFolder.h"
#include "WakeUp.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

namespace tidemark {

namespace {

int statusOf(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), TIDEMARK_UPDATER);
    const WakeUp never;
    return Subprocess::wait(
        Subprocess::start(arguments, Subprocess::Session::shared), never.descriptor());
}

class UpdaterProgram : public testing::Test {
protected:
    void SetUp() override
    {
        if (::access(TIDEMARK_UPDATER, X_OK) != 0)
            GTEST_SKIP() << "this user may not look into the build folder";
    }

    static std::string self() { return std::to_string(::getpid()); }

private:
    const TemporaryFolder m_folder;
    const ScopedHome m_home{m_folder.path()};
    const ScopedEnvironment m_temporary{"TMPDIR", m_folder.path()};
};

}  // namespace

TEST_F(UpdaterProgram, RefusesWhatItIsNotStartedFor)
{
    const std::vector<std::string> examples[] = {
        {},
        {"--help"},
        {"check"},
        {"check", self()},
        {"check", self(), "1.0", "more"},
        {"install", self(), "1.0", "more"},
        {"remove", self(), "1.0"},
        {"check", "", "1.0"},
        {"check", "x", "1.0"},
    };
    for (const auto& arguments : examples)
        EXPECT_EQ(statusOf(arguments), 2) << testing::PrintToString(arguments);
}

TEST_F(UpdaterProgram, WorksForTheProcessThatHasStartedItAlone)
{
    for (const char* work : {"check", "install"})
        for (const std::string& process : {std::string{"1"}, std::to_string(::getppid())})
            EXPECT_EQ(statusOf({work, process, "1.0"}), 2) << work << ' ' << process;
}

TEST_F(UpdaterProgram, InstallsNothingThatIsNotAnnounced)
{
    // Its standard input is empty.
    EXPECT_EQ(statusOf({"install", self(), "1.0"}), 1);
}

}  // namespace tidemark
