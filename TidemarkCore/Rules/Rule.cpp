#include "Rule.h"

namespace tidemark {

void Rule::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("action", action);
        encoder.member("id", id);
        encoder.member("isEnabled", isEnabled);
        encoder.member("match", match);
        encoder.member("name", name);
    });
}

Rule Rule::decode(const JSONDecoder& decoder)
{
    return {
        .id = decoder["id"].uuid(),
        .name = decoder["name"].string(),
        .isEnabled = decoder["isEnabled"].boolean(),
        .match = RuleMatch::decode(decoder["match"]),
        .action = RuleAction::decode(decoder["action"]),
    };
}

}  // namespace tidemark
