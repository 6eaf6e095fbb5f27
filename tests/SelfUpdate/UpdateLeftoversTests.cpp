#include "PrivateMounts.h"
#include "SleepingProcess.h"
#include "TemporaryFolder.h"
#include "UpdateLeftovers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <ctime>
#include <filesystem>

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

namespace fs = std::filesystem;

constexpr std::time_t day = std::time_t{24} * 60 * 60;

/// A temporary directory in which updates were made.
class Leftovers {
public:
    /// The work folder of an application.
    std::string add(pid_t application) const
    {
        std::string name = "qrv-update-" + std::to_string(application);
        m_folder.write(name + "/unpacked/Tidemark.app/bin/tidemark", "new");
        return name;
    }

    /// Its script, written so many seconds ago.
    std::string addScript(pid_t application, std::time_t age) const
    {
        std::string name = "qrv-update-" + std::to_string(application) + ".sh";
        m_folder.write(name, "#!/bin/sh\n");
        const timespec time{.tv_sec = std::time(nullptr) - age, .tv_nsec = 0};
        const timespec both[] = {time, time};
        EXPECT_EQ(::utimensat(AT_FDCWD, m_folder.path(name).c_str(), both, 0), 0);
        return name;
    }

    void remove() const { UpdateLeftovers::remove(FileURL::directory(m_folder.path())); }

    const TemporaryFolder& folder() const { return m_folder; }
    std::vector<std::string> names() const { return m_folder.names("."); }

private:
    const TemporaryFolder m_folder;
};

/// The number of a process that has ended.
pid_t endedProcess()
{
    SleepingProcess process;
    process.end();
    return process.id();
}

}  // namespace

TEST(UpdateLeftovers, OfAnApplicationThatIsGoneAreRemoved)
{
    const Leftovers leftovers;
    leftovers.add(endedProcess());
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), IsEmpty());
}

TEST(UpdateLeftovers, OfAnApplicationThatRunsStay)
{
    const Leftovers leftovers;
    const SleepingProcess application;
    const std::string work = leftovers.add(application.id());
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), ElementsAre(work));
}

TEST(UpdateLeftovers, OfASwapThatMayBeAtWorkStayForADay)
{
    const Leftovers leftovers;
    const pid_t application = endedProcess();
    const std::string work = leftovers.add(application);
    const std::string script = leftovers.addScript(application, day - 60);
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), UnorderedElementsAre(work, script));

    leftovers.addScript(application, day + 60);
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), IsEmpty());
}

TEST(UpdateLeftovers, AreNothingElse)
{
    const Leftovers leftovers;
    const std::vector<std::string> others{"qrv-update-", "qrv-update-12x", "qrv-update--1",
        "qrv-update-0", "journal.json", "other-1"};
    for (const std::string& name : others)
        leftovers.folder().write(name, "kept");
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), testing::UnorderedElementsAreArray(others));
}

TEST(UpdateLeftovers, AreRemovedWithFoldersThatTheirOwnerMayNotChange)
{
    const Leftovers leftovers;
    const ScopedOrdinaryUser user{leftovers.folder()};
    const std::string work = leftovers.folder().path(leftovers.add(endedProcess()));
    fs::create_directories(work + "/unpacked/closed/deeper");
    for (const char* folder : {"/unpacked/closed/deeper", "/unpacked/closed", "/unpacked"})
        fs::permissions(work + folder, fs::perms::owner_read);
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), IsEmpty());
}

TEST(UpdateLeftovers, AreRemovedWithoutFollowingLinks)
{
    const Leftovers leftovers;
    const TemporaryFolder elsewhere;
    elsewhere.write("file", "kept");
    leftovers.folder().makeLink("qrv-update-" + std::to_string(endedProcess()), elsewhere.path());
    leftovers.remove();
    EXPECT_THAT(leftovers.names(), IsEmpty());
    EXPECT_THAT(elsewhere.names("."), ElementsAre("file"));
}

}  // namespace tidemark
