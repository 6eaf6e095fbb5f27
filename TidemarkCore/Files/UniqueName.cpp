#include "UniqueName.h"

#include "Text.h"

namespace tidemark::UniqueName {

std::string numbered(std::string_view name, unsigned long counter)
{
    std::string result(withoutPathExtension(name));
    result += ' ' + std::to_string(counter);
    if (const std::string_view extension = pathExtension(name); !extension.empty())
        result.append(".").append(extension);
    return result;
}

std::string firstFree(std::string_view name, const std::function<bool(std::string_view)>& isTaken)
{
    std::string candidate(name);
    for (unsigned long counter = 2; isTaken(candidate); ++counter)
        candidate = numbered(name, counter);
    return candidate;
}

}  // namespace tidemark::UniqueName
