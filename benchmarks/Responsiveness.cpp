#include "Responsiveness.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tidemark::bench {

namespace {

void append(const std::vector<Seconds>& values, std::vector<Seconds>& all)
{
    all.insert(all.end(), values.begin(), values.end());
}

}  // namespace

Responsiveness::Responsiveness(Subject subject, Measure ours, Measure emptyLoop)
    : m_subject(std::move(subject))
    , m_measureOurs(std::move(ours))
    , m_measureEmptyLoop(std::move(emptyLoop))
{
}

std::string Responsiveness::name() const
{
    return m_subject.work + '/' + std::to_string(m_subject.size) + '/' + m_subject.place;
}

Seconds Responsiveness::measureInTurn()
{
    const std::vector<Seconds> emptyLoop = m_measureEmptyLoop();
    const std::vector<Seconds> ours = m_measureOurs();
    append(emptyLoop, m_emptyLoop);
    append(ours, m_ours);
    return std::accumulate(ours.begin(), ours.end(), Seconds{0});
}

Responsiveness::Spread Responsiveness::spreadOf(std::vector<Seconds> values)
{
    std::ranges::sort(values);
    const std::size_t count = values.size();
    return {.count = count,
        .median = values[count / 2],
        .percentile99 = values[(count * 99 + 99) / 100 - 1],
        .longest = values.back()};
}

}  // namespace tidemark::bench
