#include "IdleCase.h"

#include <utility>

namespace tidemark::bench {

IdleCase::IdleCase(Subject subject, Measure ours, Lazy<Idleness> emptyProgram)
    : m_subject(std::move(subject))
    , m_measure(std::move(ours))
    , m_emptyProgram(std::move(emptyProgram))
{
}

std::string IdleCase::name() const
{
    return m_subject.work + '/' + std::to_string(m_subject.size) + '/' + m_subject.place;
}

Seconds IdleCase::measure()
{
    static_cast<void>(m_emptyProgram.get());
    m_ours = m_measure();
    return m_ours->rest;
}

}  // namespace tidemark::bench
