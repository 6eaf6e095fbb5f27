#pragma once

#include <QUrl>

#include <string>

namespace tidemark {

/// A newer version of the application, as the update feed announces it. A plain value.
struct UpdateInfo {
    std::string version = {};  ///< As it is written in the feed.
    QUrl downloadURL = {};  ///< Of the archive; its scheme is always "https".
    std::string notes = {};  ///< What is new, for people. Empty when the feed says nothing.

    bool operator==(const UpdateInfo&) const = default;
};

}  // namespace tidemark
