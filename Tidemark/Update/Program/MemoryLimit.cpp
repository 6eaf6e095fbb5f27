#include "MemoryLimit.h"

#include <algorithm>

namespace tidemark {

namespace {

#ifdef TIDEMARK_IS_SANITIZED
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

/// What can be raised again later: the hard limit stays.
void lower(int resource, const rlimit& before, rlim_t most)
{
    const rlimit limit{.rlim_cur = std::min(before.rlim_cur, most), .rlim_max = before.rlim_max};
    ::setrlimit(resource, &limit);
}

}  // namespace

MemoryLimit::MemoryLimit()
{
    constexpr rlim_t most = rlim_t{256} << 20U;
    ::getrlimit(RLIMIT_DATA, &m_data);
    ::getrlimit(RLIMIT_CORE, &m_core);
    if (isSanitized)
        return;
    lower(RLIMIT_DATA, m_data, most);
    lower(RLIMIT_CORE, m_core, 0);
}

void MemoryLimit::lift() const
{
    if (isSanitized)
        return;
    ::setrlimit(RLIMIT_DATA, &m_data);
    ::setrlimit(RLIMIT_CORE, &m_core);
}

}  // namespace tidemark
