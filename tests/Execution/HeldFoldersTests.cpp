#include "HeldFolders.h"

#include "LinuxFileManager.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <filesystem>
#include <iterator>
#include <string>

// On real folders: only they have descriptors that a process can run out of.

using namespace tidemark;

namespace {

constexpr int many = 150;
constexpr std::ptrdiff_t some = 100;

std::ptrdiff_t openFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

bool isOpen(const HeldFolder& folder)
{
    return ::fcntl(folder.descriptor(), F_GETFD) >= 0;
}

std::string numbered(const std::string& folder, int number)
{
    return folder + '/' + std::to_string(number);
}

/// So many that those before them are not open any more.
void useManyOthers(HeldFolders& folders, const TemporaryFolder& home)
{
    for (int number = 0; number < many; ++number) {
        std::filesystem::create_directory(numbered(home.path(), number));
        folders.find(numbered(home.path(), number));
        folders.make(numbered(home.path(), number + 2 * many));
    }
}

}  // namespace

/// As one watched folder whose notes go to the folders of many months, and an undo of many folders' sweep.
TEST(HeldFolders, OnlySomeAreOpenHoweverManyFilesOfOneFolderAreSpreadOver)
{
    const TemporaryFolder home;
    LinuxFileManager files;
    HeldFolders folders(files);
    const std::ptrdiff_t before = openFiles();

    for (int number = 0; number < many; ++number) {
        const HeldFolder* from = folders.find(home.path());
        ASSERT_NE(from, nullptr);
        const HeldFolder& to = folders.make(numbered(home.path(), number));
        ASSERT_TRUE(isOpen(*from) && isOpen(to));
    }

    EXPECT_LT(openFiles() - before, some);
}

TEST(HeldFolders, OnlySomeAreOpenHoweverManyGoToOneFolder)
{
    const TemporaryFolder home;
    LinuxFileManager files;
    HeldFolders folders(files);
    const std::ptrdiff_t before = openFiles();

    for (int number = 0; number < many; ++number) {
        std::filesystem::create_directory(numbered(home.path(), number));
        ASSERT_NE(folders.find(numbered(home.path(), number)), nullptr);
        folders.make(home.path());
    }

    EXPECT_LT(openFiles() - before, some);
}

TEST(HeldFolders, WhatComesIntoThePlaceOfOneThatIsNotOpenAnyMoreIsRefused)
{
    const TemporaryFolder home;
    LinuxFileManager files;
    HeldFolders folders(files);
    const std::string found = numbered(home.path(), many);
    const std::string made = numbered(home.path(), many + 1);
    std::filesystem::create_directory(found);
    folders.find(found);
    folders.make(made);
    useManyOthers(folders, home);
    for (const std::string& path : {found, made}) {
        std::filesystem::rename(path, path + " away");
        std::filesystem::create_directory_symlink(home.path(), path);
    }

    EXPECT_THROW(folders.find(found), std::filesystem::filesystem_error);
    EXPECT_THROW(folders.make(made), std::filesystem::filesystem_error);
}

TEST(HeldFolders, OneThatIsNotOpenAnyMoreAndWasMovedAwayIsNoFolderThatNeverWas)
{
    const TemporaryFolder home;
    LinuxFileManager files;
    HeldFolders folders(files);
    const std::string moved = numbered(home.path(), many);
    std::filesystem::create_directory(moved);
    folders.find(moved);
    useManyOthers(folders, home);
    std::filesystem::rename(moved, moved + " away");

    EXPECT_THROW(folders.find(moved), std::filesystem::filesystem_error);
    EXPECT_EQ(folders.find(home.path() + "/absent"), nullptr);
}

TEST(HeldFolders, OneThatWasMadeAndThenFoundStaysWhileOthersAreMade)
{
    const TemporaryFolder home;
    LinuxFileManager files;
    HeldFolders folders(files);
    const std::string first = numbered(home.path(), 0);
    folders.make(first);

    const HeldFolder* found = folders.find(first);
    for (int number = 1; number < many; ++number)
        folders.make(numbered(home.path(), number));

    ASSERT_NE(found, nullptr);
    EXPECT_EQ(folders.find(first), found);
    EXPECT_TRUE(isOpen(*found));
}
