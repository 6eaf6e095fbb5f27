#include "World.h"

#include "JSONCoders.h"
#include "LocalWorkspace.h"
#include "ProgramUnderTest.h"
#include "SweepReport.h"
#include "UndoReport.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tidemark {

namespace fs = std::filesystem;

namespace {

/// As each program starts, this sanitizer writes a file of its own among the temporary ones and removes it.
#ifdef __SANITIZE_THREAD__
constexpr bool isThreadSanitized = true;
#else
constexpr bool isThreadSanitized = false;
#endif

constexpr mode_t unusualMode = 0640;
constexpr timespec longAgo = {.tv_sec = 1'600'000'000, .tv_nsec = 123'000'000};

/// Its value is the path at which the file was made.
constexpr const char* extendedAttribute = "user.tidemark-test";

bool takesExtendedAttributes(const std::string& folder)
{
    return ::setxattr(folder.c_str(), extendedAttribute, "", 0, 0) == 0
        && ::removexattr(folder.c_str(), extendedAttribute) == 0;
}

std::string extendedAttributeOf(const std::string& path)
{
    std::array<char, PATH_MAX> value;
    const ssize_t size = ::lgetxattr(path.c_str(), extendedAttribute, value.data(), value.size());
    return {value.data(), size < 0 ? 0 : static_cast<std::size_t>(size)};
}

/// Such a file ends with a hole.
constexpr std::string_view hollow = "hollow.pdf";
constexpr std::size_t sizeWithHole = std::size_t{64} * 1024;

std::string contentOf(const std::string& relative)
{
    const std::string frontMatter =
        relative.ends_with(".md") ? "---\ntitle: Trip\ndate: 2024-05-03\n---\n" : "";
    std::string content = frontMatter + "this was " + relative + '\n';
    if (relative.ends_with(hollow))
        content.resize(sizeWithHole, '\0');
    return content;
}

std::string read(const std::string& path)
{
    std::ifstream stream{path, std::ios::binary};
    EXPECT_TRUE(stream.is_open()) << "cannot read " << path;
    return std::string{std::istreambuf_iterator<char>{stream}, {}};
}

void writeFile(const std::string& path, const std::string& content)
{
    fs::create_directories(fs::path{path}.parent_path());
    std::ofstream stream{path, std::ios::binary | std::ios::trunc};
    const std::size_t end = path.ends_with(hollow) ? content.find('\0') : content.size();
    stream << std::string_view{content}.substr(0, end) << std::flush;
    ASSERT_TRUE(stream.good()) << "cannot write " << path;
    fs::resize_file(path, content.size());
}

bool isInTrash(const std::string& path)
{
    const fs::path files = fs::path{path}.parent_path();
    const std::string trash = files.parent_path().filename().string();
    return files.filename() == "files" && (trash == "Trash" || trash.starts_with(".Trash-"));
}

}  // namespace

World::World(std::string place, Scenario scenario)
    : m_place(std::move(place))
    , m_scenario(std::move(scenario))
    , m_home(m_place + "/home")
    , m_hasExtendedAttributes(takesExtendedAttributes(m_place)
          && (!m_scenario.needsDisk || takesExtendedAttributes(m_place + "/disk")))
{
    for (const std::string& file : m_scenario.files)
        m_origins[contentOf(file)] = m_place + '/' + file;
    for (const std::string& file : m_scenario.bystanders) {
        m_origins[contentOf(file)] = m_place + '/' + file;
        m_bystanders.insert(contentOf(file));
    }
}

void World::reset()
{
    for (const fs::directory_entry& entry : fs::directory_iterator{m_place}) {
        if (entry.path().filename() != "disk") {
            fs::remove_all(entry.path());
            continue;
        }
        for (const fs::directory_entry& inside : fs::directory_iterator{entry.path()})
            fs::remove_all(inside.path());
    }
    for (const std::string& file : m_scenario.files)
        write(file);
    for (const std::string& file : m_scenario.bystanders)
        write(file);
    if (m_scenario.hasNoTrashOnDisk)
        writeFile(m_place + "/disk/.Trash-" + std::to_string(::geteuid()), "");
    writeFile(supportFolder() + "/settings.json", JSONCoders::encode(settings()));
    if (m_scenario.startsSwept) {
        sweep();
        ASSERT_EQ(journal().sweeps.back().entries.size(), m_scenario.files.size());
    }
}

void World::write(const std::string& relative) const
{
    const std::string path = m_place + '/' + relative;
    writeFile(path, contentOf(relative));
    const timespec times[] = {longAgo, longAgo};
    ASSERT_EQ(::chmod(path.c_str(), unusualMode), 0);
    if (m_hasExtendedAttributes) {
        ASSERT_EQ(::setxattr(path.c_str(), extendedAttribute, path.data(), path.size(), 0), 0);
    }
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

Settings World::settings() const
{
    Settings settings{.gracePeriod = Seconds{-3600}};
    for (const char* folder : {"home/in", "home/more", "disk/in"}) {
        const bool isWatched = std::ranges::any_of(m_scenario.files,
            [&](const std::string& file) { return file.starts_with(std::string{folder} + '/'); });
        if (isWatched)
            settings.folders.push_back({.path = m_place + '/' + folder,
                .rules = m_scenario.rules(m_place),
                .sortsMarkdown = m_scenario.sortsMarkdown});
    }
    return settings;
}

TracedOutcome World::run(const std::function<CallVerdict(const TracedCall&)>& judge) const
{
    std::map<std::string, std::string> environment{{"TZ", "UTC"},
        {"TMPDIR", isThreadSanitized ? fs::temp_directory_path().string() : m_place}};
    for (const char* name :
        {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        environment[name] = std::getenv(name);
    // The leak checker is a tracer itself, and there can be only one.
    environment["ASAN_OPTIONS"] = "detect_leaks=0";
    const TracedProcess program{
        {programUnderTest(TIDEMARKCTL), m_scenario.command}, environment, {m_place}};
    return program.run([&](const TracedCall& call) -> CallVerdict {
        if (const int error = m_scenario.refuses != nullptr ? m_scenario.refuses(call) : 0)
            return {CallVerdict::Kind::fail, error};
        return judge(call);
    });
}

Journal World::journal() const
{
    const std::string path = supportFolder() + "/journal.json";
    if (!fs::exists(path))
        return {};
    return JSONCoders::decode<Journal>(read(path), path);
}

bool World::isOwnFile(const std::string& path) const
{
    return path.starts_with(supportFolder() + '/') || path.ends_with(".trashinfo")
        || path == m_place + "/disk/.Trash-" + std::to_string(::geteuid());
}

World::Files World::files() const
{
    Files files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{m_place}) {
        const std::string path = entry.path().string();
        if (entry.is_directory() || isOwnFile(path))
            continue;
        struct stat status = {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        files[read(path)].push_back({path, status.st_dev, status.st_ino, status.st_mode,
            status.st_mtim, extendedAttributeOf(path)});
    }
    return files;
}

Leftovers World::check() const
{
    Leftovers leftovers;
    Journal known;
    EXPECT_NO_THROW(known = journal()) << "journal.json is torn";
    checkSettings();
    noteAnnounced(known, leftovers);
    Files found = files();
    for (auto& [content, places] : found) {
        const auto temporaries =
            std::erase_if(places, [](const Found& place) { return isTemporary(place.path); });
        leftovers.temporaries += static_cast<int>(temporaries);
    }
    for (const auto& [content, origin] : m_origins) {
        if (const auto& places = found[content]; places.empty())
            ADD_FAILURE() << "lost: " << origin;
        else
            checkFile(content, places, known, leftovers);
    }
    for (const auto& [content, places] : found) {
        for (const Found& place : places) {
            if (!m_origins.contains(content))
                checkForeign(content, place, leftovers);
        }
    }
    return leftovers;
}

bool World::isTemporary(const std::string& path)
{
    const std::string name = fs::path{path}.filename().string();
    return name.starts_with(".tidemark-") && name.ends_with(".tmp");
}

/// Whether it is where undo brings a file whose name is taken.
bool World::isBeside(const std::string& path, const std::string& origin)
{
    const fs::path wanted{origin};
    return path
        == (wanted.parent_path() / wanted.stem()).string() + " 2" + wanted.extension().string();
}

void World::noteAnnounced(const Journal& journal, Leftovers& leftovers) const
{
    for (const SweepRecord& sweep : journal.sweeps) {
        for (const JournalEntry& entry : sweep.entries) {
            if (entry.op == JournalEntry::Op::trash && entry.to == entry.from
                && fs::exists(entry.from))
                leftovers.announced.insert(read(entry.from));
        }
    }
}

void World::checkFile(const std::string& content, const std::vector<Found>& found,
    const Journal& journal, Leftovers& leftovers) const
{
    if (found.size() == 2) {
        const bool isOneFile =
            found[0].device == found[1].device && found[0].inode == found[1].inode;
        (isOneFile ? leftovers.inLinkWindow : leftovers.copied).insert(content);
    } else if (found.size() > 2) {
        ADD_FAILURE() << found.size() << " times: " << found[0].path;
    }
    // One place may go unmentioned only while the file is at its old one, too.
    const auto isAtOrigin = [&](const Found& place) { return place.path == m_origins.at(content); };
    EXPECT_TRUE(found.size() == 1 || std::ranges::any_of(found, isAtOrigin)) << found[0].path;
    for (const Found& place : found) {
        checkAttributes(content, place);
        const std::string& origin = m_origins.at(content);
        if (place.path != origin)
            checkNamed(content, place, journal, leftovers);
        if (isInTrash(place.path))
            checkTrashRecord(place.path, origin);
    }
}

void World::checkAttributes(const std::string& content, const Found& found) const
{
    EXPECT_EQ(found.mode & 07777U, unusualMode) << found.path;
    EXPECT_EQ(found.modified.tv_sec, longAgo.tv_sec) << found.path;
    EXPECT_EQ(found.attribute, m_hasExtendedAttributes ? m_origins.at(content) : "") << found.path;
}

void World::checkNamed(const std::string& content, const Found& found, const Journal& journal,
    Leftovers& leftovers) const
{
    EXPECT_FALSE(m_bystanders.contains(content)) << "moved: " << m_origins.at(content);
    const std::string& origin = m_origins.at(content);
    bool isNamed = false;
    bool isInWindow = false;
    for (const SweepRecord& sweep : journal.sweeps) {
        for (const JournalEntry& entry : sweep.entries) {
            isNamed = isNamed || (entry.from == origin && entry.to == found.path);
            isInWindow = isInWindow || (entry.from == origin && entry.to == origin);
        }
    }
    if (isNamed)
        return;
    if (isInWindow && isInTrash(found.path)) {
        leftovers.inTrashWindow.insert(content);
        return;
    }
    if (leftovers.copied.contains(content) || leftovers.inLinkWindow.contains(content)) {
        leftovers.unknownCopies.insert(content);
        return;
    }
    EXPECT_TRUE(isInTrash(found.path))
        << "the journal does not know " << found.path << " which was " << origin;
    leftovers.withdrawn.insert(content);
}

/// As the freedesktop.org Trash specification 1.0 wants it.
void World::checkTrashRecord(const std::string& path, const std::string& origin) const
{
    const fs::path trash = fs::path{path}.parent_path().parent_path();
    const std::string record =
        read((trash / "info" / fs::path{path}.filename()).string() + ".trashinfo");
    const bool isHomeTrash = trash.filename() == "Trash";
    const std::string recorded =
        isHomeTrash ? origin : fs::path{origin}.lexically_relative(trash.parent_path()).string();
    EXPECT_TRUE(record.starts_with("[Trash Info]\nPath="
        + QByteArray::fromStdString(recorded).toPercentEncoding("/").toStdString()
        + "\nDeletionDate="))
        << record;
}

/// The only files that may be there beside the user's are the empty ones that a move was going to replace.
void World::checkForeign(const std::string& content, const Found& found, Leftovers& leftovers) const
{
    EXPECT_EQ(content, "") << "what is " << found.path;
    ++leftovers.placeholders;
}

void World::checkSettings() const
{
    const std::string path = supportFolder() + "/settings.json";
    Settings found;
    ASSERT_NO_THROW(found = JSONCoders::decode<Settings>(read(path), path)) << "torn";
    if (found.folders.size() == settings().folders.size())
        return;
    // Settings that could not be read give way to new ones, and are kept.
    for (const fs::directory_entry& entry : fs::directory_iterator{supportFolder()}) {
        if (entry.path().filename().string().starts_with("settings.json.unreadable-"))
            found =
                JSONCoders::decode<Settings>(read(entry.path().string()), entry.path().string());
    }
    EXPECT_EQ(found.folders.size(), settings().folders.size()) << "the settings are lost";
}

void World::sweep() const
{
    Settings unpaused = settings();
    unpaused.isPaused = false;
    LocalWorkspace workspace{FileURL::directory(supportFolder())};
    SweepObserver nobody;
    const SweepReport report = performSweep(workspace, unpaused, workspace.now(), nobody);
    EXPECT_EQ(report.summaryOfFailures(), std::nullopt);
}

void World::bringBack(const Leftovers& leftovers, bool sweepsFirst) const
{
    constexpr int mostSweeps = 4;
    if (sweepsFirst)
        sweep();
    for (int undone = 0; !journal().sweeps.empty(); ++undone) {
        ASSERT_LT(undone, mostSweeps);
        LocalWorkspace workspace{FileURL::directory(supportFolder())};
        const UndoReport report = performUndo(workspace, workspace.now());
        ASSERT_FALSE(report.failure) << *report.failure;
    }
    Files found = files();
    for (auto& [content, places] : found) {
        std::erase_if(places, [](const Found& place) { return isTemporary(place.path); });
        if (m_origins.contains(content))
            checkBack(content, places, leftovers);
    }
    for (const auto& [content, origin] : m_origins)
        EXPECT_FALSE(found[content].empty()) << "lost by undo: " << origin;
}

void World::checkBack(
    const std::string& content, const std::vector<Found>& found, const Leftovers& leftovers) const
{
    const std::string& origin = m_origins.at(content);
    const bool mayStayInTrash =
        leftovers.inTrashWindow.contains(content) || leftovers.withdrawn.contains(content);
    const bool mayBeBeside = leftovers.announced.contains(content) || leftovers.placeholders > 0;
    const bool isBack = std::ranges::any_of(found, [&](const Found& place) {
        return place.path == origin || (mayStayInTrash && isInTrash(place.path))
            || (mayBeBeside && isBeside(place.path, origin));
    });
    EXPECT_TRUE(isBack) << "not back: " << origin;
    const bool mayBeTwice =
        leftovers.inLinkWindow.contains(content) || leftovers.copied.contains(content);
    EXPECT_LE(found.size(), mayBeTwice ? 2U : 1U) << origin;
    for (const Found& place : found)
        checkAttributes(content, place);
}

bool World::isDone() const
{
    if (m_scenario.command == "pause")
        return JSONCoders::decode<Settings>(read(supportFolder() + "/settings.json"), "").isPaused;
    const bool areBack = m_scenario.command == "undo";
    for (const auto& [content, places] : files()) {
        const auto origin = m_origins.find(content);
        if (origin == m_origins.end() || m_bystanders.contains(content))
            continue;
        if ((places.front().path == origin->second) != areBack)
            return false;
    }
    return journal().sweeps.empty() == areBack;
}

}  // namespace tidemark
