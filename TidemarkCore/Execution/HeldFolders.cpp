#include "HeldFolders.h"

#include <filesystem>

namespace tidemark {

static bool meansNoFolder(const std::error_code& code)
{
    return code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory
        || code == std::errc::filename_too_long;
}

const HeldFolder* HeldFolders::find(std::string_view path)
{
    if (const auto known = m_folders.find(path); known != m_folders.end())
        return &known->second;
    if (m_folders.size() >= mostHeld)
        m_folders.clear();
    try {
        std::string spelling(path);
        const FileURL url = FileURL::directory(spelling);
        const HeldFolder* above = nearestAbove(path);
        HeldFolder folder =
            above != nullptr ? m_fileManager->holdBelow(*above, url) : m_fileManager->hold(url);
        return &m_folders.emplace(std::move(spelling), std::move(folder)).first->second;
    } catch (const std::filesystem::filesystem_error& error) {
        if (!meansNoFolder(error.code()))
            throw;
        return nullptr;
    }
}

const HeldFolder& HeldFolders::make(std::string_view path)
{
    if (const auto known = m_folders.find(path); known != m_folders.end())
        return known->second;
    std::string spelling(path);
    const FileURL url = FileURL::directory(spelling);
    const HeldFolder* above = nearestAbove(path);
    HeldFolder folder = above != nullptr ? m_fileManager->createDirectoryBelow(*above, url)
                                         : m_fileManager->createDirectory(url);
    return m_folders.emplace(std::move(spelling), std::move(folder)).first->second;
}

const HeldFolder* HeldFolders::nearestAbove(std::string_view path) const
{
    for (std::size_t slash = path.rfind('/'); slash != std::string_view::npos && slash > 0;
         slash = path.rfind('/', slash - 1)) {
        if (const auto known = m_folders.find(path.substr(0, slash)); known != m_folders.end())
            return &known->second;
    }
    return nullptr;
}

}  // namespace tidemark
