#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tidemark {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder()
    : TemporaryFolder(fs::temp_directory_path())
{
}

TemporaryFolder::TemporaryFolder(const fs::path& parent)
    : m_path(fs::canonical(parent) / "tidemark-test-XXXXXX")
{
    if (!::mkdtemp(m_path.data()))
        throw fs::filesystem_error{
            "cannot make a temporary folder", m_path, {errno, std::generic_category()}};
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error;
    // A test may have taken the permission to write away.
    for (fs::recursive_directory_iterator entry{m_path, error}, end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
    fs::remove_all(m_path, error);
}

std::string TemporaryFolder::path(std::string_view relative) const
{
    return relative.empty() ? m_path : m_path + '/' + std::string{relative};
}

FileURL TemporaryFolder::url(std::string_view relative) const
{
    return FileURL{path(relative)};
}

FileURL TemporaryFolder::write(std::string_view relative, std::string_view content) const
{
    const fs::path file = path(relative);
    fs::create_directories(file.parent_path());
    std::ofstream stream{file, std::ios::binary | std::ios::trunc};
    stream << content << std::flush;
    EXPECT_TRUE(stream.good()) << "cannot write " << file;
    return url(relative);
}

std::string TemporaryFolder::read(std::string_view relative) const
{
    std::ifstream stream{path(relative), std::ios::binary};
    EXPECT_TRUE(stream.is_open()) << "cannot read " << path(relative);
    return std::string{std::istreambuf_iterator<char>{stream}, {}};
}

FileURL TemporaryFolder::makeFolder(std::string_view relative) const
{
    fs::create_directories(path(relative));
    return FileURL::directory(path(relative));
}

FileURL TemporaryFolder::makeLink(std::string_view relative, std::string_view target) const
{
    fs::create_symlink(target, path(relative));
    return url(relative);
}

bool TemporaryFolder::holds(std::string_view relative) const
{
    return fs::exists(fs::symlink_status(path(relative)));
}

std::vector<std::string> TemporaryFolder::names(std::string_view relative) const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator{path(relative)})
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

}  // namespace tidemark
