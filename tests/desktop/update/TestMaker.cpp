// What a maker sets when building the updater, for the update's desktop test. The program is the updater
// itself in every other respect: what is defined here is not taken from its libraries.
#include "DeveloperIdentity.h"
#include "TestKey.h"
#include "UpdateAddresses.h"

#include <cstdlib>

namespace tidemark {

DeveloperIdentity DeveloperIdentity::configured()
{
    return {.publicKey = testPublicKey, .teamIdentifier = TIDEMARK_TEST_TEAM};
}

/// The test's server takes the port that is free.
std::string UpdateAddresses::feed()
{
    const char* const feed = std::getenv("TIDEMARK_TEST_FEED");
    return feed ? feed : "";
}

std::string UpdateAddresses::downloadPage()
{
    return {};  // shown by the application only
}

}  // namespace tidemark
