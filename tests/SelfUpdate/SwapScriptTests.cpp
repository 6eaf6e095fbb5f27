#include "EventLoop.h"
#include "PrivateMounts.h"
#include "ScopedEnvironment.h"
#include "SleepingProcess.h"
#include "SwapScript.h"
#include "TestBundle.h"
#include "WakeUp.h"

#include <QFileSystemWatcher>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

namespace tidemark {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

const std::string noTool = "/nowhere/systemd-run";

/// An installed bundle of version 1.2 and a new one of version 1.3 in a work folder, ready to be swapped.
class Swap {
public:
    explicit Swap(const std::string& folder = "Applications")
        : m_folder(folder)
        , m_installed(m_root, folder + "/Tidemark.app", "1.2", m_developer)
        , m_new(m_root, work() + "/unpacked/Tidemark.app", "1.3", m_developer)
        , m_before(m_installed.snapshot())
    {
    }

    const TemporaryFolder& root() const { return m_root; }
    const TestBundle& installed() const { return m_installed; }
    const TestBundle& newBundle() const { return m_new; }
    const auto& before() const { return m_before; }
    SleepingProcess& application() { return m_application; }
    WakeUp& stop() { return m_stop; }

    std::string path(const std::string& name) const { return m_root.path(m_folder + '/' + name); }
    FileURL script() const { return m_root.url(work() + ".sh"); }

    pid_t launch(const std::string& scopeTool = noTool) const
    {
        return SwapScript::launch(
            script(), m_new.url(), m_installed.url(), m_application.id(), m_stop, scopeTool);
    }

    /// Has the application end and the script do its work; what the program told that was started then.
    std::string finish(pid_t script)
    {
        m_application.end();
        EXPECT_EQ(::waitpid(script, nullptr, 0), script);
        return started();
    }

    std::string run() { return finish(launch()); }

    /// Waits for what the started program tells.
    std::string started() const
    {
        requireApplication();
        const std::string note = path("Tidemark.app.started");
        const QFileSystemWatcher watcher{{QString::fromStdString(m_root.path(m_folder))}};
        EXPECT_TRUE(runUntil([&] { return fs::exists(note); }));
        return m_root.read(m_folder + "/Tidemark.app.started");
    }

    std::vector<std::string> names() const { return m_root.names(m_folder); }

private:
    std::string work() const { return "tmp/qrv-update-" + std::to_string(m_application.id()); }

    const TemporaryFolder m_root;
    const std::string m_folder;
    SleepingProcess m_application;
    WakeUp m_stop;
    const TestDeveloper m_developer;
    const TestBundle m_installed;
    const TestBundle m_new;
    const std::map<std::string, std::string> m_before;
};

}  // namespace

TEST(SwapScript, HasTheLinesInOrder)
{
    const std::string text = SwapScript::text(4711);
    EXPECT_TRUE(text.starts_with("#!/bin/sh\nwhile kill -0 4711 2>/dev/null"));
    std::size_t place = 0;
    for (const char* part :
        {"do sleep 0.2; done\n", R"(cp -aT "$1" "$2.new")", R"(rm -rf "$2.bak")",
            R"(mv -T "$2" "$2.bak")", R"(mv -T "$2.new" "$2")", R"(rm -rf "$2.bak")",
            R"(mv -T "$2.bak" "$2")", R"(rm -rf "${0%.sh}" "$0")", R"("$2/bin/tidemark")"}) {
        place = text.find(part, place);
        ASSERT_NE(place, std::string::npos) << part;
        ++place;
    }
    EXPECT_FALSE(text.ends_with('\n'));
}

TEST(SwapScript, PutsTheNewBundleInPlaceAndStartsIt)
{
    Swap swap;
    const auto expected = swap.newBundle().snapshot();

    EXPECT_EQ(swap.run(), "1.3 \n");

    EXPECT_EQ(swap.installed().snapshot(), expected);
    EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
    EXPECT_THAT(swap.root().names("tmp"), IsEmpty());
}

TEST(SwapScript, IsForTheUserAlone)
{
    Swap swap;
    const pid_t script = swap.launch();
    struct stat status = {};
    EXPECT_EQ(::stat(swap.script().path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    swap.finish(script);
}

TEST(SwapScript, WaitsForTheApplication)
{
    Swap swap;
    const pid_t script = swap.launch();
    EXPECT_EQ(::waitpid(script, nullptr, WNOHANG), 0);
    EXPECT_EQ(swap.installed().snapshot(), swap.before());
    EXPECT_EQ(swap.finish(script), "1.3 \n");
}

TEST(SwapScript, TakesEveryPath)
{
    for (const char* folder : {"with blank", "it's", "say \"hi\"", "$HOME `id`", "-rf", "a\nb",
             "\xc3\xbc", "*", "back\\slash", "; false"}) {
        SCOPED_TRACE(folder);
        Swap swap{folder};
        EXPECT_EQ(swap.run(), "1.3 \n");
        EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
    }
}

TEST(SwapScript, RemovesABackupLeftFromBefore)
{
    {
        Swap swap;
        swap.root().write("Applications/Tidemark.app.bak/bin/tidemark", "old");
        EXPECT_EQ(swap.run(), "1.3 \n");
        EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
    }
    Swap swap;
    swap.root().write("Applications/Tidemark.app.bak", "a file");
    EXPECT_EQ(swap.run(), "1.3 \n");
    EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
}

TEST(SwapScript, BringsTheOldBundleBackWhenThereIsNothingToCopy)
{
    Swap swap;
    fs::remove_all(swap.newBundle().url().path());
    fs::remove_all(swap.newBundle().path(""));

    EXPECT_EQ(swap.run(), "1.2 \n");

    EXPECT_EQ(swap.installed().snapshot(), swap.before());
    EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
}

TEST(SwapScript, BringsTheOldBundleBackWhenTheDiskIsFull)
{
    testWithPrivateMounts([] {
        const TemporaryFolder disk;
        mountMemory(disk.path(), "size=256k");
        Swap swap;
        // What fits is copied before what does not.
        swap.newBundle().write("share/large", std::string(1 << 20, 'x'));
        const std::string applications = swap.root().path("Applications");
        fs::copy(applications, disk.path(),
            fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        mountAgain(disk.path(), applications);
        ASSERT_EQ(swap.installed().snapshot(), swap.before());

        EXPECT_EQ(swap.run(), "1.2 \n");

        EXPECT_EQ(swap.installed().snapshot(), swap.before());
        EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
    });
}

TEST(SwapScript, LeavesABundleThatCannotBeMovedAside)
{
    testWithPrivateMounts([] {
        Swap swap;
        // What is mounted is busy.
        mountAgain(swap.path("Tidemark.app"), swap.path("Tidemark.app"));

        EXPECT_EQ(swap.run(), "1.2 \n");

        EXPECT_EQ(swap.installed().snapshot(), swap.before());
    });
}

TEST(SwapScript, LeavesTheBundleWhenAnOldBackupCannotBeRemoved)
{
    testWithPrivateMounts([] {
        Swap swap;
        swap.root().write("Applications/Tidemark.app.bak/bin/tidemark", "older");
        mountAgain(swap.path("Tidemark.app.bak"), swap.path("Tidemark.app.bak"));

        EXPECT_EQ(swap.run(), "1.2 \n");

        EXPECT_EQ(swap.installed().snapshot(), swap.before());
    });
}

TEST(SwapScript, StartsWithTheEnvironmentOfTheApplication)
{
    const ScopedEnvironment mark{"MARK", "kept"};
    Swap swap;
    EXPECT_EQ(swap.run(), "1.3 kept\n");
}

TEST(SwapScript, OutlivesTheGroupAndTheSessionOfItsParent)
{
    Swap swap;
    int ready[2] = {};
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t parent = ::fork();
    if (parent == 0) {
        ::setsid();
        const pid_t script = swap.launch();
        (void)!::write(ready[1], &script, sizeof script);
        for (;;)
            ::pause();
    }
    pid_t script = 0;
    ASSERT_EQ(::read(ready[0], &script, sizeof script), ssize_t{sizeof script});
    EXPECT_EQ(::getsid(script), script);
    EXPECT_EQ(::kill(-parent, SIGKILL), 0);
    ASSERT_EQ(::waitpid(parent, nullptr, 0), parent);

    swap.application().end();

    EXPECT_EQ(swap.started(), "1.3 \n");
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(SwapScript, LeavesTheUnitOfTheApplicationWhereThereIsAUserManager)
{
    Swap swap;
    // Notes how it was called and does as it is told, like systemd-run.
    const FileURL tool = swap.root().write("tmp/scope",
        "#!/bin/sh\n"
        "for word; do printf '%s ' \"$word\"; done >>'"
            + swap.root().path("calls")
            + "'\n"
              "echo >>'"
            + swap.root().path("calls")
            + "'\n"
              "while [ \"$1\" != -- ]; do shift; done\n"
              "shift\n"
              "exec \"$@\"\n");
    ASSERT_EQ(::chmod(tool.path().c_str(), 0700), 0);

    EXPECT_EQ(swap.finish(swap.launch(tool.path())), "1.3 \n");

    const std::string calls = swap.root().read("calls");
    EXPECT_THAT(calls, HasSubstr("--user --scope --collect"));
    EXPECT_THAT(calls, HasSubstr(swap.script().path()));
}

TEST(SwapScript, StartsWithoutAUserManager)
{
    Swap swap;
    const FileURL tool = swap.root().write("tmp/scope", "#!/bin/sh\nexit 1\n");
    ASSERT_EQ(::chmod(tool.path().c_str(), 0700), 0);
    EXPECT_EQ(swap.finish(swap.launch(tool.path())), "1.3 \n");
}

TEST(SwapScript, DoesNotWaitForAnApplicationThatHasEndedAndThatNobodyReaps)
{
    Swap swap;
    const pid_t zombie = Subprocess::start({"true"}, Subprocess::Session::shared);
    siginfo_t info = {};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(zombie), &info, WEXITED | WNOWAIT), 0);
    const pid_t script = SwapScript::launch(
        swap.script(), swap.newBundle().url(), swap.installed().url(), zombie, swap.stop(), noTool);
    EXPECT_EQ(::waitpid(script, nullptr, 0), script);
    EXPECT_EQ(swap.started(), "1.3 \n");
    ::waitpid(zombie, nullptr, 0);
}

TEST(SwapScript, LeavesABundleThatIsNoLongerTheOneToBeReplaced)
{
    Swap swap;
    const pid_t script = swap.launch();
    // Another application that ran from it has been quicker.
    swap.installed().write("Info.json", R"({"CFBundleShortVersionString": "1.4"})");
    const auto expected = swap.installed().snapshot();

    EXPECT_EQ(swap.finish(script), "1.2 \n") << "its program is the one that tells 1.2";

    EXPECT_EQ(swap.installed().snapshot(), expected);
    EXPECT_THAT(swap.names(), ElementsAre("Tidemark.app", "Tidemark.app.started"));
    EXPECT_THAT(swap.root().names("tmp"), IsEmpty());
}

TEST(SwapScript, OneOfManyForOneBundleWins)
{
    constexpr int count = 8;
    Swap swap;
    for (int file = 0; file < 200; ++file)
        swap.newBundle().write("share/" + std::to_string(file), "new");
    const auto expected = swap.newBundle().snapshot();
    std::vector<pid_t> scripts;
    for (int each = 0; each < count; ++each) {
        const std::string work = "tmp/other-" + std::to_string(each);
        swap.root().makeFolder(work);
        fs::copy(swap.newBundle().url().path(), swap.root().path(work + "/Tidemark.app"),
            fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        scripts.push_back(SwapScript::launch(swap.root().url(work + ".sh"),
            FileURL::directory(swap.root().path(work + "/Tidemark.app")), swap.installed().url(),
            swap.application().id(), swap.stop(), noTool));
    }
    swap.application().end();
    for (const pid_t script : scripts)
        EXPECT_EQ(::waitpid(script, nullptr, 0), script);
    EXPECT_EQ(swap.started(), "1.3 \n");
    EXPECT_EQ(swap.installed().snapshot(), expected);
    // Each starts what stands there then.
    const QFileSystemWatcher watcher{{QString::fromStdString(swap.path(""))}};
    EXPECT_TRUE(runUntil([&] {
        return swap.names() == std::vector<std::string>{"Tidemark.app", "Tidemark.app.started"};
    }));
}

TEST(SwapScript, TouchesNothingWhileAnotherHasTheLock)
{
    Swap swap;
    swap.application().end();
    std::string text = SwapScript::text(swap.application().id());
    const std::string wait = "flock -w 600";
    ASSERT_NE(text.find(wait), std::string::npos);
    text.replace(text.find(wait), wait.size(), "flock -w 0");
    swap.root().write("tmp/other.sh", text);
    swap.root().write("Applications/Tidemark.app.new/half", "the other's");
    swap.root().write("Applications/Tidemark.app.bak/old", "the other's");
    const int lock = ::open(swap.path("").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);

    const pid_t script =
        Subprocess::start({"/bin/sh", swap.root().path("tmp/other.sh"),
                              swap.newBundle().url().path(), swap.installed().url().path()},
            Subprocess::Session::own);
    EXPECT_EQ(swap.finish(script), "1.2 \n");

    EXPECT_EQ(swap.installed().snapshot(), swap.before());
    EXPECT_EQ(swap.root().read("Applications/Tidemark.app.new/half"), "the other's");
    EXPECT_EQ(swap.root().read("Applications/Tidemark.app.bak/old"), "the other's");
    ::close(lock);
}

TEST(SwapScript, GoesOnWhenItIsAskedToEndInTheMiddle)
{
    Swap swap;
    for (int file = 0; file < 200; ++file)
        swap.newBundle().write("share/" + std::to_string(file), "new");
    const auto expected = swap.newBundle().snapshot();
    const QFileSystemWatcher watcher{{QString::fromStdString(swap.path(""))}};
    const pid_t script = swap.launch();
    swap.application().end();
    ASSERT_TRUE(runUntil([&] {
        return fs::exists(swap.path("Tidemark.app.new")) || !fs::exists(swap.script().path());
    }));
    ::kill(-script, SIGTERM);  // its session: as when a service manager ends everything
    ::kill(-script, SIGHUP);
    EXPECT_EQ(::waitpid(script, nullptr, 0), script);
    EXPECT_EQ(swap.started(), "1.3 \n");
    EXPECT_EQ(swap.installed().snapshot(), expected);
}

TEST(SwapScript, LeavesNothingOfAHalfCopyFromBefore)
{
    Swap swap;
    swap.root().write("Applications/Tidemark.app.new/bin/tidemark", "half");
    swap.root().write("Applications/Tidemark.app.new/evil", "planted");
    const auto expected = swap.newBundle().snapshot();
    EXPECT_EQ(swap.run(), "1.3 \n");
    EXPECT_EQ(swap.installed().snapshot(), expected);
}

TEST(SwapScript, StartsWithoutAScopeWhenThatEndsAfterTheTrial)
{
    Swap swap;
    // Well for the first time, and not for the second.
    const FileURL tool = swap.root().write(
        "tmp/scope", "#!/bin/sh\nmkdir '" + swap.root().path("tried") + "' 2>/dev/null\n");
    ASSERT_EQ(::chmod(tool.path().c_str(), 0700), 0);
    const pid_t script = swap.launch(tool.path());
    EXPECT_EQ(::getsid(script), script);
    EXPECT_EQ(swap.finish(script), "1.3 \n");
    fs::remove(tool.path());
    EXPECT_THAT(swap.root().names("tmp"), IsEmpty());
}

TEST(SwapScript, WhoIsStoppedBeforeItRunsLeavesNone)
{
    Swap swap;
    swap.stop().signal();
    EXPECT_THROW(swap.launch(), std::runtime_error);
    EXPECT_FALSE(fs::exists(swap.script().path()));
    EXPECT_EQ(swap.installed().snapshot(), swap.before());
}

TEST(SwapScript, TheStartedApplicationHeedsEverySignal)
{
    Swap swap;
    swap.newBundle().write("bin/tidemark",
        "#!/bin/sh\nsed -n 's/^SigIgn:.//p' /proc/self/status >'" + swap.path("signals.new")
            + "'\nmv '" + swap.path("signals.new") + "' '" + swap.path("Tidemark.app.started")
            + "'\n",
        0755);
    constexpr unsigned long long ofPrograms =
        0x7fffffff;  // the others are the C library's and for real time
    EXPECT_EQ(std::stoull(swap.run(), nullptr, 16) & ofPrograms, 0U);
}

TEST(Subprocess, BecomesWhatTheOneInFrontOfItExecutes)
{
    const std::vector<std::string> command{"/bin/sleep", "1000"};
    const struct {
        std::string script;
        bool becomes;
    } examples[] = {
        {"exec \"$@\"", true},
        {"sleep 0.05; exec \"$@\"", true},
        {"exit 0", false},
        {"exec /bin/sleep 1001", false},
    };
    for (const auto& example : examples) {
        SCOPED_TRACE(example.script);
        const pid_t process = Subprocess::start(
            {"sh", "-c", example.script, "sh", command[0], command[1]}, Subprocess::Session::own);
        EXPECT_EQ(Subprocess::becomes(process, command, 1), example.becomes);
        EXPECT_EQ(::kill(process, SIGKILL), example.becomes ? 0 : -1) << "killed and reaped";
        if (example.becomes)
            ::waitpid(process, nullptr, 0);
    }
}

TEST(Subprocess, InheritsNoFilesAndNoBlockedSignals)
{
    const TemporaryFolder folder;
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::sigaddset(&blocked, SIGHUP);
    ::sigprocmask(SIG_BLOCK, &blocked, &before);
    // Without close-on-exec, and far from the numbers that a shell takes for itself.
    const int inherited = ::fcntl(STDERR_FILENO, F_DUPFD, 100);
    ASSERT_GE(inherited, 100);
    const std::string script = R"(readlink /proc/$$/fd/0 >"$1/input"
        for file in /proc/$$/fd/1??; do echo "$file"; done >"$1/inherited"
        exec grep SigBlk /proc/self/status >"$1/signals")";
    const pid_t process =
        Subprocess::start({"sh", "-c", script, "sh", folder.path()}, Subprocess::Session::own);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    ::close(inherited);
    ASSERT_EQ(::waitpid(process, nullptr, 0), process);

    EXPECT_THAT(folder.read("signals"), HasSubstr("\t0000000000000000"));
    EXPECT_EQ(folder.read("input"), "/dev/null\n");
    EXPECT_THAT(folder.read("inherited"), testing::EndsWith("/fd/1??\n"))
        << "the pattern fits none";
}

}  // namespace tidemark
