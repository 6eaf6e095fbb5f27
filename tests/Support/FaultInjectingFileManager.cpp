#include "FaultInjectingFileManager.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace tidemark {

namespace {

[[noreturn]] void fail(const FileFault& fault, const FileURL& url)
{
    throw std::filesystem::filesystem_error{
        "injected fault", url.path(), std::make_error_code(fault.error)};
}

}  // namespace

FileFault failAt(int call, std::errc error)
{
    FileFault fault;
    fault.call = call;
    fault.error = error;
    return fault;
}

FileFault failAt(FileCall kind, int call, std::errc error)
{
    FileFault fault = failAt(call, error);
    fault.kind = kind;
    return fault;
}

FileFault failEvery(FileCall kind, std::errc error)
{
    FileFault fault;
    fault.kind = kind;
    fault.error = error;
    return fault;
}

FileFault failEvery(FileCall kind, const FileURL& url, std::errc error)
{
    FileFault fault = failEvery(kind, error);
    fault.url = url;
    return fault;
}

FileFault afterTheEffect(FileFault fault)
{
    fault.moment = FileFault::Moment::afterTheEffect;
    return fault;
}

FaultInjectingFileManager::FaultInjectingFileManager(FileManager& files)
    : m_files(files)
{
}

FaultInjectingFileManager::FaultInjectingFileManager(FileManager& files, FileFault fault)
    : m_files(files)
    , m_faults{std::move(fault)}
{
}

FaultInjectingFileManager::FaultInjectingFileManager(
    FileManager& files, std::vector<FileFault> faults)
    : m_files(files)
    , m_faults(std::move(faults))
{
}

void FaultInjectingFileManager::setFaults(std::vector<FileFault> faults)
{
    const std::lock_guard lock{m_mutex};
    m_faults = std::move(faults);
}

bool FaultInjectingFileManager::faultFired() const
{
    const std::lock_guard lock{m_mutex};
    return m_fired;
}

int FaultInjectingFileManager::callCount() const
{
    const std::lock_guard lock{m_mutex};
    return static_cast<int>(m_calls.size());
}

int FaultInjectingFileManager::callCount(FileCall kind) const
{
    const std::lock_guard lock{m_mutex};
    return static_cast<int>(std::ranges::count(m_calls, kind));
}

std::optional<FileFault> FaultInjectingFileManager::faultOfNextCall(
    FileCall kind, const FileURL& url)
{
    const std::lock_guard lock{m_mutex};
    const auto numberOfAll = static_cast<int>(m_calls.size());
    const auto numberOfKind = static_cast<int>(std::ranges::count(m_calls, kind));
    m_calls.push_back(kind);
    const auto fault = std::ranges::find_if(m_faults, [&](const FileFault& each) {
        return (!each.kind || *each.kind == kind) && (!each.url || each.url->path() == url.path())
            && (!each.call || *each.call == (each.kind ? numberOfKind : numberOfAll));
    });
    if (fault == m_faults.end())
        return std::nullopt;
    m_fired = true;
    return *fault;
}

template <typename Action>
auto FaultInjectingFileManager::performing(FileCall kind, const FileURL& url, Action action)
{
    const std::optional<FileFault> fault = faultOfNextCall(kind, url);
    if (!fault)
        return action();
    if (fault->moment == FileFault::Moment::afterTheEffect)
        action();
    fail(*fault, url);
}

bool FaultInjectingFileManager::fileExists(const FileURL& url)
{
    return performing(FileCall::fileExists, url, [&] { return m_files.fileExists(url); });
}

bool FaultInjectingFileManager::fileExists(const HeldEntry& entry)
{
    return performing(FileCall::fileExists, entry.url, [&] { return m_files.fileExists(entry); });
}

bool FaultInjectingFileManager::directoryExists(const FileURL& url)
{
    return performing(FileCall::directoryExists, url, [&] { return m_files.directoryExists(url); });
}

FileURL FaultInjectingFileManager::resolvingLinks(const FileURL& url)
{
    return performing(FileCall::resolvingLinks, url, [&] { return m_files.resolvingLinks(url); });
}

std::vector<DirectoryEntry> FaultInjectingFileManager::contentsOfDirectory(const FileURL& folder)
{
    return performing(
        FileCall::contentsOfDirectory, folder, [&] { return m_files.contentsOfDirectory(folder); });
}

void FaultInjectingFileManager::requireListable(const FileURL& folder)
{
    performing(FileCall::requireListable, folder, [&] { m_files.requireListable(folder); });
}

FileFacts FaultInjectingFileManager::facts(const FileURL& url)
{
    return performing(FileCall::facts, url, [&] { return m_files.facts(url); });
}

HeldFolder FaultInjectingFileManager::hold(const FileURL& folder)
{
    return performing(FileCall::hold, folder, [&] { return m_files.hold(folder); });
}

HeldFolder FaultInjectingFileManager::holdBelow(const HeldFolder& above, const FileURL& folder)
{
    return performing(FileCall::hold, folder, [&] { return m_files.holdBelow(above, folder); });
}

HeldFolder FaultInjectingFileManager::createDirectory(const FileURL& folder)
{
    return performing(
        FileCall::createDirectory, folder, [&] { return m_files.createDirectory(folder); });
}

HeldFolder FaultInjectingFileManager::createDirectoryBelow(
    const HeldFolder& above, const FileURL& folder)
{
    return performing(FileCall::createDirectory, folder,
        [&] { return m_files.createDirectoryBelow(above, folder); });
}

void FaultInjectingFileManager::flushDirectory(const FileURL& folder)
{
    performing(FileCall::flushDirectory, folder, [&] { m_files.flushDirectory(folder); });
}

void FaultInjectingFileManager::moveItem(const HeldEntry& from, const HeldEntry& to)
{
    performing(FileCall::moveItem, from.url, [&] { m_files.moveItem(from, to); });
}

std::optional<FileURL> FaultInjectingFileManager::trashItem(const HeldEntry& file)
{
    return performing(FileCall::trashItem, file.url, [&] { return m_files.trashItem(file); });
}

void FaultInjectingFileManager::setCreationDate(const FileURL& url, Date date)
{
    performing(FileCall::setCreationDate, url, [&] { m_files.setCreationDate(url, date); });
}

std::string FaultInjectingFileManager::readFile(const FileURL& url, std::size_t maxBytes)
{
    return performing(FileCall::readFile, url, [&] { return m_files.readFile(url, maxBytes); });
}

std::string FaultInjectingFileManager::readPrefix(const FileURL& url, std::size_t maxBytes)
{
    return performing(FileCall::readPrefix, url, [&] { return m_files.readPrefix(url, maxBytes); });
}

void FaultInjectingFileManager::writeAtomically(
    const FileURL& url, std::span<const std::string_view> pieces)
{
    performing(FileCall::writeAtomically, url, [&] { m_files.writeAtomically(url, pieces); });
}

std::optional<FileIdentity> FaultInjectingFileManager::identity(const FileURL& url)
{
    return performing(FileCall::identity, url, [&] { return m_files.identity(url); });
}

}  // namespace tidemark
