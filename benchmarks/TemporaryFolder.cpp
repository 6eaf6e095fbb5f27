#include "TemporaryFolder.h"

#include "SystemCall.h"

#include <cstdlib>

namespace tidemark::bench {

static FileURL makeIn(const FileURL& parent)
{
    std::string path = parent.appending("tidemark-bench-XXXXXX").path();
    if (::mkdtemp(path.data()) == nullptr)
        fail("cannot make a temporary folder in", parent, errno);
    return FileURL::directory(std::move(path));
}

TemporaryFolder::TemporaryFolder(const FileURL& parent)
    : m_url(makeIn(parent))
{
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;  // what cannot be removed stays
    std::filesystem::remove_all(m_url.path(), ignored);
}

}  // namespace tidemark::bench
