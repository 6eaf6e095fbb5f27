#include "BookmarkStore.h"

#include "JSONCoders.h"

#include <QByteArray>

#include <array>
#include <filesystem>

namespace tidemark {

namespace {

constexpr std::size_t largestFile = std::size_t{64} << 20U;

QByteArray bytesOf(std::string_view text)
{
    return QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
}

/// One element of the file.
struct EncodedBookmark {
    std::string data;

    void encode(JSONEncoder& encoder) const
    {
        encoder.encode(bytesOf(data).toBase64().toStdString());
    }

    static EncodedBookmark decode(const JSONDecoder& decoder)
    {
        const QByteArray text = bytesOf(decoder.stringView());
        const QByteArray bytes = QByteArray::fromBase64(text);
        // Qt skips what it does not know and asks for no padding: only what reads back the same is base64.
        if (bytes.toBase64() != text)
            decoder.fail("expected base64");
        return {bytes.toStdString()};
    }
};

struct EncodedBookmarks {
    std::vector<EncodedBookmark> list;

    void encode(JSONEncoder& encoder) const { encoder.encode(list); }

    static EncodedBookmarks decode(const JSONDecoder& decoder)
    {
        return {decoder.list<EncodedBookmark>()};
    }
};

[[noreturn]] void fail(const char* what, const std::string& path, std::errc error)
{
    throw std::filesystem::filesystem_error{what, path, std::make_error_code(error)};
}

}  // namespace

BookmarkStore::BookmarkStore(FileURL url, FileManager& fileManager)
    : m_url(std::move(url))
    , m_fileManager(&fileManager)
{
}

std::string BookmarkStore::bookmark(const FileURL& url, Scope /*scope*/) const
{
    if (!m_fileManager->fileExists(url))
        fail("cannot bookmark", url.path(), std::errc::no_such_file_or_directory);
    const bool needsSlash = url.isDirectory() && !url.path().ends_with('/');
    return needsSlash ? url.path() + '/' : url.path();
}

BookmarkStore::Resolved BookmarkStore::resolve(std::string_view data, Scope /*scope*/) const
{
    std::string path{data};
    if (!path.starts_with('/') || path.find('\0') != std::string::npos)
        fail("not a bookmark", path, std::errc::invalid_argument);
    Resolved resolved{FileURL{std::move(path)}};
    resolved.isStale = !m_fileManager->fileExists(resolved.url);
    return resolved;
}

std::vector<std::string> BookmarkStore::load() const
{
    std::vector<std::string> bookmarks;
    try {
        auto decoded = JSONCoders::decode<EncodedBookmarks>(
            m_fileManager->readFile(m_url, largestFile), m_url.path());
        for (EncodedBookmark& each : decoded.list)
            bookmarks.push_back(std::move(each.data));
    } catch (const std::exception&) {
        // Whatever it is, no bookmark can be had from it.
        bookmarks.clear();
    }
    return bookmarks;
}

void BookmarkStore::save(const std::vector<std::string>& bookmarks) const
{
    m_fileManager->createDirectory(m_url.parent());
    EncodedBookmarks encoded;
    for (const std::string& each : bookmarks)
        encoded.list.push_back({each});
    const std::string text = JSONCoders::encode(encoded);
    m_fileManager->writeAtomically(m_url, std::array{std::string_view{text}});
}

}  // namespace tidemark
