#pragma once

#include "AppModel.h"

#include <QWidget>

class QToolButton;

namespace tidemark {

class ElidedLabel;
class SymbolLabel;

/// One watched folder: where it is, whether it can be read, and the button that stops watching it.
class WatchedFolderRow : public QWidget {
public:
    /// `model` outlives it.
    WatchedFolderRow(AppModel& model, const WatchedFolderInfo& info);

    /// Shows what has become of the folder.
    void show(const WatchedFolderInfo& info);

private:
    AppModel& m_model;
    const std::string m_path;
    SymbolLabel* m_access;
};

}  // namespace tidemark
