// What a maker sets when building, for the programs of the update's desktop test. They are the application itself in
// every other respect: what is defined here is not taken from its libraries.
#include "AppModel.h"
#include "DeveloperIdentity.h"
#include "TestKey.h"
#include "UpdateAddresses.h"

#include <cstdlib>

namespace tidemark {

std::string AppModel::version()
{
    return TIDEMARK_TEST_VERSION;
}

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
    return "tidemark.example/download";
}

}  // namespace tidemark
