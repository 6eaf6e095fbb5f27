#pragma once

#include "Alarm.h"

#include <optional>

namespace tidemark {

/// An alarm that a test rings.
class ManualAlarm final : public Alarm {
public:
    void onRing(std::function<void()> ring) override { m_ring = std::move(ring); }
    void set(Date date) override { m_date = date; }
    void cancel() override { m_date.reset(); }

    /// For when it is set.
    std::optional<Date> date() const { return m_date; }

    /// Like the real one: it is off afterwards unless it was set again.
    void ring()
    {
        m_date.reset();
        m_ring();
    }

private:
    std::function<void()> m_ring;
    std::optional<Date> m_date;
};

}  // namespace tidemark
