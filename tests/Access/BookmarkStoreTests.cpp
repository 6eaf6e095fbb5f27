#include "BookmarkStore.h"

#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"
#include "LinuxFileManager.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;
using Scope = BookmarkStore::Scope;

class BookmarkStoreTest : public testing::Test {
protected:
    template <typename Call>
    static std::error_code errorOf(Call call)
    {
        try {
            call();
        } catch (const std::filesystem::filesystem_error& error) {
            return error.code();
        }
        return {};
    }

    const std::string m_path = "/support/deep/bookmarks.json";
    InMemoryFileManager m_disk;
    BookmarkStore m_store{FileURL{m_path}, m_disk};
};

TEST_F(BookmarkStoreTest, LoadWithoutAFileIsEmpty)
{
    EXPECT_THAT(m_store.load(), IsEmpty());
    EXPECT_THAT(m_disk.tree(), IsEmpty());
}

TEST_F(BookmarkStoreTest, SavingNothingMakesTheFolderAndAnEmptyArray)
{
    FaultInjectingFileManager files{
        m_disk, failAt(FileCall::writeAtomically, 0, std::errc::no_space_on_device)};
    const BookmarkStore store{m_store.url(), files};
    EXPECT_EQ(errorOf([&] { store.save({}); }), std::errc::no_space_on_device);
    EXPECT_THAT(m_disk.tree(), ElementsAre("/support/", "/support/deep/"));

    store.save({});
    EXPECT_EQ(m_disk.content(m_path), "[\n\n]");
    EXPECT_THAT(store.load(), IsEmpty());
}

TEST_F(BookmarkStoreTest, BytesOfAnyKindAreLoadedAsTheyWereSaved)
{
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    const std::vector<std::string> bookmarks{
        everyByte, "", std::string{"\0", 1}, "a", "ab", "abc", std::string(100'000, '\xFF')};
    m_store.save(bookmarks);
    EXPECT_EQ(m_store.load(), bookmarks);
}

TEST_F(BookmarkStoreTest, TheFileHoldsPaddedBase64WithPlainSlashes)
{
    m_store.save({"a", "ab", "abc", "\xFF\xFF\xFF", "\xFB\xEF\xBE"});
    EXPECT_EQ(m_disk.content(m_path),
        "[\n  \"YQ==\",\n  \"YWI=\",\n  \"YWJj\",\n  \"////\",\n  \"++++\"\n]");
}

TEST_F(BookmarkStoreTest, TheOrderIsKept)
{
    const std::vector<std::string> bookmarks{"c", "a", "b", "a"};
    m_store.save(bookmarks);
    EXPECT_EQ(m_store.load(), bookmarks);
}

TEST_F(BookmarkStoreTest, SavingReplacesTheWholeFile)
{
    m_store.save({"a", "b"});
    m_store.save({"c"});
    EXPECT_THAT(m_store.load(), ElementsAre("c"));
}

struct DamageRow {
    const char* name;
    std::string content;
};

TEST_F(BookmarkStoreTest, AFileThatHoldsSomethingElseLoadsAsEmpty)
{
    const DamageRow rows[] = {
        {"nothing", ""},
        {"no JSON", "YQ=="},
        {"cut", R"(["YQ==", "YW)"},
        {"more than one value", "[\"YQ==\"] []"},
        {"an object", R"({"bookmarks": ["YQ=="]})"},
        {"a string", "\"YQ==\""},
        {"null", "null"},
        {"a number among them", "[\"YQ==\", 1]"},
        {"null among them", "[\"YQ==\", null]"},
        {"an array among them", R"(["YQ==", ["YQ=="]])"},
        {"no base64", R"(["YQ==", "%%%%"])"},
        {"no padding", R"(["YQ==", "YQ"])"},
        {"half the padding", R"(["YQ==", "YQ="])"},
        {"too much padding", R"(["YQ==", "YQ==="])"},
        {"padding in the middle", R"(["YQ==", "YQ==YQ=="])"},
        {"blanks", R"(["YQ==", "YW Jj"])"},
        {"a newline", R"(["YQ==", "YWJj\n"])"},
        {"the alphabet for URLs", R"(["YQ==", "____"])"},
        {"bits that mean nothing", R"(["YQ==", "YR=="])"},
        {"not UTF-8", "[\"YQ==\", \"\xFF\"]"},
    };
    for (const DamageRow& row : rows) {
        m_disk.addFile(m_path, row.content);
        EXPECT_THAT(m_store.load(), IsEmpty()) << row.name;
        EXPECT_EQ(m_disk.content(m_path), row.content) << row.name;
    }
    m_disk.addFile(m_path, R"(["YQ==", "\u0059Q==", "\/\/\/\/"])");
    EXPECT_THAT(m_store.load(), ElementsAre("a", "a", "\xFF\xFF\xFF"));
}

TEST_F(BookmarkStoreTest, AFileThatCannotBeReadLoadsAsEmpty)
{
    m_store.save({"a"});
    m_disk.makeUnreadable(m_path);
    EXPECT_THAT(m_store.load(), IsEmpty());
    m_disk.makeAccessible(m_path);
    EXPECT_THAT(m_store.load(), ElementsAre("a"));

    m_disk.addFolder("/folder");
    EXPECT_THAT((BookmarkStore{FileURL{"/folder"}, m_disk}.load()), IsEmpty());
    EXPECT_THAT((BookmarkStore{FileURL{m_path + "/below"}, m_disk}.load()), IsEmpty());
}

TEST_F(BookmarkStoreTest, NothingIsWrittenWhenTheFolderCannotBeMade)
{
    m_disk.addFile("/support", "in the way");
    const auto tree = m_disk.tree();
    FaultInjectingFileManager files{m_disk};
    EXPECT_EQ(errorOf([&] {
        (BookmarkStore{m_store.url(), files}.save({"a"}));
    }),
        std::errc::not_a_directory);
    EXPECT_EQ(files.callCount(FileCall::writeAtomically), 0);
    EXPECT_EQ(m_disk.tree(), tree);
}

TEST_F(BookmarkStoreTest, AFailedSaveLeavesTheOldBookmarks)
{
    m_store.save({"old"});
    FaultInjectingFileManager files{
        m_disk, failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)};
    EXPECT_EQ(errorOf([&] {
        (BookmarkStore{m_store.url(), files}.save({"new"}));
    }),
        std::errc::no_space_on_device);
    EXPECT_THAT(m_store.load(), ElementsAre("old"));
}

TEST_F(BookmarkStoreTest, ABookmarkLeadsBackToItsFileOrFolder)
{
    m_disk.addFile("/in/a file", "");
    m_disk.addLink("/in/dangling", "nowhere");
    for (const FileURL& url : {FileURL{"/in/a file"}, FileURL{"/in"}, FileURL::directory("/in"),
             FileURL{"/in/dangling"}, FileURL::directory("/")}) {
        for (const Scope scope : {Scope::plain, Scope::security}) {
            const std::string data = m_store.bookmark(url, scope);
            EXPECT_EQ(m_store.resolve(data, scope), (BookmarkStore::Resolved{url, false}))
                << url.path();
        }
    }
}

TEST_F(BookmarkStoreTest, ABookmarkIsStaleOnceNothingStandsThere)
{
    const FileURL file{"/in/file"};
    m_disk.addFile(file.path(), "");
    const std::string data = m_store.bookmark(file, Scope::security);
    m_disk.remove("/in");
    EXPECT_EQ(m_store.resolve(data, Scope::security), (BookmarkStore::Resolved{file, true}));
    m_disk.addFile(file.path(), "another one");
    EXPECT_EQ(m_store.resolve(data, Scope::security), (BookmarkStore::Resolved{file, false}));
}

TEST_F(BookmarkStoreTest, OnlyWhatStandsSomewhereCanBeBookmarked)
{
    EXPECT_EQ(errorOf([&] { m_store.bookmark(FileURL{"/none"}, Scope::plain); }),
        std::errc::no_such_file_or_directory);
    EXPECT_EQ(errorOf([&] { m_store.bookmark(FileURL{"relative"}, Scope::plain); }),
        std::errc::invalid_argument);
}

TEST_F(BookmarkStoreTest, OtherBytesAreNoBookmark)
{
    for (const std::string& data :
        {std::string{}, std::string{"relative"}, std::string{"/a\0b", 4}, std::string{"book\0", 5}})
        EXPECT_EQ(
            errorOf([&] { m_store.resolve(data, Scope::plain); }), std::errc::invalid_argument);
}

TEST_F(BookmarkStoreTest, WhatCannotBeLookedUpIsNotCalledStale)
{
    FaultInjectingFileManager files{
        m_disk, failEvery(FileCall::fileExists, std::errc::permission_denied)};
    const BookmarkStore store{m_store.url(), files};
    EXPECT_EQ(
        errorOf([&] { store.resolve("/in/file", Scope::plain); }), std::errc::permission_denied);
    EXPECT_EQ(errorOf([&] { store.bookmark(FileURL{"/in/file"}, Scope::plain); }),
        std::errc::permission_denied);
}

TEST(BookmarkStoreOnDisk, NamesThatAreNoTextAreBookmarkedAndSaved)
{
    const TemporaryFolder folder;
    const ScopedHome home{folder.path("home")};
    LinuxFileManager files;
    const BookmarkStore store{folder.url("a/b/bookmarks.json"), files};
    const FileURL file = folder.write("\xFF\xFE", "content");
    store.save({store.bookmark(file, Scope::security)});
    const std::vector<std::string> loaded = store.load();
    ASSERT_EQ(loaded.size(), 1U);
    EXPECT_EQ(store.resolve(loaded[0], Scope::security), (BookmarkStore::Resolved{file, false}));
    EXPECT_THAT(folder.names("a/b"), ElementsAre("bookmarks.json"));
}

}  // namespace tidemark
