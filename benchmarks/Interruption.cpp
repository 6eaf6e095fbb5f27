#include "Interruption.h"

#include <csignal>
#include <initializer_list>

namespace tidemark::bench::Interruption {

static volatile std::sig_atomic_t hasSignalCome = 0;

void install()
{
    struct sigaction action = {};
    action.sa_handler = [](int) { hasSignalCome = 1; };
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

bool hasCome()
{
    return hasSignalCome != 0;
}

}  // namespace tidemark::bench::Interruption
