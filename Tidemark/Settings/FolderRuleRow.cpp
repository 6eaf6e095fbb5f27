#include "FolderRuleRow.h"

#include "FolderText.h"
#include "PlainText.h"
#include "RuleLines.h"

namespace tidemark {

FolderRuleRow::FolderRuleRow(AppModel& model, std::string folderPath, const Rule& rule)
    : m_model(model)
    , m_folderPath(std::move(folderPath))
    , m_rule(rule.id)
{
    QObject::connect(&toggle(), &QCheckBox::toggled, this,
        [this](bool isOn) { m_model.editRule(m_folderPath, m_rule, isOn); });
    show(rule);
}

void FolderRuleRow::show(const Rule& rule)
{
    const RuleLines lines = RuleLines::of(rule);
    ToggleRow::show({
        .symbol = lines.symbol,
        .title = oneLine(rule.name),
        .lines = lines.age ? QStringList{lines.subtitle, *lines.age} : QStringList{lines.subtitle},
        .place = FolderText::name(m_folderPath),
        .isOn = rule.isEnabled,
    });
}

}  // namespace tidemark
