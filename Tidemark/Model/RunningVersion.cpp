// In a source of its own, so that the program of a test can be of another version.
#include "AppModel.h"
#include "Version.h"

namespace tidemark {

std::string AppModel::version()
{
    return projectVersion;
}

}  // namespace tidemark
