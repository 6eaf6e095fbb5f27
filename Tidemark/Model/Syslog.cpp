#include "Syslog.h"

#include <syslog.h>

namespace tidemark {

void Syslog::warn(const std::string& line)
{
    // Not opened for good: the name of a connection that is kept would be that of the whole process.
    ::syslog(LOG_USER | LOG_WARNING, "Tidemark: %s", line.c_str());
}

}  // namespace tidemark
