#include "StatusText.h"

#include <gtest/gtest.h>

using namespace tidemark;

TEST(StatusText, CountsFoldersUnlessPaused)
{
    const WatchedFolder folder{.path = "/in"};

    EXPECT_EQ(statusText({}), "No folders watched");
    EXPECT_EQ(statusText({.folders = {folder}}), "Watching 1 folder");
    EXPECT_EQ(statusText({.folders = {folder, folder}}), "Watching 2 folders");
    EXPECT_EQ(statusText({.folders = {folder}, .isPaused = true}), "Paused");
    EXPECT_EQ(statusText({.isPaused = true}), "Paused");
}
