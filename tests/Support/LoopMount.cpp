#include "LoopMount.h"

#include "TemporaryFolder.h"

#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace tidemark {

bool succeeds(const std::string& command)
{
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

LoopMount::LoopMount(
    const TemporaryFolder& folder, std::string at, const std::string& size, const std::string& make)
    : m_at(std::move(at))
{
    std::filesystem::create_directories(m_at);
    const std::string image = folder.path("image");
    m_isMounted = ::geteuid() == 0 && succeeds("truncate -s " + size + ' ' + image)
        && succeeds(make + ' ' + image) && succeeds("mount -o loop " + image + ' ' + m_at);
}

LoopMount::~LoopMount()
{
    if (m_isMounted)
        ::umount2(m_at.c_str(), MNT_DETACH);
}

}  // namespace tidemark
