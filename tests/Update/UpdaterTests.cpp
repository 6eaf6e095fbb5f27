#include "CoreVersion.h"
#include "Updater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tidemark {

using testing::Eq;
using testing::Optional;

namespace {

const std::string wholeFeed =
    R"({"version": "1.3", "url": "https://example.org/update.zip", "notes": "Faster."})";

std::optional<UpdateInfo> in(const std::string& feed)
{
    return Updater::updateIn(feed, "1.2");
}

}  // namespace

TEST(Updater, ComparesVersionsNumberByNumber)
{
    struct Row {
        const char* a;
        const char* b;
        bool isNewer;
    };
    const Row rows[] = {
        {"1.2.0", "1.2", false},
        {"1.2", "1.2.0", false},
        {"1.2.1", "1.2", true},
        {"1.2", "1.2.1", false},
        {"1.10", "1.9", true},
        {"1.9", "1.10", false},
        {"2.0.0", "10", false},
        {"10", "2.0.0", true},
        {"0.0.0", "", false},
        {"", "0.0.0", false},
        {"1", "", true},
        {"", "", false},
        {"1.2.3", "1.2.3", false},
        // Empty pieces are not there.
        {"1..2", "1.2", false},
        {"1.2", "1..2", false},
        {".1.2.", "1.2", false},
        {"...", "0", false},
        {"1...3", "1.2", true},
        // What is no number counts as 0.
        {"2.0-beta", "2.0", false},
        {"2.0", "2.0-beta", false},
        {"1.2b", "1.0", false},
        {"1.2b", "1.1", false},
        {"1.rc1", "1.0", false},
        {"1.0.1", "1.rc1", true},
        {"1. 2", "1.0", false},
        {"1.2 ", "1.0", false},
        {" 1", "0", false},
        {"v2", "1", false},
        {"0x10", "1", false},
        {"1e3", "1", false},
        {"1.2\n", "1.0", false},
        {"\u0661", "0", false},  // ARABIC-INDIC DIGIT ONE
        {"\uFF12", "1", false},  // FULLWIDTH DIGIT TWO
        {"1,5", "1", false},
        // Signs
        {"+2", "1", true},
        {"1.+3", "1.2", true},
        {"1.-1", "1.0", false},
        {"1.0", "1.-1", true},
        {"1", "1.-1", true},
        {"1.-1", "1", false},
        {"-0", "0", false},
        {"+", "0", false},
        {"-", "0", false},
        {"0", "-", false},
        {"+-1", "0", false},
        {"0", "+-1", false},
        {"-+1", "0", false},
        {"++1", "0", false},
        {"--1", "0", false},
        // Leading zeros
        {"1.02", "1.2", false},
        {"1.010", "1.9", true},
        {"0000000000000000000000000000002", "1", true},
        // The ends of 64 bits
        {"9223372036854775807", "9223372036854775806", true},
        {"9223372036854775808", "1", false},
        {"+9223372036854775807", "1", true},
        {"-9223372036854775808", "0", false},
        {"0", "-9223372036854775808", true},
        {"0", "-9223372036854775809", false},
        {"99999999999999999999999999999999", "1", false},
        {"1.99999999999999999999", "1.0", false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Updater::isNewer(row.a, row.b), row.isNewer) << row.a << " against " << row.b;
}

TEST(Updater, ANulInAVersionIsNoNumber)
{
    using namespace std::string_view_literals;
    EXPECT_FALSE(Updater::isNewer("2\0"sv, "1"));
    EXPECT_FALSE(Updater::isNewer("1.2\0"sv, "1.0"));
}

TEST(Updater, NoVersionIsNewerThanItself)
{
    for (const char* version : {"", "1", "1.2.3", "-4", "2.0-beta", "..", "9223372036854775807"})
        EXPECT_FALSE(Updater::isNewer(version, version)) << version;
}

TEST(Updater, TheCoreLibraryHasAVersionOfItsOwn)
{
    EXPECT_STREQ(TidemarkCore::version, "0.0.1");
}

TEST(Updater, AFeedAnnouncesVersionAddressAndNotes)
{
    EXPECT_THAT(in(wholeFeed),
        Optional(Eq(UpdateInfo{.version = "1.3",
            .downloadURL = QUrl{QStringLiteral("https://example.org/update.zip")},
            .notes = "Faster."})));
}

TEST(Updater, TheVersionStaysAsItIsWritten)
{
    const auto update = in(R"({"version": " v1..3-beta.9 ", "url": "https://a.example/"})");
    ASSERT_FALSE(update);
    const auto odd = in(R"({"version": "+01.0003.rc", "url": "https://a.example/"})");
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->version, "+01.0003.rc");
}

TEST(Updater, OnlyANewerVersionIsAnUpdate)
{
    EXPECT_TRUE(Updater::updateIn(wholeFeed, "1.2.9"));
    EXPECT_TRUE(Updater::updateIn(wholeFeed, ""));
    EXPECT_FALSE(Updater::updateIn(wholeFeed, "1.3"));
    EXPECT_FALSE(Updater::updateIn(wholeFeed, "1.3.0"));
    EXPECT_FALSE(Updater::updateIn(wholeFeed, "1.4"));
}

TEST(Updater, NotesThatAreMissingOrNoStringAreEmpty)
{
    for (const char* notes : {"", R"(, "notes": 7)", R"(, "notes": null)", R"(, "notes": true)",
             R"(, "notes": ["a"])", R"(, "notes": {"a": "b"})", R"(, "notes": "")",
             R"(, "Notes": "a")", R"(, "notes": 123456789012345678901234567890)"}) {
        SCOPED_TRACE(notes);
        const auto update = in(
            R"({"version": "1.3", "url": "https://example.org/u.zip")" + std::string{notes} + "}");
        ASSERT_TRUE(update);
        EXPECT_EQ(update->notes, "");
    }
}

TEST(Updater, OtherKeysAreIgnored)
{
    EXPECT_TRUE(in(R"({"minimum": 1e999, "url": "https://a.example/", "a": {"version": "0"},
        "version": "1.3", "sha256": [null, true, {}], "": ""})"));
}

TEST(Updater, OfTwoMembersWithOneKeyTheLastCounts)
{
    const auto update = in(R"({"version": "0.1", "url": "http://a.example/", "version": "1.3",
        "url": "https://b.example/"})");
    ASSERT_TRUE(update);
    EXPECT_EQ(update->version, "1.3");
    EXPECT_FALSE(in(R"({"version": "1.3", "url": "https://b.example/", "url": 1})"));
}

TEST(Updater, AByteOrderMarkAndBlanksAroundAreNoHarm)
{
    EXPECT_TRUE(in("\xEF\xBB\xBF" + wholeFeed));
    EXPECT_TRUE(in("\n\t " + wholeFeed + "\r\n \n"));
}

TEST(Updater, WhatIsNoFeedAnnouncesNothing)
{
    const std::string url = R"("url": "https://example.org/u.zip")";
    const std::string rows[] = {
        "",
        " ",
        "null",
        "1.3",
        "\"1.3\"",
        "true",
        "[]",
        "[" + wholeFeed + "]",
        "{}",
        "<html></html>",
        "{" + url + "}",
        R"({"version": "1.3"})",
        R"({"version": 1.3, )" + url + "}",
        R"({"version": 2, )" + url + "}",
        R"({"version": null, )" + url + "}",
        R"({"version": ["1.3"], )" + url + "}",
        R"({"version": {"version": "1.3"}, )" + url + "}",
        R"({"Version": "1.3", )" + url + "}",
        R"({"version": "1.3", "url": 1})",
        R"({"version": "1.3", "url": null})",
        R"({"version": "1.3", "url": ["https://a.example/"]})",
        // No JSON
        wholeFeed + "x",
        wholeFeed + wholeFeed,
        wholeFeed + ",",
        wholeFeed.substr(1),
        wholeFeed.substr(0, wholeFeed.size() - 1),
        R"({version: "1.3", )" + url + "}",
        R"({'version': '1.3', )" + url + "}",
        R"({"version": "1.3", )" + url + ",}",
        R"({"version": "1.3", )" + url + R"(, "a": 01})",
        R"({"version": "1.3", )" + url + R"(, "a": nul})",
        R"({"version": "1.3", )" + url + R"(, "a": NaN})",
        R"({"version": "1.3", )" + url + R"(, "a": "\x"})",
        R"({"version": "1.3", )" + url + R"(, "a": "\uD800"})",
        R"({"version": "1.3", )" + url + ", \"a\": \"\xFF\"}",
        R"({"version": "1.3", )" + url + ", \"a\": \"\n\"}",
        R"({"version": "1.3", )" + url + "} // new",
        R"({"version": "1.3", )" + url + ", \"a\": " + std::string(100'000, '[') + "}",
        std::string(1, '\0') + wholeFeed,
        wholeFeed + std::string(1, '\0'),
    };
    for (const std::string& feed : rows)
        EXPECT_FALSE(in(feed)) << feed.substr(0, 200);
}

TEST(Updater, AFeedThatIsCutOffAnywhereAnnouncesNothing)
{
    for (std::size_t length = 0; length < wholeFeed.size(); ++length)
        EXPECT_FALSE(in(wholeFeed.substr(0, length))) << length;
}

TEST(Updater, OnlyHttpsAddressesAreTaken)
{
    const auto with = [](const std::string& url) {
        return in(R"({"version": "99", "url": ")" + url + "\"}");
    };
    for (const char* url : {"https://example.org/u.zip", "https://example.org:8443/u.zip?a=b#c",
             "https://127.0.0.1/u.zip", "https://[::1]/u.zip", "https://example.org/a%20b.zip",
             "https://example.org", R"(https:\/\/example.org\/u.zip)"})
        EXPECT_TRUE(with(url)) << url;
    for (const char* url : {"http://example.org/u.zip", "HTTPS://example.org/u.zip",
             "Https://example.org/u.zip", "ftp://example.org/u.zip", "file:///u.zip", "", "u.zip",
             "/u.zip", "//example.org/u.zip", "example.org/u.zip", "https", "httpss://example.org/",
             "https//example.org/", " https://example.org/", "https ://example.org/",
             "https://example.org:port/", "https://example.org:99999/", "https://[::1/u.zip",
             "https://exa mple.org/", "https://example.org/a b.zip", "https://example.org/%zz",
             "data:application/zip,https://example.org/", R"(https://example.org/a\nb)",
             R"(https://a\u0000.example/)", R"(\thttps://example.org/)"})
        EXPECT_FALSE(with(url)) << url;
}

TEST(Updater, AnAnnouncementReadsBackAsItWas)
{
    for (const std::string& feed :
        {wholeFeed, std::string{R"({"version": "+2..-1.\u0000\"rc", "notes": "a\nb\u2028", "url":
                 "https://u:p@[::1]:8443/a%20b%2Fc?d=%26#e"})"},
            std::string{R"({"version": "1.3", "url": "https://b\u00fccher.example/\u00fc"})"}}) {
        const auto update = in(feed);
        ASSERT_TRUE(update);
        EXPECT_EQ(in(Updater::announcementOf(*update)), update);
    }
}

TEST(Updater, AnEscapedFeedReadsLikeAPlainOne)
{
    EXPECT_EQ(in(R"({"\u0076ersion": "\u0031.3", "url": "https:\u002F\u002Fexample.org\/update.zip",
        "notes": "F\u0061ster."})"),
        in(wholeFeed));
}

}  // namespace tidemark
