#pragma once

#include <QByteArray>

#include <optional>
#include <string>

namespace tidemark {

/// Sets or unsets one environment variable and puts the old state back at the end of the scope. For
/// tests in which no other thread reads the environment.
class ScopedEnvironment {
public:
    /// No value unsets the variable.
    ScopedEnvironment(const char* name, const std::optional<std::string>& value);
    ~ScopedEnvironment();

    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_oldValue;
};

/// Points HOME and every XDG_* variable that Tidemark reads into one folder, so that a test cannot touch
/// the user's own files.
class ScopedHome {
public:
    explicit ScopedHome(const std::string& folder);

private:
    ScopedEnvironment m_home;
    ScopedEnvironment m_data;
    ScopedEnvironment m_configuration;
    ScopedEnvironment m_cache;
    ScopedEnvironment m_state;
    ScopedEnvironment m_runtime;
};

}  // namespace tidemark
