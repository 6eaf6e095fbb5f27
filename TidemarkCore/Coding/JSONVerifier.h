#pragma once

#include <cstddef>
#include <string_view>

namespace tidemark {

/// Tells of a text whether it is, to the byte, what JSONEncoder would write for the values it holds, without
/// making them. So what was written here once can be written again as it is.
///
/// The calls are JSONEncoder's, in the same order; each skips one part and answers whether it stands there.
/// After the first no, only what `string` has refused is still at its place. Never yes for another text; no
/// for some rare ones that fit: those with control characters that are written as numbers.
class JSONVerifier {
public:
    /// `text` outlives the verifier.
    explicit JSONVerifier(std::string_view text)
        : m_rest(text)
    {
    }

    bool string();
    bool string(std::string_view wanted);  ///< This one, which needs no escapes.
    bool date();
    bool uuid();

    /// An object whose members `members` verifies with `member`.
    template <typename Members>
    bool object(Members members)
    {
        return open('{') && members() && close('}');
    }

    /// The key of a member; its value follows.
    bool member(std::string_view key);

    /// An array of any number of elements, each of which `Element::verify` verifies.
    template <typename Element>
    bool list()
    {
        if (!open('['))
            return false;
        while (hasElement()) {
            if (!beginElement() || !Element::verify(*this))
                return false;
        }
        return close(']');
    }

    bool isAtEnd() const { return m_rest.empty(); }

private:
    bool open(char bracket);
    bool close(char bracket);
    bool hasElement() const;
    bool beginElement();
    bool startLine();
    bool skip(char wanted);
    bool skip(std::string_view wanted);

    std::string_view m_rest;
    std::string_view m_lastDate;  // that was found good: mostly, one date follows itself many times
    std::size_t m_depth = 0;
    bool m_isEmpty = true;  // nothing was found yet between the innermost brackets
};

}  // namespace tidemark
