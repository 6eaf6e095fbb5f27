#include "FeedUpdateFinder.h"

#include "Updater.h"

#include <QNetworkAccessManager>

#include <utility>

namespace tidemark {

namespace {

class FeedSearch final : public UpdateFinder::Search {
public:
    FeedSearch(const QUrl& feed, const std::string& currentVersion, UpdateFinder::Found found)
        : m_check(Updater::check(feed, currentVersion, m_session, std::move(found)))
    {
    }

private:
    QNetworkAccessManager m_session;
    std::unique_ptr<UpdateCheck> m_check;
};

}  // namespace

FeedUpdateFinder::FeedUpdateFinder(QUrl feed)
    : m_feed(std::move(feed))
{
}

std::unique_ptr<UpdateFinder::Search> FeedUpdateFinder::find(
    const std::string& currentVersion, Found found)
{
    return std::make_unique<FeedSearch>(m_feed, currentVersion, std::move(found));
}

}  // namespace tidemark
