#pragma once

#include <string>

namespace tidemark {

/// What the updater does for ProcessUpdateFinder: prints the text of a feed that announces the version
/// newer than `runningVersion` which the maker's feed announces, or nothing. Needs a QCoreApplication.
namespace FeedReader {

/// Ends the process, with status 0 unless the text could not be printed.
[[noreturn]] void run(const std::string& runningVersion);

}  // namespace FeedReader

}  // namespace tidemark
