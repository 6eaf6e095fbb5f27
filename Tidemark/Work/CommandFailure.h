#pragma once

#include <stdexcept>

namespace tidemark {

/// A command cannot do what was asked; what() is the reason in one line.
class CommandFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tidemark
