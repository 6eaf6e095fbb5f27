#include "AtomicWrite.h"
#include "FileCopyMover.h"
#include "FileMover.h"
#include "HeldMove.h"
#include "LinuxFileManager.h"
#include "PrivateMounts.h"
#include "ScopedEnvironment.h"
#include "SupportLock.h"
#include "Trash.h"
#include "WatcherFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

// The real file manager, and each of its ways by itself, at work in a folder that is watched.

namespace tidemark {

namespace {

constexpr const char* anAttributedFile =
    "echo content > file; chmod 640 file; touch -d 2001-02-03T04:05:06Z file";

/// A folder that an ordinary user can read but take nothing out of.
constexpr const char* aLockedFile =
    "mkdir locked out; echo content > locked/file; chmod 555 locked;"
    "[ $(id -u) != 0 ] || chown -R 65534:65534 .";

/// Who makes a row's calls, in a watched folder of the row's own.
struct Caller {
    const TemporaryFolder& top;
    FileURL folder;
    OwnChanges ownChanges;
    LinuxFileManager& files;

    FileURL in(const std::string& name) const { return FileURL{folder.path() + '/' + name}; }

    void write(const std::string& name, std::string_view content) const
    {
        files.writeAtomically(in(name), std::array{content});
    }

    FileMover::Result move(FileMover::Result (*way)(const Move&)) const
    {
        return way(*HeldMove{in("from"), in("to"), ownChanges});
    }

    void copy(const std::string& from, FileCopyMover::Temporary hidden) const
    {
        FileCopyMover::move(*HeldMove{in(from), in("to"), ownChanges}, hidden);
    }

    /// As a user whom the locked folder locks out.
    template <typename Call>
    void failAsOrdinaryUser(Call call) const
    {
        const ScopedOrdinaryUser user{top};
        EXPECT_THROW(call(), std::filesystem::filesystem_error);
    }
};

struct Row {
    const char* name;
    std::string before;  ///< Another program's script in the row's folder.
    std::function<void(const Caller&)> act;
};

/// Has the watcher forget every change the moment it is over: what an own change causes later is foreign then.
class ForgetfulRecorder final : public OwnChangeRecorder {
public:
    ForgetfulRecorder(OwnChangeLog& log, const std::unique_ptr<FolderWatcher>& watcher)
        : m_log(log)
        , m_watcher(watcher)
    {
    }

    std::unique_ptr<OwnChange> begin(std::initializer_list<FileURL> entries) override
    {
        return std::make_unique<Change>(m_log.begin(entries), *m_watcher);
    }

private:
    class Change final : public OwnChange {
    public:
        Change(std::unique_ptr<OwnChange> change, FolderWatcher& watcher)
            : m_change(std::move(change))
            , m_watcher(watcher)
        {
        }
        ~Change() override
        {
            m_change.reset();
            m_watcher.settle();
        }

    private:
        std::unique_ptr<OwnChange> m_change;
        FolderWatcher& m_watcher;
    };

    OwnChangeLog& m_log;
    const std::unique_ptr<FolderWatcher>& m_watcher;
};

using FileCopyMover::Temporary;
using FileMover::Result;

std::vector<Row> changingCalls()
{
    return {
        {"make a folder", "", [](const Caller& c) { c.files.createDirectory(c.in("new")); }},
        {"make a folder with its parents", "",
            [](const Caller& c) { c.files.createDirectory(c.in("a/b/c")); }},
        {"make a folder through a link", "mkdir real; ln -s real link",
            [](const Caller& c) { c.files.createDirectory(c.in("link/a/b")); }},
        {"move a file", "touch from",
            [](const Caller& c) { c.files.moveItem(c.in("from"), c.in("to")); }},
        {"move a file into a folder through a link", "touch from; mkdir real; ln -s real link",
            [](const Caller& c) { c.files.moveItem(c.in("from"), c.in("link/to")); }},
        {"move a link", "ln -s nowhere from",
            [](const Caller& c) { c.files.moveItem(c.in("from"), c.in("to")); }},
        {"move a folder", "mkdir -p from/a; touch from/a/file; mkdir real",
            [](const Caller& c) { c.files.moveItem(c.in("from"), c.in("real/to")); }},
        {"move into the tree", "touch ../../outside",
            [](const Caller& c) { c.files.moveItem(c.in("../../outside"), c.in("to")); }},
        {"move out of the tree", "touch from; rm -f ../../outside",
            [](const Caller& c) { c.files.moveItem(c.in("from"), c.in("../../outside")); }},

        {"move by rename", "touch from",
            [](const Caller& c) { EXPECT_EQ(c.move(FileMover::moveByRename), Result::moved); }},
        {"move by link", "touch from",
            [](const Caller& c) { EXPECT_EQ(c.move(FileMover::moveByLink), Result::moved); }},
        {"take a link back", aLockedFile,
            [](const Caller& c) {
                c.failAsOrdinaryUser([&] {
                    FileMover::moveByLink(
                        *HeldMove{c.in("locked/file"), c.in("out/to"), c.ownChanges});
                });
            }},
        {"move by placeholder", "touch from",
            [](const Caller& c) {
                EXPECT_EQ(c.move(FileMover::moveByPlaceholder), Result::moved);
            }},
        {"move a folder by placeholder", "mkdir -p from/a",
            [](const Caller& c) {
                EXPECT_EQ(c.move(FileMover::moveByPlaceholder), Result::moved);
            }},
        {"take a placeholder back", aLockedFile,
            [](const Caller& c) {
                c.failAsOrdinaryUser([&] {
                    FileMover::moveByPlaceholder(
                        *HeldMove{c.in("locked/file"), c.in("out/to"), c.ownChanges});
                });
            }},
        {"take the placeholder of a folder back", "mkdir from",
            [](const Caller& c) {
                EXPECT_THROW(FileMover::moveByPlaceholder(
                                 *HeldMove{c.in("from"), c.in("from/to"), c.ownChanges}),
                    std::filesystem::filesystem_error);
            }},

        {"copy by a nameless file", anAttributedFile,
            [](const Caller& c) { c.copy("file", Temporary::unnamed); }},
        {"copy by a hidden file", anAttributedFile,
            [](const Caller& c) { c.copy("file", Temporary::named); }},
        {"copy nothing", "touch file", [](const Caller& c) { c.copy("file", Temporary::unnamed); }},
        {"copy a link", "ln -s nowhere file",
            [](const Caller& c) { c.copy("file", Temporary::unnamed); }},
        {"copy the way that is offered", anAttributedFile,
            [](const Caller& c) {
                FileCopyMover::move(*HeldMove{c.in("file"), c.in("to"), c.ownChanges});
            }},
        {"take a nameless copy back", aLockedFile,
            [](const Caller& c) {
                c.failAsOrdinaryUser([&] {
                    FileCopyMover::move(
                        *HeldMove{c.in("locked/file"), c.in("out/to"), c.ownChanges},
                        Temporary::unnamed);
                });
            }},
        {"take a hidden copy back", aLockedFile,
            [](const Caller& c) {
                c.failAsOrdinaryUser([&] {
                    FileCopyMover::move(
                        *HeldMove{c.in("locked/file"), c.in("out/to"), c.ownChanges},
                        Temporary::named);
                });
            }},
        {"find the place of a copy taken", "touch file to",
            [](const Caller& c) {
                EXPECT_THROW(c.copy("file", Temporary::named), std::filesystem::filesystem_error);
            }},

        {"trash the first file", "touch file",
            [](const Caller& c) { c.files.trashItem(c.in("file")); }},
        {"trash another one of its name", "touch file",
            [](const Caller& c) { c.files.trashItem(c.in("file")); }},
        {"trash a folder", "mkdir -p folder/a",
            [](const Caller& c) { c.files.trashItem(c.in("folder")); }},
        {"find a name in the Trash taken",
            "touch file; mkdir -p T/files T/info; touch T/files/file",
            [](const Caller& c) {
                const HeldFolder folder = Folders::hold(c.folder);
                Trash{c.in("T"), c.ownChanges}.moveIn({folder, c.in("file")});
            }},
        {"take a Trash record back", aLockedFile,
            [](const Caller& c) {
                c.failAsOrdinaryUser([&] {
                    const HeldFolder folder = Folders::hold(c.in("locked"));
                    Trash{c.in("T"), c.ownChanges}.moveIn({folder, c.in("locked/file")});
                });
            }},
        {"move out of the Trash", "touch file",
            [](const Caller& c) {
                c.files.moveItem(*c.files.trashItem(c.in("file")), c.in("back"));
            }},

        {"write a new file", "", [](const Caller& c) { c.write("file", "content"); }},
        {"write an empty file", "", [](const Caller& c) { c.write("file", ""); }},
        {"write over a file", anAttributedFile, [](const Caller& c) { c.write("file", "new"); }},
        {"write through a link", "mkdir real; touch real/file; ln -s real/file link",
            [](const Caller& c) { c.write("link", "new"); }},
        {"remove what a killed writer left", "touch .file.0123456789abcdef.tmp",
            [](const Caller& c) { AtomicWrite::removeLeftovers(c.folder, "file", c.ownChanges); }},
        {"lock", "touch .journal.json.0123456789abcdef.tmp",
            [](const Caller& c) { SupportLock::acquire(c.folder, c.ownChanges); }},
        {"lock a folder that is missing", "",
            [](const Caller& c) { SupportLock::acquire(c.in("support"), c.ownChanges); }},
        {"find it locked", "",
            [](const Caller& c) {
                const SupportLock lock = SupportLock::acquire(c.folder, c.ownChanges);
                EXPECT_FALSE(SupportLock::tryAcquire(c.folder, c.ownChanges));
            }},
    };
}

class FileManagerOwnChangeTest : public WatcherTest {
protected:
    /// Watches "root", with the user's home inside of it, and for each row in turn has another program prepare
    /// a folder there. Then `test` is to have the row's calls made.
    void withEveryCall(OwnChangeRecorder* recorder,
        const std::function<void(const std::function<void()>& act)>& test)
    {
        watch();
        LinuxFileManager files{recorder};
        int number = 0;
        for (const Row& row : changingCalls()) {
            SCOPED_TRACE(row.name);
            const std::string folder = "root/" + std::to_string(++number);
            std::string script = "place=" + folder;
            script.append("; mkdir $place; cd $place; ").append(row.before);
            EXPECT_TRUE(notices(script));
            const Caller caller{
                m_folder, FileURL::directory(path(folder)), OwnChanges{recorder}, files};
            test([&] { row.act(caller); });
        }
    }

    ScopedHome m_home{m_folder.makeFolder("root/home").path()};
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Backends, FileManagerOwnChangeTest, bothBackends(), backendName);

TEST_P(FileManagerOwnChangeTest, NothingThatItDoesIsAChange)
{
    withEveryCall(&m_ownChanges, [this](const std::function<void()>& act) {
        act();
        EXPECT_EQ(changes(), 0);
    });
    EXPECT_EQ(m_ownChanges.size(), 0U);
}

TEST_P(FileManagerOwnChangeTest, EachChangeIsAnnouncedUntilItIsOver)
{
    ForgetfulRecorder recorder{m_ownChanges, m_watcher};
    withEveryCall(&recorder, [this](const std::function<void()>& act) {
        act();
        EXPECT_EQ(changes(), 0);
    });
}

TEST_P(FileManagerOwnChangeTest, AForeignChangeAmongItsOwnIsTheOnlyOne)
{
    withEveryCall(&m_ownChanges, [this](const std::function<void()>& act) {
        // The watcher meets all of it at once, when it is over.
        m_gate.close();
        elsewhere("touch root/needle");
        act();
        m_gate.open();
        EXPECT_EQ(changes(), 1);
        EXPECT_EQ(changes(), 0);
    });
}

TEST_P(FileManagerOwnChangeTest, WithoutARecorderOnlyTheKernelTellsItsChangesApart)
{
    const int expected = GetParam() == WatchBackend::fanotify ? 0 : 1;
    withEveryCall(nullptr, [&](const std::function<void()>& act) {
        act();
        EXPECT_EQ(changes(), expected);
    });
}

TEST_P(FileManagerOwnChangeTest, ReadingIsNoChangeWhoeverReads)
{
    elsewhere("echo content > root/file; mkdir root/folder; ln -s folder root/link");
    watch();
    LinuxFileManager files;
    const FileURL file{path("root/file")};
    EXPECT_TRUE(files.fileExists(file));
    EXPECT_TRUE(files.directoryExists(file.parent()));
    EXPECT_EQ(files.resolvingLinks(FileURL{path("root/link")}).path(), path("root/folder"));
    EXPECT_EQ(files.contentsOfDirectory(file.parent()).size(), 4U);
    EXPECT_TRUE(files.facts(file).isRegularFile);
    EXPECT_EQ(files.readFile(file, 100), "content\n");
    EXPECT_EQ(files.readPrefix(file, 3), "con");
    EXPECT_TRUE(files.identity(file));
    EXPECT_EQ(changes(), 0);
    EXPECT_FALSE(notices("cat root/file > /dev/null; ls root root/folder > /dev/null"));
}

TEST_P(FileManagerOwnChangeTest, MovesAcrossFileSystemsAreNoChanges)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.makeFolder("root/disk").path());
        mountMemory(m_folder.makeFolder("root/full").path(), "size=64k");
        elsewhere("echo content > root/file; head -c 100000 /dev/zero > root/large;"
                  "ln -s nowhere root/link; echo content > root/disk/stays");
        watch();
        LinuxFileManager files{&m_ownChanges};
        const auto in = [this](const std::string& name) { return FileURL{path("root/" + name)}; };

        for (const std::string name : {"file", "link"}) {
            files.moveItem(in(name), in("disk/" + name));
            files.moveItem(in("disk/" + name), in(name));
        }
        EXPECT_THROW(
            files.moveItem(in("large"), in("full/large")), std::filesystem::filesystem_error);
        EXPECT_THROW(files.writeAtomically(in("full/large"),
                         std::array{std::string_view{files.readFile(in("large"), 1'000'000)}}),
            std::filesystem::filesystem_error);
        // In the file system's own trash, then, where that cannot be had, across to the user's.
        files.moveItem(*files.trashItem(in("disk/stays")), in("disk/stays"));
        EXPECT_EQ(changes(), 0);
        elsewhere("rm -r root/disk/.Trash-*; touch root/disk/.Trash-$(id -u)");
        EXPECT_EQ(changes(), 1);
        EXPECT_TRUE(files.trashItem(in("disk/stays"))->path().starts_with(path("root/home/")));
        EXPECT_EQ(changes(), 0);
        EXPECT_TRUE(notices("touch root/disk/needle"));
        m_watcher.reset();
    });
}

}  // namespace tidemark
