#include "FolderPanel.h"
#include "TemporaryFolder.h"

#include <QApplication>
#include <QFileDialog>
#include <QListView>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace tidemark {

namespace {

QFileDialog* openDialog()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QFileDialog*>(window))
            return dialog;
    }
    return nullptr;
}

}  // namespace

TEST(FolderPanel, IsForChoosingFoldersAndDeletesNone)
{
    const TemporaryFolder home;
    home.write("Precious/photo.jpg", "the only copy");
    FolderPanel panel;
    bool wasAsked = false;
    QTimer::singleShot(0, [&] {
        QFileDialog* dialog = openDialog();
        wasAsked = dialog != nullptr;
        ASSERT_TRUE(wasAsked);
        EXPECT_EQ(dialog->windowTitle(), "Choose folders for Tidemark to keep tidy.");
        dialog->setDirectory(QString::fromStdString(home.path()));
        dialog->selectFile("Precious");
        QTest::keyClick(dialog->findChild<QListView*>("listView"), Qt::Key_Delete);
        EXPECT_EQ(QApplication::activeModalWidget(), dialog);
        EXPECT_TRUE(dialog->testOption(QFileDialog::ReadOnly));
        dialog->reject();
    });
    EXPECT_TRUE(panel.chooseFolders().empty());
    EXPECT_TRUE(wasAsked);
    EXPECT_TRUE(home.holds("Precious/photo.jpg"));
}

}  // namespace tidemark
