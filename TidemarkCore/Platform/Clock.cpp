#include "Clock.h"

namespace tidemark {

Date SystemClock::now() const
{
    return std::chrono::system_clock::now();
}

}  // namespace tidemark
