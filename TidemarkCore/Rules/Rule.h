#pragma once

#include "RuleAction.h"
#include "RuleMatch.h"

#include <QUuid>

#include <string>

namespace tidemark {

/// Which files of a watched folder are meant, and what happens to them. A plain value.
struct Rule {
    QUuid id =
        QUuid::createUuid();  ///< Its identity in plans and previews; fresh for every new rule.
    std::string name;  ///< Shown to the user.
    bool isEnabled = true;
    RuleMatch match;
    RuleAction action;

    void encode(JSONEncoder& encoder) const;
    static Rule decode(const JSONDecoder& decoder);

    bool operator==(const Rule&) const = default;
};

}  // namespace tidemark
