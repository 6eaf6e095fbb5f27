#include "FolderPanel.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>

namespace tidemark {

namespace {

/// With nothing chosen Qt's dialog would take the folder that it shows, at first the whole home.
class Dialog final : public QFileDialog {
public:
    using QFileDialog::QFileDialog;

    void accept() override
    {
        const QStringList chosen = selectedFiles();
        const bool isWholeHome = chosen.size() == 1 && QDir{chosen.first()} == QDir::home();
        if (!isWholeHome)
            QFileDialog::accept();
    }
};

/// Qt's dialog for folders lets one choose a single one; its lists do not mind several.
void allowSeveral(QFileDialog& dialog)
{
    for (QAbstractItemView* list : dialog.findChildren<QAbstractItemView*>()) {
        if (list->objectName() == QStringLiteral("listView")
            || list->objectName() == QStringLiteral("treeView"))
            list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
}

std::vector<FileURL> foldersOf(const QFileDialog& dialog)
{
    std::vector<FileURL> folders;
    for (const QString& path : dialog.selectedFiles()) {
        const QByteArray bytes = QFile::encodeName(QDir::cleanPath(path));
        folders.push_back(FileURL::directory(bytes.toStdString()));
    }
    return folders;
}

}  // namespace

std::vector<FileURL> FolderPanel::chooseFolders()
{
    if (m_dialog) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return {};
    }
    Dialog dialog{QApplication::activeWindow(),
        QStringLiteral("Choose folders for Tidemark to keep tidy."), QDir::homePath()};
    m_dialog = &dialog;
    dialog.setFileMode(QFileDialog::Directory);
    // The desktop's own dialogs let one choose a single folder. Qt's would also delete folders for good.
    dialog.setOptions(
        QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog | QFileDialog::ReadOnly);
    dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Add"));
    allowSeveral(dialog);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return foldersOf(dialog);
}

}  // namespace tidemark
