#pragma once

#include <QNetworkRequest>

class QUrl;

namespace tidemark {

/// The request for something of the maker's at an https URL: from https to https only, through at most 16
/// redirects, past every cache, and without anything by which the server could recognise who asks.
///
/// That `url` itself is one of https is for the caller to see to: Qt would read local files as well.
QNetworkRequest safeRequest(const QUrl& url);

}  // namespace tidemark
