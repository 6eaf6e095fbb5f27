#include "DefaultRules.h"
#include "LinuxFileManager.h"
#include "ScopedEnvironment.h"
#include "SweepController.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>
#include <atomic>
#include <map>
#include <thread>

using namespace tidemark;

namespace {

/// What a sweep and its undo must not change about a file.
struct Fingerprint {
    std::string content;
    std::string attribute;
    mode_t mode = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
    ino_t inode = 0;

    bool operator==(const Fingerprint&) const = default;
};

constexpr const char* attributeName = "user.xdg.origin.url";

}  // namespace

/// A home folder of real files, watched as a first start would have it.
class RealFolderTest : public testing::Test {
protected:
    FileURL add(const std::string& path, const std::string& content, timespec modified)
    {
        FileURL url = m_home.write(path, content);
        const char* file = url.path().c_str();
        EXPECT_EQ(::chmod(file, 0640), 0);
        m_keepsAttributes = ::setxattr(file, attributeName, path.data(), path.size(), 0) == 0;
        const std::array<timespec, 2> times{modified, modified};
        EXPECT_EQ(::utimensat(AT_FDCWD, file, times.data(), 0), 0);
        return url;
    }

    Fingerprint fingerprint(const std::string& path)
    {
        Fingerprint print;
        struct stat status = {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        print.mode = status.st_mode;
        print.modifiedSeconds = status.st_mtim.tv_sec;
        print.modifiedNanoseconds = status.st_mtim.tv_nsec;
        print.inode = status.st_ino;
        print.content = m_files.readFile(FileURL(path), 1U << 20U);
        std::array<char, 4096> value{};
        const auto length = ::getxattr(path.c_str(), attributeName, value.data(), value.size());
        print.attribute.assign(value.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
        return print;
    }

    std::map<std::string, Fingerprint> fingerprints()
    {
        std::map<std::string, Fingerprint> prints;
        for (const char* folder : {"Desktop", "Downloads"}) {
            for (const auto& item : std::filesystem::directory_iterator(m_home.path(folder))) {
                if (item.is_regular_file())
                    prints.emplace(item.path().string(), fingerprint(item.path().string()));
            }
        }
        return prints;
    }

    SweepController controller()
    {
        return {SettingsStore(m_home.url("support/settings.json"), m_files, m_clock),
            JournalStore(m_home.url("support/journal.json"), m_files), m_files};
    }

    void watchBoth(SweepController& controller)
    {
        Settings settings;
        for (const char* folder : {"Desktop", "Downloads"}) {
            settings.folders.push_back({.path = m_home.path(folder),
                .rules = DefaultRules::all(FileURL::directory(m_home.path("Desktop/Screenshots")),
                    FileURL::directory(m_home.path("Downloads/Archive")))});
        }
        controller.update(settings);
    }

    /// To a whole second, as the journal keeps dates.
    Date fortyDaysFromNow() const
    {
        return std::chrono::floor<std::chrono::seconds>(m_clock.now())
            + Seconds(40 * secondsPerDay);
    }

    TemporaryFolder m_home;
    ScopedHome m_environment{m_home.path()};
    ScopedEnvironment m_zone{"TZ", "UTC"};
    LinuxFileManager m_files;
    SystemClock m_clock;
    bool m_keepsAttributes = false;
};

TEST_F(RealFolderTest, ASweepAndItsUndoLeaveEveryFileExactlyAsItWas)
{
    const timespec old{.tv_sec = 1'600'000'000, .tv_nsec = 123'456'789};
    const timespec ancient{.tv_sec = -86'400, .tv_nsec = 1};
    add("Desktop/Screenshot from 2020.png", "shot", old);
    add("Desktop/Screenshot same minute.png", "another shot", old);
    add("Downloads/Setup.dmg", "installer", old);
    add("Downloads/100% \"quoted\"\nname.pkg", "installer too", old);
    add("Downloads/report.pdf", "report", old);
    add("Desktop/report.pdf", "another report", ancient);
    add("Downloads/Grüße 🌊.md", "---\ntitle: Plan: Q3\ndate: 2024-05-03\n---\n", old);
    add("Downloads/movie.mp4.part", "unfinished", old);
    SweepController sweeper = controller();
    watchBoth(sweeper);
    const auto before = fingerprints();
    ASSERT_EQ(before.size(), 8U);

    // "Added" is the time of the last change of status, which no program can set: look from the future.
    const Date inFortyDays = fortyDaysFromNow();
    const SweepRecord record = sweeper.sweepNow(inFortyDays);

    EXPECT_EQ(record.entries.size(), 7U);
    EXPECT_EQ(fingerprints().size(), 1U);
    for (const JournalEntry& entry : record.entries) {
        EXPECT_EQ(fingerprint(entry.to), before.at(entry.from)) << entry.from;
        EXPECT_FALSE(m_files.fileExists(FileURL(entry.from)));
    }
    EXPECT_TRUE(m_home.holds("Desktop/Screenshots/2020-09-13 12.26.png"));
    EXPECT_TRUE(m_home.holds("Desktop/Screenshots/2020-09-13 12.26 2.png"));
    EXPECT_TRUE(m_home.holds("Downloads/Notes/2024-05/Plan- Q3.md"));

    EXPECT_EQ(sweeper.undoLast(inFortyDays), record);
    EXPECT_EQ(fingerprints(), before);
    if (m_keepsAttributes) {
        EXPECT_EQ(before.at(m_home.path("Downloads/report.pdf")).attribute, "Downloads/report.pdf");
    }
}

TEST_F(RealFolderTest, APreviewForetellsEveryPlaceAndChangesNothing)
{
    const timespec old{.tv_sec = 1'600'000'000, .tv_nsec = 0};
    add("Desktop/report.pdf", "one", old);
    add("Downloads/report.pdf", "two", old);
    add("Downloads/Screenshot.png", "three", old);
    SweepController sweeper = controller();
    watchBoth(sweeper);
    const auto before = fingerprints();
    const Date inFortyDays = fortyDaysFromNow();

    std::vector<std::string> foretold;
    const Rehearsal rehearsal = sweeper.preview(inFortyDays);
    for (std::size_t index = 0; index < rehearsal.size(); ++index)
        foretold.push_back(rehearsal[index].destination.value().path());
    EXPECT_EQ(fingerprints(), before);
    EXPECT_FALSE(m_home.holds("support/journal.json"));

    std::vector<std::string> used;
    for (const JournalEntry& entry : sweeper.sweepNow(inFortyDays).entries)
        used.push_back(entry.to);
    EXPECT_EQ(used, foretold);
    EXPECT_EQ(used.size(), 3U);
}

TEST_F(RealFolderTest, SettingsAndDisplayGoOnWhileAnotherThreadSweepsAndUndoes)
{
    constexpr int files = 40;
    constexpr int rounds = 3;
    const timespec old{.tv_sec = 1'600'000'000, .tv_nsec = 0};
    for (int number = 0; number < files; ++number)
        add("Downloads/" + std::to_string(number) + ".pdf", std::to_string(number), old);
    m_home.makeFolder("Desktop");
    SweepController sweeper = controller();
    watchBoth(sweeper);
    const Settings settings = sweeper.settings();
    const auto before = fingerprints();
    const Date inFortyDays = fortyDaysFromNow();

    std::atomic<bool> isDone = false;
    std::thread work([&, copy = settings] {
        for (int round = 0; round < rounds; ++round) {
            EXPECT_EQ(sweeper.nextSweepDue(copy, inFortyDays), inFortyDays);
            EXPECT_EQ(sweeper.sweep(copy, inFortyDays).entries.size(), std::size_t{files});
            EXPECT_TRUE(sweeper.canUndo());
            EXPECT_EQ(sweeper.recentActivity(100).size(), std::size_t{files});
            EXPECT_TRUE(sweeper.undoLast(inFortyDays));
        }
        isDone = true;
    });
    do {
        sweeper.togglePause();
        sweeper.update({.folders = settings.folders, .isPaused = !sweeper.isPaused()});
        EXPECT_EQ(sweeper.settingsError(), nullptr);
        sweeper.hasCurrentJournal();
        sweeper.canUndo();
        EXPECT_LE(sweeper.recentActivity(20).size(), 20U);
    } while (!isDone);
    work.join();

    EXPECT_EQ(fingerprints(), before);
    EXPECT_FALSE(sweeper.canUndo());
}
