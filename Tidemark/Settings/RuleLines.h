#pragma once

#include "Rule.h"

#include <QString>
#include <QStringList>

namespace tidemark {

/// How a rule is shown. A plain value.
struct RuleLines {
    QString symbol;
    QString subtitle;
    std::optional<QString> age =
        {};  ///< Such as "Archive after 30 days", if the rule asks for an age.

    static RuleLines of(const Rule& rule);
};

}  // namespace tidemark
