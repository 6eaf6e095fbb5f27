#pragma once

#include <functional>
#include <string>

namespace tidemark {

class TemporaryFolder;

/// Runs `body`, with its expectations, in a child process that has a mount namespace of its own, so that it
/// can mount file systems that nobody else sees. Works for any user where the kernel allows user namespaces;
/// elsewhere the test is skipped, because there is no other way to have a second file system for it. For
/// processes with one thread. A temporary folder that `body` mounts something in must be made outside of it:
/// the mounts last as long as the child.
void testWithPrivateMounts(const std::function<void()>& body);

/// Only within `testWithPrivateMounts`. `options` are mount(8)'s for a tmpfs, such as "size=64k".
void mountMemory(const std::string& folder, const std::string& options = "");

/// Only within `testWithPrivateMounts`. Lets the folder appear at a second place.
void mountAgain(const std::string& folder, const std::string& at);

/// Only within `testWithPrivateMounts`, for what was mounted there.
void makeReadOnly(const std::string& mountPoint);

/// Files are made and access is checked as an ordinary user within this scope, in the thread that opens it:
/// a test of permissions means the same when root runs it.
class ScopedOrdinaryUser {
public:
    ScopedOrdinaryUser();

    /// Gives the folder, without what is in it, to that user for good.
    explicit ScopedOrdinaryUser(const TemporaryFolder& folder);

    ~ScopedOrdinaryUser();

    ScopedOrdinaryUser(const ScopedOrdinaryUser&) = delete;
    ScopedOrdinaryUser& operator=(const ScopedOrdinaryUser&) = delete;

private:
    bool m_isRoot;
};

}  // namespace tidemark
