#pragma once

#include "FolderChooser.h"

#include <QPointer>
#include <QWidget>

class QFileDialog;

namespace tidemark {

/// Asks with Qt's file dialog, in which several folders can be chosen at once. It starts in the home folder.
class FolderPanel final : public FolderChooser {
public:
    /// Nothing if it is being asked already; that question comes to the front then.
    std::vector<FileURL> chooseFolders() override;

private:
    QPointer<QFileDialog> m_dialog;
};

}  // namespace tidemark
