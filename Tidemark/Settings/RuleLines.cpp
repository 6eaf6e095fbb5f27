#include "RuleLines.h"

#include "Overloaded.h"

#include <cmath>

namespace tidemark {

namespace {

struct Appearance {
    QString symbol;
    QString subtitle;
    QString ageLabel;
};

Appearance appearanceOf(const RuleAction& action)
{
    return std::visit(Overloaded{
                          [](const RuleAction::Fixed& fixed) -> Appearance {
                              if (fixed.action.isTrash())
                                  return {QStringLiteral("trash"),
                                      QStringLiteral("Moved to the Trash"),
                                      QStringLiteral("Trash after")};
                              return {QStringLiteral("folder"), QStringLiteral("Filed away"),
                                  QStringLiteral("After")};
                          },
                          [](const RuleAction::FileScreenshot&) -> Appearance {
                              return {QStringLiteral("camera"),
                                  QStringLiteral("Renamed and filed into a Screenshots folder"),
                                  QStringLiteral("After")};
                          },
                          [](const RuleAction::ArchiveByMonth&) -> Appearance {
                              return {QStringLiteral("archivebox"),
                                  QStringLiteral("Moved into a dated Archive folder"),
                                  QStringLiteral("Archive after")};
                          },
                          [](const RuleAction::FileMarkdown&) -> Appearance {
                              return {QStringLiteral("doc.richtext"),
                                  QStringLiteral("Filed into a dated Notes folder by front-matter"),
                                  QStringLiteral("After")};
                          },
                      },
        action.value);
}

}  // namespace

RuleLines RuleLines::of(const Rule& rule)
{
    Appearance appearance = appearanceOf(rule.action);
    RuleLines lines{
        .symbol = std::move(appearance.symbol), .subtitle = std::move(appearance.subtitle)};
    if (rule.match.minAge) {
        const double days = std::trunc(rule.match.minAge->count() / secondsPerDay);
        lines.age = QStringLiteral("%1 %2 day%3")
                        .arg(appearance.ageLabel, QString::number(days, 'f', 0),
                            days == 1 ? QString{} : QStringLiteral("s"));
    }
    return lines;
}

}  // namespace tidemark
