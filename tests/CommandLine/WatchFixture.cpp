#include "WatchFixture.h"

#include "JSONCoders.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace tidemark {

namespace fs = std::filesystem;

namespace {

double seconds(const struct timespec& time)
{
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

struct stat stampsOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

}  // namespace

ProgramStart WatchFixture::watch(const std::vector<std::string>& options) const
{
    std::vector<std::string> arguments{"watch"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramStart how = start(std::move(arguments));
    how.errorFile = m_streams.path("err");
    return how;
}

ProgramStart WatchFixture::asOrdinaryUser(ProgramStart how)
{
    if (::geteuid() != 0)
        return how;
    // Root without capabilities is an owner of files like any other.
    std::vector<std::string> arguments{"--bounding-set=-all", "--inh-caps=-all", how.path};
    arguments.insert(arguments.end(), how.arguments.begin(), how.arguments.end());
    how.path = "/usr/bin/setpriv";
    how.arguments = std::move(arguments);
    return how;
}

void WatchFixture::fileMyPapers(Seconds gracePeriod) const
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.gracePeriod = gracePeriod;
    writeSettings(settings);
}

void WatchFixture::addPapers(int count, const std::string& folder) const
{
    for (int i = 0; i < count; ++i) {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), "/%03d.pdf", i);
        home().write(folder + name.data(), folder + name.data());
    }
}

std::multiset<std::string> WatchFixture::contents(const std::vector<std::string>& folders) const
{
    std::multiset<std::string> found;
    for (const std::string& folder : folders) {
        if (!home().holds(folder))
            continue;
        for (const fs::directory_entry& entry :
            fs::recursive_directory_iterator{home().path(folder)}) {
            if (entry.is_regular_file())
                found.insert(home().read(fs::relative(entry.path(), home().path()).string()));
        }
    }
    return found;
}

Journal WatchFixture::journal() const
{
    if (!home().holds("data/Tidemark/journal.json"))
        return {};
    return JSONCoders::decode<Journal>(home().read("data/Tidemark/journal.json"), "journal.json");
}

std::vector<std::string> WatchFixture::journaledNames() const
{
    std::vector<std::string> names;
    for (const SweepRecord& sweep : journal().sweeps) {
        for (const JournalEntry& entry : sweep.entries)
            names.push_back(fs::path{entry.from}.filename().string());
    }
    std::ranges::sort(names);
    return names;
}

double WatchFixture::writtenAt(const std::string& file) const
{
    return seconds(stampsOf(home().path(file)).st_mtim);
}

double WatchFixture::movedAt(const std::string& file) const
{
    return seconds(stampsOf(home().path(file)).st_ctim);
}

const unsigned FileEvents::arrivals = IN_CREATE | IN_MOVED_TO;

FileEvents::FileEvents(const std::string& folder, unsigned mask)
    : m_inotify(::inotify_init1(IN_CLOEXEC))
{
    if (::inotify_add_watch(m_inotify.get(), folder.c_str(), mask) < 0)
        throw std::system_error{systemError(errno), "cannot watch " + folder};
}

void FileEvents::waitFor(const std::string& name, int times)
{
    constexpr int halfAMinute = 30'000;
    while (m_names.count(name) < static_cast<std::size_t>(times)) {
        if (!readMore(halfAMinute))
            throw std::runtime_error{"nothing happens to " + name};
    }
}

int FileEvents::count(const std::string& name)
{
    while (readMore(0)) { }
    return static_cast<int>(m_names.count(name));
}

bool FileEvents::readMore(int milliseconds)
{
    struct pollfd waiting = {.fd = m_inotify.get(), .events = POLLIN, .revents = 0};
    if (uninterrupted([&] { return ::poll(&waiting, 1, milliseconds); }) <= 0)
        return false;
    alignas(struct inotify_event) std::array<char, 16384> buffer{};
    const ssize_t length =
        uninterrupted([&] { return ::read(m_inotify.get(), buffer.data(), buffer.size()); });
    for (ssize_t at = 0; at < length;) {
        const auto* event = reinterpret_cast<const struct inotify_event*>(buffer.data() + at);
        if (event->len > 0)
            m_names.emplace(event->name);
        at += static_cast<ssize_t>(sizeof *event + event->len);
    }
    return length > 0;
}

}  // namespace tidemark
