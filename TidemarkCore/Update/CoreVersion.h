#pragma once

namespace tidemark {

namespace TidemarkCore {

/// The core library's own version; the application's is AppModel::version().
inline constexpr char version[] = "0.0.1";

}  // namespace TidemarkCore

}  // namespace tidemark
