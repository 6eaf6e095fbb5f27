// What a maker sets when building the application, for the update's desktop test. The programs are the
// application itself in every other respect: what is defined here is not taken from its libraries.
#include "AppModel.h"
#include "UpdateAddresses.h"

namespace tidemark {

std::string AppModel::version()
{
    return TIDEMARK_TEST_VERSION;
}

std::string UpdateAddresses::feed()
{
    return {};  // asked for by the updater only
}

std::string UpdateAddresses::downloadPage()
{
    return "tidemark.example/download";
}

}  // namespace tidemark
