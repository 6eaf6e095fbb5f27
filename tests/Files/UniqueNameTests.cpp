#include "UniqueName.h"

#include <gtest/gtest.h>

#include <set>

using namespace tidemark;

TEST(UniqueName, PutsTheCounterBeforeTheExtension)
{
    struct Row {
        const char* name;
        const char* numbered;
    };
    for (const Row& row : {
             Row{"report.pdf", "report 2.pdf"},
             Row{"archive.tar.gz", "archive.tar 2.gz"},
             Row{"README", "README 2"},
             Row{".profile", ".profile 2"},
             Row{".profile.bak", ".profile 2.bak"},
             Row{"ends with a dot.", "ends with a dot. 2"},
             Row{"a 2.png", "a 2 2.png"},
             Row{"Grüße.MD", "Grüße 2.MD"},
             Row{"new\nline.txt", "new\nline 2.txt"},
         }) {
        EXPECT_EQ(UniqueName::numbered(row.name, 2), row.numbered);
    }
}

TEST(UniqueName, TakesTheFirstNameThatIsFree)
{
    struct Row {
        const char* name;
        std::set<std::string> taken;
        const char* expected;
    };
    for (const Row& row : {
             Row{"free", {}, "/f/a.png"},
             Row{"taken", {"/f/a.png"}, "/f/a 2.png"},
             Row{"taken twice", {"/f/a.png", "/f/a 2.png"}, "/f/a 3.png"},
             Row{"a gap", {"/f/a.png", "/f/a 3.png"}, "/f/a 2.png"},
             Row{"only a numbered one", {"/f/a 2.png"}, "/f/a.png"},
         }) {
        const FileURL place = UniqueName::firstFree(FileURL("/f"), "a.png",
            [&](const FileURL& url) { return row.taken.contains(url.path()); });
        EXPECT_EQ(place.path(), row.expected) << row.name;
    }
}
