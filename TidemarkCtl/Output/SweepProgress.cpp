#include "SweepProgress.h"

namespace tidemark {

void SweepProgress::willScan(const FileURL& folder)
{
    m_line.show("Looking through " + m_people.path(folder.path()));
}

void SweepProgress::willPerform(std::size_t index, std::size_t count)
{
    m_line.show("Moving " + PeopleText::number(index + 1) + " of " + PeopleText::number(count));
}

}  // namespace tidemark
