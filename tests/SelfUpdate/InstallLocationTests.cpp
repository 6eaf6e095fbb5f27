#include "InstallLocation.h"
#include "PrivateMounts.h"
#include "TemporaryFolder.h"
#include "UpdateError.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace tidemark {

using testing::HasSubstr;

namespace {

std::string refusalOf(const std::optional<FileURL>& bundle)
{
    try {
        InstallLocation::requireReplaceable(bundle);
    } catch (const UpdateError& error) {
        EXPECT_EQ(error.kind(), UpdateError::Case::readOnlyLocation);
        return error.what();
    }
    return {};
}

}  // namespace

TEST(InstallLocation, ABundleHoldsItsProgramAndItsInfo)
{
    const TemporaryFolder folder;
    folder.write("Tidemark.app/Info.json", "{}");
    folder.write("Without.app/bin/tidemark", "");
    folder.write("Folder/Info.json", "{}");
    const auto bundleOf = [&](const char* program) {
        return InstallLocation::bundleOf(folder.url(program));
    };
    EXPECT_EQ(
        bundleOf("Tidemark.app/bin/tidemark"), FileURL::directory(folder.path("Tidemark.app")));
    for (const char* program : {"Tidemark.app/tidemark", "Tidemark.app/lib/tidemark",
             "Tidemark.app/bin/x/tidemark", "Without.app/bin/tidemark", "Folder/bin/tidemark"})
        EXPECT_EQ(bundleOf(program), std::nullopt) << program;
    EXPECT_EQ(InstallLocation::bundleOf(FileURL{"/usr/bin/tidemark"}), std::nullopt);
}

TEST(InstallLocation, WithoutABundleNothingCanBeReplaced)
{
    EXPECT_THAT(refusalOf(std::nullopt), HasSubstr("does not run from a bundle"));
}

TEST(InstallLocation, AFolderOfTheUserCanBeReplaced)
{
    const TemporaryFolder folder;
    EXPECT_EQ(refusalOf(folder.makeFolder("Tidemark.app")), "");
}

TEST(InstallLocation, WhatVanishesOrBelongsToAPackageCannot)
{
    const TemporaryFolder folder;
    EXPECT_THAT(refusalOf(folder.makeFolder("AppTranslocation/x/Tidemark.app")),
        HasSubstr("copy that vanishes"));
    for (const char* path : {"/usr/lib/tidemark/Tidemark.app", "/nix/store/x/Tidemark.app",
             "/snap/tidemark/1/Tidemark.app", "/app/Tidemark.app", "/gnu/store/x/Tidemark.app"})
        EXPECT_THAT(refusalOf(FileURL::directory(path)), HasSubstr("belongs to a package")) << path;
}

TEST(InstallLocation, AFolderThatCannotBeWrittenToCannot)
{
    const TemporaryFolder folder;
    const FileURL bundle = folder.makeFolder("Tidemark.app");
    testWithPrivateMounts([&] {
        mountAgain(folder.path(), folder.path());
        EXPECT_EQ(refusalOf(bundle), "");
        makeReadOnly(folder.path());
        EXPECT_THAT(refusalOf(bundle), HasSubstr("read-only"));
    });
}

TEST(InstallLocation, AFolderWithoutPermissionCannot)
{
    const TemporaryFolder folder;
    const FileURL bundle = folder.makeFolder("closed/Tidemark.app");
    ASSERT_EQ(::chmod(folder.path("closed").c_str(), 0555), 0);
    const ScopedOrdinaryUser user{folder};
    EXPECT_THAT(refusalOf(bundle), HasSubstr("cannot be written to"));
}

TEST(InstallLocation, AFolderThatEverybodyCanWriteToCannot)
{
    const TemporaryFolder folder;
    const FileURL bundle = folder.makeFolder("shared/Tidemark.app");
    for (const mode_t mode : {0777U, 01777U, 0757U}) {
        ASSERT_EQ(::chmod(folder.path("shared").c_str(), mode), 0);
        EXPECT_THAT(refusalOf(bundle), HasSubstr("by everybody")) << std::oct << mode;
    }
    ASSERT_EQ(::chmod(folder.path("shared").c_str(), 0775), 0);
    EXPECT_EQ(refusalOf(bundle), "");
}

TEST(InstallLocation, AMissingFolderCannot)
{
    EXPECT_NE(refusalOf(FileURL::directory("/nowhere/Tidemark.app")), "");
}

}  // namespace tidemark
