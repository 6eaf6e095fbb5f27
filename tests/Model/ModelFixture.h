#pragma once

#include "AppModel.h"
#include "EventLoop.h"
#include "FaultInjectingFileManager.h"
#include "Gate.h"
#include "LinuxFileManager.h"
#include "ManualAlarm.h"
#include "ManualClock.h"
#include "ManualTime.h"
#include "OwnChangeLog.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

class ScriptedFolderChooser final : public FolderChooser {
public:
    std::vector<FileURL> chooseFolders() override { return answer; }

    std::vector<FileURL> answer;
};

class RememberingLog final : public SystemLog {
public:
    void warn(const std::string& line) override { lines.push_back(line); }

    std::vector<std::string> lines;
};

/// Can hold the thread that moves a file until the test lets it go on.
class GatedFileManager final : public FaultInjectingFileManager {
public:
    using FaultInjectingFileManager::FaultInjectingFileManager;

    using FaultInjectingFileManager::moveItem;
    void moveItem(const HeldEntry& from, const HeldEntry& to) override
    {
        gate.pass();
        FaultInjectingFileManager::moveItem(from, to);
    }

    Gate gate;
};

/// A model on real files in a home folder of its own, with a clock, an alarm and quiet times that the test
/// turns, and file calls that it can make fail.
class ModelTest : public testing::Test {
protected:
    ModelTest();

    /// What the settings file is to hold when the model is made.
    void writeSettings(const Settings& settings) const;
    void writeJournal(const Journal& journal) const;

    /// Settings that watch these folders below home, which are made, by `rules`, with no grace period.
    Settings watching(
        const std::vector<std::string>& folders, const std::vector<Rule>& rules = {}) const;

    /// Files "*.pdf" into "Filed" below home.
    Rule filingPapers() const;

    /// Writes a file that was changed so long before the clock's present.
    FileURL addFile(const std::string& path, Seconds age = Seconds{0}) const;

    /// Loads the settings and makes the model; all that it does at once is done then.
    AppModel& start(AppModel::Initiative initiative = AppModel::Initiative::onceOnboarded);
    AppModel& model() { return *m_model; }

    /// Waits until everything is done that was asked for.
    void finishWork();

    /// How many sweeps have ended since the last question, once all work is done.
    int sweeps();

    Settings savedSettings() const;
    /// What lies where the papers are filed; nothing at first.
    std::vector<std::string> filed() const;

    TemporaryFolder m_home;
    ScopedHome m_scope{m_home.path()};
    ManualClock m_clock;
    ManualTime m_time;
    ManualAlarm m_alarm;
    OwnChangeLog m_ownChanges;
    LinuxFileManager m_realFiles{&m_ownChanges};
    GatedFileManager m_files{m_realFiles};
    ScriptedFolderChooser m_chooser;
    RememberingLog m_log;
    std::optional<WatchBackend> m_backend;
    bool m_looksAtLaunch = true;
    std::optional<UpdateServices> m_updateServices;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<AppModel> m_model;

private:
    int m_sweeps = 0;
};

}  // namespace tidemark
