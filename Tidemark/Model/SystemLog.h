#pragma once

#include <string>

namespace tidemark {

/// Where a program without a screen tells what its user should know later. Safe from any thread.
class SystemLog {
public:
    virtual ~SystemLog() = default;

    /// One line of text.
    virtual void warn(const std::string& line) = 0;
};

/// For those whose users are told otherwise.
class NoSystemLog final : public SystemLog {
public:
    void warn(const std::string& /*line*/) override { }
};

}  // namespace tidemark
