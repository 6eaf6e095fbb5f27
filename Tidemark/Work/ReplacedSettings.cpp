#include "ReplacedSettings.h"

#include "Text.h"

namespace tidemark {

void ReplacedSettings::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("keptAs", withValidUTF8(keptAs));
        encoder.member("problem", withValidUTF8(problem));
    });
}

ReplacedSettings ReplacedSettings::decode(const JSONDecoder& decoder)
{
    return {.problem = decoder["problem"].string(), .keptAs = decoder["keptAs"].string()};
}

}  // namespace tidemark
