#include "StandardStreams.h"

#include "DisplayText.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

namespace tidemark::StandardStreams {

void secure()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) != -1)
            continue;
        // The lowest number that is free is this one. The wrong direction keeps its calls failing.
        const int direction = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        static_cast<void>(uninterrupted([=] { return ::open("/dev/null", direction); }));
    }
}

void complain(std::string_view reason)
{
    const std::string line = "tidemarkctl: " + displayText(reason) + '\n';
    // Nobody is left to be told when this fails, too.
    static_cast<void>(
        uninterrupted([&] { return ::write(STDERR_FILENO, line.data(), line.size()); }));
}

}  // namespace tidemark::StandardStreams
