#include "Terminal.h"

#include <QByteArray>

#include <sys/ioctl.h>
#include <unistd.h>

namespace tidemark::Terminal {

bool showsColour(int descriptor)
{
    return canRedraw(descriptor) && qEnvironmentVariableIsEmpty("NO_COLOR");
}

bool canRedraw(int descriptor)
{
    const QByteArray kind = qgetenv("TERM");
    return ::isatty(descriptor) == 1 && !kind.isEmpty() && kind != "dumb";
}

std::size_t columns(int descriptor)
{
    constexpr std::size_t usual = 80;
    struct winsize size = {};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return usual;
    return size.ws_col;
}

}  // namespace tidemark::Terminal
