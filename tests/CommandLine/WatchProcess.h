#pragma once

#include "FileDescriptor.h"
#include "ProgramProcess.h"

#include <csignal>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// A program that runs beside the test and whose lines are read as it prints them; killed at the end of the
/// scope if it still runs.
///
/// Reading throws runtime_error with all that was printed, when nothing more has come for half a minute or at
/// the end of the output.
class WatchProcess {
public:
    /// Its standard output comes here, wherever `how` has it go.
    explicit WatchProcess(ProgramStart how);

    /// Reads one more line.
    std::string nextLine();

    /// Reads on until a line holds `text`, and returns that line.
    std::string readUntil(std::string_view text);

    /// Reads what is printed at the start.
    void readStart() { readUntil("Stop with Ctrl-C"); }

    /// The lines that were read so far, and of these the ones that hold `text`.
    const std::vector<std::string>& lines() const { return m_lines; }
    std::vector<std::string> linesWith(std::string_view text) const;

    pid_t pid() const { return m_process.pid(); }
    void signal(int number) const { m_process.signal(number); }

    /// Lets the output hold no more than 4 KiB that are not read.
    void shrinkOutput() const;

    /// Closes this end of the output.
    void stopReading() { m_output.close(); }

    /// Reads the rest of the output and waits for the end. Returns the exit status, negative for the signal
    /// that ended it.
    int wait();

    /// The same, but what it prints stays unread.
    int waitWithoutReading() { return m_process.wait(); }

    /// Asks it to end and waits for that.
    int end(int number = SIGTERM);

private:
    struct Pipe {
        FileDescriptor reader;
        FileDescriptor writer;
    };

    WatchProcess(ProgramStart how, Pipe pipe);
    static Pipe makePipe();
    static ProgramStart printingInto(const Pipe& pipe, ProgramStart how);

    bool hasLine() const { return m_unread.find('\n') != std::string::npos; }

    /// False at the end of the output.
    bool readMore();
    [[noreturn]] void giveUp(const std::string& why) const;

    FileDescriptor m_output;
    ProgramProcess m_process;
    std::string m_errorFile;
    std::string m_unread;
    std::vector<std::string> m_lines;
};

}  // namespace tidemark
