#pragma once

#include "PeopleText.h"
#include "ProgressLine.h"
#include "SweepObserver.h"

namespace tidemark {

/// Tells on a ProgressLine how far a sweep or a preview has come.
class SweepProgress final : public SweepObserver {
public:
    void willScan(const FileURL& folder) override;
    void willPerform(std::size_t index, std::size_t count) override;

private:
    PeopleText m_people;
    ProgressLine m_line;
};

}  // namespace tidemark
