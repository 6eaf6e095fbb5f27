#include "LinkWalk.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <deque>
#include <optional>
#include <string_view>

namespace tidemark {

namespace {

constexpr int mostLinks = 40;

std::deque<std::string> componentsOf(std::string_view path)
{
    std::deque<std::string> components;
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find('/'));
        if (!component.empty() && component != ".")
            components.emplace_back(component);
        path.remove_prefix(std::min(component.size() + 1, path.size()));
    }
    return components;
}

std::optional<std::string> targetOf(const std::string& path)
{
    std::array<char, PATH_MAX> target;
    const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
    if (size <= 0)
        return std::nullopt;
    return std::string{target.data(), static_cast<std::size_t>(size)};
}

}  // namespace

std::string LinkWalk::entryIn(const std::string& folder, const std::string& name)
{
    return folder == "/" ? folder + name : folder + '/' + name;
}

std::string LinkWalk::parentOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

LinkWalk::Result LinkWalk::follow(const std::string& path, const Step& onStep)
{
    std::deque<std::string> ahead = componentsOf(path);
    Result reached{"/", 0, {}};
    int links = 0;
    while (!ahead.empty()) {
        const std::string name = std::move(ahead.front());
        ahead.pop_front();
        if (name == "..") {
            reached.path = parentOf(reached.path);
            continue;
        }
        const std::string next = entryIn(reached.path, name);
        if (const std::optional<std::string> target = targetOf(next)) {
            if (++links > mostLinks)
                return {reached.path, ELOOP, name};
            onStep(reached.path, name, Entry::link);
            if (target->starts_with('/'))
                reached.path = "/";
            std::deque<std::string> detour = componentsOf(*target);
            ahead.insert(ahead.begin(), detour.begin(), detour.end());
            continue;
        }
        struct stat status;
        if (::lstat(next.c_str(), &status) != 0)
            return {reached.path, errno, name};
        onStep(reached.path, name, Entry::other);
        reached.path = next;
    }
    return reached;
}

}  // namespace tidemark
