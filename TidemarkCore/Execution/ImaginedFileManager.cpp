#include "ImaginedFileManager.h"

namespace tidemark {

namespace {

[[noreturn]] void fail(const char* what, const FileURL& url, std::errc code)
{
    throw std::filesystem::filesystem_error(what, url.path(), std::make_error_code(code));
}

}  // namespace

ImaginedFileManager::ImaginedFileManager(FileManager& real)
    : m_real(&real)
{
}

bool ImaginedFileManager::fileExists(const FileURL& url)
{
    if (const auto change = m_changes.find(url.path()); change != m_changes.end())
        return change->second != Imagined::nothing;
    // Nothing real can stand in a folder that is only imagined: that spares asking the disk.
    const auto parent = m_changes.find(url.parent().path());
    if (parent != m_changes.end() && parent->second == Imagined::folder)
        return false;
    return m_real->fileExists(url);
}

bool ImaginedFileManager::directoryExists(const FileURL& url)
{
    if (const auto change = m_changes.find(url.path()); change != m_changes.end())
        return change->second == Imagined::folder;
    if (m_knownFolders.contains(url.path()))
        return true;
    const bool exists = m_real->directoryExists(url);
    if (exists)
        m_knownFolders.insert(url.path());
    return exists;
}

void ImaginedFileManager::createDirectory(const FileURL& folder)
{
    if (directoryExists(folder))
        return;
    if (fileExists(folder))
        fail("cannot make a folder", folder, std::errc::not_a_directory);
    const FileURL parent = folder.parent();
    if (parent.path() != folder.path())
        createDirectory(parent);  // NOLINT(misc-no-recursion): as deep as the path
    m_changes[folder.path()] = Imagined::folder;
}

void ImaginedFileManager::moveItem(const FileURL& from, const FileURL& to)
{
    if (!fileExists(from))
        fail("cannot move", from, std::errc::no_such_file_or_directory);
    if (fileExists(to))
        fail("cannot move", to, std::errc::file_exists);
    m_changes[from.path()] = Imagined::nothing;
    m_changes[to.path()] = Imagined::file;
}

std::optional<FileURL> ImaginedFileManager::trashItem(const FileURL& url)
{
    if (!fileExists(url))
        fail("cannot trash", url, std::errc::no_such_file_or_directory);
    m_changes[url.path()] = Imagined::nothing;
    return std::nullopt;
}

std::vector<DirectoryEntry> ImaginedFileManager::contentsOfDirectory(const FileURL& folder)
{
    fail("cannot list an imagined folder", folder, std::errc::not_supported);
}

FileFacts ImaginedFileManager::facts(const FileURL& url)
{
    fail("cannot read the facts of an imagined file", url, std::errc::not_supported);
}

void ImaginedFileManager::setCreationDate(const FileURL& url, Date /*date*/)
{
    fail("cannot change an imagined file", url, std::errc::not_supported);
}

std::string ImaginedFileManager::readFile(const FileURL& url, std::size_t /*maxBytes*/)
{
    fail("cannot read an imagined file", url, std::errc::not_supported);
}

std::string ImaginedFileManager::readPrefix(const FileURL& url, std::size_t /*maxBytes*/)
{
    fail("cannot read an imagined file", url, std::errc::not_supported);
}

void ImaginedFileManager::writeAtomically(
    const FileURL& url, std::span<const std::string_view> /*pieces*/)
{
    fail("cannot write an imagined file", url, std::errc::not_supported);
}

std::optional<FileIdentity> ImaginedFileManager::identity(const FileURL& url)
{
    fail("cannot identify an imagined file", url, std::errc::not_supported);
}

}  // namespace tidemark
