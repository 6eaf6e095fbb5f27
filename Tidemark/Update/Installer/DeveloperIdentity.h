#pragma once

#include <string>

namespace tidemark {

/// Whose bundles are accepted. A plain value.
struct DeveloperIdentity {
    std::string publicKey = {};  ///< minisign's, the line of Base64; empty when there is none.
    std::string teamIdentifier = {};

    /// What was set when this was built: TIDEMARK_UPDATE_PUBLIC_KEY and TIDEMARK_TEAM_IDENTIFIER.
    static DeveloperIdentity configured();
};

}  // namespace tidemark
