#include "JournalReader.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <stdexcept>

namespace tidemark {

/// What is kept of a journal.
struct JournalReader::Digest {
    std::optional<FileIdentity> identity;  // of the file, taken before it was read
    bool hasSweep = false;
    std::vector<ActivityItem> newest;  // newest first
    bool holdsAll = false;  // there are no more entries
    std::exception_ptr failure;  // why it could not be read
    bool mayPass = false;  // the failure: the file was not even read

    bool answers(std::size_t wanted) const
    {
        return failure ? !mayPass : holdsAll || wanted <= newest.size();
    }
};

namespace {

/// Says nothing of what the file holds, nor of anything else that its identity would show.
bool isOfReading(const std::runtime_error& error)
{
    const auto* failure = dynamic_cast<const std::filesystem::filesystem_error*>(&error);
    return failure != nullptr && failure->code() != std::errc::file_too_large;
}

std::size_t countOfEntries(const Journal& journal)
{
    std::size_t count = 0;
    for (const SweepRecord& sweep : journal.sweeps)
        count += sweep.entries.size();
    return count;
}

std::vector<ActivityItem> newestOf(const Journal& journal, std::size_t limit)
{
    std::vector<ActivityItem> items;
    for (std::size_t sweep = journal.sweeps.size(); sweep-- > 0;) {
        const std::vector<JournalEntry>& entries = journal.sweeps[sweep].entries;
        for (std::size_t entry = entries.size(); entry-- > 0;) {
            if (items.size() == limit)
                return items;
            items.push_back(ActivityItem::of(entries[entry]));
        }
    }
    return items;
}

}  // namespace

JournalReader::JournalReader(JournalStore store, FileManager& fileManager, std::size_t kept)
    : m_store(std::move(store))
    , m_fileManager(&fileManager)
    , m_kept(kept)
{
}

JournalReader::~JournalReader() = default;

bool JournalReader::isCurrent() const
{
    try {
        const std::optional<FileIdentity> identity = m_fileManager->identity(m_store.url());
        const SharedDigest last = lastRead();
        return last != nullptr && last->identity == identity;
    } catch (const std::filesystem::filesystem_error&) {
        return true;  // reading it ends right there as well
    }
}

bool JournalReader::hasSweep()
{
    return read(0)->hasSweep;
}

std::vector<ActivityItem> JournalReader::newest(std::size_t limit)
{
    const SharedDigest digest = read(limit);
    const auto end = digest->newest.begin()
        + static_cast<std::ptrdiff_t>(std::min(limit, digest->newest.size()));
    return {digest->newest.begin(), end};
}

JournalReader::SharedDigest JournalReader::read(std::size_t wanted)
{
    const auto current = [&](const std::optional<FileIdentity>& identity) {
        SharedDigest last = lastRead();
        return last != nullptr && last->identity == identity && last->answers(wanted) ? last
                                                                                      : nullptr;
    };
    SharedDigest digest = current(m_fileManager->identity(m_store.url()));
    if (digest == nullptr) {
        const std::lock_guard lock(m_decoding);
        // Another thread may just have read it. The identity is taken before reading: a file that changes
        // meanwhile is read again next time.
        const std::optional<FileIdentity> identity = m_fileManager->identity(m_store.url());
        digest = current(identity);
        if (digest == nullptr) {
            digest = readWith(std::max(wanted, m_kept), identity);
            keep(digest);
        }
    }
    if (digest->failure)
        std::rethrow_exception(digest->failure);
    return digest;
}

JournalReader::SharedDigest JournalReader::readWith(
    std::size_t wanted, const std::optional<FileIdentity>& identity) const
{
    const auto digest = std::make_shared<Digest>();
    digest->identity = identity;
    try {
        const Journal journal = m_store.load();
        digest->hasSweep = !journal.sweeps.empty();
        digest->newest = newestOf(journal, wanted);
        digest->holdsAll = digest->newest.size() == countOfEntries(journal);
    } catch (const std::runtime_error& error) {
        digest->failure = std::current_exception();
        digest->mayPass = isOfReading(error);
    }
    return digest;
}

JournalReader::SharedDigest JournalReader::lastRead() const
{
    const std::lock_guard lock(m_mutex);
    return m_lastRead;
}

void JournalReader::keep(SharedDigest digest)
{
    if (digest->newest.size() > m_kept) {
        const auto shorter = std::make_shared<Digest>(*digest);
        shorter->newest.resize(m_kept);
        shorter->newest.shrink_to_fit();
        shorter->holdsAll = false;
        digest = shorter;
    }
    const std::lock_guard lock(m_mutex);
    m_lastRead.swap(digest);  // what was kept before is freed after the lock
}

}  // namespace tidemark
