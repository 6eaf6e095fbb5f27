#pragma once

#include "AppModel.h"
#include "Clock.h"
#include "Journal.h"
#include "LinuxFileManager.h"
#include "MeasuredLoop.h"
#include "OwnChangeLog.h"
#include "Place.h"
#include "TimeSource.h"
#include "WallClockAlarm.h"

#include <cstddef>
#include <memory>
#include <string>

namespace tidemark::bench {

/// The application's model as it runs: on real files, clocks and watches, in an event loop that is measured.
///
/// It watches one folder, files everything in it, and begins with a journal of earlier sweeps.
class ModelSample {
public:
    /// Makes its folders in `place` under this name. Throws filesystem_error.
    ModelSample(MeasuredLoop& loop, const Place& place, const std::string& name, Journal before);
    ~ModelSample();

    ModelSample(const ModelSample&) = delete;
    ModelSample& operator=(const ModelSample&) = delete;

    /// Ends the model and brings settings, journal and folders back to the start; on the disk when it returns.
    void reset();

    /// Makes files to be swept, each with a name of its own. The model, if it runs, does not notice these
    /// of its own process; one that is started later would sweep them by itself.
    void addFiles(std::size_t count);

    /// Makes the model from within the loop. Returns when all is done that it does at once.
    AppModel& start();

    /// Ends the model.
    void stop();

    /// Sweeps, asked from within the loop, and returns when all is done. Throws runtime_error unless exactly so
    /// many files were moved.
    void sweep(std::size_t files);

    /// Changes the settings, asked from within the loop, and returns when all is done.
    void edit();

    /// The same, but returns at once: all is done some time later.
    void beginEdit();

    AppModel& model() { return *m_model; }
    MeasuredLoop& loop() { return m_loop; }

private:
    class SilentLog;

    FileURL folder(std::string_view name) const;
    void writeSettings();
    void finishWork();

    MeasuredLoop& m_loop;
    Place m_place;
    FileURL m_root;
    Journal m_before;
    std::size_t m_files = 0;
    int m_gracePeriod = 0;

    SystemClock m_clock;
    SteadyTime m_time;
    OwnChangeLog m_ownChanges;
    LinuxFileManager m_fileManager;
    NoFolderChooser m_chooser;
    std::unique_ptr<SystemLog> m_log;
    std::unique_ptr<WallClockAlarm> m_alarm;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<AppModel> m_model;
};

}  // namespace tidemark::bench
