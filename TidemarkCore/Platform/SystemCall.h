#pragma once

#include "FileURL.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace tidemark {

/// Calls `call` again for as long as a signal interrupts it; every other result is returned as it is.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

inline std::error_code systemError(int number)
{
    return {number, std::generic_category()};
}

/// Throws the filesystem_error of a call that failed; `what` was tried, such as "cannot read".
[[noreturn]] inline void fail(const char* what, const FileURL& url, int number)
{
    throw std::filesystem::filesystem_error{what, url.path(), systemError(number)};
}

[[noreturn]] inline void fail(const char* what, const FileURL& from, const FileURL& to, int number)
{
    throw std::filesystem::filesystem_error{what, from.path(), to.path(), systemError(number)};
}

/// The path for a system call, which would otherwise end at a NUL and mean another file: throws
/// invalid_argument for one that holds a NUL or is not absolute.
inline const char* systemPath(const FileURL& url)
{
    if (url.path().find('\0') != std::string::npos || !url.path().starts_with('/'))
        fail("not an absolute path", url, EINVAL);
    return url.path().c_str();
}

}  // namespace tidemark
