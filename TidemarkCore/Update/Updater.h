#pragma once

#include "UpdateCheck.h"
#include "UpdateInfo.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

class QNetworkAccessManager;

namespace tidemark {

/// Finds out whether there is a newer version of the application. Keeps no state.
///
/// The maker announces the newest version in the update feed, one JSON object on a web server: "version"
/// and "url", an https URL of the archive, are strings that have to be there; "notes" may be. Other keys
/// are ignored.
namespace Updater {

/// Whether version `a` is strictly newer than version `b`.
///
/// Versions are compared number by number between their dots; empty pieces count as not there, missing
/// numbers as 0. A piece is a decimal number with or without a sign; one that is anything else, or too
/// large for 64 bits, counts as 0. So "1.2" and "1.2.0" are equal, "1.10" is newer than "1.9", and
/// "2.0-beta" equals "2.0".
bool isNewer(std::string_view a, std::string_view b);

/// The newer version that the text of a feed announces. Nothing when it announces none that is newer, when the
/// text is no JSON object, or when that has no version or no https URL; of two members with one key the last
/// counts. Notes that are missing, or no string, are empty. Throws nothing but bad_alloc.
std::optional<UpdateInfo> updateIn(std::string feed, std::string_view currentVersion);

/// The text of a feed that announces `update`. Throws invalid_argument for text that is not UTF-8.
std::string announcementOf(const UpdateInfo& update);

/// Fetches the feed at `manifest`, an https URL, and tells `done` once, from the event loop, which newer
/// version it announces.
///
/// Whatever goes wrong is told as nothing: no network, a certificate that is not trusted, a server that
/// is silent or never ends, a redirect away from https, a body that is too large, a text that is no feed.
/// The answer's HTTP status does not matter. Neither caches nor cookies are used. Destroying what is
/// returned ends the check, and `done` is not called any more; `done` may destroy it. `session` outlives
/// it and belongs to this thread.
[[nodiscard]] std::unique_ptr<UpdateCheck> check(const QUrl& manifest, std::string currentVersion,
    QNetworkAccessManager& session, UpdateCheck::Done done, const UpdateCheck::Limits& limits = {});

}  // namespace Updater

}  // namespace tidemark
