#pragma once

#include "AppModel.h"
#include "PatientOutput.h"
#include "TextPrinter.h"

#include <QObject>

#include <functional>
#include <string>
#include <vector>

namespace tidemark {

/// Prints what a model does, as it happens: one line each, with the time.
///
/// Never waits for the reader. Goes on in silence when nothing can be printed any more, but tells when the
/// reader has gone.
class WatchPrinter {
public:
    /// `model` outlives it. `onReaderGone` is called at most once.
    WatchPrinter(AppModel& model, std::function<void()> onReaderGone);

    /// What is watched, to begin with.
    void printStart(bool isFirstStart);
    void printEnd();  ///< Gives a slow reader a moment.

private:
    void printFolders();
    void printEntry(const JournalEntry& entry);
    void printRestored(const JournalEntry& entry, const FileURL& place);
    void printOutcome(const SweepOutcome& outcome);
    void printUndo(const UndoOutcome& outcome);
    void printStatusChange();
    void printEvent(Date at, std::string_view verb, const std::string& text,
        Emphasis emphasis = Emphasis::none);
    void flush();
    void outputFailed(int error);

    AppModel& m_model;
    std::function<void()> m_onReaderGone;
    TextPrinter m_printer;
    PatientOutput m_output;
    std::string m_statusText;
    std::vector<std::string> m_folders;
    std::vector<SweepReport::Failure> m_toldFailures;  ///< Of the sweep before.
    std::optional<std::string> m_toldFailure;
    QObject m_context;  ///< Ends the connections to the model.
};

}  // namespace tidemark
