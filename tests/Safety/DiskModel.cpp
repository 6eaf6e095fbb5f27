#include "DiskModel.h"

#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tidemark {

namespace fs = std::filesystem;

namespace {

bool isInside(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

DiskModel::DiskModel(std::string root, std::vector<std::string> disks)
    : m_root(std::move(root))
    , m_disks(std::move(disks))
{
    const Node top = newNode();
    m_before[top];
    addExisting(top, m_root);
    m_now = m_before;
}

void DiskModel::addExisting(Node folder, const std::string& path)
{
    for (const fs::directory_entry& entry : fs::directory_iterator{path}) {
        const Node node = newNode();
        m_before[folder][entry.path().filename().string()] = node;
        if (entry.is_directory()) {
            m_before[node];
            addExisting(node, entry.path().string());
        } else {
            std::ifstream stream{entry.path(), std::ios::binary};
            const std::string content{std::istreambuf_iterator<char>{stream}, {}};
            m_files[node] = {content, content};
        }
    }
}

DiskModel::Place DiskModel::placeOf(const std::string& path) const
{
    const fs::path whole{path};
    return {nodeAt(whole.parent_path().string()), whole.filename().string()};
}

DiskModel::Node DiskModel::nodeAt(const std::string& path) const
{
    if (!isInside(path, m_root))
        return nowhere;
    Node node = 0;
    for (const fs::path& name : fs::path{path}.lexically_relative(m_root)) {
        if (name == ".")
            continue;
        const auto folder = m_now.find(node);
        if (folder == m_now.end() || !folder->second.contains(name.string()))
            return nowhere;
        node = folder->second.at(name.string());
    }
    return node;
}

std::size_t DiskModel::fileSystemOf(const std::string& path) const
{
    for (std::size_t index = 0; index < m_disks.size(); ++index) {
        if (isInside(path, m_disks[index]))
            return index + 1;
    }
    return 0;
}

void DiskModel::carryOut(const Change& change, Names& names)
{
    if (change.oldFolder != nowhere) {
        auto& old = names[change.oldFolder];
        const auto there = old.find(change.oldName);
        if (there != old.end() && there->second == change.node)
            old.erase(there);
    }
    if (change.newFolder != nowhere)
        names[change.newFolder][change.newName] = change.node;
}

void DiskModel::change(Change change)
{
    carryOut(change, m_now);
    m_changes.push_back(std::move(change));
}

bool DiskModel::apply(const TracedCall& call)
{
    using Kind = TracedCall::Kind;
    if (call.result < 0)
        return true;
    const std::size_t fileSystem = fileSystemOf(call.path);
    const Place place = placeOf(call.path);
    switch (call.kind) {
    case Kind::look:
    case Kind::read:
    case Kind::attribute:
        break;
    case Kind::open:
    case Kind::create:
        open(call);
        break;
    case Kind::close:
        m_open.erase(call.descriptor);
        break;
    case Kind::write:
    case Kind::truncate:
        write(call);
        break;
    case Kind::sync:
        sync(call);
        break;
    case Kind::makeFolder: {
        const Node node = newNode();
        m_now[node];
        change({.node = node,
            .newFolder = place.folder,
            .newName = place.name,
            .fileSystem = fileSystem});
        break;
    }
    case Kind::link: {
        const Node node =
            m_open.contains(call.descriptor) ? m_open.at(call.descriptor) : nodeAt(call.path);
        const Place to = placeOf(call.otherPath);
        change({.node = node,
            .newFolder = to.folder,
            .newName = to.name,
            .fileSystem = fileSystemOf(call.otherPath)});
        break;
    }
    case Kind::rename: {
        const Place to = placeOf(call.otherPath);
        change({nodeAt(call.path), place.folder, place.name, to.folder, to.name, fileSystem});
        break;
    }
    case Kind::remove:
    case Kind::removeFolder:
        change({.node = nodeAt(call.path),
            .oldFolder = place.folder,
            .oldName = place.name,
            .fileSystem = fileSystem});
        break;
    case Kind::symlink:
    case Kind::clone:
        return false;
    }
    return true;
}

void DiskModel::open(const TracedCall& call)
{
    const int descriptor = static_cast<int>(call.result);
    const bool isUnnamed = (call.flags & O_TMPFILE) == O_TMPFILE;
    Node node = isUnnamed ? nowhere : nodeAt(call.path);
    if (node == nowhere) {
        node = newNode();
        m_files[node];
        const Place place = placeOf(call.path);
        if (!isUnnamed)
            change({.node = node,
                .newFolder = place.folder,
                .newName = place.name,
                .fileSystem = fileSystemOf(call.path)});
    } else if ((call.flags & O_TRUNC) != 0) {
        m_files[node].content.clear();
    }
    m_open[descriptor] = node;
    m_positions[descriptor] = 0;
}

void DiskModel::write(const TracedCall& call)
{
    File& file = m_files[m_open.at(call.descriptor)];
    if (call.kind == TracedCall::Kind::truncate) {
        file.content.resize(static_cast<std::size_t>(call.offset));
        return;
    }
    const std::size_t at =
        call.offset >= 0 ? static_cast<std::size_t>(call.offset) : m_positions[call.descriptor];
    const std::string data = call.data.substr(0, static_cast<std::size_t>(call.result));
    file.content.resize(std::max(file.content.size(), at + data.size()));
    file.content.replace(at, data.size(), data);
    if (call.offset < 0)
        m_positions[call.descriptor] = at + data.size();
}

void DiskModel::sync(const TracedCall& call)
{
    const Node node = m_open.at(call.descriptor);
    if (const auto file = m_files.find(node); file != m_files.end()) {
        file->second.synced = file->second.content;
        return;
    }
    for (Change& change : m_changes)
        change.isSynced = change.isSynced || change.oldFolder == node || change.newFolder == node;
}

std::vector<DiskModel::Disk> DiskModel::possibleDisks(Order order) const
{
    std::vector<Disk> disks;
    const auto losses = order == Order::inOrder ? lossesInOrder() : lossesInAnyOrder();
    for (const std::set<std::size_t>& lost : losses) {
        for (const bool keepsContent : {false, true})
            disks.push_back(disk(lost, keepsContent));
    }
    return disks;
}

std::vector<std::size_t> DiskModel::unsynced(std::size_t fileSystem) const
{
    std::vector<std::size_t> indices;
    for (std::size_t index = m_changes.size(); index-- > 0;) {
        if (m_changes[index].fileSystem != fileSystem)
            continue;
        // What came before something that is on the disk is there, too.
        if (m_changes[index].isSynced)
            break;
        indices.push_back(index);
    }
    return indices;
}

/// Of each file system the last changes, none to all that are not synced, in every combination.
std::vector<std::set<std::size_t>> DiskModel::lossesInOrder() const
{
    std::vector<std::set<std::size_t>> losses = {{}};
    for (std::size_t fileSystem = 0; fileSystem <= m_disks.size(); ++fileSystem) {
        const std::vector<std::size_t> last = unsynced(fileSystem);
        std::vector<std::set<std::size_t>> combined;
        for (const std::set<std::size_t>& others : losses) {
            std::set<std::size_t> lost = others;
            combined.push_back(lost);
            for (const std::size_t index : last) {
                lost.insert(index);
                combined.push_back(lost);
            }
        }
        losses = std::move(combined);
    }
    return losses;
}

std::vector<std::set<std::size_t>> DiskModel::lossesInAnyOrder() const
{
    std::set<std::size_t> all;
    for (std::size_t index = 0; index < m_changes.size(); ++index) {
        if (!m_changes[index].isSynced)
            all.insert(index);
    }
    std::vector<std::set<std::size_t>> losses = {{}, all};
    for (const std::size_t index : all) {
        losses.push_back({index});
        std::set<std::size_t> others = all;
        others.erase(index);
        losses.push_back(std::move(others));
    }
    return losses;
}

DiskModel::Disk DiskModel::disk(const std::set<std::size_t>& lost, bool keepsContent) const
{
    Names names = m_before;
    for (std::size_t index = 0; index < m_changes.size(); ++index) {
        if (!lost.contains(index))
            carryOut(m_changes[index], names);
    }
    Disk found;
    collect(names, 0, m_root, keepsContent, found);
    return found;
}

void DiskModel::collect(
    const Names& names, Node folder, const std::string& path, bool keepsContent, Disk& found) const
{
    const auto entries = names.find(folder);
    if (entries == names.end())
        return;
    for (const auto& [name, node] : entries->second) {
        const std::string below = std::string{path}.append(1, '/').append(name);
        if (const auto file = m_files.find(node); file != m_files.end())
            found[below] = keepsContent ? file->second.content : file->second.synced;
        else
            collect(names, node, below, keepsContent, found);
    }
}

}  // namespace tidemark
