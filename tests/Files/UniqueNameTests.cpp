#include "UniqueName.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

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
             Row{"free", {}, "a.png"},
             Row{"taken", {"a.png"}, "a 2.png"},
             Row{"taken twice", {"a.png", "a 2.png"}, "a 3.png"},
             Row{"a gap", {"a.png", "a 3.png"}, "a 2.png"},
             Row{"only a numbered one", {"a 2.png"}, "a.png"},
         }) {
        const std::string name = UniqueName::firstFree("a.png",
            [&](std::string_view candidate) { return row.taken.contains(std::string(candidate)); });
        EXPECT_EQ(name, row.expected) << row.name;
    }
}
