#pragma once

#include <stdexcept>
#include <string>

namespace tidemark {

/// A file's text is not what was to be read from it.
///
/// what() is one line: "settings.json: folders[2].rules[0].match.minAge: expected a number, found a
/// string"; where the text is no JSON at all, line and column stand in place of the coding path.
class DecodingError : public std::runtime_error {
public:
    DecodingError(std::string file, std::string codingPath, std::string reason);

    const std::string& file() const { return m_file; }
    const std::string& codingPath() const { return m_codingPath; }  ///< Empty at the root.
    const std::string& reason() const { return m_reason; }

private:
    std::string m_file;
    std::string m_codingPath;
    std::string m_reason;
};

}  // namespace tidemark
