#include "InMemoryFileManager.h"

#include "Text.h"

#include <algorithm>
#include <deque>

namespace tidemark {

namespace {

constexpr int mostLinksFollowed = 40;
constexpr std::size_t longestName = 255;
constexpr std::uint64_t device = 1;

const std::string trashFolder = "/trash/files";

[[noreturn]] void fail(const char* what, const FileURL& url, std::errc error)
{
    throw std::filesystem::filesystem_error{what, url.path(), std::make_error_code(error)};
}

[[noreturn]] void failMoving(const FileURL& from, const FileURL& to, std::errc error)
{
    throw std::filesystem::filesystem_error{
        "cannot move", from.path(), to.path(), std::make_error_code(error)};
}

std::string parentOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string joined(const std::string& folder, std::string_view name)
{
    return (folder == "/" ? "/" : folder + '/') + std::string{name};
}

/// What the paths of everything inside `folder` begin with.
std::string prefixOf(const std::string& folder)
{
    return folder == "/" ? "/" : folder + '/';
}

std::deque<std::string> components(std::string_view path)
{
    std::deque<std::string> parts;
    while (!path.empty()) {
        const std::string_view part = path.substr(0, path.find('/'));
        if (!part.empty())
            parts.emplace_back(part);
        path.remove_prefix(std::min(path.size(), part.size() + 1));
    }
    return parts;
}

}  // namespace

InMemoryFileManager::InMemoryFileManager()
    : m_now(Seconds{1'735'689'600})
{
    m_nodes.emplace("/", newNode(Kind::folder));
}

InMemoryFileManager::InMemoryFileManager(
    std::initializer_list<std::pair<std::string, std::string>> files)
    : InMemoryFileManager()
{
    for (const auto& file : files)
        addFile(file.first, file.second);
}

InMemoryFileManager::Node InMemoryFileManager::newNode(Kind kind, std::string content)
{
    Node node;
    node.kind = kind;
    node.content = std::move(content);
    node.facts.isRegularFile = kind == Kind::file;
    node.facts.modified = m_now;
    node.facts.added = m_now;
    node.facts.lastOpened = m_now;
    node.facts.created = m_now;
    node.inode = ++m_lastInode;
    node.version = ++m_lastVersion;
    return node;
}

void InMemoryFileManager::addParents(const std::string& path)
{
    for (std::string folder = parentOf(path); !m_nodes.contains(folder); folder = parentOf(folder))
        m_nodes.emplace(folder, newNode(Kind::folder));
}

void InMemoryFileManager::add(const std::string& path, Node node)
{
    addParents(path);
    m_nodes.insert_or_assign(path, std::move(node));
}

void InMemoryFileManager::addFile(const std::string& path, std::string content)
{
    const std::lock_guard lock{m_mutex};
    add(path, newNode(Kind::file, std::move(content)));
}

void InMemoryFileManager::addFolder(const std::string& path)
{
    const std::lock_guard lock{m_mutex};
    addParents(path);
    m_nodes.emplace(path, newNode(Kind::folder));
}

void InMemoryFileManager::addLink(const std::string& path, std::string target)
{
    const std::lock_guard lock{m_mutex};
    add(path, newNode(Kind::link, std::move(target)));
}

void InMemoryFileManager::addSpecialFile(const std::string& path)
{
    const std::lock_guard lock{m_mutex};
    add(path, newNode(Kind::special));
}

void InMemoryFileManager::remove(const std::string& path)
{
    const std::lock_guard lock{m_mutex};
    existing(path);
    std::erase_if(m_nodes, [&](const auto& node) {
        return node.first == path || node.first.starts_with(prefixOf(path));
    });
}

void InMemoryFileManager::relocate(const std::string& from, const std::string& to)
{
    const std::lock_guard lock{m_mutex};
    existing(from);
    addParents(to);
    rename(from, to);
}

void InMemoryFileManager::setNow(Date now)
{
    const std::lock_guard lock{m_mutex};
    m_now = now;
}

InMemoryFileManager::Node& InMemoryFileManager::existing(const std::string& path)
{
    const auto found = m_nodes.find(path);
    if (found == m_nodes.end())
        fail("nothing to set up", FileURL{path}, std::errc::no_such_file_or_directory);
    return found->second;
}

void InMemoryFileManager::setModified(const std::string& path, std::optional<Date> date)
{
    const std::lock_guard lock{m_mutex};
    existing(path).facts.modified = date;
}

void InMemoryFileManager::setAdded(const std::string& path, std::optional<Date> date)
{
    const std::lock_guard lock{m_mutex};
    existing(path).facts.added = date;
}

void InMemoryFileManager::setLastOpened(const std::string& path, std::optional<Date> date)
{
    const std::lock_guard lock{m_mutex};
    existing(path).facts.lastOpened = date;
}

void InMemoryFileManager::setCreated(const std::string& path, std::optional<Date> date)
{
    const std::lock_guard lock{m_mutex};
    existing(path).facts.created = date;
}

void InMemoryFileManager::setAllDates(const std::string& path, std::optional<Date> date)
{
    setModified(path, date);
    setAdded(path, date);
    setLastOpened(path, date);
    setCreated(path, date);
}

void InMemoryFileManager::setScreenCapture(const std::string& path, bool isScreenCapture)
{
    const std::lock_guard lock{m_mutex};
    existing(path).facts.isScreenCapture = isScreenCapture;
}

void InMemoryFileManager::setCloudStatus(const std::string& path, CloudStatus status)
{
    const std::lock_guard lock{m_mutex};
    existing(path).facts.cloudStatus = status;
}

void InMemoryFileManager::makeUnreadable(const std::string& path)
{
    const std::lock_guard lock{m_mutex};
    existing(path).isUnreadable = true;
}

void InMemoryFileManager::makeReadOnly(const std::string& folder)
{
    const std::lock_guard lock{m_mutex};
    existing(folder).isReadOnly = true;
}

void InMemoryFileManager::makeAccessible(const std::string& path)
{
    const std::lock_guard lock{m_mutex};
    existing(path).isUnreadable = false;
    existing(path).isReadOnly = false;
}

void InMemoryFileManager::hideTrashLocation(bool hide)
{
    const std::lock_guard lock{m_mutex};
    m_hidesTrashLocation = hide;
}

void InMemoryFileManager::refuseCreationDates(bool refuse)
{
    const std::lock_guard lock{m_mutex};
    m_refusesCreationDates = refuse;
}

std::multiset<std::string> InMemoryFileManager::contentsOfEveryFile() const
{
    const std::lock_guard lock{m_mutex};
    std::multiset<std::string> contents;
    for (const auto& node : m_nodes) {
        if (node.second.kind == Kind::file)
            contents.insert(node.second.content);
    }
    return contents;
}

std::optional<std::string> InMemoryFileManager::content(const std::string& path) const
{
    const std::lock_guard lock{m_mutex};
    const auto found = m_nodes.find(path);
    if (found == m_nodes.end() || found->second.kind != Kind::file)
        return std::nullopt;
    return found->second.content;
}

std::vector<std::string> InMemoryFileManager::tree() const
{
    const std::lock_guard lock{m_mutex};
    std::vector<std::string> paths;
    for (const auto& node : m_nodes) {
        if (node.first != "/")
            paths.push_back(node.second.kind == Kind::folder ? node.first + '/' : node.first);
    }
    return paths;
}

std::string InMemoryFileManager::resolve(const FileURL& url, LastLink lastLink) const
{
    constexpr const char* what = "cannot find";
    if (url.path().find('\0') != std::string::npos || !url.path().starts_with('/'))
        fail(what, url, std::errc::invalid_argument);

    std::deque<std::string> rest = components(url.path());
    std::string at = "/";
    for (int links = 0; !rest.empty();) {
        const auto folder = m_nodes.find(at);
        if (folder == m_nodes.end())
            fail(what, url, std::errc::no_such_file_or_directory);
        if (folder->second.kind != Kind::folder)
            fail(what, url, std::errc::not_a_directory);

        const std::string name = std::move(rest.front());
        rest.pop_front();
        if (name == ".")
            continue;
        if (name == "..") {
            at = parentOf(at);
            continue;
        }
        if (name.size() > longestName)
            fail(what, url, std::errc::filename_too_long);

        const std::string next = joined(at, name);
        const auto node = m_nodes.find(next);
        const bool isFollowed = !rest.empty() || lastLink == LastLink::follow;
        if (node == m_nodes.end() || node->second.kind != Kind::link || !isFollowed) {
            at = next;
            continue;
        }
        if (++links > mostLinksFollowed)
            fail(what, url, std::errc::too_many_symbolic_link_levels);
        if (node->second.content.starts_with('/'))
            at = "/";
        const std::deque<std::string> target = components(node->second.content);
        rest.insert(rest.begin(), target.begin(), target.end());
    }
    return at;
}

const InMemoryFileManager::Node& InMemoryFileManager::nodeAt(
    const std::string& resolved, const FileURL& url) const
{
    const auto found = m_nodes.find(resolved);
    if (found == m_nodes.end())
        fail("cannot find", url, std::errc::no_such_file_or_directory);
    return found->second;
}

void InMemoryFileManager::requireListableAt(const std::string& resolved, const FileURL& url) const
{
    const Node& node = nodeAt(resolved, url);
    if (node.kind != Kind::folder)
        fail("cannot list", url, std::errc::not_a_directory);
    if (node.isUnreadable)
        fail("cannot list", url, std::errc::permission_denied);
}

const InMemoryFileManager::Node& InMemoryFileManager::regularFileAt(
    const std::string& resolved, const FileURL& url) const
{
    const Node& node = nodeAt(resolved, url);
    if (node.kind == Kind::folder)
        fail("cannot read", url, std::errc::is_a_directory);
    if (node.kind == Kind::link)
        fail("cannot read", url, std::errc::too_many_symbolic_link_levels);
    if (node.kind != Kind::file)
        fail("cannot read", url, std::errc::invalid_argument);
    if (node.isUnreadable)
        fail("cannot read", url, std::errc::permission_denied);
    return node;
}

void InMemoryFileManager::requireWritableParent(
    const std::string& resolved, const FileURL& url) const
{
    const Node& parent = nodeAt(parentOf(resolved), url);
    if (parent.kind != Kind::folder)
        fail("cannot write in", url, std::errc::not_a_directory);
    if (parent.isReadOnly)
        fail("cannot write in", url, std::errc::permission_denied);
}

const InMemoryFileManager::Node* InMemoryFileManager::find(
    const FileURL& url, LastLink lastLink) const
{
    try {
        const auto found = m_nodes.find(resolve(url, lastLink));
        return found == m_nodes.end() ? nullptr : &found->second;
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code() == std::errc::no_such_file_or_directory
            || error.code() == std::errc::not_a_directory
            || error.code() == std::errc::filename_too_long)
            return nullptr;
        throw;
    }
}

bool InMemoryFileManager::fileExists(const FileURL& url)
{
    const std::lock_guard lock{m_mutex};
    return find(url, LastLink::keep) != nullptr;
}

bool InMemoryFileManager::fileExists(const HeldEntry& entry)
{
    const std::lock_guard lock{m_mutex};
    const auto folder = std::ranges::find_if(m_nodes, [&](const auto& node) {
        return entry.folder.identity() == HeldFolder::Identity{device, node.second.inode};
    });
    if (folder == m_nodes.end())
        return false;
    return find(FileURL{joined(folder->first, entry.name())}, LastLink::keep) != nullptr;
}

bool InMemoryFileManager::directoryExists(const FileURL& url)
{
    const std::lock_guard lock{m_mutex};
    const Node* node = find(url, LastLink::follow);
    return node && node->kind == Kind::folder;
}

FileURL InMemoryFileManager::resolvingLinks(const FileURL& url)
{
    const std::lock_guard lock{m_mutex};
    const auto kind = url.isDirectory() ? FileURL::Kind::directory : FileURL::Kind::file;
    std::string rest;
    for (FileURL existing = url;; existing = existing.parent()) {
        try {
            const std::string resolved = resolve(existing, LastLink::follow);
            return FileURL{rest.empty() ? resolved : joined(resolved, rest), kind};
        } catch (const std::filesystem::filesystem_error& error) {
            if (error.code() != std::errc::no_such_file_or_directory)
                throw;
            const std::string name{existing.lastPathComponent()};
            rest = rest.empty() ? name : joined(name, rest);
        }
    }
}

std::vector<DirectoryEntry> InMemoryFileManager::contentsOfDirectory(const FileURL& folder)
{
    const std::lock_guard lock{m_mutex};
    const std::string path = resolve(folder, LastLink::follow);
    requireListableAt(path, folder);
    std::vector<DirectoryEntry> entries;
    const std::string prefix = prefixOf(path);
    for (auto each = m_nodes.upper_bound(prefix);
         each != m_nodes.end() && each->first.starts_with(prefix); ++each) {
        const std::string name = each->first.substr(prefix.size());
        if (name.find('/') != std::string::npos || name.starts_with('.') || !isValidUTF8(name))
            continue;
        if (each->second.isUnreadable && each->second.kind == Kind::file)
            fail("cannot read the facts of", FileURL{each->first}, std::errc::permission_denied);
        entries.push_back({name, each->second.facts});
    }
    return entries;
}

void InMemoryFileManager::requireListable(const FileURL& folder)
{
    const std::lock_guard lock{m_mutex};
    requireListableAt(resolve(folder, LastLink::follow), folder);
}

FileFacts InMemoryFileManager::facts(const FileURL& url)
{
    const std::lock_guard lock{m_mutex};
    const Node& node = nodeAt(resolve(url, LastLink::keep), url);
    if (node.isUnreadable)
        fail("cannot read the facts of", url, std::errc::permission_denied);
    return node.facts;
}

HeldFolder InMemoryFileManager::held(const FileURL& folder) const
{
    const Node& node = nodeAt(resolve(folder, LastLink::follow), folder);
    if (node.kind != Kind::folder)
        fail("cannot find the folder", folder, std::errc::not_a_directory);
    return {folder, {device, node.inode}, FileDescriptor{}};
}

void InMemoryFileManager::requireInPlace(const HeldFolder& folder) const
{
    const Node& node = nodeAt(resolve(folder.url(), LastLink::follow), folder.url());
    if (folder.identity() != HeldFolder::Identity{device, node.inode})
        fail("something else was put in the place of the folder", folder.url(),
            std::errc::device_or_resource_busy);
}

HeldFolder InMemoryFileManager::hold(const FileURL& folder)
{
    const std::lock_guard lock{m_mutex};
    return held(folder);
}

HeldFolder InMemoryFileManager::holdBelow(const HeldFolder& above, const FileURL& folder)
{
    const std::lock_guard lock{m_mutex};
    requireInPlace(above);
    return held(folder);
}

HeldFolder InMemoryFileManager::createDirectory(const FileURL& folder)
{
    const std::lock_guard lock{m_mutex};
    return make(folder);
}

HeldFolder InMemoryFileManager::createDirectoryBelow(const HeldFolder& above, const FileURL& folder)
{
    const std::lock_guard lock{m_mutex};
    requireInPlace(above);
    return make(folder);
}

HeldFolder InMemoryFileManager::make(const FileURL& folder)
{
    std::string path;
    for (const std::string& name : components(folder.path())) {
        path += '/' + name;
        std::string resolved = resolve(FileURL{path}, LastLink::follow);
        if (!m_nodes.contains(resolved)) {
            // Like mkdir, which takes no dangling link for a free name.
            if (m_nodes.contains(resolve(FileURL{path}, LastLink::keep)))
                fail("cannot make the folder", folder, std::errc::file_exists);
            requireWritableParent(resolved, folder);
            m_nodes.emplace(resolved, newNode(Kind::folder));
        }
    }
    const Node& node = nodeAt(resolve(folder, LastLink::follow), folder);
    if (node.kind != Kind::folder)
        fail("cannot make the folder", folder, std::errc::file_exists);
    return held(folder);
}

void InMemoryFileManager::rename(const std::string& from, const std::string& to)
{
    Nodes moved;
    const auto take = [&](Nodes::iterator node) {
        auto handle = m_nodes.extract(node);
        handle.key() = to + handle.key().substr(from.size());
        moved.insert(std::move(handle));
    };
    const std::string prefix = prefixOf(from);
    take(m_nodes.find(from));
    for (auto each = m_nodes.lower_bound(prefix);
         each != m_nodes.end() && each->first.starts_with(prefix);)
        take(each++);
    moved.at(to).facts.added = m_now;
    m_nodes.merge(moved);
}

void InMemoryFileManager::moveItem(const HeldEntry& from, const HeldEntry& to)
{
    const std::lock_guard lock{m_mutex};
    requireInPlace(from.folder);
    requireInPlace(to.folder);
    const std::string source = resolve(from.url, LastLink::keep);
    const std::string target = resolve(to.url, LastLink::keep);
    nodeAt(source, from.url);
    requireWritableParent(source, from.url);
    requireWritableParent(target, to.url);
    if (m_nodes.contains(target))
        failMoving(from.url, to.url, std::errc::file_exists);
    if (target.starts_with(prefixOf(source)))
        failMoving(from.url, to.url, std::errc::invalid_argument);
    rename(source, target);
}

std::string InMemoryFileManager::freeTrashPath(std::string_view name) const
{
    std::string path = joined(trashFolder, name);
    const std::string extension{pathExtension(name)};
    for (int number = 2; m_nodes.contains(path); ++number) {
        path = joined(trashFolder, withoutPathExtension(name)) + ' ' + std::to_string(number);
        path += extension.empty() ? "" : '.' + extension;
    }
    return path;
}

std::optional<FileURL> InMemoryFileManager::trashItem(const HeldEntry& file)
{
    const std::lock_guard lock{m_mutex};
    const FileURL& url = file.url;
    requireInPlace(file.folder);
    const std::string source = resolve(url, LastLink::keep);
    nodeAt(source, url);
    requireWritableParent(source, url);
    if (prefixOf(trashFolder).starts_with(prefixOf(source))
        || source.starts_with(prefixOf(trashFolder)))
        fail("cannot trash", url, std::errc::invalid_argument);
    const std::string target = freeTrashPath(url.lastPathComponent());
    addParents(target);
    rename(source, target);
    if (m_hidesTrashLocation)
        return std::nullopt;
    return FileURL{target};
}

void InMemoryFileManager::setCreationDate(const FileURL& url, Date date)
{
    const std::lock_guard lock{m_mutex};
    const std::string path = resolve(url, LastLink::keep);
    nodeAt(path, url);
    if (m_refusesCreationDates)
        fail("cannot set the creation date of", url, std::errc::not_supported);
    m_nodes.at(path).facts.created = date;
}

std::string InMemoryFileManager::readFile(const FileURL& url, std::size_t maxBytes)
{
    const std::lock_guard lock{m_mutex};
    const Node& node = regularFileAt(resolve(url, LastLink::follow), url);
    if (node.content.size() > maxBytes)
        fail("cannot read", url, std::errc::file_too_large);
    return node.content;
}

std::string InMemoryFileManager::readPrefix(const FileURL& url, std::size_t maxBytes)
{
    const std::lock_guard lock{m_mutex};
    return regularFileAt(resolve(url, LastLink::keep), url).content.substr(0, maxBytes);
}

void InMemoryFileManager::writeAtomically(
    const FileURL& url, std::span<const std::string_view> pieces)
{
    const std::lock_guard lock{m_mutex};
    std::string content;
    for (const std::string_view piece : pieces)
        content += piece;

    const std::string path = resolve(url, LastLink::follow);
    requireWritableParent(path, url);
    const auto old = m_nodes.find(path);
    if (old != m_nodes.end() && old->second.kind == Kind::folder)
        fail("cannot write", url, std::errc::is_a_directory);
    m_nodes.insert_or_assign(path, newNode(Kind::file, std::move(content)));
}

std::optional<FileIdentity> InMemoryFileManager::identity(const FileURL& url)
{
    const std::lock_guard lock{m_mutex};
    const Node* node = find(url, LastLink::follow);
    if (!node)
        return std::nullopt;
    return FileIdentity{device, node->inode, node->content.size(), node->version, node->version};
}

}  // namespace tidemark
