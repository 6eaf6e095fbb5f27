#include "FileURL.h"

#include <gtest/gtest.h>

namespace tidemark {

struct WrittenURL {
    const char* name;
    std::string path;
    FileURL::Kind kind;
    std::string text;
};

TEST(FileURL, IsWrittenPercentEncodedAndReadBack)
{
    constexpr auto file = FileURL::Kind::file;
    constexpr auto folder = FileURL::Kind::directory;
    const WrittenURL rows[] = {
        {"file", "/home/a/b.txt", file, "file:///home/a/b.txt"},
        {"folder", "/home/a", folder, "file:///home/a/"},
        {"root", "/", folder, "file:///"},
        {"blanks", "/a b", file, "file:///a%20b"},
        {"percent", "/100%41", file, "file:///100%2541"},
        {"quotes", "/\"'\"", file, "file:///%22'%22"},
        {"newline", "/a\nb", file, "file:///a%0Ab"},
        {"query and fragment characters", "/a?b#c", file, "file:///a%3Fb%23c"},
        {"brackets", "/[1]{2}|\\^`<>", file, "file:///%5B1%5D%7B2%7D%7C%5C%5E%60%3C%3E"},
        {"allowed characters", "/-._~!$&'()*+,;=:@", file, "file:///-._~!$&'()*+,;=:@"},
        {"umlaut", "/ä", file, "file:///%C3%A4"},
        {"decomposed umlaut", "/a\u0308", file, "file:///a%CC%88"},
        {"wave", "/\U0001F30A", file, "file:///%F0%9F%8C%8A"},
        {"leading dots", "/.a/..b/...", file, "file:///.a/..b/..."},
        {"two slashes ahead", "//a/b", file, "file:////a/b"},
        {"drive letter", "/C:/a", file, "file:///C:/a"},
    };
    for (const WrittenURL& row : rows) {
        const FileURL url{row.path, row.kind};
        EXPECT_EQ(url.toString(), row.text) << row.name;
        EXPECT_EQ(FileURL::fromString(row.text), url) << row.name;
    }
}

static std::string utf8(char32_t c)
{
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    if (c < 0x80)
        return {byte(c)};
    if (c < 0x800)
        return {byte(0xC0 | c >> 6), byte(0x80 | (c & 0x3F))};
    if (c < 0x10000)
        return {byte(0xE0 | c >> 12), byte(0x80 | (c >> 6 & 0x3F)), byte(0x80 | (c & 0x3F))};
    return {byte(0xF0 | c >> 18), byte(0x80 | (c >> 12 & 0x3F)), byte(0x80 | (c >> 6 & 0x3F)),
        byte(0x80 | (c & 0x3F))};
}

TEST(FileURL, EveryCharacterOfUnicodeComesBack)
{
    constexpr char32_t charactersPerName = 64;
    for (char32_t first = 0; first < 0x110000; first += charactersPerName) {
        std::string name = "x";
        for (char32_t c = first; c < first + charactersPerName; ++c) {
            if (c != 0 && c != '/' && (c < 0xD800 || c > 0xDFFF))
                name += utf8(c);
        }
        const FileURL url{"/" + name};
        ASSERT_EQ(FileURL::fromString(url.toString()), url)
            << "characters from " << static_cast<std::uint32_t>(first);
    }
}

TEST(FileURL, OtherSpellingsAreRead)
{
    EXPECT_EQ(FileURL::fromString("file://localhost/a"), FileURL{"/a"});
    EXPECT_EQ(FileURL::fromString("FILE:///a"), FileURL{"/a"});
    EXPECT_EQ(FileURL::fromString("file:/a"), FileURL{"/a"});
    EXPECT_EQ(FileURL::fromString("file:///a%2fb"), FileURL{"/a/b"});
    EXPECT_EQ(FileURL::fromString("file:///%61%7E"), FileURL{"/a~"});
    EXPECT_EQ(FileURL::fromString("file:///a%2F"), FileURL::directory("/a"));
    EXPECT_EQ(FileURL::fromString("file:///a//"), FileURL::directory("/a"));
    EXPECT_EQ(FileURL::fromString("file:///a/../b"), FileURL{"/a/../b"});
}

TEST(FileURL, AnythingElseIsNone)
{
    for (const char* text :
        {"", "/a", "a", "file", "file:", "file:a", "file://", "file://host/a", "file://localhost",
            "file://user@localhost/a", "file://localhost:80/a", "http:///a", "http://localhost/a",
            "file:///a?b", "file:///a?", "file:///a#b", "file:///a#", "file:///a b", "file:///%",
            "file:///%4", "file:///%4g", "file:///%00", "file:///a%00b", "file:///%FF",
            "file:///%C3", "file:///%ED%A0%80", "file:///ä", "file:///a\nb", "file:///a\"b",
            "file:///<a>", "file:///a|b", " file:///a", "file:///a "})
        EXPECT_EQ(FileURL::fromString(text), std::nullopt) << text;
    EXPECT_EQ(FileURL::fromString(std::string_view{"file:///a\0", 10}), std::nullopt);
}

TEST(FileURL, ATrailingSlashMakesAFolder)
{
    EXPECT_EQ(FileURL{"/a/"}, FileURL::directory("/a"));
    EXPECT_EQ(FileURL{"/a//"}.path(), "/a");
    EXPECT_EQ(FileURL{"/"}.path(), "/");
    EXPECT_EQ(FileURL{"//"}.path(), "/");
    EXPECT_TRUE(FileURL{"/"}.isDirectory());
    EXPECT_FALSE(FileURL{"/a"}.isDirectory());
    EXPECT_NE(FileURL{"/a"}, FileURL::directory("/a"));
}

TEST(FileURL, IsTakenApart)
{
    EXPECT_EQ(FileURL{"/a/b.c"}.lastPathComponent(), "b.c");
    EXPECT_EQ(FileURL{"/"}.lastPathComponent(), "");
    EXPECT_EQ(FileURL{"/a/b"}.parent(), FileURL::directory("/a"));
    EXPECT_EQ(FileURL{"/a"}.parent(), FileURL::directory("/"));
    EXPECT_EQ(FileURL{"/"}.parent(), FileURL::directory("/"));
}

TEST(FileURL, IsPutTogether)
{
    EXPECT_EQ(FileURL::directory("/a").appending("b"), FileURL{"/a/b"});
    EXPECT_EQ(FileURL::directory("/").appending("b"), FileURL{"/b"});
    EXPECT_EQ(FileURL::directory("/a").appending("b", FileURL::Kind::directory),
        FileURL::directory("/a/b"));
    EXPECT_EQ(FileURL::directory("/a").appending("100%").toString(), "file:///a/100%25");
}

TEST(FileURL, BytesThatAreNoTextAreKeptButNotReadBack)
{
    const FileURL url{"/\xFF"};
    EXPECT_EQ(url.toString(), "file:///%FF");
    EXPECT_EQ(FileURL::fromString(url.toString()), std::nullopt);
}

}  // namespace tidemark
