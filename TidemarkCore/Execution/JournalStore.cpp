#include "JournalStore.h"

#include "JSONCoders.h"

#include <array>

namespace tidemark {

static constexpr std::size_t largestFile = std::size_t{1} << 30U;

JournalStore::JournalStore(FileURL url, FileManager& fileManager)
    : m_url(std::move(url))
    , m_fileManager(&fileManager)
{
}

Journal JournalStore::load() const
{
    if (!m_fileManager->fileExists(m_url))
        return {};
    return JSONCoders::decode<Journal>(m_fileManager->readFile(m_url, largestFile), m_url.path());
}

std::string JournalStore::loadText() const
{
    if (!m_fileManager->fileExists(m_url))
        return JSONCoders::encode(Journal());
    std::string text = m_fileManager->readFile(m_url, largestFile);
    if (JSONCoders::isEncoded<Journal>(text))
        return text;
    return JSONCoders::encode(JSONCoders::decode<Journal>(std::move(text), m_url.path()));
}

void JournalStore::save(const Journal& journal) const
{
    const std::string text = JSONCoders::encode(journal);
    saveText(std::array{std::string_view(text)});
}

void JournalStore::saveText(std::span<const std::string_view> pieces) const
{
    m_fileManager->createDirectory(m_url.parent());
    m_fileManager->writeAtomically(m_url, pieces);
}

}  // namespace tidemark
