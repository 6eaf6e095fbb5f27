#include "SettingsStore.h"

#include "DecodingError.h"
#include "JSONCoders.h"

#include <algorithm>
#include <array>

namespace tidemark {

static constexpr std::size_t largestFile = std::size_t{64} << 20U;

SettingsStore::SettingsStore(FileURL url, FileManager& fileManager, const Clock& clock)
    : m_url(std::move(url))
    , m_fileManager(&fileManager)
    , m_clock(&clock)
{
}

Settings SettingsStore::load() const
{
    if (!m_fileManager->fileExists(m_url))
        return {};
    return JSONCoders::decode<Settings>(m_fileManager->readFile(m_url, largestFile), m_url.path());
}

void SettingsStore::save(const Settings& settings) const
{
    m_fileManager->createDirectory(m_url.parent());
    const std::string text = JSONCoders::encode(settings);
    if (hasUnreadableFile())
        replaceUnreadableFile(text);
    else
        write(text);
}

void SettingsStore::saveOverUnreadable(const Settings& settings) const
{
    m_fileManager->createDirectory(m_url.parent());
    const std::string text = JSONCoders::encode(settings);
    if (m_fileManager->fileExists(m_url))
        replaceUnreadableFile(text);
    else
        write(text);
}

bool SettingsStore::hasUnreadableFile() const
{
    try {
        load();
        return false;
    } catch (const DecodingError&) {
        return true;
    } catch (const std::filesystem::filesystem_error&) {
        return m_fileManager->fileExists(m_url);
    }
}

void SettingsStore::replaceUnreadableFile(std::string_view text) const
{
    const FileURL aside = placeBeside();
    if (keepCopy(aside)) {
        write(text);
        return;
    }
    m_fileManager->moveItem(m_url, aside);
    try {
        write(text);
    } catch (...) {
        m_fileManager->moveItem(aside, m_url);
        throw;
    }
}

FileURL SettingsStore::placeBeside() const
{
    std::string time = formatISO8601(m_clock->now());
    std::erase_if(time, [](char character) { return character == '-' || character == ':'; });
    const std::string name = std::string(m_url.lastPathComponent()) + ".unreadable-" + time;
    const FileURL folder = m_url.parent();
    FileURL place = folder.appending(name);
    for (int number = 2; m_fileManager->fileExists(place); ++number)
        place = folder.appending(name + '-' + std::to_string(number));
    return place;
}

bool SettingsStore::keepCopy(const FileURL& place) const
{
    std::string content;
    try {
        content = m_fileManager->readFile(m_url, largestFile);
    } catch (const std::filesystem::filesystem_error&) {
        return false;  // it is no file, too large, or may not be read: it can still be moved
    }
    m_fileManager->writeAtomically(place, std::array<std::string_view, 1>{content});
    return true;
}

void SettingsStore::write(std::string_view text) const
{
    m_fileManager->writeAtomically(m_url, std::array{text});
}

}  // namespace tidemark
