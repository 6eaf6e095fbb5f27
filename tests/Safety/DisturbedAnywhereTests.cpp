#include "JSONCoders.h"
#include "LocalWorkspace.h"
#include "SafetyFixture.h"
#include "UndoReport.h"

#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

std::string read(const std::string& path)
{
    std::ifstream stream{path, std::ios::binary};
    return std::string{std::istreambuf_iterator<char>{stream}, {}};
}

void write(const std::string& path, const std::string& content)
{
    std::ofstream stream{path, std::ios::binary | std::ios::app};
    stream << content << std::flush;
    ASSERT_TRUE(stream.good()) << "cannot write " << path;
}

/// Which files hold it; never through a link.
using Places = std::map<std::string, std::vector<std::string>>;

Places placesIn(const World& world)
{
    Places places;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{world.place()}) {
        const std::string path = entry.path().string();
        if (entry.is_symlink() || !entry.is_regular_file()
            || path.starts_with(world.supportFolder() + '/') || path.ends_with(".trashinfo"))
            continue;
        places[read(path)].push_back(path);
    }
    return places;
}

/// What another program does to the first file of a world, or to the place where that file goes, in the
/// moment before one call.
class Intruder {
public:
    enum class Deed {
        takes,
        replaces,
        changes,
        linksFile,
        occupies,
        replacesNew,
        replacesNewAndChanges,
        linksFolder,
        linksOldFolder,
        linksRecords,
    };
    static constexpr Deed everyDeed[] = {Deed::takes, Deed::replaces, Deed::changes,
        Deed::linksFile, Deed::occupies, Deed::replacesNew, Deed::replacesNewAndChanges,
        Deed::linksFolder, Deed::linksOldFolder, Deed::linksRecords};

    Intruder(const World& world, Deed deed, std::string from, std::string to)
        : m_world(world)
        , m_deed(deed)
        , m_from(std::move(from))
        , m_to(std::move(to))
    {
        const std::string disturbed = deed == Deed::linksOldFolder ? m_from
            : deed == Deed::linksRecords                           ? recordOf(m_from)
                                                                   : m_to;
        const bool isOnDisk = disturbed.starts_with(world.place() + "/disk/");
        m_outside = world.place() + (isOnDisk ? "/disk/outside" : "/outside");
        // Of the name at which it would be found through a link in the folder's place.
        m_secret = m_outside + '/' + fs::path{disturbed}.filename().string();
        for (const auto& [content, origin] : world.origins())
            m_wanted.insert(content);
        fs::create_directories(atticFor(m_from));
        fs::create_directories(atticFor(m_to));
        fs::create_directories(m_outside);
        write(m_secret, "secret");
        // Records are not among the files that are counted.
        if (deed != Deed::linksRecords)
            m_wanted.insert("secret");
    }

    /// The record of a file that lies in a trash.
    static std::string recordOf(const std::string& file)
    {
        const fs::path path{file};
        return path.parent_path().parent_path() / "info"
            / (path.filename().string() + ".trashinfo");
    }

    /// Whether there was something to do.
    bool act()
    {
        const bool isThere = fs::is_regular_file(fs::symlink_status(m_from));
        switch (m_deed) {
        case Deed::takes:
            return isThere && take();
        case Deed::replaces:
            return isThere && take() && place(m_from);
        case Deed::changes:
            return isThere && change();
        case Deed::linksFile:
            return isThere && take() && link(m_secret, m_from);
        case Deed::occupies:
            return occupy();
        case Deed::replacesNew:
            return replaceNew();
        case Deed::replacesNewAndChanges:
            return isThere && replaceNew() && change();
        case Deed::linksFolder:
            return linkFolder(m_to);
        case Deed::linksOldFolder:
            return linkFolder(m_from);
        case Deed::linksRecords:
            return linkFolder(recordOf(m_from));
        }
        return false;
    }

    const std::set<std::string>& wanted() const { return m_wanted; }

    /// All that lies where no link may lead, by content.
    std::set<std::string> outside() const
    {
        std::set<std::string> contents;
        for (const fs::directory_entry& entry : fs::directory_iterator{m_outside})
            contents.insert(read(entry.path().string()));
        return contents;
    }

private:
    /// Another program's own folder on the file system of a path, for what it takes away.
    std::string atticFor(const std::string& path) const
    {
        const std::string disk = m_world.place() + "/disk";
        return (path.starts_with(disk + '/') ? disk : m_world.place()) + "/attic";
    }

    bool take()
    {
        fs::rename(m_from, atticFor(m_from) + "/taken");
        return true;
    }

    bool place(const std::string& path)
    {
        write(path, "the intruder's");
        m_wanted.insert("the intruder's");
        return true;
    }

    /// As a program does that keeps size and date: only the date of the change itself tells.
    bool change()
    {
        std::string content = read(m_from);
        m_wanted.erase(content);
        content.front() = '!';
        m_wanted.insert(content);
        const auto date = fs::last_write_time(m_from);
        std::fstream{m_from, std::ios::binary | std::ios::in | std::ios::out} << '!';
        fs::last_write_time(m_from, date);
        return true;
    }

    static bool link(const std::string& target, const std::string& at)
    {
        fs::create_symlink(target, at);
        return true;
    }

    bool occupy()
    {
        if (fs::exists(fs::symlink_status(m_to)))
            return false;
        std::error_code error;
        fs::create_directories(fs::path{m_to}.parent_path(), error);
        return !error && place(m_to);
    }

    bool replaceNew()
    {
        if (!fs::is_regular_file(fs::symlink_status(m_to)))
            return false;
        fs::rename(m_to, atticFor(m_to) + "/new");
        return place(m_to);
    }

    bool linkFolder(const std::string& path)
    {
        const fs::path folder = fs::path{path}.parent_path();
        if (!fs::is_directory(fs::symlink_status(folder)))
            return false;
        fs::rename(folder, atticFor(path) + "/folder");
        return link(m_outside, folder.string());
    }

    const World& m_world;
    Deed m_deed;
    std::string m_from;
    std::string m_to;
    std::string m_outside;
    std::string m_secret;
    std::set<std::string> m_wanted;  // contents
};

std::ostream& operator<<(std::ostream& stream, Intruder::Deed deed)
{
    constexpr const char* texts[] = {"takes the file away", "puts another file into its place",
        "writes into the file", "puts a link into the file's place", "takes the file's new name",
        "puts another file into its new place",
        "puts another file into its new place and writes into the old one",
        "puts a link into the place of the folder that the file goes to",
        "puts a link into the place of the folder that the file comes from",
        "puts a link into the place of the folder with the file's record"};
    return stream << texts[static_cast<int>(deed)];
}

class DisturbedAnywhere : public SafetyTest {
protected:
    /// From where to where the first file goes, and at which calls there is a point in disturbing that.
    struct Course {
        std::string content;
        std::string from;
        std::string to;
        std::vector<TracedCall> calls;

        std::string folder() const { return fs::path{to}.parent_path().string(); }
        std::string oldFolder() const { return fs::path{from}.parent_path().string(); }
        std::string record() const { return Intruder::recordOf(from); }
        std::string recordFolder() const { return fs::path{record()}.parent_path().string(); }
        bool comesOutOfTrash() const { return oldFolder().ends_with("/files"); }
    };

    static Course courseOf(World& world)
    {
        Course course;
        for (const auto& [each, origin] : world.origins()) {
            if (origin == world.place() + '/' + world.scenario().files.front())
                course.content = each;
        }
        course.from = placesIn(world)[course.content].front();
        TracedOutcome outcome = world.run([](const TracedCall&) { return CallVerdict{}; });
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        course.to = placesIn(world)[course.content].front();
        course.calls = std::move(outcome.calls);
        std::erase_if(course.calls, [&](const TracedCall& call) {
            return world.scenario().refuses != nullptr && world.scenario().refuses(call) != 0;
        });
        return course;
    }

    static bool isNear(const TracedCall& call, const Course& course)
    {
        const std::string folder = course.folder();
        for (const std::string& path : {call.path, call.otherPath}) {
            if (path == course.from || path == course.to || path == folder
                || path.starts_with(folder + "/.tidemark-") || path.starts_with(folder + "/#"))
                return true;
        }
        return false;
    }

    /// The moments to disturb. The short form keeps to the calls by which the file gets its new name and
    /// loses the old one, and to what is opened and looked up in between; with links in the place of
    /// folders, to all that concerns the file or its folders from the moment on at which the product has
    /// looked at that folder. A link that is there before is the user's own; but no record is removed
    /// behind one.
    class Window {
    public:
        explicit Window(const Course& course)
            : m_course(course)
        {
        }

        bool includes(const TracedCall& call, Intruder::Deed deed) const
        {
            using Deed = Intruder::Deed;
            if (deed == Deed::linksFolder || deed == Deed::linksOldFolder) {
                const bool isSeen = deed == Deed::linksFolder ? m_hasSeenFolder : m_holdsOldFolder;
                return isSeen && (isNear(call, m_course) || call.path == m_course.oldFolder())
                    && (wantsLongTests() || (!m_isOver && call.descriptor < 0));
            }
            if (deed == Deed::linksRecords)
                return m_course.comesOutOfTrash() && concernsRecord(call);
            using Kind = TracedCall::Kind;
            const bool isInside = m_isOpen && (call.kind == Kind::open || call.kind == Kind::look);
            return isNear(call, m_course)
                && (wantsLongTests() || begins(call) || ends(call) || isInside);
        }

        void pass(const TracedCall& call)
        {
            const bool looks = call.kind == TracedCall::Kind::open && (call.flags & O_PATH) != 0;
            const bool finds = looks && call.result >= 0;
            m_hasSeenFolder = m_hasSeenFolder || (looks && call.path == m_course.folder());
            m_holdsFolder = m_holdsFolder || (finds && call.path == m_course.folder());
            m_holdsOldFolder = m_holdsOldFolder || (finds && call.path == m_course.oldFolder());
            if (call.result < 0)
                return;
            m_isOpen = (m_isOpen || begins(call)) && !ends(call);
            m_isOver = m_isOver || ends(call);
        }

        /// Whether the file's folder stays the same for the files after it. It does not before it is
        /// found or made, and for each file the product looks at the Trash anew.
        bool holdsFolder() const { return m_holdsFolder && !m_course.folder().ends_with("/files"); }

    private:
        bool concernsRecord(const TracedCall& call) const
        {
            return ends(call) || call.path == m_course.record()
                || call.path == m_course.recordFolder();
        }

        bool begins(const TracedCall& call) const
        {
            using Kind = TracedCall::Kind;
            return ((call.kind == Kind::rename || call.kind == Kind::link)
                       && call.otherPath == m_course.to)
                || (call.kind == Kind::create && call.path == m_course.to);
        }

        bool ends(const TracedCall& call) const
        {
            using Kind = TracedCall::Kind;
            return (call.kind == Kind::rename || call.kind == Kind::remove)
                && call.path == m_course.from;
        }

        const Course& m_course;
        bool m_isOpen = false;
        bool m_isOver = false;
        bool m_hasSeenFolder = false;  ///< Or that there is none yet.
        bool m_holdsFolder = false;
        bool m_holdsOldFolder = false;
    };

    /// The moment that is outside of the product's power: it has looked whose file it is, and takes it away
    /// or replaces it in the very next call.
    static bool isTooLate(const TracedCall& call, Intruder::Deed deed, const Course& course)
    {
        using Deed = Intruder::Deed;
        const bool endsOldName = call.kind == TracedCall::Kind::remove && call.path == course.from;
        const bool endsPlaceholder = call.name == "renameat" && call.otherPath == course.to;
        return (endsOldName
                   && (deed == Deed::replaces || deed == Deed::changes
                       || deed == Deed::replacesNewAndChanges))
            || (endsPlaceholder
                && (deed == Deed::replacesNew || deed == Deed::replacesNewAndChanges));
    }

    static void expectAccount(
        const std::set<std::string>& wanted, const World& world, bool mayBeTwice)
    {
        const Places places = placesIn(world);
        for (const std::string& content : wanted) {
            const auto found = places.find(content);
            if (found == places.end()) {
                ADD_FAILURE() << "lost: " << content;
                continue;
            }
            EXPECT_LE(found->second.size(), mayBeTwice && content != "secret" ? 2U : 1U)
                << content << " is at " << testing::PrintToString(found->second);
        }
        EXPECT_NO_THROW(world.journal()) << "journal.json is torn";
    }

    static void expectUntouched(
        std::set<std::string> outside, const Course& course, bool mayHoldLaterFiles)
    {
        EXPECT_TRUE(outside.contains("secret")) << "taken through a link";
        EXPECT_FALSE(outside.contains(course.content)) << "went through a link";
        outside.erase("secret");
        EXPECT_TRUE(outside.empty() || mayHoldLaterFiles) << testing::PrintToString(outside);
    }

    /// As far as it goes: what stands in the way of an undo then is the intruder's doing.
    static void undoEverything(const World& world)
    {
        while (!world.journal().sweeps.empty()) {
            LocalWorkspace workspace{FileURL::directory(world.supportFolder())};
            if (performUndo(workspace, workspace.now()).failure)
                return;
        }
    }

    /// Whether there was something to disturb.
    static bool disturb(std::size_t index, Intruder::Deed deed, const Course& course,
        const Window& window, World& world)
    {
        world.reset();
        Intruder intruder{world, deed, course.from, course.to};
        bool hasActed = false;
        std::size_t seen = 0;
        const TracedOutcome outcome = world.run([&](const TracedCall&) -> CallVerdict {
            if (seen++ == index)
                hasActed = intruder.act();
            return {};
        });
        if (!hasActed)
            return false;
        EXPECT_FALSE(outcome.didHang);
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << outcome.error;
        // Taken away after it was copied or linked, it is in the attic and in its new place.
        const bool mayBeTwice =
            world.scenario().needsDisk || world.scenario().name.ends_with("ByLinks");
        expectAccount(intruder.wanted(), world, mayBeTwice);
        // To a file after this one, a link to a folder that nobody has looked at is the user's own.
        expectUntouched(intruder.outside(), course,
            deed == Intruder::Deed::linksFolder && !window.holdsFolder());
        undoEverything(world);
        expectAccount(intruder.wanted(), world, mayBeTwice);
        return true;
    }
};

TEST_P(DisturbedAnywhere, LosesNoFileAndReplacesNone)
{
    using Deed = Intruder::Deed;
    if (GetParam().command == "pause")
        GTEST_SKIP() << "nothing is moved by it";
    if (GetParam().command == "undo" && GetParam().needsDisk && !wantsLongTests())
        GTEST_SKIP() << "left to the long form";
    inWorld([](World& world) {
        const Course course = courseOf(world);
        Window window{course};
        std::size_t disturbances = 0;
        for (std::size_t index = 0; index < course.calls.size(); ++index) {
            const TracedCall& call = course.calls[index];
            for (const Deed deed : Intruder::everyDeed) {
                if (!window.includes(call, deed) || isTooLate(call, deed, course))
                    continue;
                SCOPED_TRACE(testing::Message() << "before call " << index << ' ' << call.text()
                                                << " another program " << deed);
                disturbances += disturb(index, deed, course, window, world) ? 1U : 0U;
                if (testing::Test::HasFatalFailure())
                    return;
            }
            window.pass(call);
        }
        EXPECT_GT(disturbances, 3U);
        printCounts(std::to_string(disturbances) + " deeds of another program between two calls");
    });
}

INSTANTIATE_TEST_SUITE_P(
    Safety, DisturbedAnywhere, testing::ValuesIn(everyScenario()), scenarioName);

}  // namespace
}  // namespace tidemark
