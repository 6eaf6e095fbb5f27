#include "LinkWalk.h"

#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

namespace tidemark {

using testing::ElementsAre;

namespace {

class LinkWalkTest : public testing::Test {
protected:
    /// Follows a path relative to the test's folder; keeps the steps below that folder.
    LinkWalk::Result follow(const std::string& relative)
    {
        m_steps.clear();
        return LinkWalk::follow(path(relative),
            [&](const std::string& folder, const std::string& name, LinkWalk::Entry entry) {
                const std::string kind = entry == LinkWalk::Entry::link ? "link " : "";
                if (folder.starts_with(path()))
                    m_steps.push_back(kind + (folder + '/' + name).substr(path().size()));
            });
    }

    /// The temporary folder itself may be reached through links.
    std::string path(const std::string& relative = "") const
    {
        const std::string real = std::filesystem::canonical(m_folder.path());
        return relative.empty() ? real : real + '/' + relative;
    }

    TemporaryFolder m_folder;
    std::vector<std::string> m_steps;
};

}  // namespace

TEST_F(LinkWalkTest, LooksUpEveryComponent)
{
    m_folder.makeFolder("a/b");
    const LinkWalk::Result result = follow("a//./b/");
    EXPECT_EQ(result.path, path("a/b"));
    EXPECT_EQ(result.error, 0);
    EXPECT_THAT(m_steps, ElementsAre("/a", "/a/b"));
}

TEST_F(LinkWalkTest, FollowsLinksOfEveryKind)
{
    m_folder.makeFolder("a/b/c");
    m_folder.makeFolder("d");
    m_folder.makeLink("d/up", "../a/b");
    m_folder.makeLink("absolute", path("d"));
    const LinkWalk::Result result = follow("absolute/up/c");
    EXPECT_EQ(result.path, path("a/b/c"));
    EXPECT_THAT(m_steps, ElementsAre("link /absolute", "/d", "link /d/up", "/a", "/a/b", "/a/b/c"));
}

TEST_F(LinkWalkTest, EndsWhereNothingIs)
{
    m_folder.makeFolder("a");
    const LinkWalk::Result result = follow("a/none/deeper");
    EXPECT_EQ(result.path, path("a"));
    EXPECT_EQ(result.error, ENOENT);
    EXPECT_EQ(result.missing, "none");
    EXPECT_THAT(m_steps, ElementsAre("/a"));
}

TEST_F(LinkWalkTest, EndsAtADanglingLinkWithTheNameThatItsTargetLacks)
{
    m_folder.makeLink("link", "none");
    EXPECT_EQ(follow("link"), (LinkWalk::Result{path(), ENOENT, "none"}));
    EXPECT_THAT(m_steps, ElementsAre("link /link"));
}

TEST_F(LinkWalkTest, EndsInALoopOfLinks)
{
    m_folder.makeLink("one", "two");
    m_folder.makeLink("two", "one");
    EXPECT_EQ(follow("one").error, ELOOP);
}

TEST_F(LinkWalkTest, TheRootIsItself)
{
    const auto ignore = [](const std::string&, const std::string&, LinkWalk::Entry) {};
    EXPECT_EQ(LinkWalk::follow("/", ignore).path, "/");
    EXPECT_EQ(LinkWalk::follow("/..", ignore).path, "/");
    EXPECT_EQ(LinkWalk::parentOf("/"), "/");
    EXPECT_EQ(LinkWalk::parentOf("/a"), "/");
    EXPECT_EQ(LinkWalk::parentOf("/a/b"), "/a");
    EXPECT_EQ(LinkWalk::entryIn("/", "a"), "/a");
    EXPECT_EQ(LinkWalk::entryIn("/a", "b"), "/a/b");
}

}  // namespace tidemark
