#pragma once

#include <string>

namespace tidemark {

class TemporaryFolder;

/// A file system in a file, mounted on a folder for as long as this lives, and for everybody: only root may do
/// that, and only where there are loop devices.
class LoopMount {
public:
    /// The file is made in `folder`, and `at` if there is no such folder yet. `make` is the command that
    /// formats the file whose name is added to it.
    LoopMount(const TemporaryFolder& folder, std::string at, const std::string& size,
        const std::string& make);
    ~LoopMount();

    LoopMount(const LoopMount&) = delete;
    LoopMount& operator=(const LoopMount&) = delete;

    /// Tests skip where it is not.
    bool isMounted() const { return m_isMounted; }
    const std::string& path() const { return m_at; }

private:
    std::string m_at;
    bool m_isMounted = false;
};

/// Whether a command of the shell ended well; it says nothing.
bool succeeds(const std::string& command);

}  // namespace tidemark
