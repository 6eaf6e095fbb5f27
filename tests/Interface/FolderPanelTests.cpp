#include "FolderPanel.h"
#include "ScopedEnvironment.h"
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

TEST(FolderPanel, DoesNotTakeTheWholeHomeWhenNothingIsChosen)
{
    const TemporaryFolder home;
    const ScopedEnvironment whose{"HOME", home.path()};
    home.makeFolder("Pictures");
    FolderPanel panel;
    bool wasOpen = false;
    QTimer::singleShot(0, [&] {
        QFileDialog* dialog = openDialog();
        ASSERT_NE(dialog, nullptr);
        QMetaObject::invokeMethod(dialog, "accept");
        wasOpen = dialog->isVisible();
        dialog->selectFile("Pictures");
        QMetaObject::invokeMethod(dialog, "accept");
        if (dialog->isVisible())
            dialog->reject();
    });
    const std::vector<FileURL> chosen = panel.chooseFolders();
    EXPECT_TRUE(wasOpen);
    ASSERT_EQ(chosen.size(), 1U);
    EXPECT_EQ(chosen.front().path(), home.path("Pictures"));
}

}  // namespace tidemark
