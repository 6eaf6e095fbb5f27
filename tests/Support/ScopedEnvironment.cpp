#include "ScopedEnvironment.h"

#include <QtGlobal>

#include <ctime>

namespace tidemark {

ScopedEnvironment::ScopedEnvironment(const char* name, const std::optional<std::string>& value)
    : m_name(name)
    , m_wasSet(qEnvironmentVariableIsSet(name))
    , m_oldValue(qgetenv(name))
{
    if (value)
        qputenv(name, QByteArray::fromStdString(*value));
    else
        qunsetenv(name);
    ::tzset();
}

ScopedEnvironment::~ScopedEnvironment()
{
    if (m_wasSet)
        qputenv(m_name, m_oldValue);
    else
        qunsetenv(m_name);
    ::tzset();
}

ScopedHome::ScopedHome(const std::string& folder)
    : m_home("HOME", folder)
    , m_data("XDG_DATA_HOME", folder + "/.local/share")
    , m_configuration("XDG_CONFIG_HOME", folder + "/.config")
    , m_cache("XDG_CACHE_HOME", folder + "/.cache")
    , m_state("XDG_STATE_HOME", folder + "/.local/state")
    , m_runtime("XDG_RUNTIME_DIR", folder + "/.runtime")
{
}

}  // namespace tidemark
