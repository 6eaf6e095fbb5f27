#include "FailureText.h"

#include <filesystem>
#include <new>
#include <string_view>

namespace tidemark {

namespace {

/// What was tried, such as "cannot read". The exception keeps it only inside its own long text.
std::string operation(const std::filesystem::filesystem_error& error)
{
    constexpr std::string_view prefix = "filesystem error: ";
    std::string_view text = error.what();
    if (text.starts_with(prefix))
        text.remove_prefix(prefix.size());
    return std::string{text.substr(0, text.find(": " + error.code().message()))};
}

std::string sentence(const std::filesystem::filesystem_error& error)
{
    std::string text = operation(error);
    if (!error.path1().empty())
        text += ' ' + error.path1().string();
    if (!error.path2().empty())
        text += " to " + error.path2().string();
    return text + ": " + error.code().message();
}

}  // namespace

std::string failureText(const std::exception& error)
{
    if (const auto* failure = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return sentence(*failure);
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr)
        return "out of memory";
    return error.what();
}

std::string failureText(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& caught) {
        return failureText(caught);
    }
}

}  // namespace tidemark
