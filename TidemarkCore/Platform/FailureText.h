#pragma once

#include <exception>
#include <string>

namespace tidemark {

/// Says in one line for people why something failed, such as "cannot write /a/journal.json: No space left
/// on device". Names in it are as they are: escape it before showing it.
std::string failureText(const std::exception& error);

/// The same of an exception that was caught. It must not be null.
std::string failureText(const std::exception_ptr& error);

}  // namespace tidemark
