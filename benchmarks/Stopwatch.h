#pragma once

#include "Measured.h"

#include <chrono>
#include <functional>

namespace tidemark::bench {

/// Measures this process from the moment it is made.
class Stopwatch {
public:
    Stopwatch();

    Measured elapsed() const;

    /// What one call of `work` costs.
    static Measured time(const std::function<void()>& work);

private:
    std::chrono::steady_clock::time_point m_wall;
    Seconds m_cpu;
};

}  // namespace tidemark::bench
