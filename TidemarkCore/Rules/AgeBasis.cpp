#include "AgeBasis.h"

namespace tidemark {

std::string_view rawValue(AgeBasis basis)
{
    switch (basis) {
    case AgeBasis::modified:
        return "modified";
    case AgeBasis::added:
        return "added";
    case AgeBasis::lastOpened:
        return "lastOpened";
    }
    return {};
}

AgeBasis decodeAgeBasis(const JSONDecoder& decoder)
{
    const std::string_view text = decoder.stringView();
    for (const AgeBasis basis : {AgeBasis::modified, AgeBasis::added, AgeBasis::lastOpened}) {
        if (rawValue(basis) == text)
            return basis;
    }
    decoder.fail("Cannot initialize AgeBasis from invalid String value " + std::string(text));
}

}  // namespace tidemark
