#pragma once

#include "UpdateFinder.h"

#include <QUrl>

namespace tidemark {

/// Asks the maker's update feed (Updater::check).
///
/// Every search has a network session of its own: between them there is no thread, no timer and no connection.
class FeedUpdateFinder final : public UpdateFinder {
public:
    explicit FeedUpdateFinder(QUrl feed);

    std::unique_ptr<Search> find(const std::string& currentVersion, Found found) override;

private:
    const QUrl m_feed;
};

}  // namespace tidemark
