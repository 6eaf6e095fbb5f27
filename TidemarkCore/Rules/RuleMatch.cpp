#include "RuleMatch.h"

namespace tidemark {

void RuleMatch::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("ageBasis", rawValue(ageBasis));
        encoder.member("fileTypes", fileTypes);
        if (minAge)
            encoder.member("minAge", minAge->count());
        encoder.member("namePattern", namePattern);
        encoder.member("screenCaptureOnly", screenCaptureOnly);
    });
}

RuleMatch RuleMatch::decode(const JSONDecoder& decoder)
{
    RuleMatch match;
    match.fileTypes = decoder["fileTypes"].strings();
    if (const auto namePattern = decoder.find("namePattern"))
        match.namePattern = namePattern->string();
    if (const auto minAge = decoder.find("minAge"))
        match.minAge = Seconds(minAge->number());
    match.ageBasis = decodeAgeBasis(decoder["ageBasis"]);
    if (const auto screenCaptureOnly = decoder.find("screenCaptureOnly"))
        match.screenCaptureOnly = screenCaptureOnly->boolean();
    return match;
}

}  // namespace tidemark
