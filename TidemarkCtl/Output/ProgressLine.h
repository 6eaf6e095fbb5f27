#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tidemark {

/// One line on standard error that tells what takes so long, and that is gone afterwards.
///
/// It appears after half a second, and only on a terminal. Safe from any thread.
class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine();

    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// What is going on from now on; cheap enough for every file of a sweep.
    void show(std::string text);

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::string m_text;
    bool m_hasEnded = false;
    std::thread m_thread;
};

}  // namespace tidemark
