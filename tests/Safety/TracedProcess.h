#pragma once

#include "TracedCall.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// What is to happen to one call of a traced program.
struct CallVerdict {
    enum class Kind {
        proceed,
        killBefore,  ///< The program dies, all its threads, and the call was never made.
        killAfter,  ///< It dies when the call is done.
        fail,  ///< The call is not made and returns `error`.
        shorten,  ///< A write of several bytes writes only the first half.
    };

    Kind kind = Kind::proceed;
    int error = 0;
};

/// What a traced program came to.
struct TracedOutcome {
    int status = -1;  ///< The exit status, negative for the signal that ended it.
    bool didHang = false;  ///< It made no end and was killed for that.
    std::vector<TracedCall> calls;  ///< In the order they were made; the killed one, too.
    std::string output;
    std::string error;
};

/// Runs a program under ptrace(2) and decides over each of its calls about files below certain folders.
///
/// Every thread is followed. The program dies with the tracing process. One at a time, from a process with
/// one thread and without other children. For x86-64 alone: how a call is refused is the processor's own.
class TracedProcess {
public:
    /// Why this machine allows no tracing; nothing where it does.
    static std::optional<std::string> whyNotPossible();

    /// `roots` are absolute folders; calls about anything outside of them pass unseen.
    TracedProcess(std::vector<std::string> command, std::map<std::string, std::string> environment,
        std::vector<std::string> roots);

    /// Runs it to its end. `judge` is asked before each call, with the calls made so far being numbered
    /// from 0 in their order.
    TracedOutcome run(const std::function<CallVerdict(const TracedCall&)>& judge) const;

private:
    std::vector<std::string> m_command;
    std::map<std::string, std::string> m_environment;
    std::vector<std::string> m_roots;
};

}  // namespace tidemark
