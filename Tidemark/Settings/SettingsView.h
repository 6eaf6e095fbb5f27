#pragma once

#include "AppModel.h"

#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;

namespace tidemark {

class ElidedLabel;
class FolderGroup;
class FormSection;
class Stepper;

/// The form in which settings are changed. Every control shows the model and writes through to it at once.
class SettingsView : public QWidget {
public:
    /// `model` outlives it.
    explicit SettingsView(AppModel& model);

private:
    FormSection* makeFolders();
    FormSection* makeMarkdown();
    FormSection* makeGeneral();
    FormSection* makeAbout();

    void showFolders();
    void showSettings();
    std::vector<FolderGroup*> groupsOf(const std::vector<WatchedFolderInfo>& folders);
    void putInOrder();

    AppModel& m_model;
    FormSection* m_folders = nullptr;
    QLabel* m_noFolders = nullptr;
    std::vector<FolderGroup*> m_groups;
    QLineEdit* m_subfolder = nullptr;
    QLabel* m_gracePeriodText = nullptr;
    Stepper* m_gracePeriod = nullptr;
};

}  // namespace tidemark
