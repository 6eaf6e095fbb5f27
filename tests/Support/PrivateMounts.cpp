#include "PrivateMounts.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/fsuid.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>

namespace tidemark {

namespace {

constexpr int passed = 0;
constexpr int failed = 1;
constexpr int notPermitted = 2;
constexpr unsigned nobody = 65534;

bool write(const char* path, const std::string& text)
{
    std::ofstream file{path};
    file << text << std::flush;
    return file.good();
}

/// Whether this process is root in namespaces of its own now.
bool enterNamespaces()
{
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    write("/proc/self/setgroups", "deny");
    return write("/proc/self/uid_map", "0 " + user + " 1")
        && write("/proc/self/gid_map", "0 " + group + " 1")
        && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

int runInNamespaces(const std::function<void()>& body)
{
    if (!enterNamespaces())
        return notPermitted;
    try {
        body();
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
    return testing::Test::HasFailure() ? failed : passed;
}

}  // namespace

void testWithPrivateMounts(const std::function<void()>& body)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0) << std::strerror(errno);
    if (child == 0) {
        const int result = runInNamespaces(body);
        std::fflush(nullptr);
        ::_exit(result);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "the child process died of signal " << WTERMSIG(status);
    if (WEXITSTATUS(status) == notPermitted)
        GTEST_SKIP() << "no user namespace to be had: in a chroot, or beside a sanitizer's thread";
    EXPECT_EQ(WEXITSTATUS(status), passed) << "see the failures above";
}

void mountMemory(const std::string& folder, const std::string& options)
{
    ASSERT_EQ(::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()), 0)
        << std::strerror(errno);
}

void mountAgain(const std::string& folder, const std::string& at)
{
    ASSERT_EQ(::mount(folder.c_str(), at.c_str(), nullptr, MS_BIND, nullptr), 0)
        << std::strerror(errno);
}

void makeReadOnly(const std::string& mountPoint)
{
    ASSERT_EQ(
        ::mount(nullptr, mountPoint.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0)
        << std::strerror(errno);
}

ScopedOrdinaryUser::ScopedOrdinaryUser()
    : m_isRoot(::geteuid() == 0)
{
    if (m_isRoot) {
        ::setfsgid(nobody);
        ::setfsuid(nobody);
    }
}

ScopedOrdinaryUser::ScopedOrdinaryUser(const TemporaryFolder& folder)
    : ScopedOrdinaryUser()
{
    if (!m_isRoot)
        return;
    ::setfsuid(0);
    EXPECT_EQ(::chown(folder.path().c_str(), nobody, nobody), 0) << std::strerror(errno);
    ::setfsuid(nobody);
}

ScopedOrdinaryUser::~ScopedOrdinaryUser()
{
    if (m_isRoot) {
        ::setfsuid(0);
        ::setfsgid(0);
    }
}

}  // namespace tidemark
