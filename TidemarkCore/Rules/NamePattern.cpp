#include "NamePattern.h"

#include <fnmatch.h>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale and uselocale are POSIX

#include <system_error>

namespace tidemark {

namespace {

/// Makes the calling thread read characters as UTF-8 while it lives.
class UTF8CharacterType {
public:
    UTF8CharacterType()
        : m_previous(uselocale(utf8()))
    {
    }
    ~UTF8CharacterType() { uselocale(m_previous); }
    UTF8CharacterType(const UTF8CharacterType&) = delete;
    UTF8CharacterType& operator=(const UTF8CharacterType&) = delete;

private:
    static locale_t utf8()
    {
        // Kept for the life of the process. glibc brings C.UTF-8 itself since 2.35.
        static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        if (locale == nullptr)
            throw std::system_error(errno, std::generic_category(), "no C.UTF-8 locale");
        return locale;
    }

    locale_t m_previous;
};

}  // namespace

bool NamePattern::matches(const std::string& pattern, const std::string& name)
{
    // A name never holds a NUL, so a pattern with one matches none.
    if (pattern.find('\0') != std::string::npos)
        return false;
    // Where no match is found by characters, glibc looks for one by bytes, to which "ü" is two of
    // whatever "?" may be. In front of both stands what matches as characters only.
    static const std::string onlyByCharacters = "[ü]/";
    static const std::string theseCharacters = "ü/";
    const UTF8CharacterType scope;
    return fnmatch(
               (onlyByCharacters + pattern).c_str(), (theseCharacters + name).c_str(), FNM_CASEFOLD)
        == 0;
}

}  // namespace tidemark
