#include "MountTable.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

namespace tidemark {

namespace {

constexpr const char* mountTable = "/proc/self/mountinfo";

/// Blanks and backslashes in a path are written as a backslash and three octal digits.
std::string unescaped(std::string_view text)
{
    constexpr std::size_t escapeLength = 4;
    std::string result;
    while (!text.empty()) {
        if (text.front() == '\\' && text.size() >= escapeLength) {
            const int code = (text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0');
            result += static_cast<char>(code);
            text.remove_prefix(escapeLength);
        } else {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

}  // namespace

MountTable::MountTable()
    : m_table(::open(mountTable, O_RDONLY | O_CLOEXEC))
    , m_mounts(read())
{
}

bool MountTable::hasChanged()
{
    pollfd table{m_table.get(), POLLPRI, 0};
    m_hasChanged |= ::poll(&table, 1, 0) > 0;
    return m_hasChanged;
}

std::vector<std::string> MountTable::takeChanges()
{
    m_hasChanged = false;
    std::set<Mount> mounts = read();
    std::vector<Mount> changed;
    std::ranges::set_symmetric_difference(mounts, m_mounts, std::back_inserter(changed));
    m_mounts = std::move(mounts);
    std::vector<std::string> folders;
    folders.reserve(changed.size());
    for (Mount& mount : changed)
        folders.push_back(std::move(mount.first));
    return folders;
}

std::set<MountTable::Mount> MountTable::read()
{
    std::set<Mount> mounts;
    std::ifstream table{mountTable};
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields{line};
        int number = 0;
        std::string parent;
        std::string device;
        std::string root;
        std::string folder;
        if (fields >> number >> parent >> device >> root >> folder)
            mounts.emplace(unescaped(folder), number);
    }
    return mounts;
}

}  // namespace tidemark
