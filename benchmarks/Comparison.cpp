#include "Comparison.h"

#include <algorithm>
#include <iterator>

namespace tidemark::bench {

namespace {

template <typename Value>
Value medianOf(std::vector<Value> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

template <typename Value>
Value medianOf(const std::vector<Measured>& samples, Value Measured::*part)
{
    std::vector<Value> values;
    std::ranges::transform(samples, std::back_inserter(values),
        [part](const Measured& sample) { return sample.*part; });
    return medianOf(std::move(values));
}

}  // namespace

Comparison::Comparison(Subject subject, Measure ours, std::vector<Yardstick> yardsticks)
    : m_subject(std::move(subject))
    , m_yardsticks(std::move(yardsticks))
    , m_contestants{std::move(ours)}
{
    std::ranges::transform(m_yardsticks, std::back_inserter(m_contestants), &Yardstick::measure);
    m_samples.resize(m_contestants.size());
}

std::string Comparison::name() const
{
    return m_subject.work + '/' + std::to_string(m_subject.size) + '/' + m_subject.place;
}

Measured Comparison::measureInTurn()
{
    const std::size_t first = m_samples.front().size();
    std::vector<Measured> turn(m_contestants.size());
    for (std::size_t i = 0; i < m_contestants.size(); ++i) {
        const std::size_t contestant = (first + i) % m_contestants.size();
        turn[contestant] = m_contestants[contestant]();
    }
    // Kept only when none has failed, so that all have been measured equally often.
    for (std::size_t i = 0; i < turn.size(); ++i)
        m_samples[i].push_back(turn[i]);
    return turn.front();
}

Measured Comparison::median(std::size_t contestant) const
{
    const std::vector<Measured>& samples = m_samples[contestant];
    return {.wall = medianOf(samples, &Measured::wall),
        .cpu = medianOf(samples, &Measured::cpu),
        .peakBytes = medianOf(samples, &Measured::peakBytes)};
}

}  // namespace tidemark::bench
