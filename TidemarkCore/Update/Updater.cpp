#include "Updater.h"

#include "DecodingError.h"
#include "JSONDecoder.h"
#include "JSONDocument.h"
#include "JSONEncoder.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace tidemark {

namespace {

std::int64_t numberIn(std::string_view piece)
{
    // from_chars knows the minus sign only.
    if (piece.starts_with('+') && !piece.starts_with("+-"))
        piece.remove_prefix(1);
    std::int64_t number = 0;
    const char* const end = piece.data() + piece.size();
    const auto [rest, error] = std::from_chars(piece.data(), end, number);
    return error == std::errc{} && rest == end ? number : 0;
}

std::vector<std::int64_t> components(std::string_view version)
{
    std::vector<std::int64_t> result;
    while (!version.empty()) {
        const std::string_view piece = version.substr(0, version.find('.'));
        if (!piece.empty())
            result.push_back(numberIn(piece));
        version.remove_prefix(std::min(piece.size() + 1, version.size()));
    }
    return result;
}

/// The string under `key`; nothing if it is missing or something else.
std::optional<std::string> stringIn(const JSONDecoder& object, std::string_view key)
{
    try {
        return object[key].string();
    } catch (const DecodingError&) {
        return {};
    }
}

/// QUrl has every scheme in lower case; here it counts as it was written.
std::optional<QUrl> httpsURL(const std::string& text)
{
    QUrl url{QString::fromStdString(text), QUrl::StrictMode};
    if (!text.starts_with("https:") || !url.isValid())
        return {};
    return url;
}

std::optional<UpdateInfo> announcementIn(const JSONDecoder& feed)
{
    std::optional<std::string> version = stringIn(feed, "version");
    const std::optional<std::string> url = stringIn(feed, "url");
    if (!version || !url)
        return {};
    std::optional<QUrl> downloadURL = httpsURL(*url);
    if (!downloadURL)
        return {};
    return UpdateInfo{.version = std::move(*version),
        .downloadURL = std::move(*downloadURL),
        .notes = stringIn(feed, "notes").value_or("")};
}

}  // namespace

bool Updater::isNewer(std::string_view a, std::string_view b)
{
    std::vector<std::int64_t> ofA = components(a);
    std::vector<std::int64_t> ofB = components(b);
    const std::size_t count = std::max(ofA.size(), ofB.size());
    ofA.resize(count);
    ofB.resize(count);
    return ofA > ofB;
}

std::optional<UpdateInfo> Updater::updateIn(std::string feed, std::string_view currentVersion)
{
    try {
        const JSONDocument document{std::move(feed), "the update feed"};
        std::optional<UpdateInfo> update = announcementIn(document.root());
        if (update && isNewer(update->version, currentVersion))
            return update;
    } catch (const DecodingError&) {
        // A feed that cannot be read announces nothing.
    }
    return {};
}

std::string Updater::announcementOf(const UpdateInfo& update)
{
    JSONEncoder encoder;
    encoder.object([&] {
        encoder.member("notes", update.notes);
        encoder.member("url", update.downloadURL.toString(QUrl::FullyEncoded).toStdString());
        encoder.member("version", update.version);
    });
    return encoder.takeText();
}

}  // namespace tidemark
