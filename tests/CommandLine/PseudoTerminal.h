#pragma once

#include "FileDescriptor.h"

#include <string>
#include <string_view>

namespace tidemark {

/// A terminal for a program under test.
class PseudoTerminal {
public:
    PseudoTerminal();

    /// What the program opens as its stream.
    const std::string& path() const { return m_path; }

    /// Reads what was printed until `text` has come, and returns all of it so far. Throws after a minute.
    std::string readUntil(std::string_view text);

    /// Everything printed; call it when nothing is left to print.
    std::string readAll();

private:
    /// False when nothing came in time.
    bool readMore(int milliseconds);

    FileDescriptor m_master;
    FileDescriptor m_slave;  // kept open, so that a program's end is not the terminal's
    std::string m_path;
    std::string m_text;
};

}  // namespace tidemark
