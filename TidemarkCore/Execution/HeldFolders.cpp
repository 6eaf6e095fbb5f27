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
    if (const auto found = m_found.find(path); found != m_found.end())
        return &found->second;
    if (m_found.size() >= mostFound)
        m_found.clear();
    // Making others must not let go of it any more.
    if (const auto made = m_made.find(path); made != m_made.end())
        return &m_found.insert(m_made.extract(made)).position->second;
    const HeldFolder* above = nearestAbove(path);
    try {
        std::string spelling(path);
        const FileURL url = FileURL::directory(spelling);
        HeldFolder folder =
            above != nullptr ? m_fileManager->holdBelow(*above, url) : m_fileManager->hold(url);
        return &m_found.emplace(std::move(spelling), recognized(std::move(folder))).first->second;
    } catch (const std::filesystem::filesystem_error& error) {
        // What is in a folder that was moved away, or below it, is not gone.
        const bool isAboveGone = above != nullptr && error.path1() == above->url().path();
        if (isAboveGone || m_seen.contains(path) || !meansNoFolder(error.code()))
            throw;
        return nullptr;
    }
}

void HeldFolders::letGo(std::string_view path)
{
    if (const auto found = m_found.find(path); found != m_found.end())
        m_found.erase(found);
}

const HeldFolder& HeldFolders::make(std::string_view path)
{
    if (const HeldFolder* folder = known(path))
        return *folder;
    if (m_made.size() >= mostMade)
        m_made.clear();
    std::string spelling(path);
    const FileURL url = FileURL::directory(spelling);
    const HeldFolder* above = nearestAbove(path);
    HeldFolder folder = above != nullptr ? m_fileManager->createDirectoryBelow(*above, url)
                                         : m_fileManager->createDirectory(url);
    return m_made.emplace(std::move(spelling), recognized(std::move(folder))).first->second;
}

HeldFolder HeldFolders::recognized(HeldFolder folder)
{
    const std::string& path = folder.url().path();
    const auto seen = m_seen.try_emplace(path, folder.identity()).first;
    if (seen->second != folder.identity())
        throw std::filesystem::filesystem_error("something else was put in the place of the folder",
            path, std::make_error_code(std::errc::device_or_resource_busy));
    return folder;
}

const HeldFolder* HeldFolders::known(std::string_view path) const
{
    for (const ByPath* folders : {&m_found, &m_made}) {
        if (const auto folder = folders->find(path); folder != folders->end())
            return &folder->second;
    }
    return nullptr;
}

const HeldFolder* HeldFolders::nearestAbove(std::string_view path) const
{
    for (std::size_t slash = path.rfind('/'); slash != std::string_view::npos && slash > 0;
         slash = path.rfind('/', slash - 1)) {
        if (const HeldFolder* folder = known(path.substr(0, slash)))
            return folder;
    }
    return nullptr;
}

}  // namespace tidemark
