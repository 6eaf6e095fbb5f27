#pragma once

#include "FileURL.h"

#include <QSettings>

#include <optional>
#include <string>

namespace tidemark {

/// Small things to remember that are no settings, in a file of the user's configuration folder (INI, as
/// QSettings writes it). For the main thread.
///
/// What cannot be written is remembered as long as this lives; what cannot be read is not there.
class UserDefaults {
public:
    /// `$XDG_CONFIG_HOME/Tidemark/Tidemark.conf`, by default below `~/.config`.
    static FileURL file();

    explicit UserDefaults(const FileURL& file);

    std::optional<std::string> string(const std::string& key) const;

    /// Written at once.
    void set(const std::string& key, const std::string& value);

private:
    QSettings m_settings;
};

}  // namespace tidemark
