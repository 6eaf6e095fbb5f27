#include "ReplacedSettings.h"

namespace tidemark {

void ReplacedSettings::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("keptAs", keptAs);
        encoder.member("problem", problem);
    });
}

ReplacedSettings ReplacedSettings::decode(const JSONDecoder& decoder)
{
    return {.problem = decoder["problem"].string(), .keptAs = decoder["keptAs"].string()};
}

}  // namespace tidemark
