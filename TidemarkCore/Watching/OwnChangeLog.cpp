#include "OwnChangeLog.h"

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidemark {

namespace {

using Key = std::pair<DirectoryIdentity, std::string>;
using KeyView = std::pair<DirectoryIdentity, std::string_view>;

struct KeyOrder {
    using is_transparent = void;

    template <typename Left, typename Right>
    bool operator()(const Left& left, const Right& right) const
    {
        return KeyView{left.first, left.second} < KeyView{right.first, right.second};
    }
};

struct Entry {
    int open = 0;  ///< Changes that are not over.
    std::uint64_t ended = 0;  ///< When the last one was over.
};

std::optional<Key> keyOf(const FileURL& url)
{
    struct stat folder;
    if (::stat(url.parent().path().c_str(), &folder) != 0)
        return std::nullopt;
    return Key{{folder.st_dev, folder.st_ino}, std::string{url.lastPathComponent()}};
}

}  // namespace

/// Counts the moments at which changes ended; a reader's position says which of them it has seen.
struct OwnChangeLog::Entries {
    mutable std::mutex mutex;
    std::map<Key, Entry, KeyOrder> byKey;
    std::list<Position> readers;
    std::uint64_t moment = 0;

    void begin(const std::vector<Key>& keys)
    {
        const std::lock_guard lock{mutex};
        if (readers.empty())
            return;
        for (const Key& key : keys)
            ++byKey[key].open;
    }

    void end(const std::vector<Key>& keys)
    {
        const std::lock_guard lock{mutex};
        ++moment;
        for (const Key& key : keys) {
            const auto found = byKey.find(key);
            // Begun before the first reader came.
            if (found == byKey.end() || found->second.open == 0)
                continue;
            --found->second.open;
            found->second.ended = moment;
        }
    }

    void forgetSeen()
    {
        std::uint64_t seen = moment;
        for (const Position& reader : readers)
            seen = std::min(seen, reader.drained);
        std::erase_if(byKey,
            [&](const auto& item) { return item.second.open == 0 && item.second.ended <= seen; });
    }
};

class OwnChangeLog::Change final : public OwnChange {
public:
    Change(std::shared_ptr<Entries> entries, std::vector<Key> keys)
        : m_entries(std::move(entries))
        , m_keys(std::move(keys))
    {
        m_entries->begin(m_keys);
    }
    ~Change() override { m_entries->end(m_keys); }

private:
    std::shared_ptr<Entries> m_entries;
    std::vector<Key> m_keys;
};

OwnChangeLog::OwnChangeLog()
    : m_entries(std::make_shared<Entries>())
{
}

OwnChangeLog::~OwnChangeLog() = default;

std::unique_ptr<OwnChange> OwnChangeLog::begin(std::initializer_list<FileURL> entries)
{
    std::vector<Key> keys;
    for (const FileURL& url : entries) {
        if (std::optional<Key> key = keyOf(url))
            keys.push_back(std::move(*key));
    }
    return std::make_unique<Change>(m_entries, std::move(keys));
}

std::size_t OwnChangeLog::size() const
{
    const std::lock_guard lock{m_entries->mutex};
    return m_entries->byKey.size();
}

OwnChangeLog::Reader::Reader(OwnChangeLog& log)
    : m_entries(log.m_entries)
{
    const std::lock_guard lock{m_entries->mutex};
    m_position =
        m_entries->readers.insert(m_entries->readers.end(), {m_entries->moment, m_entries->moment});
}

OwnChangeLog::Reader::~Reader()
{
    const std::lock_guard lock{m_entries->mutex};
    m_entries->readers.erase(m_position);
    m_entries->forgetSeen();
}

void OwnChangeLog::Reader::beginDrain()
{
    const std::lock_guard lock{m_entries->mutex};
    m_position->draining = m_entries->moment;
}

void OwnChangeLog::Reader::endDrain()
{
    const std::lock_guard lock{m_entries->mutex};
    if (m_position->drained == m_position->draining && m_entries->byKey.empty())
        return;
    m_position->drained = m_position->draining;
    m_entries->forgetSeen();
}

bool OwnChangeLog::Reader::isOwn(const DirectoryIdentity& folder, std::string_view name) const
{
    const std::lock_guard lock{m_entries->mutex};
    return m_entries->byKey.contains(KeyView{folder, name});
}

}  // namespace tidemark
