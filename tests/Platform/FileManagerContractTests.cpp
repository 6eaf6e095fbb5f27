#include "InMemoryFileManager.h"
#include "LinuxFileManager.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <memory>

// What every FileManager promises, checked on the real one and on the one that tests put in its place.

namespace tidemark {

namespace {

/// A file manager and an empty folder of it.
class Disk {
public:
    virtual ~Disk() = default;
    virtual FileManager& files() = 0;
    virtual FileURL folder() const = 0;
    virtual void makeLink(const FileURL& url, const std::string& target) = 0;
};

class RealDisk final : public Disk {
public:
    FileManager& files() override { return m_files; }
    FileURL folder() const override { return FileURL::directory(m_folder.path("work")); }

    void makeLink(const FileURL& url, const std::string& target) override
    {
        std::filesystem::create_symlink(target, url.path());
    }

private:
    TemporaryFolder m_folder;
    ScopedHome m_home{m_folder.makeFolder("home").path()};
    LinuxFileManager m_files;
};

class MemoryDisk final : public Disk {
public:
    FileManager& files() override { return m_files; }
    FileURL folder() const override { return FileURL::directory("/work"); }

    void makeLink(const FileURL& url, const std::string& target) override
    {
        m_files.addLink(url.path(), target);
    }

private:
    InMemoryFileManager m_files;
};

template <typename Kind>
std::unique_ptr<Disk> makeDisk()
{
    return std::make_unique<Kind>();
}

struct DiskKind {
    const char* name;
    std::unique_ptr<Disk> (*make)();
};

}  // namespace

class FileManagerContract : public testing::TestWithParam<DiskKind> {
protected:
    FileManagerContract() { files().createDirectory(m_disk->folder()); }

    FileManager& files() { return m_disk->files(); }
    FileURL at(std::string_view name) const { return m_disk->folder().appending(name); }
    void makeLink(std::string_view name, const std::string& target)
    {
        m_disk->makeLink(at(name), target);
    }

    FileURL write(std::string_view name, std::string_view content)
    {
        const std::string_view pieces[] = {content};
        files().writeAtomically(at(name), pieces);
        return at(name);
    }

    std::string read(const FileURL& url) { return files().readFile(url, 1'000); }

    std::vector<std::string> names(const FileURL& folder)
    {
        std::vector<std::string> names;
        for (const DirectoryEntry& entry : files().contentsOfDirectory(folder))
            names.push_back(entry.name);
        std::ranges::sort(names);
        return names;
    }

    /// The error of a call as errno has it; 0 when it succeeds.
    template <typename Call>
    static std::errc errorOf(Call call)
    {
        try {
            call();
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_FALSE(error.path1().empty());
            return static_cast<std::errc>(error.code().value());
        }
        return std::errc{};
    }

    std::unique_ptr<Disk> m_disk = GetParam().make();
};

static std::string nameOfDisk(const testing::TestParamInfo<DiskKind>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Disk, FileManagerContract,
    testing::Values(
        DiskKind{"Linux", makeDisk<RealDisk>}, DiskKind{"InMemory", makeDisk<MemoryDisk>}),
    nameOfDisk);

static const std::vector<std::string> unusualNames{"plain", "two words", "\"quoted\"", "it's",
    "new\nline", "100%", "%41", "ä", "a\u0308", "\U0001F30A", "-rf", "*", "back\\slash", "...",
    std::string(255, 'x'), " ", "\t", "a:b", "\x01"};

TEST_P(FileManagerContract, EveryNameIsWrittenListedReadAndMoved)
{
    for (const std::string& name : unusualNames) {
        SCOPED_TRACE(name);
        files().createDirectory(at("from"));
        files().createDirectory(at("to"));
        const FileURL from = at("from").appending(name);
        const FileURL to = at("to").appending(name);
        // There is no room for a temporary name beside a name of 255 bytes.
        write("seed", name);
        files().moveItem(at("seed"), from);
        EXPECT_TRUE(files().fileExists(from));
        const bool isHidden = name.starts_with('.');
        EXPECT_EQ(names(at("from")).size(), isHidden ? 0U : 1U);
        EXPECT_TRUE(isHidden || names(at("from")).front() == name);

        files().moveItem(from, to);

        EXPECT_FALSE(files().fileExists(from));
        EXPECT_EQ(read(to), name);
        files().trashItem(to);
        EXPECT_FALSE(files().fileExists(to));
    }
}

TEST_P(FileManagerContract, LinksAreResolvedAsFarAsAPathExists)
{
    files().createDirectory(at("real/sub"));
    makeLink("link", "real");
    const std::string folder = files().resolvingLinks(at("real")).path();
    for (const char* path : {"link", "real/sub/..", "link/sub/..", "./real"})
        EXPECT_EQ(files().resolvingLinks(at(path)).path(), folder) << path;
    EXPECT_EQ(files().resolvingLinks(at("link/new/2024-05")).path(), folder + "/new/2024-05");
    EXPECT_EQ(files().resolvingLinks(FileURL{"/"}).path(), "/");
}

TEST_P(FileManagerContract, HiddenEntriesAreNotListed)
{
    write(".hidden", "");
    write("seen", "");
    EXPECT_THAT(names(m_disk->folder()), testing::ElementsAre("seen"));
}

TEST_P(FileManagerContract, AFolderIsListedWithTheFactsOfItsEntries)
{
    write("file", "content");
    files().createDirectory(at("folder").appending("inner"));
    makeLink("link", "file");
    makeLink("dangling", "nowhere");

    std::vector<std::pair<std::string, bool>> regular;
    for (const DirectoryEntry& entry : files().contentsOfDirectory(m_disk->folder())) {
        regular.emplace_back(entry.name, entry.facts.isRegularFile);
        EXPECT_EQ(files().facts(at(entry.name)).isRegularFile, entry.facts.isRegularFile);
    }
    EXPECT_THAT(regular,
        testing::UnorderedElementsAre(testing::Pair("file", true), testing::Pair("folder", false),
            testing::Pair("link", false), testing::Pair("dangling", false)));
}

TEST_P(FileManagerContract, AListedFileHasTheFactsThatItHasAlone)
{
    const FileURL file = write("a.txt", "content");
    const std::vector<DirectoryEntry> entries = files().contentsOfDirectory(m_disk->folder());
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].facts, files().facts(file));
    EXPECT_TRUE(entries[0].facts.modified);
    EXPECT_TRUE(entries[0].facts.added);
    EXPECT_TRUE(entries[0].facts.lastOpened);
    EXPECT_EQ(entries[0].facts.cloudStatus, CloudStatus::notInCloud);
    EXPECT_FALSE(entries[0].facts.isScreenCapture);
}

TEST_P(FileManagerContract, ALinkToAFolderIsListedLikeTheFolder)
{
    files().createDirectory(at("folder"));
    write("folder/file", "");
    makeLink("link", "folder");
    EXPECT_THAT(names(at("link")), testing::ElementsAre("file"));
}

TEST_P(FileManagerContract, AFolderIsListableWhateverItHolds)
{
    files().createDirectory(at("empty"));
    files().createDirectory(at("full/.hidden"));
    write("full/file", "");
    makeLink("full/dangling", "nowhere");
    makeLink("link", "full");
    for (const char* folder : {"empty", "full", "full/.hidden", "link", "link/.."})
        EXPECT_EQ(errorOf([&] { files().requireListable(at(folder)); }), std::errc{}) << folder;
}

TEST_P(FileManagerContract, AMoveNeverReplaces)
{
    for (const char* occupant : {"file", "folder", "link", "dangling", "full"}) {
        SCOPED_TRACE(occupant);
        const FileURL source = write("source", "precious");
        files().createDirectory(at("folder"));
        files().createDirectory(at("full"));
        write("full/inner", "inner");
        write("file", "mine");
        if (!files().fileExists(at("link"))) {
            makeLink("link", "file");
            makeLink("dangling", "nowhere");
        }
        EXPECT_EQ(errorOf([&] { files().moveItem(source, at(occupant)); }), std::errc::file_exists);
        EXPECT_EQ(read(source), "precious");
        EXPECT_EQ(read(at("file")), "mine");
        EXPECT_FALSE(files().fileExists(at("nowhere")));
    }
}

TEST_P(FileManagerContract, AHeldFolderIsUsedOrNone)
{
    struct Row {
        const char*
            replacement;  ///< Where the held folder goes to; what comes into its place then.
        std::function<void(const FileURL&)> place;
        std::errc error;
    };
    const Row rows[] = {
        {"nothing", [](const FileURL&) {}, std::errc::no_such_file_or_directory},
        {"another folder", [&](const FileURL& url) { files().createDirectory(url); },
            std::errc::device_or_resource_busy},
        {"a link",
            [&](const FileURL& url) { makeLink(url.lastPathComponent(), at("outside").path()); },
            std::errc::device_or_resource_busy},
    };
    files().createDirectory(at("outside"));
    const FileURL secret = write("outside/file", "secret");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.replacement);
        files().createDirectory(at("folder"));
        const FileURL file = write("folder/file", "content");
        const FileURL other = write("other", "content");
        const HeldFolder folder = files().hold(at("folder"));
        const HeldFolder parent = files().hold(m_disk->folder());
        files().moveItem(at("folder"), at("away"));
        row.place(at("folder"));

        const HeldEntry source{folder, file};
        const std::function<void()> calls[] = {
            [&] {
                files().moveItem(source, HeldEntry{parent, at("to")});
            },
            [&] {
                files().moveItem(HeldEntry{parent, other}, HeldEntry{folder, at("folder/b")});
            },
            [&] { files().trashItem(source); },
            [&] { files().createDirectoryBelow(folder, at("folder/new")); },
        };
        for (const auto& call : calls) {
            try {
                call();
                ADD_FAILURE() << "something was moved";
            } catch (const std::filesystem::filesystem_error& error) {
                EXPECT_EQ(static_cast<std::errc>(error.code().value()), row.error) << error.what();
                EXPECT_EQ(error.path1(), at("folder").path());
            }
        }
        EXPECT_EQ(read(at("away/file")), "content");
        EXPECT_EQ(read(other), "content");
        EXPECT_EQ(read(secret), "secret");
        EXPECT_EQ(names(at("outside")), std::vector<std::string>{"file"});

        if (files().fileExists(at("folder")))
            files().moveItem(at("folder"), at(std::string{"former "} + row.replacement));
        files().moveItem(at("away"), at("folder"));
        files().moveItem(source, HeldEntry{parent, at("to")});
        EXPECT_EQ(read(at("to")), "content");
        files().trashItem(at("to"));
        files().trashItem(other);
        files().trashItem(at("folder"));
    }
}

TEST_P(FileManagerContract, AFolderIsFoundBelowAHeldOneHoweverItsPathIsSpelled)
{
    struct Row {
        const char* spelling;
        const char* place;
    };
    const Row rows[] = {
        {"folder", "folder"},
        {"folder/.", "folder"},
        {"folder//tidemark below", "folder/tidemark below"},
        {"folder///tidemark below/deeper", "folder/tidemark below/deeper"},
        {"folder/tidemark below//deepest", "folder/tidemark below/deepest"},
        {"folder/../beside", "beside"},
    };
    files().createDirectory(at("folder"));
    const HeldFolder parent = files().hold(m_disk->folder());
    const HeldFolder above = files().hold(at("folder"));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.spelling);
        files().createDirectory(at(row.place));
        const HeldFolder found = files().holdBelow(above, at(row.spelling));
        const HeldFolder made = files().createDirectoryBelow(above, at(row.spelling));
        for (const HeldFolder* folder : {&found, &made}) {
            const FileURL file = write("file", "content");
            files().moveItem(
                HeldEntry{parent, file}, HeldEntry{*folder, folder->url().appending("moved")});
            const FileURL moved = at(row.place).appending("moved");
            EXPECT_EQ(read(moved), "content");
            files().trashItem(moved);
        }
    }

    files().createDirectoryBelow(above, at("folder//tidemark new//month"));
    EXPECT_TRUE(files().directoryExists(at("folder/tidemark new/month")));
}

TEST_P(FileManagerContract, ALinkThatIsThereBeforeIsFollowedByWhoHoldsIt)
{
    files().createDirectory(at("real"));
    makeLink("link", at("real").path());
    const FileURL file = write("real/file", "content");
    const HeldFolder linked = files().hold(at("link"));
    const HeldFolder made = files().createDirectoryBelow(linked, at("link/a/b"));
    files().moveItem(HeldEntry{linked, at("link/file")}, HeldEntry{made, at("link/a/b/to")});
    EXPECT_EQ(read(at("real/a/b/to")), "content");
    EXPECT_FALSE(files().fileExists(file));
}

TEST_P(FileManagerContract, OnlyFoldersAreHeld)
{
    write("file", "");
    makeLink("to file", at("file").path());
    makeLink("dangling", at("none").path());
    EXPECT_EQ(errorOf([&] { files().hold(at("file")); }), std::errc::not_a_directory);
    EXPECT_EQ(errorOf([&] { files().hold(at("to file")); }), std::errc::not_a_directory);
    EXPECT_EQ(errorOf([&] { files().hold(at("dangling")); }), std::errc::no_such_file_or_directory);
    EXPECT_EQ(errorOf([&] { files().hold(at("none")); }), std::errc::no_such_file_or_directory);
}

TEST_P(FileManagerContract, AFileIsNotMovedOntoItself)
{
    const FileURL file = write("file", "content");
    EXPECT_EQ(errorOf([&] { files().moveItem(file, file); }), std::errc::file_exists);
    EXPECT_EQ(read(file), "content");
}

TEST_P(FileManagerContract, WhatMovesIsTheLinkAndNotWhatItLeadsTo)
{
    write("target", "content");
    for (const char* target : {"target", "nowhere"}) {
        makeLink("link", target);
        files().moveItem(at("link"), at("moved"));
        EXPECT_FALSE(files().fileExists(at("link")));
        EXPECT_TRUE(files().fileExists(at("moved")));
        EXPECT_TRUE(files().fileExists(at("target")));
        EXPECT_FALSE(files().facts(at("moved")).isRegularFile);
        files().trashItem(at("moved"));
    }
}

TEST_P(FileManagerContract, AFolderMovesWithItsContent)
{
    files().createDirectory(at("folder"));
    write("folder/file", "content");
    files().moveItem(at("folder"), at("moved"));
    EXPECT_FALSE(files().directoryExists(at("folder")));
    EXPECT_EQ(read(at("moved/file")), "content");
    EXPECT_EQ(errorOf([&] { files().moveItem(at("moved"), at("moved/inside")); }),
        std::errc::invalid_argument);
    EXPECT_EQ(read(at("moved/file")), "content");
}

TEST_P(FileManagerContract, AMoveKeepsTheDates)
{
    const FileURL file = write("file", "content");
    const FileFacts before = files().facts(file);
    files().moveItem(file, at("moved"));
    const FileFacts after = files().facts(at("moved"));
    EXPECT_EQ(after.modified, before.modified);
    EXPECT_EQ(after.lastOpened, before.lastOpened);
    EXPECT_EQ(after.created, before.created);
}

struct ErrorRow {
    const char* name;
    std::errc expected;
    std::function<void(FileManager&, const FileURL&)> call;
};

TEST_P(FileManagerContract, WhatCannotBeDoneSaysWhy)
{
    using std::errc;
    write("file", "content");
    files().createDirectory(at("folder"));
    makeLink("link", "file");
    makeLink("dangling", "nowhere");
    makeLink("circle", "circle");
    const auto in = [](const FileURL& folder, std::string_view name) {
        return folder.appending(name);
    };
    const ErrorRow rows[] = {
        {"facts of nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.facts(in(at, "none")); }},
        {"facts below a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) { f.facts(in(at, "file/below")); }},
        {"list nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.contentsOfDirectory(in(at, "none")); }},
        {"list a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) { f.contentsOfDirectory(in(at, "file")); }},
        {"require the list of nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.requireListable(in(at, "none")); }},
        {"require the list of a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) { f.requireListable(in(at, "file")); }},
        {"require the list of a link to a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) { f.requireListable(in(at, "link")); }},
        {"require a list below a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) { f.requireListable(in(at, "file/below")); }},
        {"require the list of a dangling link", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.requireListable(in(at, "dangling")); }},
        {"require a list in circles", errc::too_many_symbolic_link_levels,
            [&](FileManager& f, const FileURL& at) { f.requireListable(in(at, "circle")); }},
        {"read nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.readFile(in(at, "none"), 9); }},
        {"read a folder", errc::is_a_directory,
            [&](FileManager& f, const FileURL& at) { f.readFile(in(at, "folder"), 9); }},
        {"read too much", errc::file_too_large,
            [&](FileManager& f, const FileURL& at) { f.readFile(in(at, "file"), 6); }},
        {"prefix of nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.readPrefix(in(at, "none"), 9); }},
        {"prefix of a folder", errc::is_a_directory,
            [&](FileManager& f, const FileURL& at) { f.readPrefix(in(at, "folder"), 9); }},
        {"prefix of a link", errc::too_many_symbolic_link_levels,
            [&](FileManager& f, const FileURL& at) { f.readPrefix(in(at, "link"), 9); }},
        {"move nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.moveItem(in(at, "none"), in(at, "to")); }},
        {"move nowhere", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) {
                f.moveItem(in(at, "file"), in(at, "none/to"));
            }},
        {"move below a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) {
                f.moveItem(in(at, "link"), in(at, "file/to"));
            }},
        {"move to a name too long", errc::filename_too_long,
            [&](FileManager& f, const FileURL& at) {
                f.moveItem(in(at, "file"), in(at, std::string(256, 'x')));
            }},
        {"trash nothing", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.trashItem(in(at, "none")); }},
        {"folder over a file", errc::file_exists,
            [&](FileManager& f, const FileURL& at) { f.createDirectory(in(at, "file")); }},
        {"folder below a file", errc::not_a_directory,
            [&](FileManager& f, const FileURL& at) { f.createDirectory(in(at, "file/a/b")); }},
        {"folder over a dangling link", errc::file_exists,
            [&](FileManager& f, const FileURL& at) { f.createDirectory(in(at, "dangling")); }},
        {"write nowhere", errc::no_such_file_or_directory,
            [&](FileManager& f, const FileURL& at) { f.writeAtomically(in(at, "none/a"), {}); }},
        {"write a folder", errc::is_a_directory,
            [&](FileManager& f, const FileURL& at) { f.writeAtomically(in(at, "folder"), {}); }},
        {"read in circles", errc::too_many_symbolic_link_levels,
            [&](FileManager& f, const FileURL& at) { f.readFile(in(at, "circle"), 9); }},
        {"look up in circles", errc::too_many_symbolic_link_levels,
            [&](FileManager& f, const FileURL& at) { f.fileExists(in(at, "circle/a")); }},
    };
    for (const ErrorRow& row : rows) {
        EXPECT_EQ(errorOf([&] { row.call(files(), m_disk->folder()); }), row.expected) << row.name;
        EXPECT_EQ(read(at("file")), "content") << row.name;
    }
    EXPECT_THAT(names(m_disk->folder()),
        testing::ElementsAre("circle", "dangling", "file", "folder", "link"));
}

TEST_P(FileManagerContract, APathWithANULIsRefusedByEveryCall)
{
    write("a", "content");
    const FileURL bad = at(std::string_view{"a\0b", 3});
    const std::function<void()> calls[] = {[&] { files().fileExists(bad); },
        [&] { files().directoryExists(bad); }, [&] { files().contentsOfDirectory(bad); },
        [&] { files().requireListable(bad); }, [&] { files().facts(bad); },
        [&] { files().createDirectory(bad); }, [&] { files().moveItem(bad, at("b")); },
        [&] { files().moveItem(at("a"), bad); }, [&] { files().trashItem(bad); },
        [&] { files().readFile(bad, 9); }, [&] { files().readPrefix(bad, 9); },
        [&] { files().writeAtomically(bad, {}); }, [&] { files().identity(bad); }};
    for (const auto& call : calls)
        EXPECT_EQ(errorOf(call), std::errc::invalid_argument);
    EXPECT_EQ(read(at("a")), "content");
}

TEST_P(FileManagerContract, LookingUpTellsWhatStandsThere)
{
    write("file", "");
    files().createDirectory(at("folder"));
    makeLink("toFile", "file");
    makeLink("toFolder", "folder");
    makeLink("dangling", "nowhere");
    struct Row {
        std::string name;
        bool exists;
        bool isFolder;
    };
    const Row rows[] = {{"file", true, false}, {"folder", true, true}, {"toFile", true, false},
        {"toFolder", true, true}, {"dangling", true, false}, {"none", false, false},
        {"none/none", false, false}, {"file/below", false, false},
        {std::string(256, 'x'), false, false}};
    for (const Row& row : rows) {
        EXPECT_EQ(files().fileExists(at(row.name)), row.exists) << row.name;
        EXPECT_EQ(files().directoryExists(at(row.name)), row.isFolder) << row.name;
    }
}

TEST_P(FileManagerContract, FoldersAreMadeWithTheirParents)
{
    files().createDirectory(at("a/b/c"));
    EXPECT_TRUE(files().directoryExists(at("a/b/c")));
    files().createDirectory(at("a/b/c"));

    makeLink("link", "a");
    files().createDirectory(at("link"));
    files().createDirectory(at("link/d"));
    EXPECT_TRUE(files().directoryExists(at("a/d")));
    EXPECT_FALSE(files().facts(at("link")).isRegularFile);
}

TEST_P(FileManagerContract, WhatIsWrittenIsReadBackWhole)
{
    const std::string binary{"\0\xFF\n", 3};
    const std::string_view pieces[] = {"one ", "", "two ", binary, ""};
    files().writeAtomically(at("file"), pieces);
    EXPECT_EQ(read(at("file")), "one two " + binary);

    files().writeAtomically(at("file"), {});
    EXPECT_EQ(read(at("file")), "");
    EXPECT_THAT(names(m_disk->folder()), testing::ElementsAre("file"));
}

TEST_P(FileManagerContract, WritingThroughALinkReplacesItsTarget)
{
    write("file", "old");
    files().createDirectory(at("folder"));
    makeLink("link", "file");
    makeLink("folder/link", "../link");
    makeLink("dangling", "new");

    write("folder/link", "by two links");
    EXPECT_EQ(read(at("file")), "by two links");
    EXPECT_FALSE(files().facts(at("link")).isRegularFile);
    EXPECT_FALSE(files().facts(at("folder/link")).isRegularFile);

    write("dangling", "made");
    EXPECT_EQ(read(at("new")), "made");
    EXPECT_FALSE(files().facts(at("dangling")).isRegularFile);
}

TEST_P(FileManagerContract, APrefixIsAtMostAsLongAsTheFile)
{
    const FileURL file = write("file", "content");
    EXPECT_EQ(files().readPrefix(file, 0), "");
    EXPECT_EQ(files().readPrefix(file, 3), "con");
    EXPECT_EQ(files().readPrefix(file, 7), "content");
    EXPECT_EQ(files().readPrefix(file, 1'000'000), "content");
    EXPECT_EQ(files().readFile(file, 7), "content");
    EXPECT_EQ(files().readFile(file, std::string::npos), "content");
    makeLink("link", "file");
    EXPECT_EQ(read(at("link")), "content");
}

TEST_P(FileManagerContract, AnIdentityChangesWithTheFile)
{
    EXPECT_EQ(files().identity(at("file")), std::nullopt);
    EXPECT_EQ(files().identity(at("none/file")), std::nullopt);
    write("file", "one");
    const auto first = files().identity(at("file"));
    ASSERT_TRUE(first);
    EXPECT_EQ(files().identity(at("file")), first);
    makeLink("link", "file");
    EXPECT_EQ(files().identity(at("link")), first);

    write("file", "two");
    EXPECT_NE(files().identity(at("file")), first);
}

TEST_P(FileManagerContract, TrashedFilesOfOneNameLieBesideEachOther)
{
    std::vector<FileURL> places;
    for (const char* content : {"one", "two", "three"}) {
        const auto place = files().trashItem(write("photo.jpg", content));
        ASSERT_TRUE(place);
        EXPECT_EQ(read(*place), content);
        places.push_back(*place);
    }
    EXPECT_FALSE(files().fileExists(at("photo.jpg")));
    EXPECT_EQ(read(places[0]), "one");
    EXPECT_EQ(read(places[1]), "two");

    files().moveItem(places[1], at("back.jpg"));
    EXPECT_EQ(read(at("back.jpg")), "two");
}

TEST_P(FileManagerContract, WhatLiesInTheTrashIsNotTrashedAgain)
{
    const FileURL place = *files().trashItem(write("file", "content"));
    EXPECT_EQ(errorOf([&] { files().trashItem(place); }), std::errc::invalid_argument);
    EXPECT_EQ(errorOf([&] { files().trashItem(place.parent()); }), std::errc::invalid_argument);
    EXPECT_EQ(read(place), "content");
}

TEST_P(FileManagerContract, ACreationDateIsSetOrTheAttemptIsRefused)
{
    const FileURL file = write("file", "content");
    const FileFacts before = files().facts(file);
    const Date date{Seconds{1'000'000'000}};
    const std::errc error = errorOf([&] { files().setCreationDate(file, date); });
    if (error == std::errc{}) {
        EXPECT_EQ(files().facts(file).created, date);
    } else {
        EXPECT_EQ(error, std::errc::not_supported);
        EXPECT_EQ(files().facts(file), before);
    }
}

}  // namespace tidemark
