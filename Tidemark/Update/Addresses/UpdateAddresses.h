#pragma once

#include <string>

namespace tidemark {

/// Where newer versions come from. Set by the build, and by nothing else: whoever could lead the application
/// elsewhere could keep newer versions from it.
namespace UpdateAddresses {

std::string feed();  ///< TIDEMARK_UPDATE_FEED, an https URL.
std::string downloadPage();  ///< TIDEMARK_DOWNLOAD_PAGE, host and path without a scheme.

}  // namespace UpdateAddresses

}  // namespace tidemark
