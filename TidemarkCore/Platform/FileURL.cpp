#include "FileURL.h"

#include "Text.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <algorithm>

namespace tidemark {

namespace {

/// What a path may hold unescaped beside letters, digits and "-._~" (RFC 3986, pchar and "/").
constexpr char unescapedInPaths[] = "!$&'()*+,;=:@/";

bool isASCII(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isLocalFile(const QUrl& url)
{
    return url.isValid() && url.scheme() == QLatin1String("file") && url.userInfo().isEmpty()
        && url.port() == -1 && (url.host().isEmpty() || url.host() == QLatin1String("localhost"))
        && !url.hasQuery() && !url.hasFragment();
}

}  // namespace

FileURL::FileURL(std::string path, Kind kind)
    : m_path(std::move(path))
    , m_kind(kind)
{
    if (!m_path.ends_with('/'))
        return;
    m_kind = Kind::directory;
    while (m_path.size() > 1 && m_path.ends_with('/'))
        m_path.pop_back();
}

FileURL FileURL::directory(std::string path)
{
    return FileURL{std::move(path), Kind::directory};
}

std::optional<FileURL> FileURL::fromString(std::string_view text)
{
    // QUrl takes international characters, too; a URL holds none.
    if (!isASCII(text))
        return std::nullopt;
    const auto size = static_cast<qsizetype>(text.size());
    const QUrl url{QString::fromLatin1(text.data(), size), QUrl::StrictMode};
    if (!isLocalFile(url))
        return std::nullopt;

    // QUrl's own decoding leaves some escapes as they are and replaces invalid UTF-8.
    const QByteArray escaped = url.path(QUrl::FullyEncoded).toLatin1();
    const std::string path = QByteArray::fromPercentEncoding(escaped).toStdString();
    if (!path.starts_with('/') || path.find('\0') != std::string::npos || !isValidUTF8(path))
        return std::nullopt;
    return FileURL{path};
}

std::string FileURL::toString() const
{
    const auto bytes =
        QByteArray::fromRawData(m_path.data(), static_cast<qsizetype>(m_path.size()));
    std::string url = "file://" + bytes.toPercentEncoding(unescapedInPaths).toStdString();
    if (isDirectory() && !m_path.ends_with('/'))
        url += '/';
    return url;
}

std::string_view FileURL::lastPathComponent() const
{
    // Without any slash, npos + 1 is 0 and the whole path remains.
    return std::string_view{m_path}.substr(m_path.rfind('/') + 1);
}

FileURL FileURL::parent() const
{
    const auto slash = m_path.rfind('/');
    return directory(slash == std::string::npos ? "/" : m_path.substr(0, slash + 1));
}

FileURL FileURL::appending(std::string_view name, Kind kind) const
{
    std::string path;
    path.reserve(m_path.size() + 1 + name.size());
    path += m_path;
    if (!path.ends_with('/'))
        path += '/';
    path += name;
    return FileURL{std::move(path), kind};
}

}  // namespace tidemark
