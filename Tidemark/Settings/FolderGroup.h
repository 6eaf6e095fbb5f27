#pragma once

#include "AppModel.h"

#include <QWidget>

#include <vector>

class QToolButton;
class QVBoxLayout;

namespace tidemark {

class FolderRuleRow;
class ToggleRow;
class WatchedFolderRow;

/// A watched folder with what belongs to it, which is made when it is first disclosed.
class FolderGroup : public QWidget {
public:
    /// `model` outlives it.
    FolderGroup(AppModel& model, const WatchedFolderInfo& info);

    /// Shows what has become of the folder.
    void show(const WatchedFolderInfo& info);

    const std::string& path() const { return m_info.folder.path; }

    bool isDisclosed() const;
    void setDisclosed(bool isDisclosed);

private:
    void showContent();
    void makeContent();
    bool hasRowsOfItsRules() const;

    AppModel& m_model;
    WatchedFolderInfo m_info;
    QToolButton* m_disclosure;
    WatchedFolderRow* m_row;
    QWidget* m_content = nullptr;
    QVBoxLayout* m_layout;
    std::vector<FolderRuleRow*> m_rules;
    ToggleRow* m_markdown = nullptr;
};

}  // namespace tidemark
