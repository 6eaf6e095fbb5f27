#include "Updater.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace tidemark {

namespace {

std::int64_t numberIn(std::string_view piece)
{
    // from_chars knows the minus sign only.
    if (piece.starts_with('+') && !piece.starts_with("+-"))
        piece.remove_prefix(1);
    std::int64_t number = 0;
    const char* const end = piece.data() + piece.size();
    const auto [rest, error] = std::from_chars(piece.data(), end, number);
    return error == std::errc{} && rest == end ? number : 0;
}

std::vector<std::int64_t> components(std::string_view version)
{
    std::vector<std::int64_t> result;
    while (!version.empty()) {
        const std::string_view piece = version.substr(0, version.find('.'));
        if (!piece.empty())
            result.push_back(numberIn(piece));
        version.remove_prefix(std::min(piece.size() + 1, version.size()));
    }
    return result;
}

}  // namespace

bool Updater::isNewer(std::string_view a, std::string_view b)
{
    std::vector<std::int64_t> ofA = components(a);
    std::vector<std::int64_t> ofB = components(b);
    const std::size_t count = std::max(ofA.size(), ofB.size());
    ofA.resize(count);
    ofB.resize(count);
    return ofA > ofB;
}

}  // namespace tidemark
