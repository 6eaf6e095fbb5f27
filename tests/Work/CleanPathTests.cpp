#include "CleanPath.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tidemark {
namespace {

TEST(CleanPath, LeavesOutWhatMeansNothing)
{
    struct Row {
        const char* given;
        const char* clean;
    };
    for (const Row& row : std::vector<Row>{{"/", "/"}, {"//", "/"}, {"/none/a/", "/none/a"},
             {"/none//a///", "/none/a"}, {"/none/./a/.", "/none/a"}, {"/none/a/../b", "/none/b"},
             {"/none/..", "/"}, {"/../..", "/"}, {"/none/...", "/none/..."},
             {"/none/ a ", "/none/ a "}}) {
        EXPECT_EQ(cleanAbsolutePath(row.given), row.clean) << row.given;
    }
}

TEST(CleanPath, StepsOutOfALinkToWhereTheKernelDoes)
{
    const TemporaryFolder folder;
    folder.makeFolder("real/inner");
    folder.makeFolder("other");
    folder.makeLink("link", "real/inner");
    folder.makeLink("dangling", "nowhere/at/all");

    EXPECT_EQ(cleanAbsolutePath(folder.path("link")), folder.path("link"));
    EXPECT_EQ(cleanAbsolutePath(folder.path("link/..")), folder.path("real"));
    EXPECT_EQ(cleanAbsolutePath(folder.path("link/sub/..")), folder.path("link"));
    EXPECT_EQ(cleanAbsolutePath(folder.path("link/../../other")), folder.path("other"));
    EXPECT_EQ(cleanAbsolutePath(folder.path("dangling/../other")), folder.path("other"));
}

}  // namespace
}  // namespace tidemark
