#pragma once

#include "AppModel.h"
#include "ToggleRow.h"

namespace tidemark {

/// One rule of a watched folder, to be switched on and off.
class FolderRuleRow : public ToggleRow {
public:
    /// `model` outlives it.
    FolderRuleRow(AppModel& model, std::string folderPath, const Rule& rule);

    /// Shows what has become of the rule.
    void show(const Rule& rule);

    const QUuid& rule() const { return m_rule; }

private:
    AppModel& m_model;
    const std::string m_folderPath;
    const QUuid m_rule;
};

}  // namespace tidemark
