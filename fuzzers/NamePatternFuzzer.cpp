#include "NamePattern.h"

#include "Require.h"
#include "Text.h"
#include "UniqueName.h"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <wctype.h>  // NOLINT(modernize-deprecated-headers): towlower_l is POSIX

#include <QString>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

constexpr std::size_t longestName = 255;

static std::u32string characters(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toStdU32String();
}

static bool isSame(char32_t one, char32_t other)
{
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return towlower_l(static_cast<wint_t>(one), locale)
        == towlower_l(static_cast<wint_t>(other), locale);
}

/// What a pattern without brackets has to answer, slowly and plainly: row by row, whether the pattern so far
/// matches each beginning of the name.
static bool matchesPlainly(std::u32string_view pattern, std::u32string_view name)
{
    std::vector<bool> matched(name.size() + 1, false);
    matched[0] = true;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        std::vector<bool> next(name.size() + 1, false);
        const bool isEscaped = pattern[at] == '\\';
        if (isEscaped && ++at == pattern.size())
            return false;
        for (std::size_t end = 0; end <= name.size(); ++end) {
            if (!isEscaped && pattern[at] == '*')
                next[end] = matched[end] || (end > 0 && next[end - 1]);
            else if (end > 0)
                next[end] = matched[end - 1]
                    && ((!isEscaped && pattern[at] == '?') || isSame(pattern[at], name[end - 1]));
        }
        matched = std::move(next);
    }
    return matched[name.size()];
}

static void requireToMatchPlainly(const std::string& pattern, const std::string& name)
{
    const bool answer = NamePattern::matches(pattern, name);
    if (pattern.find('[') == std::string::npos)
        require(answer == matchesPlainly(characters(pattern), characters(name)),
            "a pattern means what it says");
    if (answer)
        require(NamePattern::matches("*" + pattern, name), "a star may stand for nothing");
}

static void requireToMatchItself(const std::string& name)
{
    std::string escaped;
    for (const char each : name) {
        if (std::string_view{"*?[]\\!-^"}.find(each) != std::string_view::npos)
            escaped += '\\';
        escaped += each;
    }
    require(NamePattern::matches(escaped, name), "a name with its special characters escaped");
    require(NamePattern::matches("*", name), "a star matches every name");
}

static void requireNumberedNames(const std::string& name)
{
    const std::string second = UniqueName::numbered(name, 2);
    const std::string third = UniqueName::numbered(name, 3);
    require(isFileName(second) && isFileName(third), "a name with a number is a name");
    require(second != name && third != name && second != third, "a number makes another name");
    require(pathExtension(name).empty() || pathExtension(second) == pathExtension(name),
        "a number leaves the extension");
}

}  // namespace tidemark

/// Whatever pattern (the first line) meets whatever name (the rest): the answer is the right one, and in time.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    const std::string text{reinterpret_cast<const char*>(data), size};
    const std::size_t end = text.find('\n');
    if (end == std::string::npos || !isValidUTF8(text))
        return 0;
    const std::string pattern = text.substr(0, end);
    const std::string name = text.substr(end + 1);
    if (!isFileName(name) || name.size() > longestName)
        return 0;
    if (pattern.find('\0') == std::string::npos)
        requireToMatchPlainly(pattern, name);
    else
        require(!NamePattern::matches(pattern, name), "no name holds a NUL");
    requireToMatchItself(name);
    requireNumberedNames(name);
    return 0;
}
