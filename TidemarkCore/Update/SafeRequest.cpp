#include "SafeRequest.h"

#include <QUrl>

namespace tidemark {

namespace {

/// More than any sensible server needs; a loop has to end.
constexpr int mostRedirects = 16;

}  // namespace

QNetworkRequest safeRequest(const QUrl& url)
{
    QNetworkRequest request{url};
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Tidemark"));
    const auto set = [&](QNetworkRequest::Attribute attribute, const QVariant& value) {
        request.setAttribute(attribute, value);
    };
    set(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    set(QNetworkRequest::CacheSaveControlAttribute, false);
    // Nothing is to be known of who asks, or kept from it.
    set(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    set(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    set(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    set(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirects);
    set(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

}  // namespace tidemark
