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
    const UTF8CharacterType scope;
    return fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
}

}  // namespace tidemark
