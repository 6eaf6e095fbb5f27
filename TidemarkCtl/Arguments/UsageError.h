#pragma once

#include <stdexcept>

namespace tidemark {

/// The arguments make no sense; what() is one line that says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tidemark
